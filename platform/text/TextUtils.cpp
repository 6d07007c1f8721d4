// Licence: MIT, see LICENSE.
#include <CarbonCore/TextUtils.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t kLongestPascalString = 255;

}  // namespace

void c2pstrcpy(Str255 destination, const char* source) {
  const std::size_t length = source == nullptr ? 0 : std::strlen(source);
  const std::size_t taken = std::min(length, kLongestPascalString);
  if (taken > 0) std::memmove(destination + 1, source, taken);
  destination[0] = static_cast<UInt8>(taken);
}

void p2cstrcpy(char* destination, ConstStr255Param source) {
  const std::size_t length = source == nullptr ? 0 : source[0];
  if (length > 0) std::memmove(destination, source + 1, length);
  destination[length] = '\0';
}
