// Licence: MIT, see LICENSE.
// The agent and another program before one person at a desktop, whose windows a script plays.
#include <gtest/gtest.h>

#include "tests/integration/Programs.h"
#include "tests/platform/userinterface/AlertFile.h"
#include "tests/support/StandIn.h"

namespace {

using namespace std::chrono_literals;
using tests::kAgentPort;

class AgentBesideAnotherAlert : public tests::Integration {
 protected:
  AgentBesideAnotherAlert() {
    standIns.install("zenity",
                     "echo \"$*\" > " + shown.path() + "; read x < " + answer.path() + "\n");
    other = start({QRL_ALERT_PROGRAM, "one"},
                  {{"QRL_RESOURCE_FILE", tests::writeAlertFile(root.path())}});
    EXPECT_EQ(shown.readLine(), kOthersWindow);
    agent = start({tests::thisBuild().agent});
    waitForName(kAgentPort);
  }
  Child start(const Words& command,
              std::vector<std::pair<std::string, std::string>> environment = {}) {
    environment.insert(environment.end(), {{"QRL_UI", "desktop"},
                                           {"DISPLAY", ":77"},
                                           {"XDG_CURRENT_DESKTOP", ""},
                                           {"PATH", standIns.folder()}});
    return std::make_unique<tests::ChildProcess>(command, tests::ChildOptions{environment});
  }
  void waitForTheAgentsAlert() {
    const std::string window = shown.readLine();
    EXPECT_NE(window, kOthersWindow);
    EXPECT_EQ(window.find("--info"), 0u) << window;
  }

  static constexpr char kOthersWindow[] = "--info --no-markup --title=The title --text=The";
  tests::StandIns standIns{root.path()};
  tests::Fifo shown{root.path() / "shown"};
  tests::Fifo answer{root.path() / "answer"};
  Child other;
  Child agent;
};

TEST_F(AgentBesideAnotherAlert, WaitsForItsTurnAndAnswersAQuitMeanwhile) {
  EXPECT_EQ(qrl({"send", kAgentPort, "QrlP", "Mcam", "--no-reply"}).status, 0);
  EXPECT_EQ(qrl({"quit", kAgentPort}).status, 0);
  EXPECT_EQ(agent->wait(0ms), std::nullopt);
  answer.writeLine("");
  EXPECT_EQ(other->readLine(), "alert 138: item 1.");
  waitForTheAgentsAlert();
  EXPECT_EQ(agent->wait(0ms), std::nullopt);
  answer.writeLine("");
  EXPECT_EQ(agent->wait(), 0);
}

TEST_F(AgentBesideAnotherAlert, HasItsTurnAtOnceWhenTheOtherDies) {
  Child client = startQrl({"send", kAgentPort, "QrlP", "Mcam"});
  other->signal(SIGKILL);
  waitForTheAgentsAlert();
  EXPECT_EQ(client->wait(0ms), std::nullopt);
  answer.writeLine("");
  EXPECT_EQ(client->wait(), 0);
  EXPECT_EQ(agent->wait(), 0);
}

}  // namespace
