// Licence: MIT, see LICENSE.
#ifndef TESTS_SUPPORT_DEADLINE_H
#define TESTS_SUPPORT_DEADLINE_H

#include <chrono>

namespace tests {

/// What poll() takes to wait until a moment: its milliseconds from now, rounded up, at least 0.
inline int remainingMilliseconds(std::chrono::steady_clock::time_point end) {
  const auto now = std::chrono::steady_clock::now();
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - now).count();
  return left > 0 ? static_cast<int>(left) : 0;
}

}  // namespace tests

#endif
