// Licence: MIT, see LICENSE.
#include <CarbonCore/MacTypes.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/host/DebuggerState.h"
#include "tests/support/LogListener.h"
#include "tests/support/PrivateRoot.h"

namespace {

TEST(Debugger, LogsOneLineAndReturnsWhenNoneIsAttached) {
  if (platform::host::debuggerAttached()) GTEST_SKIP() << "this test itself is being debugged";
  tests::PrivateRoot root;
  tests::LogListener log(root.path());
  Debugger();
  EXPECT_EQ(log.readLine(), "Debugger() called; none is attached");
  EXPECT_TRUE(log.isQuiet());
}

TEST(Debugger, StopsInTheDebuggerThatIsAttached) {
  tests::PrivateRoot root;
  tests::LogListener log(root.path());
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    constexpr int kRefused = 77;
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(kRefused);
    Debugger();
    _exit(5);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 77)
    GTEST_SKIP() << "tracing is not possible here";
  ASSERT_TRUE(WIFSTOPPED(status));
  EXPECT_EQ(WSTOPSIG(status), SIGTRAP);
  ASSERT_EQ(ptrace(PTRACE_CONT, child, nullptr, nullptr), 0);
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 5);  // it went on behind the stop
  EXPECT_TRUE(log.isQuiet());
}

}  // namespace
