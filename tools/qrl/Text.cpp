// Licence: MIT, see LICENSE.
#include "tools/qrl/Text.h"

#include <CoreFoundation/CoreFoundation.h>

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

std::string utf8FromMacRoman(std::string_view bytes) {
  return convert(bytes, kCFStringEncodingMacRoman, kCFStringEncodingUTF8).value_or("");
}

}  // namespace qrl
