// Licence: MIT, see LICENSE.
// Reading property lists of each form. std::bad_alloc is the caller's.
#ifndef PLATFORM_COREFOUNDATION_PROPERTYLISTREADING_H
#define PLATFORM_COREFOUNDATION_PROPERTYLISTREADING_H

#include <optional>
#include <string>
#include <string_view>

#include "platform/corefoundation/PropertyListBuilder.h"

namespace platform::corefoundation {

/// Why reading failed, and where: the first fault counts.
struct ReadingFault {
  const char* reason = nullptr;
  std::size_t offset = 0;

  void set(const char* why, std::size_t where) {
    if (reason != nullptr) return;
    reason = why;
    offset = where;
  }
};

constexpr const char* kNoMemory = "there is not enough memory";
constexpr const char* kTooDeep = "the nesting is too deep";

/// Each gives the list, or null and sets the fault. Text is UTF-8.
Held<CFTypeRef> readXML(std::string_view text, const PropertyListBuilder& builder,
                        ReadingFault& fault);
Held<CFTypeRef> readOldStyle(std::string_view text, const PropertyListBuilder& builder,
                             ReadingFault& fault);
Held<CFTypeRef> readBinary(Bytes file, const PropertyListBuilder& builder, ReadingFault& fault);

bool isBinary(Bytes file);
/// Whether text, behind blanks, begins as XML does; data of the old style begins with a "<" too.
bool isXML(std::string_view text);

/// A property list's text in UTF-8: itself where it is that, else in `storage`. The encoding is
/// told by a byte order mark, the first character or the XML declaration; what is not XML and not
/// UTF-8 is MacRoman.
std::optional<std::string_view> textOfPropertyList(Bytes file, std::string& storage,
                                                   ReadingFault& fault);

/// Line and column of a place in text, from 1; columns count characters.
struct TextPlace {
  unsigned long line = 1;
  unsigned long column = 1;
};
TextPlace placeOf(std::string_view text, std::size_t offset);

inline bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}
inline Bytes bytesIn(std::string_view text) {
  return {reinterpret_cast<const UInt8*>(text.data()), text.size()};
}

}  // namespace platform::corefoundation

#endif
