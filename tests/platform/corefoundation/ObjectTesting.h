// Licence: MIT, see LICENSE.
// Short ways to make objects and to read them in tests.
#ifndef TESTS_PLATFORM_COREFOUNDATION_OBJECTTESTING_H
#define TESTS_PLATFORM_COREFOUNDATION_OBJECTTESTING_H

#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

#include <string>
#include <vector>

#include "platform/corefoundation/CFRuntime.h"

namespace tests {

using platform::corefoundation::Held;

/// A string's text in UTF-8, "<null>" for null.
inline std::string textOf(CFStringRef string) {
  if (string == nullptr) return "<null>";
  const CFIndex length = CFStringGetLength(string);
  const CFIndex room = CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8);
  std::string text(static_cast<std::size_t>(room), '\0');
  CFIndex used = 0;
  CFStringGetBytes(string, {0, length}, kCFStringEncodingUTF8, '?', false,
                   reinterpret_cast<UInt8*>(text.data()), room, &used);
  text.resize(static_cast<std::size_t>(used));
  return text;
}

inline Held<CFStringRef> stringOf(const char* text,
                                  CFStringEncoding encoding = kCFStringEncodingUTF8) {
  return Held<CFStringRef>(CFStringCreateWithCString(nullptr, text, encoding));
}

inline Held<CFStringRef> stringOf(const std::vector<UniChar>& units) {
  return Held<CFStringRef>(
      CFStringCreateWithCharacters(nullptr, units.data(), static_cast<CFIndex>(units.size())));
}

inline Held<CFNumberRef> numberOf(SInt32 value) {
  return Held<CFNumberRef>(CFNumberCreate(nullptr, kCFNumberSInt32Type, &value));
}

inline Held<CFURLRef> urlOf(const char* text, CFURLRef base = nullptr) {
  return Held<CFURLRef>(CFURLCreateWithString(nullptr, stringOf(text).get(), base));
}

inline std::string describe(CFTypeRef object) {
  const Held<CFStringRef> text(CFCopyDescription(object));
  return textOf(text.get());
}

}  // namespace tests

#endif
