// Licence: MIT, see LICENSE.
#include "platform/host/Ticks.h"

#include <gtest/gtest.h>

namespace {

using platform::host::kNanosecondsPerSecond;
using platform::host::ticksAt;
using platform::host::ticksSpan;

TEST(Ticks, AreSixtiethsOfASecond) {
  EXPECT_EQ(ticksAt(0), 0u);
  EXPECT_EQ(ticksAt(kNanosecondsPerSecond), 60u);
  EXPECT_EQ(ticksAt(kNanosecondsPerSecond / 2), 30u);
  EXPECT_EQ(ticksAt(kNanosecondsPerSecond - 1), 59u);
}

TEST(Ticks, WrapAsA32BitNumberDoes) {
  const std::int64_t wrap = (std::int64_t{1} << 32) / 60 + 1;
  EXPECT_EQ(ticksAt(wrap * kNanosecondsPerSecond), static_cast<std::uint32_t>(wrap * 60));
}

TEST(Ticks, MakeSpansThatDoNotOverflow) {
  EXPECT_EQ(ticksSpan(60), kNanosecondsPerSecond);
  EXPECT_EQ(ticksSpan(1), 16'666'666);
  EXPECT_EQ(ticksSpan(0xFFFFFFFF), std::int64_t{71'582'788'250'000'000});
}

}  // namespace
