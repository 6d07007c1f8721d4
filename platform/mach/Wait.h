// Licence: MIT, see LICENSE.
#ifndef PLATFORM_MACH_WAIT_H
#define PLATFORM_MACH_WAIT_H

#include <chrono>
#include <condition_variable>

#include "platform/host/Clock.h"

namespace platform::mach {

/// Waits for a condition variable. False once the deadline has passed.
inline bool waitUntil(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                      host::Deadline deadline) {
  if (deadline.isNever()) {
    condition.wait(lock);
    return true;
  }
  if (deadline.remaining() == 0) return false;
  // The standard library's steady clock is the host's monotonic one.
  const std::chrono::steady_clock::time_point until{std::chrono::nanoseconds(deadline.time())};
  return condition.wait_until(lock, until) == std::cv_status::no_timeout;
}

}  // namespace platform::mach

#endif
