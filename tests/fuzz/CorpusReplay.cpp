// Licence: MIT, see LICENSE.
// The main program of a fuzz target in a build without a fuzzer: runs every file of the folders
// that it is given through the target, once.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  if (!file.good() && !file.eof()) {
    std::fprintf(stderr, "cannot read %s\n", path.c_str());
    return false;
  }
  std::printf("%s, %zu bytes\n", path.c_str(), bytes.size());
  std::fflush(stdout);  // names the file that a crash is about
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
  }
  if (files.empty()) {
    std::fprintf(stderr, "no corpus\n");
    return 1;
  }
  std::sort(files.begin(), files.end());
  return std::all_of(files.begin(), files.end(), replay) ? 0 : 1;
}
