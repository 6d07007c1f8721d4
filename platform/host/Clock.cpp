// Licence: MIT, see LICENSE.
#include "platform/host/Clock.h"

#include <time.h>

#include <algorithm>

namespace platform::host {

namespace {

// A wait for ever needs no timer of the host's, which each wait would have to set and to cancel.
constexpr Nanoseconds kLongerThanHostsRun = Nanoseconds{1} << 59;  // 18 years

Nanoseconds read(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<Nanoseconds>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

}  // namespace

Nanoseconds monotonicNow() { return read(CLOCK_MONOTONIC); }

Nanoseconds wallNow() { return read(CLOCK_REALTIME); }

Deadline Deadline::after(Nanoseconds span) {
  const Nanoseconds now = monotonicNow();
  if (span <= 0) return Deadline(now);
  if (span >= kLongerThanHostsRun) return never();
  return Deadline(now + span);
}

Nanoseconds Deadline::remaining() const {
  if (isNever()) return when;
  if (isImmediate()) return 0;
  return std::max<Nanoseconds>(0, when - monotonicNow());
}

}  // namespace platform::host
