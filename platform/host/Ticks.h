// Licence: MIT, see LICENSE.
// The Toolbox's measure of time, a sixtieth of a second.
#ifndef PLATFORM_HOST_TICKS_H
#define PLATFORM_HOST_TICKS_H

#include <cstdint>

#include "platform/host/Clock.h"

namespace platform::host {

inline constexpr std::int64_t kTicksPerSecond = 60;
inline constexpr Nanoseconds kNanosecondsPerSecond = 1'000'000'000;

/// The tick count at a time of the monotonic clock. It wraps after more than two years.
constexpr std::uint32_t ticksAt(Nanoseconds monotonic) {
  const Nanoseconds seconds = monotonic / kNanosecondsPerSecond;
  const Nanoseconds rest = monotonic % kNanosecondsPerSecond;
  return static_cast<std::uint32_t>(seconds * kTicksPerSecond +
                                    rest * kTicksPerSecond / kNanosecondsPerSecond);
}

/// A span of ticks, the 64-bit product of which never overflows.
constexpr Nanoseconds ticksSpan(std::uint32_t ticks) {
  return static_cast<Nanoseconds>(ticks) * kNanosecondsPerSecond / kTicksPerSecond;
}

}  // namespace platform::host

#endif
