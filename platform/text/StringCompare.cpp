// Licence: MIT, see LICENSE.
#include <CarbonCore/StringCompare.h>

#include <algorithm>
#include <span>

#include "platform/text/Letters.h"

namespace platform::text {
namespace {

std::span<const UInt8> characters(ConstStr255Param string) { return {string + 1, string[0]}; }

}  // namespace
}  // namespace platform::text

SInt16 RelString(ConstStr255Param first, ConstStr255Param second, Boolean caseSensitive,
                 Boolean diacriticalSensitive) {
  using namespace platform::text;
  const auto order = [=](UInt8 character) {
    if (diacriticalSensitive == 0) character = withoutMark(character);
    return comparisonOrder(caseSensitive == 0 ? capital(character) : character);
  };
  const auto a = characters(first);
  const auto b = characters(second);
  const auto [inA, inB] = std::ranges::mismatch(a, b, {}, order, order);
  if (inA == a.end()) return inB == b.end() ? SInt16{0} : SInt16{-1};
  if (inB == b.end()) return 1;
  return order(*inA) < order(*inB) ? SInt16{-1} : SInt16{1};
}
