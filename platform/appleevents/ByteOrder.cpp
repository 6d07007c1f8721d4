// Licence: MIT, see LICENSE.
#include "platform/appleevents/ByteOrder.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace platform::appleevents {
namespace {

/// Copies one element reversed, as far as there is room.
void reverseElement(Bytes element, WritableBytes to) {
  const std::size_t count = std::min(element.size(), to.size());
  for (std::size_t i = 0; i < count; ++i) to[i] = element[element.size() - 1 - i];
}

}  // namespace

std::size_t elementWidth(DescType type) {
  switch (type) {
    case typeSInt16:
    case typeUInt16:
    case typeUnicodeText:
    case typeQDPoint:
    case typeQDRectangle:
      return 2;
    case typeSInt32:
    case typeUInt32:
    case typeIEEE32BitFloatingPoint:
    case typeType:
    case typeEnumerated:
    case typeKeyword:
    case typeProperty:
    case typeApplSignature:
    case typeProcessSerialNumber:
    case typeMachPort:
      return 4;
    case typeSInt64:
    case typeUInt64:
    case typeIEEE64BitFloatingPoint:
    case typeLongDateTime:
      return 8;
    default:
      return 1;
  }
}

void reorder(DescType type, Bytes from, WritableBytes to) {
  const std::size_t count = std::min(from.size(), to.size());
  if (count == 0) return;
  const std::size_t width = elementWidth(type);
  std::size_t done = 0;
  if (std::endian::native == std::endian::little && width > 1) {
    for (; done + width <= from.size() && done < count; done += width) {
      reverseElement(from.subspan(done, width), to.subspan(done));
    }
  }
  if (done < count) std::memcpy(to.data() + done, from.data() + done, count - done);
}

UInt32 loadWord(const std::byte* at) {
  UInt32 value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | std::to_integer<UInt32>(at[i]);
  return value;
}

void storeWord(std::byte* at, UInt32 value) {
  for (int i = 0; i < 4; ++i) at[i] = static_cast<std::byte>(value >> (24 - 8 * i) & 0xFF);
}

}  // namespace platform::appleevents
