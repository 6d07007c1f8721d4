// Licence: MIT, see LICENSE.
// The text of URLs and the paths in it: splitting, resolving, escaping. Knows no objects.
// std::bad_alloc is the caller's.
#ifndef PLATFORM_COREFOUNDATION_URLTEXT_H
#define PLATFORM_COREFOUNDATION_URLTEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace platform::corefoundation {

/// Components as they stand in the text, which must outlive them.
struct UrlParts {
  std::optional<std::string_view> scheme;
  std::optional<std::string_view> authority;  // behind "//"
  std::string_view path;
  std::string_view rest;  // parameters, query and fragment, each with its mark

  /// Whether what is behind the scheme has components at all.
  bool isDecomposable() const { return !scheme || authority || path.starts_with('/'); }
};

/// Whether the text has only legal characters and whole escapes.
bool isLegalUrl(std::string_view text);
UrlParts splitUrl(std::string_view text);
std::string joinUrl(const UrlParts& parts);
/// What a relative text means at a base.
std::string resolveUrl(const UrlParts& base, const UrlParts& relative);

constexpr bool isHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
/// Of a hexadecimal digit.
unsigned digitValue(char digit);
void appendEscape(std::string& to, char byte);
/// Whether the character stands in a URL for itself.
bool isUrlLegal(char character);

/// A path's bytes as they stand in a URL.
std::string escapePath(std::string_view path);
std::string unescape(std::string_view text);

/// Where the last name of a URL's path begins and ends, before a final slash. The root has none.
struct NameRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};
NameRange lastName(std::string_view path);
/// Where the dot of a name's extension is: not the first character and not the last.
std::optional<std::size_t> extensionDot(std::string_view name);

std::string hfsPathOf(std::string_view posixPath);
std::string posixPathOf(std::string_view hfsPath);

}  // namespace platform::corefoundation

#endif
