// Licence: MIT, see LICENSE.
// Text made from a format.
#include <CoreFoundation/CFString.h>

#include <new>

#include "platform/corefoundation/Formatting.h"

using namespace platform::corefoundation;

CFStringRef CFStringCreateWithFormat(CFAllocatorRef allocator, CFDictionaryRef formatOptions,
                                     CFStringRef format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const CFStringRef made =
      CFStringCreateWithFormatAndArguments(allocator, formatOptions, format, arguments);
  va_end(arguments);
  return made;
}

CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef allocator, CFDictionaryRef,
                                                 CFStringRef format, va_list arguments) {
  const String* object = stringOf(format);
  if (object == nullptr) return nullptr;
  try {
    return referenceTo<CFStringRef>(
        String::ofUnits(allocator, platform::corefoundation::format(object->text(), arguments)));
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void CFStringAppendFormat(CFMutableStringRef string, CFDictionaryRef formatOptions,
                          CFStringRef format, ...) {
  va_list arguments;
  va_start(arguments, format);
  CFStringAppendFormatAndArguments(string, formatOptions, format, arguments);
  va_end(arguments);
}

void CFStringAppendFormatAndArguments(CFMutableStringRef string, CFDictionaryRef formatOptions,
                                      CFStringRef format, va_list arguments) {
  const Held<CFStringRef> appended(
      CFStringCreateWithFormatAndArguments(nullptr, formatOptions, format, arguments));
  CFStringAppend(string, appended.get());
}
