// Licence: MIT, see LICENSE.
// Bytes under construction, numbers big-endian.
#ifndef PLATFORM_RESOURCES_BYTEBUFFER_H
#define PLATFORM_RESOURCES_BYTEBUFFER_H

#include <CarbonCore/MacTypes.h>

#include <cstddef>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace platform::resources {

class ByteBuffer {
 public:
  std::size_t size() const { return contents.size(); }
  std::span<const std::byte> bytes() const { return contents; }
  std::vector<std::byte> take() { return std::exchange(contents, {}); }

  /// Appends the low `width` bytes of a number.
  void put(UInt32 value, std::size_t width) {
    for (std::size_t i = width; i > 0; --i) {
      contents.push_back(static_cast<std::byte>(value >> (8 * (i - 1))));
    }
  }
  void zeros(std::size_t count) { contents.resize(contents.size() + count); }
  void append(std::span<const std::byte> more) {
    contents.insert(contents.end(), more.begin(), more.end());
  }
  void append(std::string_view text) { append(std::as_bytes(std::span(text))); }
  /// The text must have at most 255 characters.
  void putPascalString(std::string_view text) {
    put(static_cast<UInt32>(text.size()), 1);
    append(text);
  }
  /// Overwrites two bytes inside.
  void patch16(std::size_t offset, UInt16 value) {
    contents[offset] = static_cast<std::byte>(value >> 8);
    contents[offset + 1] = static_cast<std::byte>(value);
  }

 private:
  std::vector<std::byte> contents;
};

}  // namespace platform::resources

#endif
