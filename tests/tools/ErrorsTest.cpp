// Licence: MIT, see LICENSE.
#include "tools/qrl/Errors.h"

#include <gtest/gtest.h>

namespace {

TEST(Errors, AreNamedAsInTheHeaders) {
  EXPECT_EQ(qrl::describeError(-1708), "-1708 (errAEEventNotHandled)");
  EXPECT_EQ(qrl::describeError(-50), "-50 (paramErr)");
  EXPECT_EQ(qrl::describeError(1102), "1102 (BOOTSTRAP_UNKNOWN_SERVICE)");
  EXPECT_EQ(qrl::describeError(0x10000003), "268435459 (MACH_SEND_INVALID_DEST)");
  EXPECT_EQ(qrl::describeError(static_cast<OSStatus>(0xE00002BE)),
            "-536870210 (kIOReturnNoResources)");
}

TEST(Errors, WithoutANameAreNumbers) {
  EXPECT_EQ(qrl::describeError(-12345), "-12345");
  EXPECT_EQ(qrl::describeError(7), "7");
}

}  // namespace
