// Licence: MIT, see LICENSE.
#include <CoreFoundation/CoreFoundation.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <quorvant/debug/QRLAppErrorUtils.h>

#include <cstring>

#include "tests/debug/ReportSink.h"
#include "tests/support/PrivateRoot.h"

namespace {

using testing::ElementsAre;
using tests::ReportSink;
using tests::reportSink;

// The record is packed, so that a + makes a value of a field before a reference is taken to it.
class Reporter : public QRLAppErrorUtils {
 public:
  using QRLAppErrorUtils::sNotificationFlags;
  using QRLAppErrorUtils::sNotificationRecord;
};

struct Names {
  const char* path = Reporter::sExecutableName;
  const char* shortName = Reporter::sExecutableShortName;
  const char* logFile = Reporter::sLogFileName;
  Boolean32 logs = Reporter::sSysLogErrs;
};
const Names kAtStart;

class AppErrorUtils : public testing::Test {
 protected:
  AppErrorUtils() { reportSink() = ReportSink(); }
  ~AppErrorUtils() override {
    Reporter::sExecutableName = kAtStart.path;
    Reporter::sExecutableShortName = kAtStart.shortName;
    Reporter::sSysLogErrs = kAtStart.logs;
    Reporter::sNotificationFlags = 0;
  }
};

unsigned char kNotice[] = "\013It is over.";

TEST_F(AppErrorUtils, StartsWithPlaceholdersForTheNames) {
  EXPECT_STREQ(kAtStart.path, "(AppExecutablePathHere)");
  EXPECT_STREQ(kAtStart.shortName, "(AppNameHere)");
  EXPECT_STREQ(kAtStart.logFile, "/var/log/Quorvant debug.log");
}

TEST_F(AppErrorUtils, StartsWithoutLoggingAndWithoutNotice) {
  EXPECT_EQ(kAtStart.logs, 0u);
  EXPECT_EQ(Reporter::sNotificationFlags, 0u);
  EXPECT_EQ(+Reporter::sNotificationRecord.qType, 8);
  EXPECT_EQ(+Reporter::sNotificationRecord.nmMark, 0);
  EXPECT_EQ(+Reporter::sNotificationRecord.nmIcon, nullptr);
  EXPECT_EQ(+Reporter::sNotificationRecord.nmSound, nullptr);
}

TEST_F(AppErrorUtils, KeepsThePathItselfAndPointsToItsLastComponent) {
  const char path[] = "/a/b/x";
  Reporter::setAppName(path);
  EXPECT_EQ(Reporter::sExecutableName, path);
  EXPECT_EQ(Reporter::sExecutableShortName, path + 5);
}

TEST_F(AppErrorUtils, UsesAPathWithoutSlashAsBothNames) {
  const char path[] = "agent";
  Reporter::setAppName(path);
  EXPECT_EQ(Reporter::sExecutableName, path);
  EXPECT_EQ(Reporter::sExecutableShortName, path);
}

TEST_F(AppErrorUtils, FindsAnEmptyShortNameBehindATrailingSlash) {
  Reporter::setAppName("/a/b/");
  EXPECT_STREQ(Reporter::sExecutableName, "/a/b/");
  EXPECT_STREQ(Reporter::sExecutableShortName, "");
}

TEST_F(AppErrorUtils, KeepsTheNamesWhenGivenNoPath) {
  Reporter::setAppName("/a/b/x");
  Reporter::setAppName(nullptr);
  EXPECT_STREQ(Reporter::sExecutableName, "/a/b/x");
  EXPECT_STREQ(Reporter::sExecutableShortName, "x");
}

TEST_F(AppErrorUtils, IgnoresAnotherLogFile) {
  EXPECT_EQ(Reporter::setLogfileName("/tmp/other.log", true, "other"), 0);
  EXPECT_EQ(Reporter::setLogfileName(nullptr, false, nullptr), 0);
  EXPECT_STREQ(Reporter::sLogFileName, "/var/log/Quorvant debug.log");
}

TEST_F(AppErrorUtils, SplitsAResultCodeIntoItsFields) {
  const struct {
    unsigned int code;
    const char* text;
  } cases[] = {
      {0, "(sys=0, sub=0, code=0)"},
      {0xE00002BE, "(sys=38, sub=0, code=2be)"},
      {0xFFFFFFFF, "(sys=3f, sub=fff, code=3fff)"},
      {0x80000000, "(sys=20, sub=0, code=0)"},
      {0x04000000, "(sys=1, sub=0, code=0)"},
      {0x03FFC000, "(sys=0, sub=fff, code=0)"},
      {0x00004000, "(sys=0, sub=1, code=0)"},
      {0x00003FFF, "(sys=0, sub=0, code=3fff)"},
  };
  for (const auto& [code, text] : cases) {
    EXPECT_STREQ(Reporter::logIOReturn(static_cast<int>(code)), text) << std::hex << code;
  }
}

TEST_F(AppErrorUtils, OverwritesTheTextOfAResultCodeAtTheNextCall) {
  const char* first = Reporter::logIOReturn(0);
  const char* second = Reporter::logIOReturn(1);
  EXPECT_EQ(first, second);
  EXPECT_STREQ(first, "(sys=0, sub=0, code=1)");
}

TEST_F(AppErrorUtils, StopsInTheDebuggerWithoutLoggingUnlessToldTo) {
  Reporter::reportError("Kind", "message", "File.cpp", 12, false);
  EXPECT_THAT(reportSink().events, ElementsAre("debugger"));
}

TEST_F(AppErrorUtils, LogsBeforeItStopsInTheDebugger) {
  Reporter::sSysLogErrs = true;
  Reporter::reportError("Kind", "message", "File.cpp", 12, false);
  EXPECT_THAT(
      reportSink().events,
      ElementsAre("log 1028: Kind Assert Failed: File.cpp line 12 : message\n", "debugger"));
}

TEST_F(AppErrorUtils, LogsForAnyValueOfTheSwitchThatIsNotZero) {
  Reporter::sSysLogErrs = 0x100;
  Reporter::reportError("K", "m", "f", -1, false);
  EXPECT_THAT(reportSink().events,
              ElementsAre("log 1028: K Assert Failed: f line -1 : m\n", "debugger"));
}

TEST_F(AppErrorUtils, DoesNotUseTheFlagOfAReport) {
  Reporter::sSysLogErrs = true;
  Reporter::reportError("K", "m", "f", 2147483647, true);
  EXPECT_THAT(reportSink().events,
              ElementsAre("log 1028: K Assert Failed: f line 2147483647 : m\n", "debugger"));
}

TEST_F(AppErrorUtils, ReportsAndThenPostsTheMessageAsItIs) {
  Reporter::sSysLogErrs = true;
  const char* message = reinterpret_cast<const char*>(kNotice);
  EXPECT_EQ(Reporter::reportErrorNotify("K", message, "f", 3, true), 0);
  EXPECT_THAT(
      reportSink().events,
      ElementsAre("log 1028: K Assert Failed: f line 3 : \013It is over.\n", "debugger", "notice"));
  EXPECT_EQ(+Reporter::sNotificationRecord.nmStr, kNotice);
}

TEST_F(AppErrorUtils, PostsANoticeWithTextAndResponse) {
  EXPECT_EQ(Reporter::userNotify(kNotice), 0);
  EXPECT_THAT(reportSink().notices, ElementsAre(&Reporter::sNotificationRecord));
  EXPECT_EQ(+Reporter::sNotificationRecord.qType, nmType);
  EXPECT_EQ(+Reporter::sNotificationRecord.nmStr, kNotice);
  EXPECT_EQ(+Reporter::sNotificationRecord.nmResp, NewNMUPP(Reporter::notifyNMCompletion));
  EXPECT_EQ(Reporter::sNotificationFlags, 1u);
}

TEST_F(AppErrorUtils, ShowsNothingWhileANoticeStands) {
  unsigned char other[] = "\005Other";
  EXPECT_EQ(Reporter::userNotify(kNotice), 0);
  EXPECT_EQ(Reporter::userNotify(other), 0);
  EXPECT_EQ(reportSink().notices.size(), 1u);
  EXPECT_EQ(+Reporter::sNotificationRecord.nmStr, kNotice);
}

TEST_F(AppErrorUtils, PostsTheNextNoticeOnceTheFirstIsDismissed) {
  unsigned char other[] = "\005Other";
  Reporter::userNotify(kNotice);
  Reporter::notifyNMCompletion(&Reporter::sNotificationRecord);
  EXPECT_EQ(Reporter::userNotify(other), 0);
  EXPECT_EQ(reportSink().notices.size(), 2u);
  EXPECT_EQ(+Reporter::sNotificationRecord.nmStr, other);
}

TEST_F(AppErrorUtils, IgnoresTheResultOfPosting) {
  reportSink().noticeResult = nmTypErr;
  EXPECT_EQ(Reporter::userNotify(kNotice), 0);
  EXPECT_EQ(Reporter::sNotificationFlags, 1u);
}

TEST_F(AppErrorUtils, ChangesOnlyItsOwnBitOfTheFlags) {
  Reporter::sNotificationFlags = 0x80000002;
  Reporter::userNotify(kNotice);
  EXPECT_EQ(Reporter::sNotificationFlags, 0x80000003);
  Reporter::notifyNMCompletion(nullptr);
  EXPECT_EQ(Reporter::sNotificationFlags, 0x80000002);
}

TEST_F(AppErrorUtils, IsToldOfTheDismissalByTheNotificationManager) {
  tests::PrivateRoot root;
  reportSink().postNotices = true;
  ASSERT_EQ(Reporter::userNotify(kNotice), 0);
  ASSERT_EQ(Reporter::sNotificationFlags, 1u);
  const CFAbsoluteTime end = CFAbsoluteTimeGetCurrent() + 60;
  while (Reporter::sNotificationFlags != 0 && CFAbsoluteTimeGetCurrent() < end) {
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, true);
  }
  EXPECT_EQ(Reporter::sNotificationFlags, 0u);
}

}  // namespace
