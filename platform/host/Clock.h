// Licence: MIT, see LICENSE.
// The host's clocks, and points in time to wait for. A caller reads the clock once, makes a
// deadline of it and hands the deadline down, so that a wait that is resumed does not grow.
#ifndef PLATFORM_HOST_CLOCK_H
#define PLATFORM_HOST_CLOCK_H

#include <cstdint>
#include <limits>

namespace platform::host {

using Nanoseconds = std::int64_t;

/// Time since the machine started; never goes back.
Nanoseconds monotonicNow();

/// Time since 1 January 1970, as the wall clock tells it.
Nanoseconds wallNow();

/// A point on the monotonic clock.
class Deadline {
 public:
  static Deadline never() { return Deadline(std::numeric_limits<Nanoseconds>::max()); }
  static Deadline immediate() { return Deadline(0); }
  static Deadline at(Nanoseconds monotonic) { return Deadline(monotonic); }
  static Deadline after(Nanoseconds span);  // many years are never, a negative span is now

  bool isNever() const { return when == std::numeric_limits<Nanoseconds>::max(); }
  bool isImmediate() const { return when == 0; }
  /// What is left, 0 once it has passed.
  Nanoseconds remaining() const;
  Nanoseconds time() const { return when; }
  friend bool operator<(Deadline a, Deadline b) { return a.when < b.when; }

 private:
  explicit Deadline(Nanoseconds monotonic) : when(monotonic) {}
  Nanoseconds when;
};

}  // namespace platform::host

#endif
