// Licence: MIT, see LICENSE.
// Buffers for the string calls, and Pascal strings in tests.
#ifndef TESTS_UTIL_DESTINATION_H
#define TESTS_UTIL_DESTINATION_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace tests {

/// A Pascal string with room for more; longer texts keep a length byte of their length modulo 256.
inline std::string pascal(std::string_view text) {
  return static_cast<char>(text.size()) + std::string(text);
}

inline const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

/// A buffer between bytes that must stay as they are. Nothing that tests write has the byte 0xEE,
/// by which the untouched bytes are known.
class Destination final {
 public:
  explicit Destination(std::string_view contents = {}) {
    bytes.fill(kUntouched);
    std::copy(contents.begin(), contents.end(), begin());
  }

  char* chars() { return begin(); }
  unsigned char* pascalBytes() { return reinterpret_cast<unsigned char*>(begin()); }

  /// From the start of the buffer to the last byte that is not untouched. Behind a byte before the
  /// buffer nothing is what it should be.
  std::string written() const {
    for (std::size_t i = 0; i < kBefore; ++i) {
      if (bytes[i] != kUntouched) return "written before the buffer";
    }
    std::size_t end = bytes.size();
    while (end > kBefore && bytes[end - 1] == kUntouched) --end;
    return {bytes.data() + kBefore, end - kBefore};
  }

 private:
  static constexpr char kUntouched = '\xEE';
  static constexpr std::size_t kBefore = 16;

  char* begin() { return bytes.data() + kBefore; }

  std::array<char, kBefore + 1200> bytes;
};

}  // namespace tests

#endif
