// Licence: MIT, see LICENSE.
#include "platform/host/DebuggerState.h"

#include <gtest/gtest.h>

namespace {

using platform::host::statusNamesTracer;

TEST(DebuggerState, IsReadFromTheStatusOfTheProcess) {
  EXPECT_TRUE(statusNamesTracer("Name:\tx\nPid:\t7\nTracerPid:\t1234\nUid:\t0\n"));
  EXPECT_FALSE(statusNamesTracer("Name:\tx\nPid:\t7\nTracerPid:\t0\nUid:\t0\n"));
}

TEST(DebuggerState, IsNoDebuggerWhenTheStatusDoesNotTell) {
  EXPECT_FALSE(statusNamesTracer(""));
  EXPECT_FALSE(statusNamesTracer("Name:\tx\n"));
  EXPECT_FALSE(statusNamesTracer("Name:\tx\nTracerPid:"));
  EXPECT_FALSE(statusNamesTracer("Name:\tTracerPid:\t5\n"));  // a program of that name
}

}  // namespace
