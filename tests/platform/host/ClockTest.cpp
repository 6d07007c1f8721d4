// Licence: MIT, see LICENSE.
#include "platform/host/Clock.h"

#include <gtest/gtest.h>

#include <chrono>

namespace tests {
namespace {

using platform::host::Deadline;
using platform::host::monotonicNow;
using platform::host::Nanoseconds;
using platform::host::wallNow;

constexpr Nanoseconds kSecond = 1'000'000'000;

TEST(Clock, NeverGoesBack) {
  Nanoseconds last = monotonicNow();
  for (int i = 0; i < 1000; ++i) {
    const Nanoseconds now = monotonicNow();
    ASSERT_LE(last, now);
    last = now;
  }
}

TEST(Clock, TellsTheWallClocksTime) {
  const auto system = std::chrono::system_clock::now().time_since_epoch();
  const auto expected = std::chrono::duration_cast<std::chrono::nanoseconds>(system).count();
  EXPECT_NEAR(static_cast<double>(expected), static_cast<double>(wallNow()), 10.0 * kSecond);
}

TEST(Clock, IsTheStandardLibrarysSteadyClock) {
  const auto before = std::chrono::steady_clock::now().time_since_epoch();
  const Nanoseconds now = monotonicNow();
  const auto after = std::chrono::steady_clock::now().time_since_epoch();
  EXPECT_LE(std::chrono::nanoseconds(before).count(), now);
  EXPECT_GE(std::chrono::nanoseconds(after).count(), now);
}

TEST(DeadlineTime, LiesAfterTheSpan) {
  const Nanoseconds before = monotonicNow();
  const Deadline deadline = Deadline::after(kSecond);
  EXPECT_LE(before + kSecond, deadline.time());
  EXPECT_GE(monotonicNow() + kSecond, deadline.time());
  EXPECT_LE(deadline.remaining(), kSecond);
  EXPECT_GT(deadline.remaining(), 0);
}

TEST(DeadlineTime, HasNothingLeftOncePassed) {
  EXPECT_EQ(0, Deadline::immediate().remaining());
  EXPECT_EQ(0, Deadline::after(0).remaining());
  EXPECT_EQ(0, Deadline::after(-kSecond).remaining());
  EXPECT_EQ(0, Deadline::at(monotonicNow() - 1).remaining());
}

TEST(DeadlineTime, SaturatesAtNever) {
  const Nanoseconds most = std::numeric_limits<Nanoseconds>::max();
  EXPECT_TRUE(Deadline::after(most).isNever());
  EXPECT_TRUE(Deadline::after(most - 1).isNever());
  EXPECT_EQ(most, Deadline::never().remaining());
  EXPECT_FALSE(Deadline::after(kSecond).isNever());
}

TEST(DeadlineTime, ComesInOrder) {
  EXPECT_TRUE(Deadline::immediate() < Deadline::after(0));
  EXPECT_TRUE(Deadline::after(0) < Deadline::after(kSecond));
  EXPECT_TRUE(Deadline::after(kSecond) < Deadline::never());
  EXPECT_TRUE(Deadline::immediate().isImmediate());
  EXPECT_FALSE(Deadline::after(0).isImmediate());
}

}  // namespace
}  // namespace tests
