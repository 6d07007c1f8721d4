// Licence: MIT, see LICENSE.
// MacRoman to and from Unicode. Every MacRoman character has one in Unicode, and no two the same,
// so that what was converted to Unicode converts back to itself.
#ifndef PLATFORM_TEXT_MACROMAN_H
#define PLATFORM_TEXT_MACROMAN_H

#include <CarbonCore/MacTypes.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace platform::text {

/// The most bytes of UTF-8 that one MacRoman character takes.
constexpr std::size_t kUTF8PerMacRoman = 3;

UniChar fromMacRoman(UInt8 byte);
std::optional<UInt8> toMacRoman(UniChar unit);

/// Where a conversion stopped.
struct Converted {
  std::size_t taken = 0;  // bytes of the source
  std::size_t made = 0;   // bytes of the destination
};

/// Writes as UTF-8 as many characters as there is room for.
Converted macRomanToUTF8(std::string_view macRoman, char* buffer, std::size_t room);

/// Writes as MacRoman what there is room for, up to the first character that MacRoman lacks or that
/// is not well-formed UTF-8.
Converted macRomanFromUTF8(std::string_view utf8, char* buffer, std::size_t room);

/// The whole of a text. std::bad_alloc is the caller's.
std::string utf8FromMacRoman(std::string_view macRoman);
/// Nothing if some of it is no MacRoman character or no UTF-8.
std::optional<std::string> macRomanFromUTF8(std::string_view utf8);

}  // namespace platform::text

#endif
