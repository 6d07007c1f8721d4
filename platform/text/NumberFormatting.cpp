// Licence: MIT, see LICENSE.
#include <CarbonCore/NumberFormatting.h>

#include <charconv>

void NumToString(SInt32 number, Str255 string) {
  auto* characters = reinterpret_cast<char*>(string + 1);
  const std::to_chars_result written = std::to_chars(characters, characters + 255, number);
  string[0] = static_cast<UInt8>(written.ptr - characters);
}
