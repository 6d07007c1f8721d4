// Licence: MIT, see LICENSE.
#include "platform/processes/ProcessTable.h"

#include <CarbonCore/MacErrors.h>
#include <gtest/gtest.h>
#include <mach/mach.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>

#include "platform/mach/PortSpace.h"
#include "tests/platform/processes/CurrentProcess.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRoot.h"

namespace {

using namespace platform;

using tests::kSelf;

class ProcessTable : public testing::Test {
 protected:
  tests::PrivateRoot root;
};

TEST_F(ProcessTable, HasAPrivatePortOnceTheProcessHasCheckedIn) {
  ProcessSerialNumber self;
  ASSERT_EQ(processes::checkIn(self), noErr);
  mach_port_type_t type = MACH_PORT_TYPE_NONE;
  ASSERT_EQ(mach_port_type(mach_task_self(), processes::privatePort(), &type), KERN_SUCCESS);
  EXPECT_TRUE(type & MACH_PORT_TYPE_RECEIVE);
}

TEST_F(ProcessTable, HasNoPresentNumberBeforeCheckIn) {
  EXPECT_EQ(processes::presentSerialNumber().lowLongOfPSN, UInt32{kNoProcess});
  ProcessSerialNumber self;
  ASSERT_EQ(processes::checkIn(self), noErr);
  EXPECT_EQ(processes::presentSerialNumber().highLongOfPSN, self.highLongOfPSN);
  EXPECT_EQ(processes::presentSerialNumber().lowLongOfPSN, self.lowLongOfPSN);
}

TEST_F(ProcessTable, LeavesNothingOpenInANameSpaceThatTheProcessHasLeft) {
  const auto openFiles = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  };
  ProcessSerialNumber self;
  ASSERT_EQ(processes::checkIn(self), noErr);
  const auto before = openFiles();
  for (int change = 0; change < 3; ++change) {
    const tests::PrivateRoot other;
    ASSERT_EQ(processes::checkIn(self), noErr);
  }
  ASSERT_EQ(processes::checkIn(self), noErr);
  EXPECT_EQ(openFiles(), before);
}

TEST_F(ProcessTable, ChecksInAgainWhenSomebodyHasRemovedTheNameSpace) {
  ProcessSerialNumber self;
  ASSERT_EQ(processes::checkIn(self), noErr);
  std::filesystem::remove_all(root.path() / "run");
  ASSERT_EQ(processes::checkIn(self), noErr);
  EXPECT_EQ(self.lowLongOfPSN, 3u);
  processes::ProcessRecord record;
  EXPECT_EQ(processes::findProcess(kSelf, self, record), noErr);
}

TEST_F(ProcessTable, FindsTheCallersOwnPortUnderBothItsNumbers) {
  ProcessSerialNumber self;
  ASSERT_EQ(processes::checkIn(self), noErr);
  mach_port_t port = MACH_PORT_NULL;
  EXPECT_EQ(processes::portOfProcess(kSelf, port), noErr);
  EXPECT_EQ(port, processes::privatePort());
  EXPECT_EQ(processes::portOfProcess(self, port), noErr);
  EXPECT_EQ(port, processes::privatePort());
  mach_port_deallocate(mach_task_self(), port);
  mach_port_deallocate(mach_task_self(), port);
}

TEST_F(ProcessTable, FindsThePortOfAnotherProcess) {
  tests::ChildProcess child({QRL_TOOLBOX_PROCESS});
  ASSERT_TRUE(child.writeLine("check in"));
  ASSERT_TRUE(child.readLine());
  ProcessSerialNumber psn;
  ASSERT_EQ(processes::findProcessWithID(child.pid(), psn), noErr);
  mach_port_t port = MACH_PORT_NULL;
  ASSERT_EQ(processes::portOfProcess(psn, port), noErr);
  EXPECT_NE(port, processes::privatePort());
  EXPECT_EQ(mach::ownerOf(port), child.pid());
  mach_port_deallocate(mach_task_self(), port);
}

TEST_F(ProcessTable, FindsNoPortOfAProcessThatWasKilled) {
  tests::ChildProcess child({QRL_TOOLBOX_PROCESS});
  ASSERT_TRUE(child.writeLine("check in"));
  ASSERT_TRUE(child.readLine());
  ProcessSerialNumber psn;
  ASSERT_EQ(processes::findProcessWithID(child.pid(), psn), noErr);
  child.signal(SIGKILL);
  ASSERT_EQ(child.wait(), -SIGKILL);
  mach_port_t port = MACH_PORT_NULL;
  EXPECT_EQ(processes::portOfProcess(psn, port), procNotFound);
  EXPECT_EQ(port, mach_port_t{MACH_PORT_NULL});
}

TEST_F(ProcessTable, KnowsTheCallerFromTheOthers) {
  ProcessSerialNumber self;
  ASSERT_EQ(processes::checkIn(self), noErr);
  const ProcessSerialNumber other = {0, self.lowLongOfPSN + 1};
  const ProcessSerialNumber high = {1, self.lowLongOfPSN};
  EXPECT_TRUE(processes::isCurrentProcess(kSelf));
  EXPECT_TRUE(processes::isCurrentProcess(self));
  EXPECT_FALSE(processes::isCurrentProcess(other));
  EXPECT_FALSE(processes::isCurrentProcess(high));
  EXPECT_FALSE(processes::isCurrentProcess({0, kNoProcess}));
  EXPECT_FALSE(processes::isCurrentProcess({1, kCurrentProcess}));
}

TEST_F(ProcessTable, TellsTheCallersOwnRecord) {
  ProcessSerialNumber self, found = {9, 9};
  ASSERT_EQ(processes::checkIn(self), noErr);
  processes::ProcessRecord record;
  ASSERT_EQ(processes::findProcess(kSelf, found, record), noErr);
  EXPECT_EQ(found.highLongOfPSN, 0u);
  EXPECT_EQ(found.lowLongOfPSN, self.lowLongOfPSN);
  EXPECT_EQ(record.pid, getpid());
  EXPECT_EQ(record.launcher, getppid());
  EXPECT_EQ(record.path, tests::ownProgram());
}

}  // namespace
