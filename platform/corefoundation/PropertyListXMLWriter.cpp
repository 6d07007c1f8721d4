// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "platform/corefoundation/Base64.h"
#include "platform/corefoundation/CalendarDate.h"
#include "platform/corefoundation/PropertyListBuilder.h"
#include "platform/corefoundation/PropertyListWriting.h"
#include "platform/corefoundation/StringObject.h"

namespace platform::corefoundation {

namespace {

constexpr std::string_view kBegin =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
constexpr std::string_view kEnd = "</plist>\n";

// A line of data has so many columns, with tabs of eight; deeper than that it is not indented.
constexpr int kLineWidth = 76;
constexpr int kTabWidth = 8;
constexpr int kMostDataTabs = 8;

class XMLWriter final {
 public:
  explicit XMLWriter(std::string& target) : to(target) {}

  // Null, or why it cannot be written.
  const char* write(CFTypeRef object, int depth);

 private:
  void indent(int depth) { to.append(static_cast<std::size_t>(depth), '\t'); }
  void element(std::string_view name, std::string_view content);
  const char* writeText(std::string_view name, CFStringRef string);
  bool appendEscaped(const TextView& text);
  void appendCharacter(char c);
  void writeInteger(CFNumberRef number);
  void writeReal(CFNumberRef number);
  const char* writeDate(CFDateRef date);
  void writeData(CFDataRef data, int depth);
  const char* writeArray(CFArrayRef array, int depth);
  const char* writeDictionary(CFDictionaryRef dictionary, int depth);

  std::string& to;
};

void XMLWriter::element(std::string_view name, std::string_view content) {
  to.append("<").append(name).append(">").append(content);
  to.append("</").append(name).append(">\n");
}

void XMLWriter::appendCharacter(char c) {
  if (c == '&') {
    to += "&amp;";
  } else if (c == '<') {
    to += "&lt;";
  } else if (c == '>') {
    to += "&gt;";
  } else {
    to += c;
  }
}

bool XMLWriter::appendEscaped(const TextView& text) {
  for (CFIndex i = 0; i < text.length;) {
    const UniChar unit = text[i];
    if (unit < 0x80) {
      appendCharacter(static_cast<char>(unit));
      ++i;
      continue;
    }
    const bool hasNext = i + 1 < text.length;
    const UniChar units[] = {unit, hasNext ? text[i + 1] : UniChar{}};
    const EncodedCharacter made = encodeFirst(Units(units, hasNext ? 2 : 1), kCFStringEncodingUTF8);
    if (made.size == 0) return false;
    to.append(reinterpret_cast<const char*>(made.bytes), static_cast<std::size_t>(made.size));
    i += made.units;
  }
  return true;
}

const char* XMLWriter::writeText(std::string_view name, CFStringRef string) {
  to.append("<").append(name).append(">");
  if (!appendEscaped(stringOf(string)->text())) return "a text has half a character";
  to.append("</").append(name).append(">\n");
  return nullptr;
}

void XMLWriter::writeInteger(CFNumberRef number) {
  SInt64 value = 0;
  CFNumberGetValue(number, kCFNumberSInt64Type, &value);
  element("integer", std::to_string(value));
}

void XMLWriter::writeReal(CFNumberRef number) {
  double value = 0;
  CFNumberGetValue(number, kCFNumberFloat64Type, &value);
  if (std::isnan(value)) return element("real", "nan");
  if (std::isinf(value)) return element("real", value > 0 ? "+infinity" : "-infinity");
  if (value == 0) return element("real", std::signbit(value) ? "-0.0" : "0.0");
  constexpr int kDigits = 17;
  char text[40];
  const auto made =
      std::to_chars(std::begin(text), std::end(text), value, std::chars_format::general, kDigits);
  element("real", std::string_view(text, static_cast<std::size_t>(made.ptr - text)));
}

const char* XMLWriter::writeDate(CFDateRef date) {
  const std::optional<std::string> text = formatDate(CFDateGetAbsoluteTime(date));
  if (!text) return "a date is outside the years 1 to 9999";
  element("date", *text);
  return nullptr;
}

void XMLWriter::writeData(CFDataRef data, int depth) {
  const int tabs = std::min(depth, kMostDataTabs);
  const auto each = static_cast<std::size_t>(kLineWidth - tabs * kTabWidth) / 4 * 3;
  Bytes bytes(CFDataGetBytePtr(data), static_cast<std::size_t>(CFDataGetLength(data)));
  to += "<data>\n";
  while (!bytes.empty()) {
    const Bytes line = bytes.first(std::min(each, bytes.size()));
    indent(tabs);
    appendBase64(to, line);
    to += '\n';
    bytes = bytes.subspan(line.size());
  }
  indent(tabs);
  to += "</data>\n";
}

const char* XMLWriter::writeArray(CFArrayRef array, int depth) {
  const CFIndex count = CFArrayGetCount(array);
  if (count == 0) {
    to += "<array/>\n";
    return nullptr;
  }
  to += "<array>\n";
  for (CFIndex i = 0; i < count; ++i) {
    if (const char* reason = write(CFArrayGetValueAtIndex(array, i), depth + 1)) return reason;
  }
  indent(depth);
  to += "</array>\n";
  return nullptr;
}

const char* XMLWriter::writeDictionary(CFDictionaryRef dictionary, int depth) {
  const auto entries = sortedEntries(dictionary);
  if (!entries) return kNoTextKey;
  if (entries->empty()) {
    to += "<dict/>\n";
    return nullptr;
  }
  to += "<dict>\n";
  for (const auto& [key, value] : *entries) {
    indent(depth + 1);
    if (const char* reason = writeText("key", key)) return reason;
    if (const char* reason = write(value, depth + 1)) return reason;
  }
  indent(depth);
  to += "</dict>\n";
  return nullptr;
}

const char* XMLWriter::write(CFTypeRef object, int depth) {
  const NodeKind kind = nodeKind(object);
  const bool isContainer = kind == NodeKind::kArray || kind == NodeKind::kDictionary;
  if (isContainer && depth >= kMaximumDepth) return kTooDeepToWrite;
  indent(depth);
  switch (kind) {
    case NodeKind::kString:
      return writeText("string", static_cast<CFStringRef>(object));
    case NodeKind::kInteger:
      writeInteger(static_cast<CFNumberRef>(object));
      return nullptr;
    case NodeKind::kReal:
      writeReal(static_cast<CFNumberRef>(object));
      return nullptr;
    case NodeKind::kBoolean:
      to += object == kCFBooleanTrue ? "<true/>\n" : "<false/>\n";
      return nullptr;
    case NodeKind::kDate:
      return writeDate(static_cast<CFDateRef>(object));
    case NodeKind::kData:
      writeData(static_cast<CFDataRef>(object), depth);
      return nullptr;
    case NodeKind::kArray:
      return writeArray(static_cast<CFArrayRef>(object), depth);
    case NodeKind::kDictionary:
      return writeDictionary(static_cast<CFDictionaryRef>(object), depth);
    case NodeKind::kNone:
      break;
  }
  return kNoList;
}

}  // namespace

const char* writeXML(CFPropertyListRef list, std::string& to) {
  to = kBegin;
  if (const char* reason = XMLWriter(to).write(list, 0)) return reason;
  to += kEnd;
  return nullptr;
}

}  // namespace platform::corefoundation
