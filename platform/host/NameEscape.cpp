// Licence: MIT, see LICENSE.
#include "platform/host/NameEscape.h"

namespace platform::host {

namespace {

constexpr char kEscape = '%';
constexpr char kSlash = 's';
constexpr char kPercent = 'p';
constexpr char kLeadingStop = 'd';

std::optional<char> escapedByte(char letter, bool leading) {
  if (letter == kSlash) return '/';
  if (letter == kPercent) return kEscape;
  if (letter == kLeadingStop && leading) return '.';
  return std::nullopt;
}

}  // namespace

std::string fileNameOf(std::string_view name) {
  std::string file;
  for (const char byte : name) {
    if (byte == '/') {
      file += {kEscape, kSlash};
    } else if (byte == kEscape) {
      file += {kEscape, kPercent};
    } else if (byte == '.' && file.empty()) {
      file += {kEscape, kLeadingStop};
    } else {
      file += byte;
    }
  }
  return file;
}

std::optional<std::string> nameOfFile(std::string_view file) {
  if (file.empty() || file.front() == '.') return std::nullopt;
  std::string name;
  for (std::size_t i = 0; i < file.size(); ++i) {
    if (file[i] == '/') return std::nullopt;
    if (file[i] != kEscape) {
      name += file[i];
      continue;
    }
    const bool leading = i == 0;
    if (++i == file.size()) return std::nullopt;
    const std::optional<char> byte = escapedByte(file[i], leading);
    if (!byte) return std::nullopt;
    name += *byte;
  }
  return name;
}

}  // namespace platform::host
