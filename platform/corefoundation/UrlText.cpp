// Licence: MIT, see LICENSE.
#include "platform/corefoundation/UrlText.h"

#include <algorithm>
#include <utility>

namespace platform::corefoundation {

namespace {

constexpr std::string_view kRootVolume = "Macintosh HD";
constexpr std::string_view kVolumes = "/Volumes/";
constexpr std::string_view kMarks = "-_.!~*'()";
constexpr std::string_view kReserved = ";/?:@&=+$,";
constexpr std::string_view kPathReserved = "/:@&=+$,";

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr bool isAmong(char c, std::string_view set) {
  return set.find(c) != std::string_view::npos;
}
bool isUnreserved(char c) { return isLetter(c) || isDigit(c) || isAmong(c, kMarks); }

std::size_t schemeLength(std::string_view text) {
  const auto isPart = [](char c) { return isLetter(c) || isDigit(c) || isAmong(c, "+-."); };
  if (text.empty() || !isLetter(text.front())) return 0;
  const auto end = std::ranges::find_if_not(text, isPart);
  return end != text.end() && *end == ':' ? static_cast<std::size_t>(end - text.begin()) : 0;
}

// Names of a path, one after the other; the last one may be empty.
class Names final {
 public:
  Names(std::string_view path, char separatorMark) : rest(path), separator(separatorMark) {}

  bool next(std::string_view& name) {
    if (isDone) return false;
    const std::size_t end = rest.find(separator);
    name = rest.substr(0, end);
    isDone = end == std::string_view::npos;
    if (!isDone) rest.remove_prefix(end + 1);
    return true;
  }
  bool isLast() const { return isDone; }

 private:
  std::string_view rest;
  const char separator;
  bool isDone = false;
};

// Takes "." and ".." out of an absolute path.
std::string withoutDots(std::string_view path) {
  std::string made = "/";
  Names names(path.substr(1), '/');
  for (std::string_view name; names.next(name);) {
    if (name == "..") {
      made.erase(made.find_last_of('/', made.size() < 2 ? 0 : made.size() - 2) + 1);
    } else if (name != ".") {
      made += name;
      if (!names.isLast()) made += '/';
    }
  }
  return made;
}

std::string_view withoutFragment(std::string_view rest) { return rest.substr(0, rest.find('#')); }

std::string exchanged(std::string_view name) {
  std::string made(name);
  for (char& c : made) {
    if (c == '/' || c == ':') c = c == '/' ? ':' : '/';
  }
  return made;
}

}  // namespace

bool isUrlLegal(char character) { return isUnreserved(character) || isAmong(character, kReserved); }

unsigned digitValue(char digit) {
  return static_cast<unsigned>(isDigit(digit) ? digit - '0' : (digit | 0x20) - 'a' + 10);
}

bool isLegalUrl(std::string_view text) {
  bool hasFragment = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%') {
      if (i + 2 >= text.size() || !isHexDigit(text[i + 1]) || !isHexDigit(text[i + 2]))
        return false;
    } else if (text[i] == '#') {
      if (std::exchange(hasFragment, true)) return false;
    } else if (!isUrlLegal(text[i]) && !isAmong(text[i], "[]")) {
      return false;
    }
  }
  return true;
}

UrlParts splitUrl(std::string_view text) {
  UrlParts parts;
  if (const std::size_t length = schemeLength(text)) {
    parts.scheme = text.substr(0, length);
    text.remove_prefix(length + 1);
  }
  if (text.starts_with("//")) {
    text.remove_prefix(2);
    const std::size_t end = std::min(text.find_first_of("/?#"), text.size());
    parts.authority = text.substr(0, end);
    text.remove_prefix(end);
  }
  const std::size_t end = std::min(text.find_first_of(";?#"), text.size());
  parts.path = text.substr(0, end);
  parts.rest = text.substr(end);
  return parts;
}

std::string joinUrl(const UrlParts& parts) {
  std::string made;
  if (parts.scheme) made.append(*parts.scheme) += ':';
  if (parts.authority) made.append("//").append(*parts.authority);
  return made.append(parts.path).append(parts.rest);
}

std::string resolveUrl(const UrlParts& base, const UrlParts& relative) {
  if (relative.scheme) return joinUrl(relative);
  UrlParts made = relative;
  made.scheme = base.scheme;
  if (relative.authority) return joinUrl(made);
  made.authority = base.authority;
  std::string rest(relative.rest);
  std::string path;
  if (relative.path.starts_with('/')) {
    path = relative.path;
  } else if (!relative.path.empty()) {
    path = base.path.substr(0, base.path.rfind('/') + 1);
    if (path.empty()) path = "/";
    path += relative.path;
  } else {
    path = base.path;
    if (rest.empty() || rest.front() == '#') rest.insert(0, withoutFragment(base.rest));
  }
  if (path.starts_with('/')) path = withoutDots(path);
  made.path = path;
  made.rest = rest;
  return joinUrl(made);
}

void appendEscape(std::string& to, char byte) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  to += '%';
  to += kDigits[value >> 4];
  to += kDigits[value & 15];
}

std::string escapePath(std::string_view path) {
  std::string made;
  made.reserve(path.size());
  for (const char c : path) {
    if (isUnreserved(c) || isAmong(c, kPathReserved)) {
      made += c;
    } else {
      appendEscape(made, c);
    }
  }
  return made;
}

std::string unescape(std::string_view text) {
  std::string made;
  made.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isEscape =
        text[i] == '%' && i + 2 < text.size() && isHexDigit(text[i + 1]) && isHexDigit(text[i + 2]);
    made += isEscape ? static_cast<char>(digitValue(text[i + 1]) << 4 | digitValue(text[i + 2]))
                     : text[i];
    if (isEscape) i += 2;
  }
  return made;
}

NameRange lastName(std::string_view path) {
  std::size_t end = path.size();
  while (end > 0 && path[end - 1] == '/') --end;
  const std::size_t slash = path.substr(0, end).rfind('/');
  return {slash == std::string_view::npos ? 0 : slash + 1, end};
}

std::optional<std::size_t> extensionDot(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size()) return std::nullopt;
  return dot;
}

// In this style a folder above is an empty name, which needs a colon behind it at the end.
std::string hfsPathOf(std::string_view posixPath) {
  std::string made = ":";
  bool endsInVolume = posixPath.starts_with(kVolumes);
  if (endsInVolume) {
    made.clear();
    posixPath.remove_prefix(kVolumes.size());
  } else if (posixPath.starts_with('/')) {
    made = std::string(kRootVolume) + ':';
  }
  bool isFirst = true;
  bool endsAbove = false;
  Names names(posixPath, '/');
  for (std::string_view name; names.next(name);) {
    if (name.empty() || name == ".") continue;
    if (!isFirst) {
      made += ':';
      endsInVolume = false;
    }
    isFirst = false;
    endsAbove = name == "..";
    if (!endsAbove) made += exchanged(name);
  }
  if (endsAbove || endsInVolume) made += ':';
  return made;
}

std::string posixPathOf(std::string_view hfsPath) {
  std::string made;
  const std::size_t colon = hfsPath.find(':');
  if (colon == 0) {
    hfsPath.remove_prefix(1);
  } else if (colon != std::string_view::npos) {
    const std::string_view volume = hfsPath.substr(0, colon);
    made = volume == kRootVolume ? "/" : std::string(kVolumes) + exchanged(volume) + '/';
    hfsPath.remove_prefix(colon + 1);
  }
  if (hfsPath.empty()) return made.empty() ? "." : made;
  if (hfsPath.ends_with(':')) hfsPath.remove_suffix(1);
  Names names(hfsPath, ':');
  for (std::string_view name; names.next(name);) {
    made += name.empty() ? ".." : exchanged(name);
    if (!names.isLast()) made += '/';
  }
  return made;
}

}  // namespace platform::corefoundation
