// Licence: MIT, see LICENSE.
#include "platform/host/ThreadIdentity.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using platform::host::isOnlyThread;
using platform::host::onFirstThread;

TEST(ThreadIdentity, MainRunsOnTheFirstThread) { EXPECT_TRUE(onFirstThread()); }

TEST(ThreadIdentity, AStartedThreadIsNotTheFirst) {
  bool isFirst = true;
  std::thread([&] { isFirst = onFirstThread(); }).join();
  EXPECT_FALSE(isFirst);
}

TEST(ThreadIdentity, AThreadBesideMainIsNotTheOnlyOne) {
  bool isOnly = true;
  std::thread([&] { isOnly = isOnlyThread(); }).join();
  EXPECT_FALSE(isOnly);
}

}  // namespace
