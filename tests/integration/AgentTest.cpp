// Licence: MIT, see LICENSE.
// The life of the agent as a process: its command line, its alert, its quitting.
#include <gmock/gmock.h>
#include <signal.h>

#include "tests/integration/Programs.h"
#include "tests/support/LogListener.h"
#include "tests/support/PseudoTerminal.h"

namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::EndsWith;
using testing::Optional;
using testing::StartsWith;
using tests::ChildOptions;
using tests::ChildProcess;
using tests::kAgentPort;
using tests::LogListener;
using tests::PseudoTerminal;
using tests::thisBuild;

using Words = std::vector<std::string>;
const Words kShowAlert{"send", kAgentPort, "QrlP", "Mcam"};
const Words kQuit{"quit", kAgentPort};

class Agent : public tests::Integration {};

TEST_F(Agent, ShowsTheAlertOnceAndExitsWith0) {
  LogListener log(root.path());
  Child agent = startAgent();
  EXPECT_EQ(qrl(kShowAlert).status, 0);
  EXPECT_EQ(agent->wait(), 0);
  EXPECT_THAT(log.readLine(), Optional(AllOf(StartsWith("alert: Camera agent: "),
                                             EndsWith("[answered with \"OK\"]"))));
  EXPECT_TRUE(log.isQuiet());
}

TEST_F(Agent, GivesItsNameUpWhenItExits) {
  Child agent = startAgent();
  EXPECT_EQ(qrl(kShowAlert).status, 0);
  EXPECT_EQ(agent->wait(), 0);
  EXPECT_EQ(qrl({"wait", kAgentPort, "--gone", "--timeout", "0"}).status, 0);
}

TEST_F(Agent, ExitsWith159WhenTheNameIsTakenAndLeavesTheFirstAlone) {
  Child first = startAgent();
  ChildProcess second({thisBuild().agent}, {.environment = {{"QRL_UI", "none"}}});
  EXPECT_EQ(second.wait(), 159);
  EXPECT_EQ(first->wait(0ms), std::nullopt);
  EXPECT_EQ(qrl(kShowAlert).status, 0);
  EXPECT_EQ(first->wait(), 0);
}

TEST_F(Agent, TakesTheNameAtOnceWhenTheFirstWasKilled) {
  Child first = startAgent();
  first->signal(SIGKILL);
  EXPECT_EQ(first->wait(), -SIGKILL);
  Child second = startAgent();
  EXPECT_EQ(second->wait(0ms), std::nullopt);
  EXPECT_EQ(qrl(kShowAlert).status, 0);
  EXPECT_EQ(second->wait(), 0);
}

TEST_F(Agent, AnswersAnUnknownEventWithNotHandledAndLivesOn) {
  Child agent = startAgent();
  tests::Outcome outcome = qrl({"send", kAgentPort, "abcd", "efgh"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors, "errn -1708 (errAEEventNotHandled)\n");
  EXPECT_EQ(qrl({"send", kAgentPort, "aevt", "oapp"}).status, 1);
  EXPECT_EQ(agent->wait(0ms), std::nullopt);
}

TEST_F(Agent, AnswersNothingWhenNoReplyIsWanted) {
  Child agent = startAgent();
  tests::Outcome outcome = qrl({"send", kAgentPort, "abcd", "efgh", "--no-reply"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output + outcome.errors, "");
  EXPECT_EQ(qrl(kQuit).status, 0);
  EXPECT_EQ(agent->wait(), 0);
}

class StayingAgent : public Agent, public testing::WithParamInterface<Words> {};

TEST_P(StayingAgent, ShowsAlertsUntilItIsToldToQuit) {
  LogListener log(root.path());
  Child agent = startAgent(GetParam());
  EXPECT_EQ(qrl(kShowAlert).status, 0);
  EXPECT_EQ(qrl(kShowAlert).status, 0);
  EXPECT_TRUE(log.readLine().has_value());
  EXPECT_TRUE(log.readLine().has_value());
  EXPECT_EQ(agent->wait(0ms), std::nullopt);
  EXPECT_EQ(qrl(kQuit).status, 0);
  EXPECT_EQ(agent->wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(Table, StayingAgent,
                         testing::Values(Words{"-keepRunning"}, Words{"-r"},
                                         Words{"-keepRunning", "-r"},
                                         Words{"-keepRunning", "-keepRunning"}, Words{"-r", "-r"},
                                         Words{"anything", "-r"}));

class LookAlike : public Agent, public testing::WithParamInterface<Words> {};

TEST_P(LookAlike, IsIgnored) {
  Child agent = startAgent(GetParam());
  EXPECT_EQ(qrl(kShowAlert).status, 0);
  EXPECT_EQ(agent->wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(Table, LookAlike,
                         testing::Values(Words{"-keepRunningX"}, Words{"-k"}, Words{"-r2"},
                                         Words{"-rx"}, Words{"-keepRunnin"}, Words{"-R"},
                                         Words{"--help", ""}));

// An agent whose alert is up in front of a person who has not answered it yet.
class AgentWithAlert : public Agent {
 protected:
  AgentWithAlert() {
    waitForName(kAgentPort);
    client = startQrl(kShowAlert);
    EXPECT_TRUE(terminal.readUntil(kPrompt).has_value()) << terminal.screen();
  }
  void answer() { terminal.type("\n"); }

  static constexpr char kPrompt[] = "OK";
  PseudoTerminal terminal{{thisBuild().agent}, {.environment = {{"QRL_UI", "terminal"}}}};
  Child client;
};

TEST_F(AgentWithAlert, AnswersItsClientWhenThePersonHasAnswered) {
  EXPECT_EQ(client->wait(0ms), std::nullopt);
  answer();
  EXPECT_EQ(client->wait(), 0);
  EXPECT_EQ(terminal.wait(), 0);
}

TEST_F(AgentWithAlert, AnswersAQuitAtOnceAndExitsAfterTheAlert) {
  EXPECT_EQ(qrl(kQuit).status, 0);
  EXPECT_EQ(client->wait(0ms), std::nullopt);
  EXPECT_EQ(terminal.wait(0ms), std::nullopt);
  answer();
  EXPECT_EQ(client->wait(), 0);
  EXPECT_EQ(terminal.wait(), 0);
}

TEST_F(AgentWithAlert, LivesOnWhileAHighLevelEventIsQueuedBehindIt) {
  const std::string process = serialNumberOf(kAgentPort);
  EXPECT_EQ(qrl({"send", "--process", process, "QrlP", "Mcam", "--no-reply"}).status, 0);
  answer();
  EXPECT_EQ(client->wait(), 0);
  EXPECT_TRUE(terminal.readUntil(kPrompt).has_value()) << "no second alert";
  EXPECT_EQ(terminal.wait(0ms), std::nullopt);
  answer();
  EXPECT_EQ(terminal.wait(), 0);
}

TEST_F(AgentWithAlert, TellsItsClientByDyingThatThereIsNoAnswer) {
  kill(terminal.pid(), SIGKILL);
  EXPECT_EQ(client->wait(), 76);
}

TEST_F(AgentWithAlert, LetsAClientGiveUpWaiting) {
  tests::Outcome outcome = qrl({"send", kAgentPort, "QrlP", "Mcam", "--timeout", "0.2"});
  EXPECT_EQ(outcome.status, 124);
  EXPECT_EQ(outcome.errors, "qrl: port com.quorvant.qrlagentd.1.1 did not answer in time\n");
}

}  // namespace
