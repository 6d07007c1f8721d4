// Licence: MIT, see LICENSE.
#include <servers/bootstrap.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "platform/host/Roots.h"
#include "tests/platform/mach/MachTesting.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

class Bootstrap : public MachTest {
 protected:
  kern_return_t lookUpCode(const std::string& name) const {
    mach_port_t port = 7;
    return bootstrap_look_up(kBootstrapPort, name.c_str(), &port);
  }
};

TEST_F(Bootstrap, KnowsNoNameAtFirst) {
  mach_port_t port = 7;
  EXPECT_EQ(BOOTSTRAP_UNKNOWN_SERVICE, bootstrap_look_up(kBootstrapPort, "nobody", &port));
  EXPECT_EQ(MACH_PORT_NULL, port);
}

TEST_F(Bootstrap, GivesOnesOwnPortItsOwnName) {
  const OwnPort port;
  EXPECT_EQ(KERN_SUCCESS, registerName("mine", port));
  EXPECT_EQ(port, lookUp("mine"));
}

TEST_F(Bootstrap, GivesTheSameLivePortTheSameName) {
  const auto server = startServer("theirs");
  const mach_port_name_t first = lookUp("theirs");
  EXPECT_NE(MACH_PORT_NULL, first);
  EXPECT_EQ(first, lookUp("theirs"));
}

TEST_F(Bootstrap, MakesNoConnectionWhileOneToThatPortIsOpen) {
  const auto server = startServer("theirs");
  const mach_port_name_t first = lookUp("theirs");
  const std::size_t connected = openDescriptors();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(first, lookUp("theirs"));
  EXPECT_EQ(connected, openDescriptors());
  for (int i = 0; i < 4; ++i) mach_port_deallocate(mach_task_self(), first);
  EXPECT_EQ(connected - 1, openDescriptors());
}

TEST_F(Bootstrap, TakesNamesOfEveryLengthThatIsAllowed) {
  const OwnPort port;
  const std::string longest(127, 'n');
  EXPECT_EQ(KERN_SUCCESS, registerName(longest, port));
  EXPECT_EQ(port, lookUp(longest));
  EXPECT_EQ(KERN_SUCCESS, registerName("n", port));
  EXPECT_EQ(BOOTSTRAP_BAD_COUNT, registerName(longest + "n", port));
  EXPECT_EQ(BOOTSTRAP_BAD_COUNT, registerName("", port));
  EXPECT_EQ(BOOTSTRAP_UNKNOWN_SERVICE, lookUpCode(longest + "n"));
  EXPECT_EQ(BOOTSTRAP_UNKNOWN_SERVICE, lookUpCode(""));
}

TEST_F(Bootstrap, TakesAnyBytesAsAName) {
  const std::string names[] = {"/",
                               "..",
                               ".",
                               "%",
                               "%s",
                               "a/b/../c",
                               ".hidden",
                               "\xff\x01 \n",
                               std::string(127, '/'),
                               std::string(127, '%'),
                               "lock",
                               "a%"};
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    const OwnPort port;
    EXPECT_EQ(MACH_PORT_NULL, lookUp(name));
    EXPECT_EQ(KERN_SUCCESS, registerName(name, port));
    EXPECT_EQ(port, lookUp(name));
  }
}

TEST_F(Bootstrap, FindsALongNameOfAnotherProcess) {
  const std::string name(127, '/');
  const auto server = startServer(name);
  const OwnPort reply;
  const Message answer = request(lookUp(name), reply, kEcho, pattern(10));
  EXPECT_EQ(kEcho + 1, answer.id);
}

TEST_F(Bootstrap, RefusesANameThatALivePortHas) {
  const OwnPort first;
  const OwnPort second;
  ASSERT_EQ(KERN_SUCCESS, registerName("taken", first));
  EXPECT_EQ(BOOTSTRAP_NAME_IN_USE, registerName("taken", second));
  EXPECT_EQ(KERN_SUCCESS, registerName("taken", first));
  EXPECT_EQ(first, lookUp("taken"));
  const auto rival = startPeer({"deaf", "taken"});
  EXPECT_EQ(std::to_string(BOOTSTRAP_NAME_IN_USE), rival->readLine());
}

TEST_F(Bootstrap, FindsABusyServer) {
  const auto server = startServer("busy", "deaf");
  EXPECT_NE(MACH_PORT_NULL, lookUp("busy"));
  const OwnPort port;
  EXPECT_EQ(BOOTSTRAP_NAME_IN_USE, registerName("busy", port));
}

TEST_F(Bootstrap, TakesTheNameOfAKilledProcessAtOnce) {
  const auto server = startServer("mortal");
  server->signal(9);
  ASSERT_EQ(-9, server->wait());
  EXPECT_EQ(MACH_PORT_NULL, lookUp("mortal"));
  const OwnPort port;
  EXPECT_EQ(KERN_SUCCESS, registerName("mortal", port));
  EXPECT_EQ(port, lookUp("mortal"));
}

TEST_F(Bootstrap, FindsTheSuccessorUnderANewPortName) {
  auto server = startServer("king");
  const mach_port_name_t old = lookUp("king");
  server->signal(9);
  ASSERT_EQ(-9, server->wait());
  server = startServer("king");
  const mach_port_name_t young = lookUp("king");
  EXPECT_NE(MACH_PORT_NULL, young);
  EXPECT_NE(old, young);
  EXPECT_EQ(MACH_PORT_TYPE_DEAD_NAME, typeOf(old));
}

TEST_F(Bootstrap, LosesTheNamesOfADestroyedPort) {
  OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("one", port));
  ASSERT_EQ(KERN_SUCCESS, registerName("two", port));
  EXPECT_EQ(1u, entriesIn(directory() / "sockets"));
  port.destroy();
  EXPECT_EQ(MACH_PORT_NULL, lookUp("one"));
  EXPECT_EQ(MACH_PORT_NULL, lookUp("two"));
  EXPECT_EQ(0u, entriesIn(directory() / "ports"));
  EXPECT_EQ(0u, entriesIn(directory() / "sockets"));
}

TEST_F(Bootstrap, GivesANameUp) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("one", port));
  ASSERT_EQ(KERN_SUCCESS, registerName("two", port));
  EXPECT_EQ(KERN_SUCCESS, registerName("one", MACH_PORT_NULL));
  EXPECT_EQ(MACH_PORT_NULL, lookUp("one"));
  EXPECT_EQ(port, lookUp("two"));
  EXPECT_EQ(BOOTSTRAP_UNKNOWN_SERVICE, registerName("one", MACH_PORT_NULL));
}

TEST_F(Bootstrap, DoesNotGiveSomebodyElsesNameUp) {
  const auto server = startServer("theirs");
  EXPECT_EQ(BOOTSTRAP_UNKNOWN_SERVICE, registerName("theirs", MACH_PORT_NULL));
  EXPECT_NE(MACH_PORT_NULL, lookUp("theirs"));
}

TEST_F(Bootstrap, LeavesNothingBehindAProcessThatEndsInGoodOrder) {
  const auto server = startServer("polite", "deaf");
  server->closeInput();
  ASSERT_EQ(0, server->wait());
  EXPECT_EQ(0u, entriesIn(directory() / "ports"));
  EXPECT_EQ(0u, entriesIn(directory() / "sockets"));
}

TEST_F(Bootstrap, RegistersOnlyPortsOfThisProcess) {
  const auto server = startServer("theirs");
  EXPECT_EQ(KERN_INVALID_RIGHT, registerName("mine", lookUp("theirs")));
  EXPECT_EQ(KERN_INVALID_RIGHT, registerName("mine", 0x7fff00));
}

TEST_F(Bootstrap, WantsTheBootstrapPort) {
  mach_port_t port = 7;
  EXPECT_EQ(MACH_SEND_INVALID_DEST, bootstrap_look_up(MACH_PORT_NULL, "a", &port));
  EXPECT_EQ(MACH_SEND_INVALID_DEST, bootstrap_register(mach_task_self(), "a", port));
  EXPECT_EQ(KERN_INVALID_ARGUMENT, bootstrap_look_up(kBootstrapPort, nullptr, &port));
  EXPECT_EQ(KERN_INVALID_ARGUMENT, bootstrap_look_up(kBootstrapPort, "a", nullptr));
  EXPECT_EQ(KERN_INVALID_ARGUMENT, bootstrap_register(kBootstrapPort, nullptr, port));
}

TEST_F(Bootstrap, FallsBackToTheSystemsNames) {
  const fs::path systems = root.path() / "run/quorvant";
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("daemon", port));
  fs::create_directories(systems / "ports");
  fs::create_hard_link(directory() / "ports/daemon", systems / "ports/daemon");
  ASSERT_EQ(KERN_SUCCESS, registerName("daemon", MACH_PORT_NULL));
  EXPECT_EQ(port, lookUp("daemon"));
}

TEST_F(Bootstrap, RefusesANameSpaceThatOthersMayWriteTo) {
  const OwnPort port;
  fs::create_directories(directory());
  fs::permissions(directory(), fs::perms::all);
  EXPECT_EQ(BOOTSTRAP_NOT_PRIVILEGED, registerName("a", port));
  EXPECT_EQ(BOOTSTRAP_NOT_PRIVILEGED, lookUpCode("a"));
  fs::permissions(directory(), fs::perms::owner_all);
  EXPECT_EQ(KERN_SUCCESS, registerName("a", port));
}

TEST_F(Bootstrap, RefusesANameSpaceBehindALink) {
  const OwnPort port;
  const fs::path elsewhere = root.path() / "elsewhere";
  fs::create_directories(elsewhere);
  fs::permissions(elsewhere, fs::perms::owner_all);
  fs::create_directories(directory().parent_path());
  fs::create_directory_symlink(elsewhere, directory());
  EXPECT_EQ(BOOTSTRAP_NOT_PRIVILEGED, registerName("a", port));
  EXPECT_EQ(0u, entriesIn(elsewhere));
}

TEST_F(Bootstrap, FollowsNoPlantedLink) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("real", port));
  fs::create_symlink("real", directory() / "ports/planted");
  EXPECT_EQ(BOOTSTRAP_NOT_PRIVILEGED, lookUpCode("planted"));
  EXPECT_EQ(BOOTSTRAP_NOT_PRIVILEGED, registerName("planted", port));
  std::ofstream(directory() / "ports/file") << "not a socket";
  EXPECT_EQ(BOOTSTRAP_NOT_PRIVILEGED, lookUpCode("file"));
}

TEST_F(Bootstrap, RecreatesARemovedNameSpace) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("a", port));
  fs::remove_all(directory());
  EXPECT_EQ(MACH_PORT_NULL, lookUp("a"));
  EXPECT_EQ(KERN_SUCCESS, registerName("a", port));
  EXPECT_EQ(port, lookUp("a"));
  EXPECT_EQ(1u, entriesIn(directory() / "sockets"));
}

TEST_F(Bootstrap, RemakesASingleLostName) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("a", port));
  fs::remove(directory() / "ports/a");
  EXPECT_EQ(MACH_PORT_NULL, lookUp("a"));
  EXPECT_EQ(KERN_SUCCESS, registerName("a", port));
  EXPECT_EQ(port, lookUp("a"));
}

TEST_F(Bootstrap, MakesItsDirectoriesPrivate) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("a", port));
  EXPECT_EQ(fs::perms::owner_all, fs::status(directory()).permissions());
  EXPECT_EQ(fs::perms::owner_all, fs::status(directory() / "ports").permissions());
}

}  // namespace
}  // namespace tests
