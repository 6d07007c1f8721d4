// Licence: MIT, see LICENSE.
// Reads old-style text: { key = value; }, ( value, value ), <data in hexadecimal>, "quoted" and
// plain text. Entries without braces around them are a table of strings.
#include <algorithm>
#include <vector>

#include "platform/corefoundation/NextStepLetters.h"
#include "platform/corefoundation/PropertyListReading.h"
#include "platform/corefoundation/UrlText.h"

namespace platform::corefoundation {

namespace {

constexpr std::string_view kPlainMarks = "_$/:.-";

bool isPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         kPlainMarks.find(c) != std::string_view::npos;
}

bool isOctal(char c) { return c >= '0' && c <= '7'; }

UniChar controlCharacter(char letter) {
  constexpr std::string_view kEscapeLetters = "abfnrtv";
  constexpr std::string_view kEscapedControls = "\a\b\f\n\r\t\v";
  const std::size_t index = kEscapeLetters.find(letter);
  const char character = index != std::string_view::npos ? kEscapedControls[index] : letter;
  return static_cast<UniChar>(character);
}

class OldStyleReader final {
 public:
  OldStyleReader(std::string_view source, const PropertyListBuilder& maker,
                 ReadingFault& firstFault)
      : text(source), builder(maker), fault(firstFault) {}

  Held<CFTypeRef> readDocument();

 private:
  using Value = Held<CFTypeRef>;
  using Text = Held<CFStringRef>;

  bool fail(const char* reason, std::size_t where) {
    fault.set(reason, where);
    return false;
  }
  Value failed(const char* reason, std::size_t where) {
    fault.set(reason, where);
    return {};
  }

  // At the next character that counts, or at the end. False only for a comment without end.
  bool skip();
  bool isAt(char c) const { return at < text.size() && text[at] == c; }
  bool isAtText() const {
    return isAt('"') || isAt('\'') || (at < text.size() && isPlain(text[at]));
  }

  Value readValue(int depth);
  Value leaf(Text string);
  Text readText();
  Text textFrom(std::string_view content, std::size_t where);
  Text readQuoted();
  Text readEscaped(std::size_t start, char quote);
  bool appendPiece(std::string_view piece, std::size_t where);
  void appendEscape();
  UniChar readDigits(std::size_t most, unsigned base);
  Value readData();
  Value readArray(int depth);
  Value readDictionary(int depth);
  bool readEntries(const Value& dictionary, int depth);
  bool readEntry(const Value& dictionary, int depth);

  const std::string_view text;
  const PropertyListBuilder& builder;
  ReadingFault& fault;
  std::size_t at = 0;
  std::vector<UniChar> units;
};

bool OldStyleReader::skip() {
  for (;;) {
    while (at < text.size() && isBlank(text[at])) ++at;
    const std::string_view rest = text.substr(at);
    if (rest.starts_with("//")) {
      at = std::min(text.find_first_of("\r\n", at), text.size());
    } else if (rest.starts_with("/*")) {
      const std::size_t end = text.find("*/", at + 2);
      if (end == std::string_view::npos) return fail("the comment does not end", at);
      at = end + 2;
    } else {
      return true;
    }
  }
}

Held<CFTypeRef> OldStyleReader::readDocument() {
  if (text.empty()) return failed("there is nothing", 0);
  if (!skip()) return {};
  const std::size_t start = at;
  const bool isText = isAtText();
  Value value;
  if (at < text.size()) {
    value = readValue(0);
    if (!value || !skip()) return {};
  }
  if (at == text.size() && value) return value;
  if (value && !(isText && (isAt('=') || isAt(';')))) {
    return failed("there is more behind the property list", at);
  }
  at = start;
  Value table = builder.dictionary();
  if (!table) return failed(kNoMemory, at);
  if (!readEntries(table, 0)) return {};
  return at == text.size() ? table : failed("there should be a key here", at);
}

Held<CFTypeRef> OldStyleReader::readValue(int depth) {
  if (at == text.size()) return failed("the text ends too early", at);
  if (isAtText()) return leaf(readText());
  switch (text[at]) {
    case '{':
      return readDictionary(depth);
    case '(':
      return readArray(depth);
    case '<':
      return readData();
    default:
      return failed("there should be a value here", at);
  }
}

Held<CFTypeRef> OldStyleReader::leaf(Text string) {
  if (!string) return {};
  Value made = builder.leaf(Value(string.take()));
  return made ? std::move(made) : failed(kNoMemory, at);
}

Held<CFStringRef> OldStyleReader::textFrom(std::string_view content, std::size_t where) {
  Text made = builder.text(bytesIn(content), kCFStringEncodingUTF8);
  if (!made) {
    const bool isValid = decodedLength(bytesIn(content), kCFStringEncodingUTF8).has_value();
    fault.set(isValid ? kNoMemory : "the text is not valid UTF-8", where);
  }
  return made;
}

Held<CFStringRef> OldStyleReader::readText() {
  if (isAt('"') || isAt('\'')) return readQuoted();
  const std::size_t start = at;
  while (at < text.size() && isPlain(text[at])) ++at;
  return textFrom(text.substr(start, at - start), start);
}

Held<CFStringRef> OldStyleReader::readQuoted() {
  const std::size_t start = at;
  const char quote = text[at];
  ++at;
  const char ends[] = {quote, '\\'};
  const std::size_t end = text.find_first_of(std::string_view(ends, 2), at);
  if (end == std::string_view::npos) {
    fail("the quoted text does not end", start);
    return {};
  }
  if (text[end] != quote) return readEscaped(start, quote);
  const std::string_view content = text.substr(at, end - at);
  at = end + 1;
  return textFrom(content, start);
}

bool OldStyleReader::appendPiece(std::string_view piece, std::size_t where) {
  const auto length = decodedLength(bytesIn(piece), kCFStringEncodingUTF8);
  if (!length) return fail("the text is not valid UTF-8", where);
  const std::size_t before = units.size();
  units.resize(before + static_cast<std::size_t>(*length));
  decode(bytesIn(piece), kCFStringEncodingUTF8, units.data() + before);
  return true;
}

Held<CFStringRef> OldStyleReader::readEscaped(std::size_t start, char quote) {
  const char ends[] = {quote, '\\'};
  units.clear();
  for (;;) {
    const std::size_t end = text.find_first_of(std::string_view(ends, 2), at);
    const bool isLast = end != std::string_view::npos && end + 1 == text.size();
    if (end == std::string_view::npos || (isLast && text[end] == '\\')) {
      fail("the quoted text does not end", start);
      return {};
    }
    if (!appendPiece(text.substr(at, end - at), start)) return {};
    at = end + 1;
    if (text[end] == quote) break;
    appendEscape();
  }
  Text made = builder.text(units);
  if (!made) fault.set(kNoMemory, start);
  return made;
}

UniChar OldStyleReader::readDigits(std::size_t most, unsigned base) {
  unsigned value = 0;
  for (std::size_t i = 0; i < most && at < text.size(); ++i, ++at) {
    const bool isDigit = base == 8 ? isOctal(text[at]) : isHexDigit(text[at]);
    if (!isDigit) break;
    value = value * base + digitValue(text[at]);
  }
  return static_cast<UniChar>(value);
}

// Behind the backslash, where there is a character.
void OldStyleReader::appendEscape() {
  const char c = text[at];
  if (isOctal(c)) {
    const UniChar code = readDigits(3, 8) & 0xFF;
    units.push_back(code < 0x80 ? code : kNextStepLetters[code - 0x80]);
  } else if (c == 'U' && at + 1 < text.size() && isHexDigit(text[at + 1])) {
    ++at;
    units.push_back(readDigits(4, 16));
  } else if ((c & 0x80) == 0) {
    units.push_back(controlCharacter(c));
    ++at;
  }
}

Held<CFTypeRef> OldStyleReader::readData() {
  const std::size_t start = at;
  std::vector<UInt8> bytes;
  bool isHalf = false;
  for (++at; at < text.size() && text[at] != '>'; ++at) {
    if (isBlank(text[at])) continue;
    if (!isHexDigit(text[at])) return failed("the data is not hexadecimal", at);
    const UInt8 digit = static_cast<UInt8>(digitValue(text[at]));
    if (isHalf) {
      bytes.back() = static_cast<UInt8>(bytes.back() << 4 | digit);
    } else {
      bytes.push_back(digit);
    }
    isHalf = !isHalf;
  }
  if (at == text.size()) return failed("the data does not end", start);
  if (isHalf) return failed("the data has half a byte", at);
  ++at;
  Value made = builder.leaf(Value(builder.data(bytes).take()));
  return made ? std::move(made) : failed(kNoMemory, start);
}

Held<CFTypeRef> OldStyleReader::readArray(int depth) {
  const std::size_t start = at;
  if (depth >= kMaximumDepth) return failed(kTooDeep, start);
  Value array = builder.array();
  if (!array) return failed(kNoMemory, start);
  ++at;
  for (;;) {
    if (!skip()) return {};
    if (isAt(')')) break;
    const Value value = readValue(depth + 1);
    if (!value || !skip()) return {};
    if (!PropertyListBuilder::append(array, value)) return failed(kNoMemory, start);
    if (isAt(')')) break;
    if (!isAt(',')) return failed("there should be a comma or parenthesis here", at);
    ++at;
  }
  ++at;
  return array;
}

Held<CFTypeRef> OldStyleReader::readDictionary(int depth) {
  const std::size_t start = at;
  if (depth >= kMaximumDepth) return failed(kTooDeep, start);
  Value dictionary = builder.dictionary();
  if (!dictionary) return failed(kNoMemory, start);
  ++at;
  if (!readEntries(dictionary, depth)) return {};
  if (!isAt('}')) return failed("there should be a key or brace here", at);
  ++at;
  return dictionary;
}

bool OldStyleReader::readEntries(const Value& dictionary, int depth) {
  for (;;) {
    if (!skip()) return false;
    if (!isAtText()) return true;
    if (!readEntry(dictionary, depth)) return false;
  }
}

// A key without a value has itself for one.
bool OldStyleReader::readEntry(const Value& dictionary, int depth) {
  const std::size_t start = at;
  const Text key = readText();
  if (!key || !skip()) return false;
  Value value;
  if (isAt('=')) {
    ++at;
    if (!skip()) return false;
    value = readValue(depth + 1);
  } else {
    value = leaf(key);
  }
  if (!value || !skip()) return false;
  if (!isAt(';')) return fail("there should be a semicolon here", at);
  ++at;
  return PropertyListBuilder::set(dictionary, key, value) || fail(kNoMemory, start);
}

}  // namespace

Held<CFTypeRef> readOldStyle(std::string_view text, const PropertyListBuilder& builder,
                             ReadingFault& fault) {
  return OldStyleReader(text, builder, fault).readDocument();
}

}  // namespace platform::corefoundation
