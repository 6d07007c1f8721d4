// Licence: MIT, see LICENSE.
#include "platform/resources/DescriptionTokens.h"

#include <charconv>
#include <utility>

namespace platform::resources {
namespace {

constexpr std::string_view kSpace = " \t\r\n";

bool isPlain(char character) {
  const auto code = static_cast<unsigned char>(character);
  return code >= 0x20 && code < 0x7F;
}

}  // namespace

Token DescriptionTokens::next() {
  Token taken = token;
  if (token.kind != Token::Kind::kEnd && token.kind != Token::Kind::kBad) advance();
  return taken;
}

void DescriptionTokens::advance() {
  skipSpace();
  if (left.empty()) {
    token = {Token::Kind::kEnd, {}, line};
  } else if (left.front() == '"' || left.front() == '\'') {
    token = quoted(left.front());
  } else {
    const auto end = left.find_first_of(" \t\r\n\"'#");
    token = {Token::Kind::kWord, std::string(left.substr(0, end)), line};
    left.remove_prefix(token.text.size());
  }
}

void DescriptionTokens::skipSpace() {
  while (!left.empty()) {
    if (left.front() == '#') {
      left.remove_prefix(std::min(left.find('\n'), left.size()));
    } else if (kSpace.find(left.front()) != std::string_view::npos) {
      if (left.front() == '\n') ++line;
      left.remove_prefix(1);
    } else {
      return;
    }
  }
}

Token DescriptionTokens::quoted(char quote) {
  std::string text;
  left.remove_prefix(1);
  while (!left.empty() && left.front() != quote && left.front() != '\n') {
    const char character = left.front();
    left.remove_prefix(1);
    if (character == '\\') {
      if (!appendEscape(text)) return {Token::Kind::kBad, "unknown escape in a string", line};
    } else if (isPlain(character)) {
      text += character;
    } else {
      return {Token::Kind::kBad, "write characters beyond ASCII as \\xNN", line};
    }
  }
  if (left.empty() || left.front() == '\n') {
    return {Token::Kind::kBad, "a string does not end on its line", line};
  }
  left.remove_prefix(1);
  return {quote == '"' ? Token::Kind::kString : Token::Kind::kCode, text, line};
}

bool DescriptionTokens::appendEscape(std::string& text) {
  if (left.empty()) return false;
  const char kind = left.front();
  left.remove_prefix(1);
  if (kind == '"' || kind == '\'' || kind == '\\') {
    text += kind;
    return true;
  }
  if (kind == 'n') {
    text += '\r';
    return true;
  }
  if (kind != 'x' || left.size() < 2) return false;
  unsigned value = 0;
  const char* digits = left.data();
  if (std::from_chars(digits, digits + 2, value, 16).ptr != digits + 2) return false;
  text += static_cast<char>(value);
  left.remove_prefix(2);
  return true;
}

}  // namespace platform::resources
