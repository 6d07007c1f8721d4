// Licence: MIT, see LICENSE.
#include <HIServices/Processes.h>

#include <CarbonCore/MacErrors.h>
#include <CoreFoundation/CFString.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/platform/processes/CurrentProcess.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRoot.h"

namespace {

using tests::kSelf;

class Processes : public testing::Test {
 protected:
  static std::vector<UInt32> walk() {
    std::vector<UInt32> found;
    ProcessSerialNumber psn = {0, kNoProcess};
    while (GetNextProcess(&psn) == noErr) found.push_back(psn.lowLongOfPSN);
    EXPECT_EQ(psn.lowLongOfPSN, UInt32{kNoProcess});
    return found;
  }

  static std::string answer(tests::ChildProcess& child, const std::string& line) {
    EXPECT_TRUE(child.writeLine(line));
    return child.readLine().value_or("nothing");
  }

  static ProcessSerialNumber processOf(const tests::ChildProcess& child) {
    ProcessSerialNumber psn = {0, kNoProcess};
    EXPECT_EQ(GetProcessForPID(child.pid(), &psn), noErr);
    return psn;
  }

  std::filesystem::path folder() const {
    return root.path() / "run/user" / std::to_string(geteuid()) / "quorvant/processes";
  }

  tests::PrivateRoot root;
};

using Child = tests::ChildProcess;
const Child::Command kProgram = {QRL_TOOLBOX_PROCESS};

TEST_F(Processes, CheckInUnderTheFirstFreeNumberAndKeepIt) {
  ProcessSerialNumber first = {9, 9}, again = {9, 9};
  EXPECT_EQ(GetCurrentProcess(&first), noErr);
  EXPECT_EQ(GetCurrentProcess(&again), noErr);
  EXPECT_EQ(first.highLongOfPSN, 0u);
  EXPECT_EQ(first.lowLongOfPSN, 3u);
  EXPECT_EQ(again.lowLongOfPSN, 3u);
}

TEST_F(Processes, CheckInAgainInAnotherNameSpace) {
  ProcessSerialNumber psn;
  EXPECT_EQ(GetCurrentProcess(&psn), noErr);
  {
    const tests::PrivateRoot other;
    EXPECT_EQ(walk(), (std::vector<UInt32>{3}));
  }
  EXPECT_EQ(GetCurrentProcess(&psn), noErr);
  EXPECT_EQ(psn.lowLongOfPSN, 4u);  // a number is not used twice
  EXPECT_EQ(walk(), (std::vector<UInt32>{4}));
}

TEST_F(Processes, CannotCheckInWhereTheNameSpaceIsNoFolder) {
  std::ofstream(root.path() / "run") << "in the way";
  ProcessSerialNumber psn = {0, kNoProcess};
  EXPECT_EQ(GetCurrentProcess(&psn), procNotFound);
  EXPECT_EQ(GetNextProcess(&psn), procNotFound);
  EXPECT_EQ(GetProcessForPID(getpid(), &psn), procNotFound);
}

TEST_F(Processes, AreWalkedInTheOrderInWhichTheyCheckedIn) {
  Child first(kProgram), second(kProgram);
  EXPECT_EQ(answer(second, "check in"), "0 0 3");
  EXPECT_EQ(answer(first, "check in"), "0 0 4");
  EXPECT_EQ(walk(), (std::vector<UInt32>{3, 4, 5}));
  EXPECT_EQ(answer(first, "list"), "3 4 5 end");
}

TEST_F(Processes, CheckInByLookingAtTheOthers) {
  Child child(kProgram);
  EXPECT_EQ(answer(child, "list"), "3 end");
  EXPECT_EQ(walk(), (std::vector<UInt32>{3, 4}));
}

TEST_F(Processes, AreGoneAtOnceWhenTheyAreKilled) {
  Child first(kProgram), second(kProgram);
  answer(first, "check in");
  answer(second, "check in");
  EXPECT_EQ(walk(), (std::vector<UInt32>{3, 4, 5}));
  first.signal(SIGKILL);
  EXPECT_EQ(first.wait(), -SIGKILL);
  EXPECT_EQ(walk(), (std::vector<UInt32>{4, 5}));
}

TEST_F(Processes, AreGoneWhenTheyExit) {
  Child child(kProgram);
  answer(child, "check in");
  const ProcessSerialNumber psn = processOf(child);
  child.closeInput();
  EXPECT_EQ(child.wait(), 0);
  int pid = 0;
  EXPECT_EQ(GetProcessPID(&psn, &pid), procNotFound);
  EXPECT_EQ(pid, 0);
}

TEST_F(Processes, NeverGetTheNumberOfADeadOne) {
  {
    Child child(kProgram);
    EXPECT_EQ(answer(child, "check in"), "0 0 3");
  }
  Child child(kProgram);
  EXPECT_EQ(answer(child, "check in"), "0 0 4");
}

TEST_F(Processes, LeaveNothingBehindForLong) {
  {
    Child child(kProgram);
    answer(child, "check in");
  }
  EXPECT_TRUE(std::filesystem::exists(folder() / "record.1"));
  Child child(kProgram);
  answer(child, "check in");
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder())) {
    files.push_back(entry.path().filename());
  }
  EXPECT_THAT(files, testing::UnorderedElementsAre("counter", "record.2",
                                                   "port.4." + std::to_string(child.pid())));
}

TEST_F(Processes, GetNumbersOfTheirOwnWhenManyCheckInTogether) {
  constexpr std::size_t kCount = 6;
  std::vector<std::unique_ptr<Child>> children;
  for (std::size_t i = 0; i < kCount; ++i) children.push_back(std::make_unique<Child>(kProgram));
  for (const auto& child : children) EXPECT_TRUE(child->writeLine("check in"));
  std::vector<std::string> answers;
  for (const auto& child : children) answers.push_back(child->readLine().value_or(""));
  EXPECT_THAT(answers,
              testing::UnorderedElementsAre("0 0 3", "0 0 4", "0 0 5", "0 0 6", "0 0 7", "0 0 8"));
}

TEST_F(Processes, AreTheSameUnderTheNumberOfTheCaller) {
  ProcessSerialNumber own;
  ASSERT_EQ(GetCurrentProcess(&own), noErr);
  Child child(kProgram);
  answer(child, "check in");
  const ProcessSerialNumber other = processOf(child);
  Boolean same = 9;
  EXPECT_EQ(SameProcess(&own, &kSelf, &same), noErr);
  EXPECT_EQ(same, true);
  EXPECT_EQ(SameProcess(&other, &kSelf, &same), noErr);
  EXPECT_EQ(same, false);
}

TEST_F(Processes, CannotBeComparedWhenOneDoesNotRun) {
  const ProcessSerialNumber none = {0, 1000}, high = {1, 3};
  Boolean same = 9;
  EXPECT_EQ(SameProcess(&kSelf, &none, &same), procNotFound);
  EXPECT_EQ(SameProcess(&none, &kSelf, &same), procNotFound);
  EXPECT_EQ(SameProcess(&high, &kSelf, &same), procNotFound);
  EXPECT_EQ(same, 9);
}

TEST_F(Processes, AreFoundByTheHostsNumberAndBack) {
  ProcessSerialNumber own;
  ASSERT_EQ(GetCurrentProcess(&own), noErr);
  int pid = 0;
  EXPECT_EQ(GetProcessPID(&kSelf, &pid), noErr);
  EXPECT_EQ(pid, getpid());
  ProcessSerialNumber found = {9, 9};
  EXPECT_EQ(GetProcessForPID(pid, &found), noErr);
  EXPECT_EQ(found.lowLongOfPSN, own.lowLongOfPSN);
}

TEST_F(Processes, AreNotFoundByTheNumberOfOneThatNeverUsedTheToolbox) {
  Child child(kProgram);
  ProcessSerialNumber psn = {9, 9};
  EXPECT_EQ(GetProcessForPID(child.pid(), &psn), procNotFound);
  EXPECT_EQ(psn.lowLongOfPSN, 9u);
}

TEST_F(Processes, WalkOnFromANumberThatIsNobodys) {
  ProcessSerialNumber own;
  ASSERT_EQ(GetCurrentProcess(&own), noErr);
  ProcessSerialNumber psn = {0, 1};
  EXPECT_EQ(GetNextProcess(&psn), noErr);
  EXPECT_EQ(psn.lowLongOfPSN, own.lowLongOfPSN);
  psn = {1, 0};
  EXPECT_EQ(GetNextProcess(&psn), procNotFound);
  EXPECT_EQ(psn.highLongOfPSN, 0u);
  EXPECT_EQ(psn.lowLongOfPSN, UInt32{kNoProcess});
}

TEST_F(Processes, WalkOnFromTheCaller) {
  ProcessSerialNumber own;
  ASSERT_EQ(GetCurrentProcess(&own), noErr);
  Child child(kProgram);
  answer(child, "check in");
  ProcessSerialNumber psn = kSelf;
  EXPECT_EQ(GetNextProcess(&psn), noErr);
  EXPECT_EQ(psn.lowLongOfPSN, own.lowLongOfPSN + 1);
}

TEST_F(Processes, CheckInOnceHoweverManyThreadsAsk) {
  std::vector<UInt32> numbers(8);
  std::vector<std::thread> threads;
  for (UInt32& number : numbers) {
    threads.emplace_back([&number] {
      ProcessSerialNumber psn = {0, 0};
      GetCurrentProcess(&psn);
      number = psn.lowLongOfPSN;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(numbers, testing::Each(3u));
}

TEST_F(Processes, AnswerParamErrWithoutAPlaceForTheResult) {
  ProcessSerialNumber psn = kSelf;
  Boolean same;
  int pid;
  ProcessInfoRec info = {};
  CFStringRef name;
  EXPECT_EQ(GetCurrentProcess(nullptr), paramErr);
  EXPECT_EQ(GetNextProcess(nullptr), paramErr);
  EXPECT_EQ(GetProcessInformation(nullptr, &info), paramErr);
  EXPECT_EQ(GetProcessInformation(&psn, nullptr), paramErr);
  EXPECT_EQ(SameProcess(nullptr, &psn, &same), paramErr);
  EXPECT_EQ(SameProcess(&psn, nullptr, &same), paramErr);
  EXPECT_EQ(SameProcess(&psn, &psn, nullptr), paramErr);
  EXPECT_EQ(GetProcessPID(nullptr, &pid), paramErr);
  EXPECT_EQ(GetProcessPID(&psn, nullptr), paramErr);
  EXPECT_EQ(GetProcessForPID(1, nullptr), paramErr);
  EXPECT_EQ(CopyProcessName(nullptr, &name), paramErr);
  EXPECT_EQ(CopyProcessName(&psn, nullptr), paramErr);
}

}  // namespace
