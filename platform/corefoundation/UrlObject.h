// Licence: MIT, see LICENSE.
// What a CFURLRef points to: a legal text, perhaps relative to a base.
#ifndef PLATFORM_COREFOUNDATION_URLOBJECT_H
#define PLATFORM_COREFOUNDATION_URLOBJECT_H

#include <CoreFoundation/CFURL.h>

#include <string>

#include "platform/corefoundation/CFRuntime.h"
#include "platform/corefoundation/UrlText.h"

namespace platform::corefoundation {

class Url final : public Object {
 public:
  static CFTypeID type() {
    static const CFTypeID id = registerType("CFURL");
    return id;
  }
  /// Null if the text is not legal or there is no memory.
  static CFURLRef make(CFAllocatorRef allocator, std::string_view text, CFURLRef baseURL);

  Url(Held<CFStringRef> content, Held<CFURLRef> baseURL)
      : string(std::move(content)), base(std::move(baseURL)) {}

  CFTypeID typeID() const override { return type(); }
  bool equals(const Object& other) const override;
  CFHashCode hash() const override { return CFHash(string.get()); }
  CFStringRef copyDescription() const override;
  CFStringRef copyFormatted() const override;

  std::string_view text() const;
  UrlParts parts() const { return splitUrl(text()); }
  /// The text without a need for the base.
  std::string absoluteText() const;
  /// The bytes of the URL's path, without a final slash unless that is all of it. Nothing if there
  /// is none or it has a byte 0.
  std::optional<std::string> filePath() const;

  const Held<CFStringRef> string;  // ASCII, immutable
  const Held<CFURLRef> base;
};

inline const Url* urlOf(CFURLRef reference) { return checkedObject<Url>(reference); }

/// A string's text in UTF-8; nothing if it is no string or has half a character.
std::optional<std::string> utf8Of(CFStringRef string);
/// A string of UTF-8; null if it is not valid.
CFStringRef copyOfUTF8(CFAllocatorRef allocator, std::string_view text);

/// The path of the file that a URL is for, resolved against its base; nothing if it has none, or is
/// for another host or with another scheme.
std::optional<std::string> pathOfFile(CFURLRef url);

}  // namespace platform::corefoundation

#endif
