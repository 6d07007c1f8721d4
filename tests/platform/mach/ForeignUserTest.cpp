// Licence: MIT, see LICENSE.
// Processes of other users, at a port that is one user's own.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <stdexcept>

#include "tests/platform/mach/MachTesting.h"
#include "tests/support/Stranger.h"

namespace tests {
namespace {

using platform::mach::receive;

constexpr uid_t kOwner = 12345;
constexpr uid_t kStranger = 54321;

enum Ending : int { kServed = 10, kCutOff = 11, kKeptOut = 12, kNoUser = 13 };

class ForeignUserAsRoot : public MachTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(0u, geteuid()) << "only root can be several users";
    ASSERT_EQ(0, chmod(root.path().c_str(), 0755));
  }
  void TearDown() override { ASSERT_EQ(0, seteuid(0)); }

  /// Registers the victim, as a user to whom the name space belongs.
  void listenAs(uid_t user) {
    const std::filesystem::path runs = root.path() / "run/user" / std::to_string(user);
    std::filesystem::create_directories(runs);
    ASSERT_EQ(0, chown(runs.c_str(), user, user));
    ASSERT_EQ(0, seteuid(user));
    ASSERT_EQ(KERN_SUCCESS, registerName("victim", port));
    ASSERT_EQ(KERN_SUCCESS, set.insert(port));
    name = directory() / "ports/victim";
  }

  /// Lets everybody past the permissions of the files.
  void openUp() const {
    for (const char* part : {"", "ports", "sockets"}) {
      ASSERT_EQ(0, chmod((directory() / part).c_str(), 0755));
    }
    ASSERT_EQ(0, chmod(name.c_str(), 0666));
  }

  /// What becomes of another user's process that sends one request.
  Ending endingOf(uid_t user) {
    const pid_t child = fork();
    if (child == 0) _exit(ask(user));
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) answerOne();
    EXPECT_TRUE(WIFEXITED(status));
    return static_cast<Ending>(WEXITSTATUS(status));
  }

  OwnPort port;
  PortSet set;
  std::filesystem::path name;
  int taken = 0;

 private:
  Ending ask(uid_t user) const {
    if (seteuid(0) != 0 || setgid(user) != 0 || setuid(user) != 0) return kNoUser;
    try {
      Stranger stranger(name);
      if (!stranger.send(wholePacket("request", 1).bytes())) return kCutOff;
      return stranger.receive() ? kServed : kCutOff;
    } catch (const std::runtime_error&) {
      return kKeptOut;
    }
  }

  void answerOne() {
    mach_port_name_t ready = MACH_PORT_NULL;
    Message message;
    if (set.wait(ready, shortly()) != PortSet::Outcome::kMessage) return;
    ASSERT_EQ(KERN_SUCCESS, receive(port, message, Deadline::immediate()));
    ++taken;
    EXPECT_EQ(KERN_SUCCESS, platform::mach::send(message.reply, MACH_PORT_NULL, 1, {}, soon()));
  }
};

TEST_F(ForeignUserAsRoot, IsKeptOutByTheFiles) {
  ASSERT_NO_FATAL_FAILURE(listenAs(kOwner));
  EXPECT_EQ(kKeptOut, endingOf(kStranger));
  EXPECT_EQ(kServed, endingOf(kOwner));
}

TEST_F(ForeignUserAsRoot, IsCutOffWhereTheFilesLetItIn) {
  ASSERT_NO_FATAL_FAILURE(listenAs(kOwner));
  ASSERT_NO_FATAL_FAILURE(openUp());
  EXPECT_EQ(kCutOff, endingOf(kStranger));
  EXPECT_EQ(0, taken);
  EXPECT_EQ(kServed, endingOf(kOwner));
  EXPECT_EQ(1, taken);
}

TEST_F(ForeignUserAsRoot, IsServedWhenItIsRoot) {
  ASSERT_NO_FATAL_FAILURE(listenAs(kOwner));
  EXPECT_EQ(kServed, endingOf(0));
}

TEST_F(ForeignUserAsRoot, IsCutOffFromRootsOwnPorts) {
  ASSERT_NO_FATAL_FAILURE(listenAs(0));
  ASSERT_NO_FATAL_FAILURE(openUp());
  for (const char* part : {"run", "run/user", "run/user/0"}) {
    ASSERT_EQ(0, chmod((root.path() / part).c_str(), 0755));
  }
  EXPECT_EQ(kCutOff, endingOf(kStranger));
  EXPECT_EQ(0, taken);
}

// A name space that somebody laid out for us to walk into.
TEST_F(ForeignUserAsRoot, CannotLendItsNameSpace) {
  ASSERT_NO_FATAL_FAILURE(listenAs(kStranger));
  ASSERT_EQ(0, seteuid(0));
  const std::filesystem::path own = directory();
  std::filesystem::create_directories(own.parent_path());
  std::filesystem::rename(root.path() / "run/user" / std::to_string(kStranger) / "quorvant", own);
  mach_port_t found = 7;
  EXPECT_EQ(BOOTSTRAP_NOT_PRIVILEGED, bootstrap_look_up(kBootstrapPort, "victim", &found));
  EXPECT_EQ(MACH_PORT_NULL, found);
  EXPECT_EQ(BOOTSTRAP_NOT_PRIVILEGED, registerName("mine", port));
}

}  // namespace
}  // namespace tests
