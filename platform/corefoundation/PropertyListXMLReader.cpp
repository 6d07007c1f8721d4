// Licence: MIT, see LICENSE.
// Reads XML in one pass over the text. Only the entities of XML itself and characters by number are
// known: a document type is skipped, whatever it declares, so that nothing in it can expand.
#include <algorithm>
#include <charconv>
#include <limits>
#include <vector>

#include "platform/corefoundation/Base64.h"
#include "platform/corefoundation/CalendarDate.h"
#include "platform/corefoundation/PropertyListReading.h"

namespace platform::corefoundation {

namespace {

struct Tag {
  std::string_view name;
  std::size_t offset = 0;
  bool isEnd = false;
  bool isEmpty = false;
};

struct Entity {
  std::string_view name;
  char character;
};
constexpr Entity kEntities[] = {
    {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

constexpr UInt32 kLastCodePoint = 0x10FFFF;

bool isNameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '_' || c == '.' || c == ':' || (c & 0x80) != 0;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

void appendUTF8(std::string& to, UInt32 character) {
  const UniChar high = static_cast<UniChar>(0xD800 + ((character - 0x10000) >> 10));
  const UniChar units[] = {character < 0x10000 ? static_cast<UniChar>(character) : high,
                           static_cast<UniChar>(0xDC00 + (character & 0x3FF))};
  const EncodedCharacter made =
      encodeFirst(Units(units, character < 0x10000 ? 1 : 2), kCFStringEncodingUTF8);
  to.append(reinterpret_cast<const char*>(made.bytes), static_cast<std::size_t>(made.size));
}

// The character of "#65" or "#x41", if it is one that text can have.
std::optional<UInt32> characterByNumber(std::string_view reference) {
  reference.remove_prefix(1);
  const bool isHex = reference.starts_with('x');
  if (isHex) reference.remove_prefix(1);
  UInt32 value = 0;
  const char* const end = reference.data() + reference.size();
  const auto parsed = std::from_chars(reference.data(), end, value, isHex ? 16 : 10);
  const bool isWhole = parsed.ec == std::errc() && parsed.ptr == end;
  if (!isWhole || value > kLastCodePoint || (value >= 0xD800 && value < 0xE000))
    return std::nullopt;
  return value;
}

std::optional<SInt64> parseInteger(std::string_view text) {
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text.remove_prefix(1);
  const bool isHex = text.starts_with("0x") || text.starts_with("0X");
  if (isHex) text.remove_prefix(2);
  UInt64 magnitude = 0;
  const char* const end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, magnitude, isHex ? 16 : 10);
  constexpr UInt64 kHighest = std::numeric_limits<SInt64>::max();
  if (parsed.ec != std::errc() || parsed.ptr != end) return std::nullopt;
  if (magnitude > kHighest + (isNegative ? 1 : 0)) return std::nullopt;
  return static_cast<SInt64>(isNegative ? 0 - magnitude : magnitude);
}

std::optional<double> parseReal(std::string_view text) {
  if (text.starts_with("+-")) return std::nullopt;
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, value);  // knows nan, inf and infinity
  if (parsed.ec != std::errc() || parsed.ptr != end) return std::nullopt;
  return value;
}

class XMLReader final {
 public:
  XMLReader(std::string_view source, const PropertyListBuilder& maker, ReadingFault& firstFault)
      : text(source), builder(maker), fault(firstFault) {}

  Held<CFTypeRef> readDocument();

 private:
  using Value = Held<CFTypeRef>;

  bool fail(const char* reason, std::size_t where) {
    fault.set(reason, where);
    return false;
  }
  bool fail(const char* reason) { return fail(reason, at); }
  Value failed(const char* reason, std::size_t where) {
    fault.set(reason, where);
    return {};
  }
  Value made(Value value, const Tag& tag) {
    return value ? std::move(value) : failed(kNoMemory, tag.offset);
  }
  bool startsWith(std::string_view what) const { return text.substr(at).starts_with(what); }
  void skipBlanks() {
    while (at < text.size() && isBlank(text[at])) ++at;
  }

  bool skipBehind(std::string_view mark, const char* reason);
  bool skipDocumentType();
  bool skipMarkup(bool& skipped);
  bool skipMisc();
  bool skipAttributes();
  bool readTag(Tag& tag);
  bool readNextTag(Tag& tag);
  bool readEnd(const Tag& start);

  bool appendEntity();
  bool readContent(const Tag& tag, std::string_view& content);
  bool readLongContent(const Tag& tag, std::string_view& content);

  Value readValue(const Tag& tag, int depth);
  Value readString(const Tag& tag);
  Held<CFStringRef> readKey(const Tag& tag);
  Value readBoolean(const Tag& tag);
  Value readInteger(const Tag& tag);
  Value readReal(const Tag& tag);
  Value readDate(const Tag& tag);
  Value readData(const Tag& tag);
  Value readArray(const Tag& tag, int depth);
  Value readDictionary(const Tag& tag, int depth);
  bool readEntry(const Value& dictionary, const Tag& key, int depth);

  const std::string_view text;
  const PropertyListBuilder& builder;
  ReadingFault& fault;
  std::size_t at = 0;
  std::string scratch;  // content that is not in the text as it stands
  std::vector<UInt8> bytes;
};

bool XMLReader::skipBehind(std::string_view mark, const char* reason) {
  const std::size_t end = text.find(mark, at);
  if (end == std::string_view::npos) return fail(reason);
  at = end + mark.size();
  return true;
}

// With all that it declares: quoted texts, comments and what is in brackets.
bool XMLReader::skipDocumentType() {
  const std::size_t start = at;
  int depth = 0;
  while (at < text.size()) {
    const char c = text[at];
    if (startsWith("<!--")) {
      if (!skipBehind("-->", "the comment does not end")) return false;
      continue;
    }
    ++at;
    if (c == '"' || c == '\'') {
      if (!skipBehind(std::string_view(&c, 1), "the quoted text does not end")) return false;
    } else if (c == '<' || c == '[') {
      ++depth;
    } else if ((c == '>' || c == ']') && --depth <= 0) {
      return true;
    }
  }
  return fail("the document type does not end", start);
}

// A comment or a processing instruction, if one is here.
bool XMLReader::skipMarkup(bool& skipped) {
  skipped = true;
  if (startsWith("<!--")) return skipBehind("-->", "the comment does not end");
  if (startsWith("<?")) return skipBehind("?>", "the processing instruction does not end");
  skipped = false;
  return true;
}

bool XMLReader::skipMisc() {
  for (bool skipped = true; skipped;) {
    skipBlanks();
    if (!skipMarkup(skipped)) return false;
  }
  return true;
}

bool XMLReader::skipAttributes() {
  while (at < text.size() && text[at] != '>' && text[at] != '/') {
    const char c = text[at];
    if (c == '<') return fail("the tag does not end");
    ++at;
    const bool isQuote = c == '"' || c == '\'';
    if (isQuote && !skipBehind(std::string_view(&c, 1), "the attribute does not end")) return false;
  }
  return true;
}

bool XMLReader::readTag(Tag& tag) {
  tag = {};
  tag.offset = at;
  if (at >= text.size()) return fail("the text ends too early");
  if (text[at] != '<') return fail("there is text where a tag should be");
  ++at;
  tag.isEnd = startsWith("/");
  if (tag.isEnd) ++at;
  const std::size_t start = at;
  while (at < text.size() && isNameCharacter(text[at])) ++at;
  tag.name = text.substr(start, at - start);
  if (tag.name.empty()) return fail("the tag has no name", tag.offset);
  if (!skipAttributes()) return false;
  tag.isEmpty = startsWith("/");
  if (tag.isEmpty) ++at;
  if (!startsWith(">") || (tag.isEnd && tag.isEmpty))
    return fail("the tag does not end", tag.offset);
  ++at;
  return true;
}

bool XMLReader::readNextTag(Tag& tag) { return skipMisc() && readTag(tag); }

bool XMLReader::readEnd(const Tag& start) {
  Tag tag;
  if (!readNextTag(tag)) return false;
  if (tag.isEnd && tag.name == start.name) return true;
  return fail("another end tag should be here", tag.offset);
}

Held<CFTypeRef> XMLReader::readDocument() {
  if (!skipMisc()) return {};
  if (startsWith("<!DOCTYPE") && (!skipDocumentType() || !skipMisc())) return {};
  Tag tag;
  if (!readTag(tag)) return {};
  const Tag root = tag;
  const bool isWrapped = root.name == "plist" && !root.isEnd;
  if (isWrapped && root.isEmpty) return failed("the property list is empty", root.offset);
  if (isWrapped && !readNextTag(tag)) return {};
  Value value = readValue(tag, 0);
  if (!value || (isWrapped && !readEnd(root)) || !skipMisc()) return {};
  if (at < text.size()) return failed("there is more behind the property list", at);
  return value;
}

bool XMLReader::appendEntity() {
  const std::size_t start = at;
  constexpr std::size_t kLongestEntity = 12;
  const std::size_t length = text.substr(at, kLongestEntity).find(';');
  if (length == std::string_view::npos) return fail("the entity does not end");
  const std::string_view name = text.substr(at + 1, length - 1);
  at += length + 1;
  if (name.starts_with('#')) {
    const std::optional<UInt32> character = characterByNumber(name);
    if (!character) return fail("there is no such character", start);
    appendUTF8(scratch, *character);
    return true;
  }
  const auto* known = std::ranges::find(kEntities, name, &Entity::name);
  if (known == std::end(kEntities)) return fail("the entity is not known", start);
  scratch += known->character;
  return true;
}

// With entities, sections of character data and comments, into the scratch text.
bool XMLReader::readLongContent(const Tag& tag, std::string_view& content) {
  constexpr std::string_view kSection = "<![CDATA[";
  for (;;) {
    const std::size_t end = std::min(text.find_first_of("<&", at), text.size());
    scratch.append(text.substr(at, end - at));
    at = end;
    if (at == text.size()) return fail("the text ends too early");
    bool skipped = false;
    if (text[at] == '&') {
      if (!appendEntity()) return false;
    } else if (startsWith(kSection)) {
      const std::size_t start = at + kSection.size();
      if (!skipBehind("]]>", "the section does not end")) return false;
      scratch.append(text.substr(start, at - 3 - start));
    } else if (!skipMarkup(skipped)) {
      return false;
    } else if (!skipped) {
      content = scratch;
      return readEnd(tag);
    }
  }
}

bool XMLReader::readContent(const Tag& tag, std::string_view& content) {
  content = {};
  if (tag.isEmpty) return true;
  const std::size_t end = text.find('<', at);
  if (end == std::string_view::npos) return fail("the text ends too early", text.size());
  content = text.substr(at, end - at);
  if (content.find('&') == std::string_view::npos && text.substr(end).starts_with("</")) {
    at = end;
    return readEnd(tag);
  }
  scratch.clear();
  return readLongContent(tag, content);
}

Held<CFTypeRef> XMLReader::readValue(const Tag& tag, int depth) {
  if (tag.isEnd) return failed("there is an end tag where a value should be", tag.offset);
  if (tag.name == "string") return readString(tag);
  if (tag.name == "dict") return readDictionary(tag, depth);
  if (tag.name == "array") return readArray(tag, depth);
  if (tag.name == "integer") return readInteger(tag);
  if (tag.name == "true" || tag.name == "false") return readBoolean(tag);
  if (tag.name == "data") return readData(tag);
  if (tag.name == "real") return readReal(tag);
  if (tag.name == "date") return readDate(tag);
  if (tag.name == "key") return failed("there is a key where a value should be", tag.offset);
  return failed("the element is not known", tag.offset);
}

Held<CFStringRef> XMLReader::readKey(const Tag& tag) {
  std::string_view content;
  const std::size_t start = at;
  if (!readContent(tag, content)) return {};
  Held<CFStringRef> made = builder.text(bytesIn(content), kCFStringEncodingUTF8);
  if (!made) {
    const bool isValid = decodedLength(bytesIn(content), kCFStringEncodingUTF8).has_value();
    fault.set(isValid ? kNoMemory : "the text is not valid UTF-8", start);
  }
  return made;
}

Held<CFTypeRef> XMLReader::readString(const Tag& tag) {
  Held<CFStringRef> string = readKey(tag);
  return string ? made(builder.leaf(Value(string.take())), tag) : Value();
}

Held<CFTypeRef> XMLReader::readBoolean(const Tag& tag) {
  if (!tag.isEmpty && !readEnd(tag)) return {};
  return PropertyListBuilder::boolean(tag.name == "true");
}

Held<CFTypeRef> XMLReader::readInteger(const Tag& tag) {
  std::string_view content;
  if (!readContent(tag, content)) return {};
  const std::optional<SInt64> value = parseInteger(trimmed(content));
  if (!value) return failed("this is no integer of 64 bits", tag.offset);
  return made(builder.integer(*value), tag);
}

Held<CFTypeRef> XMLReader::readReal(const Tag& tag) {
  std::string_view content;
  if (!readContent(tag, content)) return {};
  const std::optional<double> value = parseReal(trimmed(content));
  if (!value) return failed("this is no real number", tag.offset);
  return made(builder.real(*value), tag);
}

Held<CFTypeRef> XMLReader::readDate(const Tag& tag) {
  std::string_view content;
  if (!readContent(tag, content)) return {};
  const std::optional<CFAbsoluteTime> time = parseDate(trimmed(content));
  if (!time) return failed("this is no date", tag.offset);
  return made(builder.date(*time), tag);
}

Held<CFTypeRef> XMLReader::readData(const Tag& tag) {
  std::string_view content;
  if (!readContent(tag, content)) return {};
  bytes.clear();
  if (parseBase64(content, bytes) != content.size()) {
    return failed("the data is not in base 64", tag.offset);
  }
  return made(builder.leaf(Value(builder.data(bytes).take())), tag);
}

Held<CFTypeRef> XMLReader::readArray(const Tag& tag, int depth) {
  if (depth >= kMaximumDepth) return failed(kTooDeep, tag.offset);
  Value array = builder.array();
  if (!array || tag.isEmpty) return made(std::move(array), tag);
  for (Tag next; readNextTag(next);) {
    if (next.isEnd && next.name == tag.name) return array;
    const Value value = readValue(next, depth + 1);
    if (!value) return {};
    if (!PropertyListBuilder::append(array, value)) return failed(kNoMemory, next.offset);
  }
  return {};
}

bool XMLReader::readEntry(const Value& dictionary, const Tag& key, int depth) {
  if (key.isEnd || key.name != "key") return fail("there should be a key here", key.offset);
  const Held<CFStringRef> name = readKey(key);
  Tag tag;
  if (!name || !readNextTag(tag)) return false;
  const Value value = readValue(tag, depth + 1);
  if (!value) return false;
  return PropertyListBuilder::set(dictionary, name, value) || fail(kNoMemory, tag.offset);
}

Held<CFTypeRef> XMLReader::readDictionary(const Tag& tag, int depth) {
  if (depth >= kMaximumDepth) return failed(kTooDeep, tag.offset);
  Value dictionary = builder.dictionary();
  if (!dictionary || tag.isEmpty) return made(std::move(dictionary), tag);
  for (Tag next; readNextTag(next);) {
    if (next.isEnd && next.name == tag.name) return dictionary;
    if (!readEntry(dictionary, next, depth)) return {};
  }
  return {};
}

}  // namespace

Held<CFTypeRef> readXML(std::string_view text, const PropertyListBuilder& builder,
                        ReadingFault& fault) {
  return XMLReader(text, builder, fault).readDocument();
}

}  // namespace platform::corefoundation
