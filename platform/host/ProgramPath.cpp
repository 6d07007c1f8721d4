// Licence: MIT, see LICENSE.
#include "platform/host/ProgramPath.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <string_view>

namespace platform::host {
namespace {

bool isExecutable(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         ::access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::string programPath() {
  std::array<char, PATH_MAX> buffer;
  const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
  return length < 0 ? std::string() : std::string(buffer.data(), static_cast<std::size_t>(length));
}

std::optional<std::string> findProgram(const std::string& name) {
  const char* variable = std::getenv("PATH");
  std::string_view folders = variable == nullptr ? "" : variable;
  while (!folders.empty()) {
    const auto end = folders.find(':');
    const std::string_view folder = folders.substr(0, end);
    folders = end == std::string_view::npos ? std::string_view() : folders.substr(end + 1);
    // An empty entry means the working folder, from which nothing is to be run by accident.
    if (folder.empty()) continue;
    std::string path = std::string(folder) + "/" + name;
    if (isExecutable(path)) return path;
  }
  return std::nullopt;
}

}  // namespace platform::host
