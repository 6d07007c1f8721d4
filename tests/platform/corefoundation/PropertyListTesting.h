// Licence: MIT, see LICENSE.
// Property lists in tests: read from bytes, written to bytes, and shown as one line.
#ifndef TESTS_PLATFORM_COREFOUNDATION_PROPERTYLISTTESTING_H
#define TESTS_PLATFORM_COREFOUNDATION_PROPERTYLISTTESTING_H

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFPropertyList.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/corefoundation/StreamTesting.h"

namespace tests {

inline Held<CFDataRef> dataHolding(const std::string& bytes) {
  return Held<CFDataRef>(CFDataCreate(nullptr, startOf(bytes), static_cast<CFIndex>(bytes.size())));
}

/// Null if it cannot be read, and then *error (may be null) says why.
inline Held<CFTypeRef> readList(const std::string& bytes, std::string* error = nullptr,
                                CFOptionFlags mutability = kCFPropertyListImmutable) {
  CFStringRef reason = nullptr;
  Held<CFTypeRef> list(
      CFPropertyListCreateFromXMLData(nullptr, dataHolding(bytes).get(), mutability, &reason));
  const Held<CFStringRef> owned(reason);
  if (error != nullptr) *error = textOf(reason);
  return list;
}

/// The file, or "<reason>" if it cannot be written.
inline std::string writtenList(CFPropertyListRef list, CFPropertyListFormat format) {
  const Held<CFWriteStreamRef> stream(CFWriteStreamCreateWithAllocatedBuffers(nullptr, nullptr));
  CFWriteStreamOpen(stream.get());
  CFStringRef reason = nullptr;
  const CFIndex count = CFPropertyListWriteToStream(list, stream.get(), format, &reason);
  const Held<CFStringRef> owned(reason);
  if (count == 0) return "<" + textOf(reason) + ">";
  const Held data(CFWriteStreamCopyProperty(stream.get(), kCFStreamPropertyDataWritten));
  return bytesIn(static_cast<CFDataRef>(data.get()));
}
inline std::string asXML(CFPropertyListRef list) {
  return writtenList(list, kCFPropertyListXMLFormat_v1_0);
}
inline std::string asBinary(CFPropertyListRef list) {
  return writtenList(list, kCFPropertyListBinaryFormat_v1_0);
}

std::string shown(CFTypeRef object);

inline std::string shownNumber(CFNumberRef number) {
  SInt64 integer = 0;
  double real = 0;
  char text[40];
  if (CFNumberIsFloatType(number)) {
    CFNumberGetValue(number, kCFNumberFloat64Type, &real);
    std::snprintf(text, sizeof text, "%s%g", CFNumberGetByteSize(number) == 4 ? "f" : "r", real);
    return text;
  }
  CFNumberGetValue(number, kCFNumberSInt64Type, &integer);
  return std::to_string(integer);
}

inline std::string shownArray(CFArrayRef array) {
  std::string text;
  for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
    if (i > 0) text += ", ";
    text += shown(CFArrayGetValueAtIndex(array, i));
  }
  return "(" + text + ")";
}

inline std::string shownDictionary(CFDictionaryRef dictionary) {
  const auto count = static_cast<std::size_t>(CFDictionaryGetCount(dictionary));
  std::vector<const void*> keys(count);
  std::vector<const void*> values(count);
  CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
  std::vector<std::string> entries;
  for (std::size_t i = 0; i < count; ++i) {
    entries.push_back(textOf(static_cast<CFStringRef>(keys[i])) + "=" + shown(values[i]));
  }
  std::sort(entries.begin(), entries.end());
  std::string text;
  for (const std::string& entry : entries) text += (text.empty() ? "" : ", ") + entry;
  return "{" + text + "}";
}

inline std::string shownData(CFDataRef data) {
  std::string text = "<";
  for (const char byte : bytesIn(data)) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(byte & 0xFF));
    text += digits;
  }
  return text + ">";
}

/// A property list as a line: "text" 1 r1.5 f1.5 @0.5 <00ff> true (a, b) {key=value}.
inline std::string shown(CFTypeRef object) {
  if (object == nullptr) return "null";
  const CFTypeID type = CFGetTypeID(object);
  if (type == CFStringGetTypeID()) return '"' + textOf(static_cast<CFStringRef>(object)) + '"';
  if (type == CFNumberGetTypeID()) return shownNumber(static_cast<CFNumberRef>(object));
  if (type == CFBooleanGetTypeID()) return object == kCFBooleanTrue ? "true" : "false";
  if (type == CFDataGetTypeID()) return shownData(static_cast<CFDataRef>(object));
  if (type == CFArrayGetTypeID()) return shownArray(static_cast<CFArrayRef>(object));
  if (type == CFDictionaryGetTypeID()) return shownDictionary(static_cast<CFDictionaryRef>(object));
  char text[40];
  std::snprintf(text, sizeof text, "@%.3f", CFDateGetAbsoluteTime(static_cast<CFDateRef>(object)));
  return text;
}

/// What the bytes mean, or "! " and why they cannot be read.
inline std::string meaning(const std::string& bytes) {
  std::string error;
  const Held<CFTypeRef> list = readList(bytes, &error);
  return list ? shown(list.get()) : "! " + error;
}

/// XML around an element.
inline std::string xmlOf(const std::string& body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
         "<plist version=\"1.0\">\n" +
         body + "</plist>\n";
}

/// A binary property list made object by object, each given as its bytes; references are one byte
/// wide, and so are offsets while they fit.
class BinaryFile final {
 public:
  BinaryFile& object(const std::string& bytes) {
    offsets.push_back(contents.size());
    contents += bytes;
    return *this;
  }
  std::string bytes(std::size_t top = 0) const {
    const std::size_t width = contents.size() < 256 ? 1 : 4;
    std::string file = contents;
    for (const std::size_t offset : offsets) append(file, offset, width);
    file.append(6, '\0');
    append(file, width, 1);
    append(file, 1, 1);
    append(file, offsets.size(), 8);
    append(file, top, 8);
    append(file, contents.size(), 8);
    return file;
  }
  static void append(std::string& to, std::uint64_t value, std::size_t width) {
    for (std::size_t i = width; i > 0; --i) to += static_cast<char>(value >> 8 * (i - 1) & 0xFF);
  }

 private:
  std::string contents = "bplist00";
  std::vector<std::size_t> offsets;
};

}  // namespace tests

#endif
