// Licence: MIT, see LICENSE.
#include "platform/resources/NameComparison.h"

#include <algorithm>

#include "platform/text/Letters.h"

namespace platform::resources {

bool namesAreEqual(std::string_view a, std::string_view b) {
  const auto folded = [](char letter) { return text::capital(static_cast<UInt8>(letter)); };
  return std::ranges::equal(a, b, {}, folded, folded);
}

}  // namespace platform::resources
