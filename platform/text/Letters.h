// Licence: MIT, see LICENSE.
// What the letters of MacRoman are to each other.
#ifndef PLATFORM_TEXT_LETTERS_H
#define PLATFORM_TEXT_LETTERS_H

#include <CarbonCore/MacTypes.h>

namespace platform::text {

/// The capital of a small letter, accented ones included; any other character itself.
UInt8 capital(UInt8 character);

/// The letter without its diacritical mark, as U for U with two dots; any other character itself.
/// Ligatures and barred letters are letters of their own.
UInt8 withoutMark(UInt8 character);

/// The place of a character in the order of comparison: that of its code, but for letters with
/// marks, ligatures and barred letters, which stand behind the bare letter they derive from.
UInt16 comparisonOrder(UInt8 character);

}  // namespace platform::text

#endif
