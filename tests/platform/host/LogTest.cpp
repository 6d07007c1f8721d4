// Licence: MIT, see LICENSE.
#include "platform/host/Log.h"

#include <gtest/gtest.h>

namespace tests {
namespace {

using platform::host::complainOnce;

TEST(Complaints, AreMadeOnce) {
  static int run = 0;  // nothing was said in an earlier one
  const std::string first = "the first thing of run " + std::to_string(++run);
  const std::string second = "the second thing of run " + std::to_string(run);
  testing::internal::CaptureStderr();
  complainOnce(first);
  complainOnce(first);
  complainOnce(second);
  EXPECT_EQ("quorvant: " + first + "\nquorvant: " + second + "\n",
            testing::internal::GetCapturedStderr());
}

}  // namespace
}  // namespace tests
