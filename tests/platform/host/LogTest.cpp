// Licence: MIT, see LICENSE.
#include "platform/host/Log.h"

#include <gtest/gtest.h>

namespace tests {
namespace {

using platform::host::complainOnce;

TEST(Complaints, AreMadeOnce) {
  testing::internal::CaptureStderr();
  complainOnce("the first thing");
  complainOnce("the first thing");
  complainOnce("the second thing");
  EXPECT_EQ("quorvant: the first thing\nquorvant: the second thing\n",
            testing::internal::GetCapturedStderr());
}

}  // namespace
}  // namespace tests
