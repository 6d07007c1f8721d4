// Licence: MIT, see LICENSE.
#include "platform/mach/NameList.h"

#include <unistd.h>

#include <thread>

#include "tests/platform/mach/MachTesting.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using platform::mach::kBootstrapFolder;
using platform::mach::liveNames;
using platform::mach::NamedPort;
using platform::mach::waitForEnd;
using platform::mach::waitForName;

class NameList : public MachTest {
 protected:
  static std::vector<NamedPort> ports() {
    std::vector<NamedPort> found;
    EXPECT_EQ(KERN_SUCCESS, liveNames(kBootstrapFolder, found));
    return found;
  }
  static std::vector<std::string> names() {
    std::vector<std::string> found;
    for (const NamedPort& port : ports()) found.push_back(port.name);
    return found;
  }
};

TEST_F(NameList, IsEmptyAtFirst) { EXPECT_TRUE(ports().empty()); }

TEST_F(NameList, TellsWhoHoldsWhichName) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("a/own", port));
  const auto server = startServer(".theirs", "deaf");
  const std::vector<NamedPort> found = ports();
  ASSERT_EQ(2u, found.size());
  EXPECT_EQ(".theirs", found[0].name);
  EXPECT_EQ(server->pid(), found[0].process);
  EXPECT_EQ("a/own", found[1].name);
  EXPECT_EQ(getpid(), found[1].process);
  EXPECT_FALSE(found[1].isSystems);
}

TEST_F(NameList, SaysThatANameWasRefusedAndListsTheOthers) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("real", port));
  fs::create_symlink("real", directory() / "ports/link");
  std::vector<NamedPort> found;
  EXPECT_EQ(BOOTSTRAP_NOT_PRIVILEGED, liveNames(kBootstrapFolder, found));
  ASSERT_EQ(1u, found.size());
  EXPECT_EQ("real", found[0].name);
}

TEST_F(NameList, LeavesTheDeadOutAndRemovesTheirNames) {
  const auto server = startServer("mortal", "deaf");
  server->signal(9);
  ASSERT_EQ(-9, server->wait());
  EXPECT_EQ(1u, entriesIn(directory() / "ports"));
  EXPECT_TRUE(names().empty());
  EXPECT_EQ(0u, entriesIn(directory() / "ports"));
}

TEST_F(NameList, HidesASystemsNameBehindOnesOwn) {
  const OwnPort port;
  const fs::path systems = root.path() / "run/quorvant/ports";
  ASSERT_EQ(KERN_SUCCESS, registerName("both", port));
  fs::create_directories(systems);
  fs::create_hard_link(directory() / "ports/both", systems / "both");
  fs::create_hard_link(directory() / "ports/both", systems / "daemon");
  const std::vector<NamedPort> found = ports();
  ASSERT_EQ(2u, found.size());
  EXPECT_FALSE(found[0].isSystems);
  EXPECT_EQ("daemon", found[1].name);
  EXPECT_TRUE(found[1].isSystems);
}

TEST_F(NameList, WaitsForANameToAppear) {
  EXPECT_EQ(MACH_RCV_TIMED_OUT, waitForName(kBootstrapFolder, "late", shortly()));
  const OwnPort port;
  std::thread registrar([&] { EXPECT_EQ(KERN_SUCCESS, registerName("late", port)); });
  EXPECT_EQ(KERN_SUCCESS, waitForName(kBootstrapFolder, "late", soon()));
  registrar.join();
  EXPECT_EQ(KERN_SUCCESS, waitForName(kBootstrapFolder, "late", Deadline::immediate()));
}

TEST_F(NameList, DoesNotTakeADeadNameForALiveOne) {
  const auto server = startServer("mortal", "deaf");
  server->signal(9);
  ASSERT_EQ(-9, server->wait());
  EXPECT_EQ(MACH_RCV_TIMED_OUT, waitForName(kBootstrapFolder, "mortal", shortly()));
  EXPECT_EQ(KERN_SUCCESS, waitForEnd(kBootstrapFolder, "mortal", soon()));
}

TEST_F(NameList, WaitsForAPortToDie) {
  const auto server = startServer("mortal", "deaf");
  EXPECT_EQ(MACH_RCV_TIMED_OUT, waitForEnd(kBootstrapFolder, "mortal", shortly()));
  std::thread killer([&] { server->signal(9); });
  EXPECT_EQ(KERN_SUCCESS, waitForEnd(kBootstrapFolder, "mortal", soon()));
  killer.join();
}

TEST_F(NameList, WaitsForANameToBeGivenUp) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("brief", port));
  std::thread giver([&] { EXPECT_EQ(KERN_SUCCESS, registerName("brief", MACH_PORT_NULL)); });
  EXPECT_EQ(KERN_SUCCESS, waitForEnd(kBootstrapFolder, "brief", soon()));
  giver.join();
  EXPECT_EQ(KERN_SUCCESS, waitForEnd(kBootstrapFolder, "never", Deadline::immediate()));
}

TEST_F(NameList, RefusesToWaitForWhatCannotBeAName) {
  const std::string tooLong(128, 'n');
  EXPECT_EQ(BOOTSTRAP_BAD_COUNT, waitForName(kBootstrapFolder, "", soon()));
  EXPECT_EQ(BOOTSTRAP_BAD_COUNT, waitForName(kBootstrapFolder, tooLong.c_str(), soon()));
  EXPECT_EQ(BOOTSTRAP_BAD_COUNT, waitForEnd(kBootstrapFolder, "", soon()));
}

TEST_F(NameList, ReportsANameSpaceThatIsNotSafe) {
  fs::create_directories(directory());
  fs::permissions(directory(), fs::perms::all);
  EXPECT_EQ(BOOTSTRAP_NOT_PRIVILEGED, waitForName(kBootstrapFolder, "a", soon()));
  EXPECT_EQ(BOOTSTRAP_NOT_PRIVILEGED, waitForEnd(kBootstrapFolder, "a", soon()));
  std::vector<NamedPort> found{{"old", 1, false}};
  EXPECT_EQ(BOOTSTRAP_NOT_PRIVILEGED, liveNames(kBootstrapFolder, found));
  EXPECT_TRUE(found.empty());
}

TEST_F(NameList, ReportsAFolderThatIsNotSafe) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("a", port));
  fs::rename(directory() / "ports", directory() / "real");
  fs::create_directory_symlink("real", directory() / "ports");
  std::vector<NamedPort> found;
  EXPECT_EQ(BOOTSTRAP_NOT_PRIVILEGED, liveNames(kBootstrapFolder, found));
  EXPECT_TRUE(found.empty());
}

}  // namespace
}  // namespace tests
