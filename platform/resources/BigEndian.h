// Licence: MIT, see LICENSE.
// Bounded reading of big-endian numbers.
#ifndef PLATFORM_RESOURCES_BIGENDIAN_H
#define PLATFORM_RESOURCES_BIGENDIAN_H

#include <CarbonCore/MacTypes.h>

#include <cstddef>
#include <optional>
#include <span>

namespace platform::resources {

/// The part of a view that starts at an offset, nothing if it does not lie inside whole.
inline std::optional<std::span<const std::byte>> part(std::span<const std::byte> bytes,
                                                      std::size_t offset, std::size_t size) {
  if (offset > bytes.size() || size > bytes.size() - offset) return std::nullopt;
  return bytes.subspan(offset, size);
}

/// Takes numbers and bytes off the front of a view. Once it has run out it stays failed and gives
/// zeros, so that a caller reads a whole structure and asks once.
class Reader {
 public:
  explicit Reader(std::span<const std::byte> bytes) : left(bytes) {}

  bool failed() const { return ranOut; }
  std::size_t remaining() const { return left.size(); }

  std::span<const std::byte> take(std::size_t size) {
    if (size > left.size()) {
      ranOut = true;
      left = {};
      return {};
    }
    auto taken = left.first(size);
    left = left.subspan(size);
    return taken;
  }

  UInt32 number(std::size_t width) {
    UInt32 value = 0;
    for (std::byte byte : take(width)) value = value << 8 | std::to_integer<UInt32>(byte);
    return value;
  }
  UInt8 u8() { return static_cast<UInt8>(number(1)); }
  UInt16 u16() { return static_cast<UInt16>(number(2)); }
  SInt16 s16() { return static_cast<SInt16>(u16()); }
  UInt32 u24() { return number(3); }
  UInt32 u32() { return number(4); }

 private:
  std::span<const std::byte> left;
  bool ranOut = false;
};

}  // namespace platform::resources

#endif
