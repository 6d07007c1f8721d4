// Licence: MIT, see LICENSE.
// Servers that are killed or stopped while a client waits for their answer.
#include <AE/AppleEvents.h>
#include <signal.h>

#include "tests/integration/Faults.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/StressCount.h"

namespace {

using tests::Answer;
using tests::ChildProcess;
using tests::kAgentPort;
using tests::kReaction;
using tests::medianOf;
using tests::Microseconds;
using tests::mixtures;
using tests::now;
using tests::PseudoTerminal;
using tests::stressCount;

class KilledServer : public tests::Faults {};

INSTANTIATE_TEST_SUITE_P(Of, KilledServer, testing::ValuesIn(mixtures()), tests::nameOf);

// The one in the middle of several, since the host may take the processor away from any of them.
TEST_P(KilledServer, IsNoticedWithin50Milliseconds) {
  std::vector<Microseconds> delays;
  for (int round = 0; round < stressCount(30); ++round) {
    Child server = startServer();
    Child client = startClient();
    hold(*client, *server);
    const Microseconds killed = now();
    server->signal(SIGKILL);
    const Answer answer = readAnswer(*client);
    EXPECT_EQ(answer.status, connectionInvalid);
    EXPECT_EQ(answer.answer, -1);
    delays.push_back(answer.ended - killed);
  }
  RecordProperty("MedianMicroseconds", static_cast<int>(medianOf(delays).count()));
  EXPECT_LE(medianOf(delays), kReaction);
}

TEST_P(KilledServer, IsNoticedByEverybodyWhoWaits) {
  Child server = startServer();
  std::vector<Child> clients;
  for (int i = 0; i < 8; ++i) clients.push_back(startClient());
  hold(*clients[0], *server);
  for (int i = 1; i < 8; ++i) {
    ASSERT_TRUE(clients[i]->writeLine("ask TesT numb 2 3600"));
  }
  server->signal(SIGKILL);
  for (const Child& client : clients) EXPECT_EQ(readAnswer(*client).status, connectionInvalid);
}

TEST_P(KilledServer, IsSucceededAtOnce) {
  Child server = startServer();
  Child client = startClient();
  hold(*client, *server);
  server->signal(SIGKILL);
  EXPECT_EQ(readAnswer(*client).status, connectionInvalid);
  EXPECT_EQ(ask(*client, "ask TesT numb 2 3600").status, connectionInvalid);
  Child successor = startServer();
  EXPECT_EQ(command(*client, "find"), "0");
  expectService(*client, 3);
}

// The alert is up and nobody has answered it yet.
TEST_P(KilledServer, IsNoticedWhenItIsTheAgentWithItsAlert) {
  const tests::Build& build = *GetParam().server;
  PseudoTerminal terminal({build.agent},
                          {.environment = {{"QRL_UI", "terminal"}}, .runner = build.runner});
  waitForName(kAgentPort);
  Child client = startClient(kAgentPort);
  ASSERT_TRUE(client->writeLine("ask QrlP Mcam 0 3600"));
  ASSERT_TRUE(terminal.readUntil("OK").has_value()) << terminal.screen();
  const Microseconds killed = now();
  kill(terminal.pid(), SIGKILL);
  const Answer answer = readAnswer(*client);
  EXPECT_EQ(answer.status, connectionInvalid);
  // Once only, so the bound allows for what the host does meanwhile.
  EXPECT_LE(answer.ended - killed, 10 * kReaction);
  Child successor = startAgent({}, build);
  EXPECT_EQ(command(*client, "find"), "0");
  EXPECT_EQ(ask(*client, "ask QrlP Mcam 0 3600").status, noErr);
}

class StoppedServer : public tests::Faults {
 protected:
  static constexpr char kTicks[] = "6";
  static constexpr Microseconds kTimeOut{100'000};

  // Counts the late answers that the server gives once it goes on.
  void askInVain(ChildProcess& client, const std::string& request) {
    const Answer answer = ask(client, request);
    EXPECT_EQ(answer.status, errAETimeout);
    EXPECT_EQ(answer.answer, -1);
    EXPECT_GE(answer.spent, kTimeOut);
    spans.push_back(answer.spent);
  }

  std::vector<Microseconds> spans;
};

INSTANTIATE_TEST_SUITE_P(Of, StoppedServer, testing::ValuesIn(mixtures()), tests::nameOf);

TEST_P(StoppedServer, CostsTheTimeOutAndNothingElse) {
  Child server = startServer();
  Child client = startClient();
  hold(*client, *server, kTicks);
  server->signal(SIGSTOP);
  EXPECT_EQ(readAnswer(*client).status, errAETimeout);
  for (int i = 0; i < 5; ++i) askInVain(*client, std::string("ask TesT numb 2 ") + kTicks);
  EXPECT_LE(medianOf(spans), kTimeOut + kReaction);
  server->signal(SIGCONT);
  ASSERT_TRUE(server->writeLine("go on"));
  const Answer answer = ask(*client, "ask TesT numb 3 3600");
  EXPECT_EQ(answer.status, noErr);
  EXPECT_EQ(answer.answer, 3);
  EXPECT_EQ(answer.handled, 6);
}

// The same event twice over the same reply port: only the right for the answer tells them apart.
TEST_P(StoppedServer, DoesNotAnswerTheNextRequestWithItsLateReply) {
  Child server = startServer();
  Child client = startClient();
  server->signal(SIGSTOP);
  askInVain(*client, std::string("ask TesT numb 5 ") + kTicks);
  askInVain(*client, std::string("again ") + kTicks);
  server->signal(SIGCONT);
  const Answer answer = ask(*client, "again 3600");
  EXPECT_EQ(answer.status, noErr);
  EXPECT_EQ(answer.answer, 5);
  EXPECT_EQ(answer.handled, 2);
}

TEST_P(StoppedServer, IsAwaitedByThoseWhoHaveTheTime) {
  Child server = startServer();
  Child patient = startClient();
  Child impatient = startClient();
  server->signal(SIGSTOP);
  ASSERT_TRUE(patient->writeLine("ask TesT numb 8 3600"));
  askInVain(*impatient, std::string("ask TesT numb 9 ") + kTicks);
  server->signal(SIGCONT);
  const Answer answer = readAnswer(*patient);
  EXPECT_EQ(answer.status, noErr);
  EXPECT_EQ(answer.answer, 8);
}

// A new client is let in by the host, so that it too waits no longer than it wants to.
TEST_P(StoppedServer, IsFoundAndCostsANewClientItsTimeOut) {
  Child server = startServer();
  server->signal(SIGSTOP);
  Child client = startClient();
  askInVain(*client, std::string("ask TesT numb 5 ") + kTicks);
  server->signal(SIGCONT);
  expectService(*client, 6);
}

}  // namespace
