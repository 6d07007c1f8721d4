// Licence: MIT, see LICENSE.
#include "tools/qrl/Output.h"

#include <gtest/gtest.h>

namespace {

TEST(Output, HoldsNoControlCharacters) {
  EXPECT_EQ(qrl::withoutControls("two\nlines\x1b[2J\x7f"), "two lines [2J ");
  EXPECT_EQ(qrl::withoutControls("caf\u00e9"), "caf\u00e9");
}

TEST(Output, TellsAFailureInOneLine) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(qrl::fail(qrl::kTimedOut, "no\nanswer"), qrl::kTimedOut);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "qrl: no answer\n");
}

}  // namespace
