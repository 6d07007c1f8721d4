// Licence: MIT, see LICENSE.
#include "tools/qrl/Text.h"

#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>

namespace qrl {
namespace {

std::optional<std::string> convert(std::string_view text, CFStringEncoding from,
                                   CFStringEncoding to) {
  CFStringRef string =
      CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                              static_cast<CFIndex>(text.size()), from, false);
  if (string == nullptr) return std::nullopt;
  CFRange all = CFRangeMake(0, CFStringGetLength(string));
  CFIndex size = 0;
  CFIndex converted = CFStringGetBytes(string, all, to, 0, false, nullptr, 0, &size);
  std::optional<std::string> result;
  if (converted == all.length) {
    result.emplace(static_cast<std::size_t>(size), '\0');
    CFStringGetBytes(string, all, to, 0, false, reinterpret_cast<UInt8*>(result->data()), size,
                     nullptr);
  }
  CFRelease(string);
  return result;
}

}  // namespace

std::optional<std::string> macRomanFromUtf8(std::string_view text) {
  return convert(text, kCFStringEncodingUTF8, kCFStringEncodingMacRoman);
}

namespace {

/// Whether a character that begins with E2 and goes on with these bytes separates lines or
/// paragraphs, or turns the direction of a text.
bool separatesOrTurns(std::string_view bytes) {
  if (bytes.size() < 2) return false;
  const auto last = static_cast<unsigned char>(bytes[1]);
  if (bytes[0] == '\x80') return last >= 0xA8 && last <= 0xAE;
  return bytes[0] == '\x81' && last >= 0xA6 && last <= 0xA9;
}

}  // namespace

bool isOneLine(std::string_view text) {
  if (std::ranges::any_of(text, [](unsigned char c) { return c < 0x20 || c == 0x7F; }))
    return false;
  for (std::size_t at = text.find('\xC2'); at != text.npos; at = text.find('\xC2', at + 1)) {
    if (at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0) return false;
  }
  for (std::size_t at = text.find('\xE2'); at != text.npos; at = text.find('\xE2', at + 1)) {
    if (separatesOrTurns(text.substr(at + 1, 2))) return false;
  }
  return true;
}

std::string utf8FromMacRoman(std::string_view bytes) {
  return convert(bytes, kCFStringEncodingMacRoman, kCFStringEncodingUTF8).value_or("");
}

}  // namespace qrl
