// Licence: MIT, see LICENSE.
// Numbers travel big-endian. The types listed here are turned between that and the host's order,
// each element of a packed array for itself; bytes of any other type stay as they are.
#ifndef PLATFORM_APPLEEVENTS_BYTEORDER_H
#define PLATFORM_APPLEEVENTS_BYTEORDER_H

#include "platform/appleevents/Storage.h"

namespace platform::appleevents {

/// Bytes of one element of a type: 1 where the order makes no difference.
std::size_t elementWidth(DescType type);

/// Copies data of a type between the two orders, either way, as far as `to` has room: the result is
/// the beginning of what the whole would be. Bytes behind the last whole element stay as they are.
void reorder(DescType type, Bytes from, WritableBytes to);

/// One big-endian word. Walks through items do little else, so these are one instruction where the
/// machine has it.
inline UInt32 loadWord(const std::byte* at) {
  const auto byte = [at](int i) { return std::to_integer<UInt32>(at[i]); };
  return byte(0) << 24 | byte(1) << 16 | byte(2) << 8 | byte(3);
}
inline void storeWord(std::byte* at, UInt32 value) {
  at[0] = static_cast<std::byte>(value >> 24);
  at[1] = static_cast<std::byte>(value >> 16 & 0xFF);
  at[2] = static_cast<std::byte>(value >> 8 & 0xFF);
  at[3] = static_cast<std::byte>(value & 0xFF);
}

}  // namespace platform::appleevents

#endif
