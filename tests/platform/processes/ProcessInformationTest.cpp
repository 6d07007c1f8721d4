// Licence: MIT, see LICENSE.
#include <CarbonCore/MacErrors.h>
#include <CoreFoundation/CFString.h>
#include <HIServices/Processes.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "platform/host/Ticks.h"
#include "tests/platform/processes/CurrentProcess.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRoot.h"

namespace {

using tests::kSelf;

class ProcessInformation : public testing::Test {
 protected:
  /// Starts a copy of the test's program at a place below the root.
  std::unique_ptr<tests::ChildProcess> startAt(const std::filesystem::path& place) {
    const std::filesystem::path path = root.path() / place;
    std::filesystem::create_directories(path.parent_path());
    std::filesystem::copy_file(QRL_TOOLBOX_PROCESS, path);
    auto child = std::make_unique<tests::ChildProcess>(tests::ChildProcess::Command{path});
    EXPECT_TRUE(child->writeLine("check in"));
    EXPECT_TRUE(child->readLine());
    return child;
  }

  static ProcessInfoRec informationOf(const tests::ChildProcess& child) {
    ProcessSerialNumber psn = {0, kNoProcess};
    EXPECT_EQ(GetProcessForPID(child.pid(), &psn), noErr);
    ProcessInfoRec info = {};
    info.processInfoLength = sizeof info;
    EXPECT_EQ(GetProcessInformation(&psn, &info), noErr);
    return info;
  }

  static std::string nameOf(const tests::ChildProcess& child) {
    ProcessSerialNumber psn = {0, kNoProcess};
    EXPECT_EQ(GetProcessForPID(child.pid(), &psn), noErr);
    std::array<unsigned char, 33> name;
    name.fill(0xEE);
    ProcessInfoRec info = {};
    info.processInfoLength = sizeof info;
    info.processName = name.data();
    EXPECT_EQ(GetProcessInformation(&psn, &info), noErr);
    EXPECT_EQ(+info.processName, name.data());
    EXPECT_EQ(name[32], 0xEE);
    return {reinterpret_cast<char*>(name.data()) + 1, name[0]};
  }

  tests::PrivateRoot root;
};

TEST_F(ProcessInformation, HasTheOriginalLayoutWherePointersHaveFourBytes) {
  EXPECT_EQ(sizeof(ProcessInfoRec), sizeof(void*) == 4 ? 60u : 72u);
  EXPECT_EQ(offsetof(ProcessInfoRec, processNumber), 4 + sizeof(void*));
  EXPECT_EQ(offsetof(ProcessInfoRec, processSignature), 16 + sizeof(void*));
}

TEST_F(ProcessInformation, TellsAboutAProgramWithoutAnApplication) {
  const auto child = startAt("bin/tool");
  const ProcessInfoRec info = informationOf(*child);
  EXPECT_EQ(+info.processInfoLength, sizeof info);
  EXPECT_EQ(+info.processNumber.highLongOfPSN, 0u);
  EXPECT_EQ(+info.processNumber.lowLongOfPSN, 3u);
  EXPECT_EQ(+info.processType, OSType{'APPL'});
  EXPECT_EQ(+info.processSignature, OSType{0x3F3F3F3F});
  EXPECT_EQ(+info.processMode, 0u);
  EXPECT_EQ(+info.processLocation, nullptr);
  EXPECT_EQ(+info.processAppSpec, nullptr);
  EXPECT_EQ(nameOf(*child), "tool");
}

TEST_F(ProcessInformation, TellsAnApplicationsTypeAndSignature) {
  std::filesystem::create_directories(root.path() / "Camera Helper.app/Contents");
  std::ofstream(root.path() / "Camera Helper.app/Contents/PkgInfo") << "BNDLQrlC";
  const auto child = startAt("Camera Helper.app/Contents/MacOS/helper");
  const ProcessInfoRec info = informationOf(*child);
  EXPECT_EQ(+info.processType, OSType{'BNDL'});
  EXPECT_EQ(+info.processSignature, OSType{'QrlC'});
  EXPECT_EQ(nameOf(*child), "Camera Helper");
}

TEST_F(ProcessInformation, KnowsNoSignatureWithoutPackageInformation) {
  const auto child = startAt("Bare.app/Contents/MacOS/bare");
  const ProcessInfoRec info = informationOf(*child);
  EXPECT_EQ(+info.processType, OSType{'APPL'});
  EXPECT_EQ(+info.processSignature, OSType{0x3F3F3F3F});
  EXPECT_EQ(nameOf(*child), "Bare");
}

TEST_F(ProcessInformation, FollowsALinkToTheApplicationsProgram) {
  std::filesystem::create_directories(root.path() / "Linked.app/Contents/MacOS");
  std::ofstream(root.path() / "Linked.app/Contents/PkgInfo") << "APPLQrlL";
  std::filesystem::copy_file(QRL_TOOLBOX_PROCESS, root.path() / "Linked.app/Contents/MacOS/prog");
  std::filesystem::create_symlink("Linked.app/Contents/MacOS/prog", root.path() / "link");
  tests::ChildProcess child({root.path() / "link"});
  EXPECT_TRUE(child.writeLine("check in"));
  EXPECT_TRUE(child.readLine());
  EXPECT_EQ(+informationOf(child).processSignature, OSType{'QrlL'});
  EXPECT_EQ(nameOf(child), "Linked");
}

TEST_F(ProcessInformation, CutsALongNameAndReplacesWhatMacRomanLacks) {
  const auto child = startAt("caf\u00E9 \u4E2D 0123456789012345678901234567890");
  EXPECT_EQ(nameOf(*child), "caf\x8E ? 012345678901234567890123");
}

TEST_F(ProcessInformation, TellsWhenAProcessStartedAndWhoStartedIt) {
  ProcessSerialNumber own;
  ASSERT_EQ(GetCurrentProcess(&own), noErr);
  const UInt32 before = platform::host::ticksAt(platform::host::monotonicNow());
  const auto child = startAt("tool");
  const ProcessInfoRec info = informationOf(*child);
  const UInt32 after = platform::host::ticksAt(platform::host::monotonicNow());
  EXPECT_LE(+info.processLaunchDate - before, after - before);
  EXPECT_EQ(+info.processLauncher.highLongOfPSN, 0u);
  EXPECT_EQ(+info.processLauncher.lowLongOfPSN, own.lowLongOfPSN);
}

TEST_F(ProcessInformation, KnowsNoLauncherThatHasNotCheckedInBefore) {
  const auto child = startAt("tool");
  ProcessSerialNumber own;
  ASSERT_EQ(GetCurrentProcess(&own), noErr);
  EXPECT_EQ(+informationOf(*child).processLauncher.lowLongOfPSN, UInt32{kNoProcess});
}

TEST_F(ProcessInformation, WritesNoMoreThanTheLengthSays) {
  std::array<unsigned char, sizeof(ProcessInfoRec)> memory;
  memory.fill(0xEE);
  auto* info = reinterpret_cast<ProcessInfoRec*>(memory.data());
  info->processInfoLength = 60;
  info->processName = nullptr;
  if (sizeof *info == 60) info->processAppSpec = nullptr;
  EXPECT_EQ(GetProcessInformation(&kSelf, info), noErr);
  EXPECT_EQ(+info->processInfoLength, 60u);
  EXPECT_EQ(+info->processType, OSType{'APPL'});
  for (std::size_t i = 60; i < memory.size(); ++i) EXPECT_EQ(memory[i], 0xEE) << i;
}

TEST_F(ProcessInformation, RefusesARecordThatIsTooShort) {
  ProcessInfoRec info = {};
  info.processInfoLength = 59;
  EXPECT_EQ(GetProcessInformation(&kSelf, &info), paramErr);
  EXPECT_EQ(+info.processType, 0u);
}

TEST_F(ProcessInformation, RefusesToDescribeTheFile) {
  ProcessInfoRec info = {};
  info.processInfoLength = sizeof info;
  info.processAppSpec = reinterpret_cast<FSSpec*>(&info);
  EXPECT_EQ(GetProcessInformation(&kSelf, &info), paramErr);
}

TEST_F(ProcessInformation, LeavesTheRecordAloneWhenThereIsNoSuchProcess) {
  const ProcessSerialNumber none = {0, 1000};
  ProcessInfoRec info;
  std::memset(&info, 0xEE, sizeof info);
  info.processInfoLength = sizeof info;
  info.processAppSpec = nullptr;
  EXPECT_EQ(GetProcessInformation(&none, &info), procNotFound);
  EXPECT_EQ(+info.processType, 0xEEEEEEEEu);
}

TEST_F(ProcessInformation, GivesTheWholeNameAsAString) {
  const auto child = startAt("caf\u00E9 \u4E2D 0123456789012345678901234567890");
  ProcessSerialNumber psn;
  ASSERT_EQ(GetProcessForPID(child->pid(), &psn), noErr);
  CFStringRef name = nullptr;
  ASSERT_EQ(CopyProcessName(&psn, &name), noErr);
  char text[100] = "";
  EXPECT_TRUE(CFStringGetCString(name, text, sizeof text, kCFStringEncodingUTF8));
  EXPECT_STREQ(text, "caf\u00E9 \u4E2D 0123456789012345678901234567890");
  EXPECT_EQ(CFGetRetainCount(name), 1);
  CFRelease(name);
}

TEST_F(ProcessInformation, GivesANameThatIsNotUTF8InTheOldEncoding) {
  const auto child = startAt("caf\x8E");
  ProcessSerialNumber psn;
  ASSERT_EQ(GetProcessForPID(child->pid(), &psn), noErr);
  CFStringRef name = nullptr;
  ASSERT_EQ(CopyProcessName(&psn, &name), noErr);
  EXPECT_EQ(CFStringGetLength(name), 4);
  EXPECT_EQ(CFStringGetCharacterAtIndex(name, 3), 0x00E9);
  CFRelease(name);
}

TEST_F(ProcessInformation, GivesNoNameOfAProcessThatDoesNotRun) {
  const ProcessSerialNumber none = {0, 1000};
  CFStringRef name = nullptr;
  EXPECT_EQ(CopyProcessName(&none, &name), procNotFound);
  EXPECT_EQ(name, nullptr);
}

}  // namespace
