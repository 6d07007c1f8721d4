// Licence: MIT, see LICENSE.
// Builds a resource file from its description: quorvant_resource_writer INPUT OUTPUT. A part of the
// build, not of what is installed. Exit status: 0 done, 1 a bad description or file, 2 usage.
#include <cstdio>
#include <string>

#include "platform/host/FileContents.h"
#include "platform/resources/ResourceDescription.h"

namespace {

using namespace platform;

constexpr std::size_t kLargestDescription = 1024 * 1024;

int complain(const std::string& where, const std::string& message) {
  std::fprintf(stderr, "%s: %s\n", where.c_str(), message.c_str());
  return 1;
}

int build(const std::string& input, const std::string& output) {
  auto contents = host::readFile(input, kLargestDescription);
  if (!contents) return complain(input, "cannot be read");
  const std::string_view text(reinterpret_cast<const char*>(contents->data()), contents->size());
  auto description = resources::parseDescription(text);
  if (auto* error = std::get_if<resources::DescriptionError>(&description)) {
    return complain(input + ":" + std::to_string(error->line), error->message);
  }
  const auto file =
      resources::writeResourceFile(std::get<std::vector<resources::ResourceContents>>(description));
  if (!file) return complain(input, "the resources do not fit into a resource file");
  if (!host::replaceFile(output, *file)) return complain(output, "cannot be written");
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: %s INPUT OUTPUT\n", argc > 0 ? argv[0] : "writer");
    return 2;
  }
  return build(argv[1], argv[2]);
}
