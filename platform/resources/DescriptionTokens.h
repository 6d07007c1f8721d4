// Licence: MIT, see LICENSE.
// The words of a resource description.
#ifndef PLATFORM_RESOURCES_DESCRIPTIONTOKENS_H
#define PLATFORM_RESOURCES_DESCRIPTIONTOKENS_H

#include <string>
#include <string_view>

namespace platform::resources {

struct Token {
  enum class Kind { kWord, kString, kCode, kEnd, kBad };
  Kind kind = Kind::kEnd;
  std::string text;  // unquoted; of a bad token what is wrong with it
  int line = 0;
};

class DescriptionTokens final {
 public:
  explicit DescriptionTokens(std::string_view description) : left(description) { advance(); }

  /// The word at hand; the end stays the end and a bad word a bad one.
  const Token& peek() const { return token; }
  Token next();

 private:
  void advance();
  void skipSpace();
  Token quoted(char quote);
  bool appendEscape(std::string& text);

  std::string_view left;
  int line = 1;
  Token token;
};

}  // namespace platform::resources

#endif
