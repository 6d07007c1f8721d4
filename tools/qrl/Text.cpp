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

bool isOneLine(std::string_view text) {
  using namespace std::literals;
  if (std::ranges::any_of(text, [](unsigned char c) { return c < 0x20 || c == 0x7F; }))
    return false;
  for (std::size_t at = text.find('\xC2'); at != text.npos; at = text.find('\xC2', at + 1)) {
    if (at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0) return false;
  }
  constexpr std::string_view kTurning[] = {"\u2028"sv, "\u2029"sv, "\u202A"sv, "\u202B"sv,
                                           "\u202C"sv, "\u202D"sv, "\u202E"sv, "\u2066"sv,
                                           "\u2067"sv, "\u2068"sv, "\u2069"sv};
  return std::ranges::none_of(kTurning,
                              [text](std::string_view c) { return text.find(c) != text.npos; });
}

std::string utf8FromMacRoman(std::string_view bytes) {
  return convert(bytes, kCFStringEncodingMacRoman, kCFStringEncodingUTF8).value_or("");
}

}  // namespace qrl
