// Licence: MIT, see LICENSE.
// URLs made from others by changing their paths, and the escaping of text.
#include <CoreFoundation/CFURL.h>

#include "platform/corefoundation/StringObject.h"
#include "platform/corefoundation/UrlObject.h"
#include "platform/corefoundation/WithoutMemory.h"

namespace platform::corefoundation {

namespace {

// The URL with what `change` makes of its path.
template <typename Change>
CFURLRef withPath(CFAllocatorRef allocator, CFURLRef url, Change change) {
  if (!CFURLCanBeDecomposed(url)) return nullptr;
  return nullWithoutMemory([&]() -> CFURLRef {
    const Url* object = urlOf(url);
    UrlParts parts = object->parts();
    const std::optional<std::string> path = change(parts.path);
    if (!path) return nullptr;
    parts.path = *path;
    return Url::make(allocator, joinUrl(parts), object->base.get());
  });
}

bool contains(CFStringRef set, UniChar character) {
  const CFIndex length = CFStringGetLength(set);
  for (CFIndex i = 0; i < length; ++i) {
    if (CFStringGetCharacterAtIndex(set, i) == character) return true;
  }
  return false;
}

// Whether an escape at this place of the text starts a character that is to stay escaped.
bool staysEscaped(std::string_view text, std::size_t at, CFStringRef leaveEscaped) {
  const char byte = static_cast<char>(digitValue(text[at + 1]) << 4 | digitValue(text[at + 2]));
  return (byte & 0x80) == 0 && contains(leaveEscaped, static_cast<UniChar>(byte));
}

std::string unescapeBut(std::string_view text, CFStringRef leaveEscaped) {
  std::string made;
  for (std::size_t i = 0; i < text.size();) {
    const bool isEscape =
        text[i] == '%' && i + 2 < text.size() && isHexDigit(text[i + 1]) && isHexDigit(text[i + 2]);
    const std::size_t length = isEscape ? 3 : 1;
    const bool stays = !isEscape || staysEscaped(text, i, leaveEscaped);
    const std::string_view piece = text.substr(i, length);
    made += stays ? std::string(piece) : unescape(piece);
    i += length;
  }
  return made;
}

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url,
                                               CFStringRef component, Boolean isDirectory) {
  return withPath(allocator, url, [&](std::string_view path) -> std::optional<std::string> {
    const std::optional<std::string> name = utf8Of(component);
    if (!name) return std::nullopt;
    std::string made(path);
    if (!made.empty() && !made.ends_with('/')) made += '/';
    made += escapePath(*name);
    if (isDirectory && !made.ends_with('/')) made += '/';
    return made;
  });
}

CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef allocator, CFURLRef url) {
  return withPath(allocator, url, [](std::string_view path) -> std::optional<std::string> {
    const NameRange name = lastName(path);
    const std::string_view last = path.substr(name.begin, name.end - name.begin);
    if (path.empty()) return "../";
    if (last.empty() || last == "..") return std::string(path.substr(0, name.end)) + "/../";
    const std::string_view folder = path.substr(0, name.begin);
    return folder.empty() ? "./" : std::string(folder);
  });
}

CFURLRef CFURLCreateCopyAppendingPathExtension(CFAllocatorRef allocator, CFURLRef url,
                                               CFStringRef extension) {
  return withPath(allocator, url, [&](std::string_view path) -> std::optional<std::string> {
    const std::optional<std::string> text = utf8Of(extension);
    const NameRange name = lastName(path);
    if (!text || name.begin == name.end) return std::nullopt;
    return std::string(path).insert(name.end, '.' + escapePath(*text));
  });
}

CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef allocator, CFURLRef url) {
  return withPath(allocator, url, [](std::string_view path) -> std::optional<std::string> {
    const NameRange name = lastName(path);
    const std::optional<std::size_t> dot =
        extensionDot(path.substr(name.begin, name.end - name.begin));
    std::string made(path);
    if (dot) made.erase(name.begin + *dot, name.end - name.begin - *dot);
    return made;
  });
}

CFStringRef CFURLCreateStringByReplacingPercentEscapes(CFAllocatorRef allocator, CFStringRef text,
                                                       CFStringRef leaveEscaped) {
  if (leaveEscaped == nullptr) return CFStringCreateCopy(allocator, text);
  return nullWithoutMemory([&]() -> CFStringRef {
    const std::optional<std::string> bytes = utf8Of(text);
    return bytes ? copyOfUTF8(allocator, unescapeBut(*bytes, leaveEscaped)) : nullptr;
  });
}

CFStringRef CFURLCreateStringByAddingPercentEscapes(CFAllocatorRef allocator, CFStringRef text,
                                                    CFStringRef leaveUnescaped,
                                                    CFStringRef escapeToo,
                                                    CFStringEncoding encoding) {
  const String* object = stringOf(text);
  if (object == nullptr || !isByteEncoding(encoding)) return nullptr;
  const Held made(CFStringCreateMutable(nullptr, 0));
  const TextView& view = object->text();
  for (CFIndex i = 0; i < view.length;) {
    const UniChar units[] = {view[i], i + 1 < view.length ? view[i + 1] : UniChar{}};
    const bool isLegal = units[0] < 0x80 && isUrlLegal(static_cast<char>(units[0]));
    const EncodedCharacter character =
        encodeFirst(Units(units, i + 1 < view.length ? 2 : 1), encoding);
    if (isLegal ? !contains(escapeToo, units[0]) : contains(leaveUnescaped, units[0])) {
      CFStringAppendCharacters(made.get(), units, character.units);
    } else {
      if (character.size == 0) return nullptr;
      for (CFIndex byte = 0; byte < character.size; ++byte) {
        CFStringAppendFormat(made.get(), nullptr, CFSTR("%%%02X"), character.bytes[byte]);
      }
    }
    i += character.units;
  }
  return CFStringCreateCopy(allocator, made.get());
}
