// Licence: MIT, see LICENSE.
#include "platform/host/ChildProgram.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <thread>

#include "tests/support/PrivateRoot.h"

namespace {

using namespace platform::host;

class Child : public testing::Test {
 protected:
  static std::optional<ChildProgram> shell(const std::string& script) {
    auto started = ChildProgram::start({"/bin/sh", "-c", script});
    if (!started) return std::nullopt;
    return std::move(*started);
  }
  WakeEvent wake = std::move(*WakeEvent::make());
};

TEST_F(Child, TellsItsExitStatus) {
  for (int status : {0, 1, 102, 255}) {
    auto child = shell("exit " + std::to_string(status));
    ASSERT_TRUE(child);
    auto ended = child->wait(wake);
    ASSERT_TRUE(ended);
    EXPECT_EQ(*ended, status);
  }
}

TEST_F(Child, TellsThatASignalEndedIt) {
  auto child = shell("kill -KILL $$");
  ASSERT_TRUE(child);
  auto ended = child->wait(wake);
  ASSERT_FALSE(ended);
  EXPECT_EQ(ended.error(), Error::kFailed);
}

TEST_F(Child, EndsWithTheThreadThatStartedIt) {
  std::optional<ChildProgram> child;
  std::thread([&] { child.emplace(*shell("exec sleep 1000")); }).join();
  ASSERT_TRUE(child);
  auto ended = child->wait(wake);
  ASSERT_FALSE(ended);
  EXPECT_EQ(ended.error(), Error::kFailed);
}

TEST_F(Child, IsInterruptedWhereThatIsHowItEnds) {
  tests::PrivateRoot root;
  const std::string trace = root.path() / "trace", ready = root.path() / "ready";
  mkfifo(ready.c_str(), 0600);
  {
    auto child = ChildProgram::start({"/bin/sh", "-c",
                                      "trap 'echo tidied > " + trace + "; exit 0' INT; : > " +
                                          ready + "; while :; do sleep 0.01; done"},
                                     ChildProgram::Ending::kInterrupt);
    ASSERT_TRUE(child);
    std::ifstream(ready).get();  // until it has been told what to do
  }
  std::string line;
  std::getline(std::ifstream(trace) >> std::ws, line);
  EXPECT_EQ(line, "tidied");
}

TEST_F(Child, IsLeftWhenTheEventIsRaisedAndEndedWithItsOwner) {
  {
    auto child = shell("exec sleep 1000");
    ASSERT_TRUE(child);
    wake.raise();
    auto ended = child->wait(wake);
    ASSERT_FALSE(ended);
    EXPECT_EQ(ended.error(), Error::kWouldBlock);
  }
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);  // nothing is left of it
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(Child, IsKilledWhenItDoesNotWantToEnd) {
  tests::PrivateRoot root;
  const std::string ready = root.path() / "ready";
  ASSERT_EQ(mkfifo(ready.c_str(), 0600), 0);
  {
    auto child = shell("trap '' TERM; echo > " + ready + "; while :; do sleep 1; done");
    ASSERT_TRUE(child);
    std::string line;
    std::ifstream(ready) >> line;  // its trap is set
  }
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(Child, HasNeitherInputNorSignalsBlocked) {
  sigset_t stops, earlier;
  sigemptyset(&stops);
  sigaddset(&stops, SIGTERM);
  sigprocmask(SIG_BLOCK, &stops, &earlier);
  auto child = shell("read x && exit 3; kill -TERM $$; exit 4");
  sigprocmask(SIG_SETMASK, &earlier, nullptr);
  ASSERT_TRUE(child);
  auto ended = child->wait(wake);
  ASSERT_FALSE(ended);
  EXPECT_EQ(ended.error(), Error::kFailed);
}

TEST_F(Child, CannotBeAProgramThatDoesNotExist) {
  auto started = ChildProgram::start({"/no/such/program"});
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error(), Error::kNotFound);
}

}  // namespace
