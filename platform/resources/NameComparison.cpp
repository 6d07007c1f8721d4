// Licence: MIT, see LICENSE.
#include "platform/resources/NameComparison.h"

#include <algorithm>

namespace platform::resources {
namespace {

// Accented letters of MacRoman, small and capital, position by position.
constexpr std::string_view kSmall =
    "\x8A\x8C\x8D\x8E\x96\x9A\x9F\x88\x8B\x9B\xBE\xBF\xCF\xD8\x89\x90\x87\x91\x8F\x92\x94\x95\x93"
    "\x97\x99\x98\x9C\x9E\x9D";
constexpr std::string_view kCapital =
    "\x80\x81\x82\x83\x84\x85\x86\xCB\xCC\xCD\xAE\xAF\xCE\xD9\xE5\xE6\xE7\xE8\xE9\xEA\xEB\xEC\xED"
    "\xEE\xEF\xF1\xF2\xF3\xF4";
static_assert(kSmall.size() == kCapital.size());

char capital(char letter) {
  if (letter >= 'a' && letter <= 'z') return static_cast<char>(letter - 'a' + 'A');
  const auto position = kSmall.find(letter);
  return position == std::string_view::npos ? letter : kCapital[position];
}

}  // namespace

bool namesAreEqual(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, capital, capital);
}

}  // namespace platform::resources
