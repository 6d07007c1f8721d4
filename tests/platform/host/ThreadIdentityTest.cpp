// Licence: MIT, see LICENSE.
#include "platform/host/ThreadIdentity.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using platform::host::onFirstThread;

TEST(ThreadIdentity, MainRunsOnTheFirstThread) { EXPECT_TRUE(onFirstThread()); }

TEST(ThreadIdentity, AStartedThreadIsNotTheFirst) {
  bool isFirst = true;
  std::thread([&] { isFirst = onFirstThread(); }).join();
  EXPECT_FALSE(isFirst);
}

}  // namespace
