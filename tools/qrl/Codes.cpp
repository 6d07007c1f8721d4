// Licence: MIT, see LICENSE.
#include "tools/qrl/Codes.h"

#include <algorithm>
#include <charconv>

#include "tools/qrl/ExitStatus.h"
#include "tools/qrl/Text.h"

namespace qrl {
namespace {

std::optional<UInt32> hexadecimalCode(std::string_view text) {
  if (text.size() != 10 || !text.starts_with("0x")) return std::nullopt;
  UInt32 code = 0;
  auto [end, error] = std::from_chars(text.data() + 2, text.data() + text.size(), code, 16);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return code;
}

std::string bytesOf(OSType code) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(code >> shift);
  return bytes;
}

}  // namespace

std::string quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

bool hasControls(std::string_view bytes) {
  return std::ranges::any_of(bytes, [](unsigned char c) { return c < 0x20 || c == 0x7F; });
}

std::optional<OSType> codeIn(std::string_view text) {
  if (std::optional<UInt32> code = hexadecimalCode(text)) return code;
  std::optional<std::string> bytes = macRomanFromUtf8(text);
  if (!bytes || bytes->size() != 4) return std::nullopt;
  OSType code = 0;
  for (unsigned char byte : *bytes) code = code << 8 | byte;
  return code;
}

OSType parseCode(std::string_view text) {
  if (std::optional<OSType> code = codeIn(text)) return *code;
  throw UsageError(quoted(text) + " is not a four-character code");
}

std::string formatCode(OSType code) {
  std::string bytes = bytesOf(code);
  return hasControls(bytes) ? formatCodeAsNumber(code) : utf8FromMacRoman(bytes);
}

std::string formatCodeAsNumber(OSType code) { return "0x" + formatHexadecimal(bytesOf(code)); }

std::string parseHexadecimal(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
  if (text.size() % 2 != 0 || text.find_first_not_of(kDigits) != text.npos) {
    throw UsageError(quoted(text) + " is not bytes in hexadecimal");
  }
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    unsigned byte = 0;
    std::from_chars(text.data() + i, text.data() + i + 2, byte, 16);
    bytes += static_cast<char>(byte);
  }
  return bytes;
}

std::string formatHexadecimal(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (unsigned char byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

}  // namespace qrl
