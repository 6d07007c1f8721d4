// Licence: MIT, see LICENSE.
#include "platform/appleevents/ByteOrder.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace platform::appleevents {
namespace {

/// Copies elements reversed, as far as there is room for whole ones; gives the bytes done.
template <typename Element, Element (*reverse)(Element)>
std::size_t reverseWhole(Bytes from, WritableBytes to) {
  const std::size_t size = std::min(from.size(), to.size()) / sizeof(Element) * sizeof(Element);
  for (std::size_t at = 0; at < size; at += sizeof(Element)) {
    Element element;
    std::memcpy(&element, from.data() + at, sizeof element);
    element = reverse(element);
    std::memcpy(to.data() + at, &element, sizeof element);
  }
  return size;
}

UInt16 reversed16(UInt16 value) { return __builtin_bswap16(value); }
UInt32 reversed32(UInt32 value) { return __builtin_bswap32(value); }
UInt64 reversed64(UInt64 value) { return __builtin_bswap64(value); }

/// Copies one number, as most data is. Without a loop that would have to be set up for it.
void reorderOne(const std::byte* from, std::byte* to, std::size_t width) {
  const auto copyTo = [=](auto value, auto reverse) {
    std::memcpy(&value, from, sizeof value);
    if (std::endian::native == std::endian::little) value = reverse(value);
    std::memcpy(to, &value, sizeof value);
  };
  if (width == 1) {
    *to = *from;
  } else if (width == 2) {
    copyTo(UInt16{0}, reversed16);
  } else if (width == 4) {
    copyTo(UInt32{0}, reversed32);
  } else {
    copyTo(UInt64{0}, reversed64);
  }
}

std::size_t reverseElements(Bytes from, WritableBytes to, std::size_t width) {
  if (width == 2) return reverseWhole<UInt16, reversed16>(from, to);
  if (width == 4) return reverseWhole<UInt32, reversed32>(from, to);
  return reverseWhole<UInt64, reversed64>(from, to);
}

}  // namespace

std::size_t elementWidth(DescType type) {
  switch (type) {
    case typeSInt16:
    case typeUInt16:
    case typeUnicodeText:
    case typeStyledUnicodeText:
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
    case typeKernelProcessID:
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
  if (from.size() == width && count == width) return reorderOne(from.data(), to.data(), width);
  std::size_t done = 0;
  if (std::endian::native == std::endian::little && width > 1) {
    done = reverseElements(from, to, width);
    if (done < count && done + width <= from.size()) {  // room for a part of one more
      std::reverse_copy(from.begin() + static_cast<std::ptrdiff_t>(done + width - (count - done)),
                        from.begin() + static_cast<std::ptrdiff_t>(done + width),
                        to.begin() + static_cast<std::ptrdiff_t>(done));
      return;
    }
  }
  if (done < count) std::memcpy(to.data() + done, from.data() + done, count - done);
}

}  // namespace platform::appleevents
