// Licence: MIT, see LICENSE.
#include "platform/resources/ResourceDescription.h"

#include <CarbonCore/Resources.h>

#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

#include "platform/resources/ByteBuffer.h"
#include "platform/resources/DescriptionTokens.h"

namespace platform::resources {
namespace {

constexpr std::size_t kLongestPascalString = 255;

struct Keyword {
  std::string_view word;
  UInt8 value;
};
constexpr Keyword kAttributes[] = {{"sysheap", resSysHeap},
                                   {"purgeable", resPurgeable},
                                   {"locked", resLocked},
                                   {"protected", resProtected},
                                   {"preload", resPreload}};
// Buttons report that they were hit; text does not.
constexpr Keyword kItems[] = {{"button", 4}, {"label", 8 | 128}};

template <std::size_t count>
const Keyword* lookUp(const Keyword (&table)[count], const Token& token) {
  if (token.kind != Token::Kind::kWord) return nullptr;
  for (const Keyword& keyword : table) {
    if (keyword.word == token.text) return &keyword;
  }
  return nullptr;
}

/// Reads one description. Once something is wrong `error` is set and nothing that follows counts.
class Parser final {
 public:
  explicit Parser(std::string_view text) : tokens(text) {}

  std::vector<ResourceContents> resources;
  std::optional<DescriptionError> error;

  void parse() {
    while (!error && tokens.peek().kind != Token::Kind::kEnd) parseResource();
  }

 private:
  void fail(const Token& token, std::string message) {
    if (token.kind == Token::Kind::kBad) message = token.text;
    if (!error) error = DescriptionError{token.line, std::move(message)};
  }

  bool atWord(std::string_view word) const {
    return tokens.peek().kind == Token::Kind::kWord && tokens.peek().text == word;
  }

  void parseResource() {
    if (!atWord("resource")) return fail(tokens.peek(), "expected 'resource'");
    const Token start = tokens.next();
    ResourceContents resource;
    resource.type = code();
    resource.id = static_cast<ResID>(number(2));
    if (tokens.peek().kind == Token::Kind::kString) resource.name = string();
    while (const Keyword* attribute = lookUp(kAttributes, tokens.peek())) {
      resource.attributes |= attribute->value;
      tokens.next();
    }
    if (resource.name.size() > kLongestPascalString) fail(start, "the name is too long");
    for (const ResourceContents& other : resources) {
      if (other.type == resource.type && other.id == resource.id) {
        fail(start, "the resource is described twice");
      }
    }
    itemCount = 0;
    while (!error && tokens.peek().kind != Token::Kind::kEnd && !atWord("resource")) parseField();
    resource.data = buffer.take();
    resources.push_back(std::move(resource));
  }

  void parseField() {
    const Token field = tokens.next();
    if (const Keyword* item = lookUp(kItems, field)) return parseItem(field, item->value);
    if (itemCount > 0) return fail(field, "a list of items holds nothing else");
    if (field.kind != Token::Kind::kWord) return fail(field, "expected the kind of a field");
    if (field.text == "int8") return buffer.put(number(1), 1);
    if (field.text == "int16") return buffer.put(number(2), 2);
    if (field.text == "int32") return buffer.put(number(4), 4);
    if (field.text == "rect") return putRect();
    if (field.text == "code") return buffer.put(code(), 4);
    if (field.text == "pstring") return putPascalString();
    if (field.text == "text") return buffer.append(std::string_view(string()));
    if (field.text == "bytes") return putBytes();
    fail(field, "unknown field '" + field.text + "'");
  }

  void parseItem(const Token& field, UInt8 type) {
    constexpr std::size_t kCountSize = 2;
    if (itemCount == 0 && buffer.size() != 0) {
      return fail(field, "a list of items holds nothing else");
    }
    if (itemCount == 0) buffer.zeros(kCountSize);
    buffer.patch16(0, itemCount++);  // the list keeps its count less one
    buffer.zeros(4);                 // a handle, in memory only
    putRect();
    buffer.put(type, 1);
    putPascalString();
    if (buffer.size() % 2 != 0) buffer.zeros(1);
  }

  void putRect() {
    for (int side = 0; side < 4; ++side) buffer.put(number(2), 2);
  }

  void putPascalString() {
    const Token start = tokens.peek();
    const std::string text = string();
    if (text.size() > kLongestPascalString) return fail(start, "the string is too long");
    buffer.putPascalString(text);
  }

  void putBytes() {
    const Token start = tokens.peek();
    const std::string digits = string();
    std::size_t position = 0;
    while ((position = digits.find_first_not_of(' ', position)) != std::string::npos) {
      UInt8 value = 0;
      const char* first = digits.data() + position;
      const char* last = first + 2;
      if (position + 2 > digits.size() || std::from_chars(first, last, value, 16).ptr != last) {
        return fail(start, "expected pairs of hexadecimal digits");
      }
      buffer.put(value, 1);
      position += 2;
    }
  }

  /// A number that fits the width, signed or unsigned.
  UInt32 number(int width) {
    const Token token = tokens.next();
    std::string_view digits = token.text;
    const bool negative = digits.starts_with('-');
    if (negative) digits.remove_prefix(1);
    const bool hexadecimal = digits.starts_with("0x");
    if (hexadecimal) digits.remove_prefix(2);
    std::uint64_t value = 0;
    const char* end = digits.data() + digits.size();
    const auto read = std::from_chars(digits.data(), end, value, hexadecimal ? 16 : 10);
    if (token.kind != Token::Kind::kWord || read.ec != std::errc() || read.ptr != end) {
      fail(token, "expected a number");
    }
    const std::uint64_t limit = std::uint64_t{1} << (8 * width);
    if (negative ? value > limit / 2 : value >= limit) {
      fail(token, "the number does not fit " + std::to_string(8 * width) + " bits");
    }
    return static_cast<UInt32>(negative ? -value : value);
  }

  UInt32 code() {
    const Token token = tokens.next();
    if (token.kind != Token::Kind::kCode || token.text.size() != 4) {
      fail(token, "expected a code of four characters");
      return 0;
    }
    UInt32 value = 0;
    for (char character : token.text) value = value << 8 | static_cast<unsigned char>(character);
    return value;
  }

  std::string string() {
    if (tokens.peek().kind != Token::Kind::kString) fail(tokens.peek(), "expected a string");
    std::string text;
    while (tokens.peek().kind == Token::Kind::kString) text += tokens.next().text;
    return text;
  }

  DescriptionTokens tokens;
  ByteBuffer buffer;
  UInt16 itemCount = 0;  // of the resource at hand
};

}  // namespace

std::variant<std::vector<ResourceContents>, DescriptionError> parseDescription(
    std::string_view text) {
  Parser parser(text);
  parser.parse();
  if (parser.error) return *parser.error;
  return std::move(parser.resources);
}

}  // namespace platform::resources
