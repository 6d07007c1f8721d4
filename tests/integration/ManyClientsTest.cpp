// Licence: MIT, see LICENSE.
// Clients that are many, that die, that do not read or that do not stop sending, and the others,
// who must not notice.
#include <AE/AppleEvents.h>
#include <signal.h>

#include "tests/integration/Faults.h"
#include "tests/support/StressCount.h"

namespace {

using namespace std::chrono_literals;
using tests::Answer;
using tests::ChildProcess;
using tests::kTimeScale;
using tests::medianOf;
using tests::Microseconds;
using tests::mixtures;
using tests::Sent;
using tests::stressCount;

class ManyClients : public tests::Faults {
 protected:
  std::vector<Child> startClients(int count) {
    std::vector<Child> clients;
    for (int i = 0; i < count; ++i) clients.push_back(startLoneClient());
    for (const Child& client : clients) EXPECT_EQ(client->readLine(), "0");
    return clients;
  }
};

INSTANTIATE_TEST_SUITE_P(Of, ManyClients, testing::ValuesIn(mixtures()), tests::nameOf);

// Each request has a number of its own, which the server notes and sends back.
TEST_P(ManyClients, AreAllAnsweredAndOnce) {
  constexpr int kClients = 64;
  const int requests = stressCount(200);
  Child server = startServer();
  const std::vector<Child> clients = startClients(kClients);
  for (int i = 0; i < kClients; ++i) {
    const std::string first = std::to_string(1 + i * requests);
    ASSERT_TRUE(clients[i]->writeLine("many " + std::to_string(requests) + " " + first));
  }
  for (const Child& client : clients) EXPECT_EQ(client->readLine(), std::to_string(requests));
  const Answer different = ask(*clients[0], "ask TesT sums 0 3600");
  EXPECT_EQ(different.answer, kClients * requests);
  EXPECT_EQ(different.handled, kClients * requests);
}

class DyingClient : public ManyClients {};

INSTANTIATE_TEST_SUITE_P(Of, DyingClient, testing::ValuesIn(mixtures()), tests::nameOf);

TEST_P(DyingClient, LeavesTheServerGoingOn) {
  Child server = startServer();
  Child witness = startClient();
  expectService(*witness, 1);
  const std::size_t before = descriptorsOf(*server);
  for (int round = 0; round < stressCount(50); ++round) {
    Child client = startClient();
    hold(*client, *server);
    client->signal(SIGKILL);
    ASSERT_EQ(client->wait(), -SIGKILL);
    ASSERT_TRUE(server->writeLine("go on"));
    expectService(*witness, round);
  }
  expectDescriptors(*server, *witness, before);
}

// The server is stopped until the client is dead, so that every one of the answers is in vain.
TEST_P(DyingClient, LeavesNoMemoryBehind) {
  constexpr long kAnswer = 4 << 20;
  const int rounds = stressCount(40);
  Child server = startServer({"tidy"});
  Child witness = startClient();
  long before = 0;
  for (int round = -3; round < rounds; ++round) {
    if (round == 0) before = memoryOf(*server);
    Child client = startClient();
    expectService(*client, 0);
    server->signal(SIGSTOP);
    EXPECT_EQ(send(*client, "pour 1 " + std::to_string(kAnswer)).count, 1);
    client->signal(SIGKILL);
    ASSERT_EQ(client->wait(), -SIGKILL);
    server->signal(SIGCONT);
    expectService(*witness, round);
  }
  EXPECT_LT(memoryOf(*server) - before, rounds * (kAnswer / 1024) / 2);
}

class SilentClient : public ManyClients {
 protected:
  static constexpr long kAnswer = 1 << 20;
  const int requests = stressCount(200);
  const std::string pour = "pour " + std::to_string(requests) + " " + std::to_string(kAnswer);
};

INSTANTIATE_TEST_SUITE_P(Of, SilentClient, testing::ValuesIn(mixtures()), tests::nameOf);

TEST_P(SilentClient, HoldsNobodyUpAndCostsTheServerLittleMemory) {
  Child server = startServer({"tidy"});
  Child witness = startClient();
  Child silent = startClient();
  expectService(*silent, 0);
  const long before = memoryOf(*server);
  EXPECT_EQ(send(*silent, pour).count, requests);
  const Answer answer = ask(*witness, "ask TesT numb 1 3600");
  EXPECT_EQ(answer.status, noErr);
  // At most a moment for each answer that finds no room, which is one: a minute would be its
  // time-out.
  EXPECT_LT(answer.spent, 2s * kTimeScale);
  EXPECT_EQ(command(*witness, "many 100 1000"), "100");
  // One answer in the backlog, copies of one in the making, the blocks that are kept for reuse, and
  // what the allocator holds back: the same for ten times as many answers.
  EXPECT_LT(memoryOf(*server) - before, (kTimeScale > 1 ? 16 : 48) * (kAnswer / 1024));
}

TEST_P(SilentClient, IsServedAgainOnceItReads) {
  Child server = startServer({"tidy"});
  Child silent = startClient();
  EXPECT_EQ(send(*silent, pour).count, requests);
  const Answer answer = ask(*silent, "ask TesT numb 9 3600");
  EXPECT_EQ(answer.status, noErr);
  EXPECT_EQ(answer.answer, 9);
  EXPECT_EQ(answer.handled, requests);
}

TEST_P(SilentClient, LeavesNothingBehindWhenItDies) {
  Child server = startServer({"tidy"});
  Child witness = startClient();
  expectService(*witness, 0);
  const std::size_t before = descriptorsOf(*server);
  Child silent = startClient();
  EXPECT_EQ(send(*silent, pour).count, requests);
  expectService(*witness, 1);
  silent->signal(SIGKILL);
  expectDescriptors(*server, *witness, before);
}

class FloodingClient : public ManyClients {
 protected:
  static constexpr int kFlooders = 8;
};

INSTANTIATE_TEST_SUITE_P(Of, FloodingClient, testing::ValuesIn(mixtures()), tests::nameOf);

// While the server is held, everybody sends as much as there is room for. Then it takes turns: in
// each round one event of each client at most, wherever it stands in its own client's row. Rounds
// are under way when the server is held and when the last client is let in, hence the factor.
TEST_P(FloodingClient, GetsOneTurnInEachRound) {
  Child server = startServer();
  Child holder = startClient();
  hold(*holder, *server);
  long waiting = 0;
  const std::vector<Child> flooders = startClients(kFlooders);
  for (const Child& flooder : flooders) waiting += send(*flooder, "fill 0").count;
  EXPECT_GT(waiting, 50 * kFlooders);
  Child modest = startClient();
  EXPECT_EQ(send(*modest, "tell mark 1").count, 1);
  ASSERT_TRUE(server->writeLine("go on"));
  const std::string marked = server->readLine().value_or("");
  ASSERT_EQ(marked.rfind("marked ", 0), 0u) << marked;
  EXPECT_LE(std::stol(marked.substr(7)), 1 + 4 * (kFlooders + 1));
}

// The bound is what the host's scheduler may take before everybody had the processor once; a round
// of the server is a fraction of that.
TEST_P(FloodingClient, LeavesOthersAQuickAnswer) {
  Child server = startServer();
  std::vector<Child> flooders = startClients(3);
  for (const Child& flooder : flooders) ASSERT_TRUE(flooder->writeLine("tell numb 2000000000"));
  Child modest = startClient();
  std::vector<Microseconds> spans;
  for (int i = 0; i < stressCount(200); ++i) {
    const Answer answer = ask(*modest, "ask TesT numb 5 3600");
    EXPECT_EQ(answer.status, noErr);
    spans.push_back(answer.spent);
  }
  RecordProperty("MedianMicroseconds", static_cast<int>(medianOf(spans).count()));
  EXPECT_LT(medianOf(spans), 50ms * kTimeScale);
  for (const Child& flooder : flooders) EXPECT_EQ(flooder->readLine(0ms), std::nullopt);
}

}  // namespace
