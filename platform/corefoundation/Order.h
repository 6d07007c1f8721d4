// Licence: MIT, see LICENSE.
#ifndef PLATFORM_COREFOUNDATION_ORDER_H
#define PLATFORM_COREFOUNDATION_ORDER_H

#include <CoreFoundation/CFBase.h>

namespace platform::corefoundation {

/// How two values stand to each other, as comparators answer.
template <typename T>
CFComparisonResult order(T a, T b) {
  if (a == b) return kCFCompareEqualTo;
  return a < b ? kCFCompareLessThan : kCFCompareGreaterThan;
}

}  // namespace platform::corefoundation

#endif
