// Licence: MIT, see LICENSE.
// Pascal strings in tests.
#ifndef TESTS_PLATFORM_TEXT_PASCALTEXT_H
#define TESTS_PLATFORM_TEXT_PASCALTEXT_H

#include <CarbonCore/MacTypes.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace tests {

/// A Pascal string of up to 255 characters.
class PascalText final {
 public:
  PascalText(std::string_view text) {
    const std::size_t length = std::min<std::size_t>(text.size(), 255);
    bytes[0] = static_cast<UInt8>(length);
    std::copy_n(text.begin(), length, bytes + 1);
  }
  operator ConstStr255Param() const { return bytes; }

 private:
  Str255 bytes{};
};

inline std::string textOfPascal(ConstStr255Param string) {
  return {reinterpret_cast<const char*>(string + 1), string[0]};
}

}  // namespace tests

#endif
