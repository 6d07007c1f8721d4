// Licence: MIT, see LICENSE.
// Room that runs out: in queues, in the table of descriptors, in the name space and on the disk. A
// status tells it, nobody crashes, and once there is room again there is service again.
#include <AE/AppleEvents.h>
#include <servers/bootstrap.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <filesystem>
#include <fstream>

#include "tests/integration/Faults.h"
#include "tests/support/Command.h"

namespace {

using namespace std::chrono_literals;
using tests::Answer;
using tests::ChildProcess;
using tests::kReaction;
using tests::mixtures;
using tests::Sent;

std::string codeOf(int status) { return std::to_string(status); }

class FullQueue : public tests::Faults {
 protected:
  // As many events as there is room for, and nothing is lost of them.
  long fill(ChildProcess& client) {
    const Sent filled = send(client, "fill 0");
    EXPECT_EQ(filled.status, errAETimeout);
    EXPECT_GT(filled.count, 50);
    return filled.count;
  }

  void release(ChildProcess& server, ChildProcess& holder) {
    ASSERT_TRUE(server.writeLine("go on"));
    EXPECT_EQ(readAnswer(holder).status, noErr);
  }
};

INSTANTIATE_TEST_SUITE_P(Of, FullQueue, testing::ValuesIn(mixtures()), tests::nameOf);

TEST_P(FullQueue, CostsASenderItsTimeOut) {
  Child server = startServer();
  Child holder = startClient();
  Child client = startClient();
  hold(*holder, *server);
  const long waiting = fill(*client);
  const Sent refused = send(*client, "fill 30");
  EXPECT_EQ(refused.count, 0);
  EXPECT_EQ(refused.status, errAETimeout);
  EXPECT_GE(refused.spent, 500ms);
  EXPECT_LE(refused.spent, 500ms + 5 * kReaction);
  release(*server, *holder);
  const Answer answer = ask(*client, "ask TesT numb 7 3600");
  EXPECT_EQ(answer.status, noErr);
  EXPECT_EQ(answer.handled, 1 + waiting);
}

TEST_P(FullQueue, HoldsASenderWithoutATimeOutUntilThereIsRoom) {
  Child server = startServer();
  Child holder = startClient();
  Child client = startClient();
  hold(*holder, *server);
  const long waiting = fill(*client);
  ASSERT_TRUE(client->writeLine("tell numb 100"));
  EXPECT_EQ(client->readLine(50ms), std::nullopt);
  release(*server, *holder);
  const Sent sent = readSent(*client);
  EXPECT_EQ(sent.count, 100);
  EXPECT_EQ(sent.status, noErr);
  EXPECT_EQ(ask(*client, "ask TesT numb 7 3600").handled, 1 + waiting + 100);
}

TEST_P(FullQueue, HoldsNobodyElseUp) {
  Child server = startServer();
  Child holder = startClient();
  Child client = startClient();
  Child other = startClient();
  hold(*holder, *server);
  fill(*client);
  EXPECT_EQ(send(*other, "tell numb 1").status, noErr);
  release(*server, *holder);
  expectService(*other, 3);
}

TEST_P(FullQueue, TellsASenderThatTheServerDied) {
  Child server = startServer();
  Child holder = startClient();
  Child client = startClient();
  hold(*holder, *server);
  fill(*client);
  ASSERT_TRUE(client->writeLine("tell numb 100"));
  EXPECT_EQ(client->readLine(50ms), std::nullopt);
  server->signal(SIGKILL);
  EXPECT_EQ(readSent(*client).status, connectionInvalid);
}

class LargeEvent : public tests::Faults {};

INSTANTIATE_TEST_SUITE_P(Of, LargeEvent, testing::ValuesIn(mixtures()), tests::nameOf);

TEST_P(LargeEvent, Of64MegabytesGoesThereAndBack) {
  Child server = startServer({"tidy"});
  Child client = startClient();
  EXPECT_EQ(command(*client, "data 67108864 7200"), "0 same");
  expectService(*client, 1);
}

TEST_P(LargeEvent, JustBelowAMemoryFileGoesThereAndBack) {
  Child server = startServer({"tidy"});
  Child client = startClient();
  EXPECT_EQ(command(*client, "data 16000000 7200"), "0 same");
  expectService(*client, 1);
}

class RemovedNameSpace : public tests::Faults {};

INSTANTIATE_TEST_SUITE_P(Of, RemovedNameSpace, testing::ValuesIn(mixtures()), tests::nameOf);

TEST_P(RemovedNameSpace, LeavesThoseServedWhoAreConnected) {
  Child server = startServer();
  Child client = startClient();
  std::filesystem::remove_all(root.path() / "run");
  expectService(*client, 1);
  EXPECT_EQ(startLoneClient()->readLine(), codeOf(BOOTSTRAP_UNKNOWN_SERVICE));
}

TEST_P(RemovedNameSpace, IsMadeAgainByAServerThatListensAgain) {
  Child server = startServer();
  Child client = startClient();
  std::filesystem::remove_all(root.path() / "run");
  EXPECT_EQ(ask(*client, "ask TesT lstn 0 3600").status, noErr);
  Child newcomer = startClient();
  expectService(*newcomer, 1);
  expectService(*client, 2);
}

TEST_P(RemovedNameSpace, IsMadeAgainByANewServer) {
  Child agent = startAgent({"-r"}, *GetParam().server);
  std::filesystem::remove_all(root.path() / "run");
  Child successor = startAgent({"-r"}, *GetParam().server);
  EXPECT_EQ(agent->wait(0ms), std::nullopt);
  EXPECT_EQ(qrl({"quit", tests::kAgentPort}, *GetParam().client).status, 0);
  EXPECT_EQ(successor->wait(), 0);
}

class ExhaustedDescriptors : public tests::Faults {
 protected:
  /// Leaves a process no descriptor but those that it has.
  void exhaust(const ChildProcess& process) {
    int lowestFree = 0;
    while (std::filesystem::is_symlink(entry(process, lowestFree))) ++lowestFree;
    prlimit(process.pid(), RLIMIT_NOFILE, nullptr, &limit);
    rlimit tight = limit;
    tight.rlim_cur = static_cast<rlim_t>(lowestFree);
    ASSERT_EQ(prlimit(process.pid(), RLIMIT_NOFILE, &tight, nullptr), 0);
  }
  void relax(const ChildProcess& process) {
    ASSERT_EQ(prlimit(process.pid(), RLIMIT_NOFILE, &limit, nullptr), 0);
  }

  /// Runs a program with so many descriptors to its end: its exit status.
  static int run(const std::string& program, const Words& arguments, tests::Runner runner,
                 int descriptors) {
    ChildProcess::Command command{"/bin/sh", "-c", "ulimit -n $0; exec \"$@\"",
                                  std::to_string(descriptors)};
    ChildProcess::Command words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    for (const std::string& word : tests::withRunner(words, runner)) command.push_back(word);
    ChildProcess process(
        command,
        {.environment = {{"QRL_UI", "none"}}, .runner = tests::Runner::kNone, .mergeErrors = true});
    return process.wait().value_or(-1);
  }

 private:
  static std::string entry(const ChildProcess& process, int descriptor) {
    return "/proc/" + std::to_string(process.pid()) + "/fd/" + std::to_string(descriptor);
  }

  rlimit limit{};
};

INSTANTIATE_TEST_SUITE_P(Of, ExhaustedDescriptors, testing::ValuesIn(mixtures()), tests::nameOf);

TEST_P(ExhaustedDescriptors, OfAServerLeaveThoseServedWhoAreConnected) {
  Child server = startServer();
  Child client = startClient();
  expectService(*client, 1);
  exhaust(*server);
  expectService(*client, 2);
  Child newcomer = startClient();
  EXPECT_EQ(ask(*newcomer, "ask TesT numb 3 6").status, errAETimeout);
  expectService(*client, 4);
  relax(*server);
  expectService(*newcomer, 5);
  expectService(*client, 6);
}

TEST_P(ExhaustedDescriptors, OfAClientAreTold) {
  Child client = startLoneClient();
  EXPECT_EQ(client->readLine(), codeOf(BOOTSTRAP_UNKNOWN_SERVICE));
  // The sanitizers need a descriptor when they first see an object of a class.
  EXPECT_EQ(ask(*client, "ask TesT numb 1 3600").status, errAENotAppleEvent);
  Child server = startServer();
  exhaust(*client);
  EXPECT_EQ(command(*client, "find"), codeOf(BOOTSTRAP_NO_MEMORY));
  relax(*client);
  EXPECT_EQ(command(*client, "find"), codeOf(BOOTSTRAP_SUCCESS));
  expectService(*client, 2);
}

// The first request needs a descriptor to wait with, a connection or not. This sanitizer needs some
// itself, for classes that it has not seen before, and would take their lack for an error.
#ifndef __SANITIZE_ADDRESS__
TEST_P(ExhaustedDescriptors, OfAClientAreToldByItsFirstRequest) {
  Child server = startServer();
  Child client = startClient();
  exhaust(*client);
  EXPECT_EQ(ask(*client, "ask TesT numb 1 3600").status, memFullErr);
  relax(*client);
  expectService(*client, 2);
}
#endif

// From too few for the program loader up to enough: a status each time, and then success.
TEST_P(ExhaustedDescriptors, OfAProgramThatStartsAreAStatus) {
  const tests::Build& build = *GetParam().client;
  Child agent = startAgent({"-r"}, *GetParam().server);
  int enough = 3;
  int status = -1;
  for (; enough < 64 && status != 0; ++enough) {
    status = run(build.qrl, {"send", tests::kAgentPort, "QrlP", "Mcam"}, build.runner, enough);
    EXPECT_GE(status, 0) << "with " << enough;
  }
  EXPECT_EQ(status, 0);
  EXPECT_GT(enough, 4);
  EXPECT_EQ(agent->wait(0ms), std::nullopt);
}

TEST_P(ExhaustedDescriptors, OfAnAgentThatStartsAreAStatus) {
  const tests::Build& build = *GetParam().server;
  Child agent = startAgent({"-r"}, build);
  // The name is taken: whichever status it is that an agent with enough of them ends with.
  int enough = 3;
  int status = -1;
  for (; enough < 64 && status != 159; ++enough) {
    status = run(build.agent, {}, build.runner, enough);
    EXPECT_GT(status, 0) << "with " << enough;
  }
  EXPECT_EQ(status, 159);
  EXPECT_EQ(qrl({"quit", tests::kAgentPort}, *GetParam().client).status, 0);
  EXPECT_EQ(agent->wait(), 0);
}

/// A root on a disk of its own, which gets full.
class FullDiskAsRoot : public tests::Faults {
 protected:
  FullDiskAsRoot() {
    EXPECT_EQ(mount("none", root.path().c_str(), "tmpfs", 0, "size=1m,nr_inodes=200"), 0);
  }
  ~FullDiskAsRoot() override { umount2(root.path().c_str(), MNT_DETACH); }

  void fill() {
    std::filesystem::create_directory(root.path() / "filler");
    std::ofstream(root.path() / "filler" / "bytes") << std::string(2 << 20, 'x');
    for (int i = 0; std::ofstream(root.path() / "filler" / std::to_string(i)); ++i) {
    }
    EXPECT_EQ(std::filesystem::space(root.path()).available, 0u);
  }
  void clear() { std::filesystem::remove_all(root.path() / "filler"); }

  /// Starts a server that is to fail: what its listening comes to.
  std::string refusal() {
    const tests::Build& build = *GetParam().server;
    ChildProcess server({build.faultServer, "com.example.other.1.1"},
                        {.environment = {}, .runner = build.runner});
    const std::string result = server.readLine().value_or("nothing");
    EXPECT_EQ(server.wait(), 1);
    return result;
  }
};

INSTANTIATE_TEST_SUITE_P(Of, FullDiskAsRoot, testing::ValuesIn(mixtures()), tests::nameOf);

TEST_P(FullDiskAsRoot, LeavesServersServing) {
  Child server = startServer();
  Child client = startClient();
  fill();
  expectService(*client, 1);
  Child newcomer = startClient();
  expectService(*newcomer, 2);
  EXPECT_EQ(command(*newcomer, "data 20000000 3600"), "0 same");
}

TEST_P(FullDiskAsRoot, IsToldToNewServersUntilThereIsRoom) {
  Child server = startServer();
  fill();
  EXPECT_EQ(refusal(), codeOf(BOOTSTRAP_NO_MEMORY));
  clear();
  Child agent = startAgent({"-r"}, *GetParam().server);
  EXPECT_EQ(qrl({"quit", tests::kAgentPort}, *GetParam().client).status, 0);
  EXPECT_EQ(agent->wait(), 0);
}

TEST_P(FullDiskAsRoot, EndsAnAgentWithAStatus) {
  fill();
  ChildProcess agent({GetParam().server->agent},
                     {.environment = {{"QRL_UI", "none"}}, .runner = GetParam().server->runner});
  EXPECT_EQ(agent.wait(), BOOTSTRAP_NO_MEMORY % 256);
  clear();
  Child successor = startAgent({}, *GetParam().server);
  EXPECT_EQ(qrl({"quit", tests::kAgentPort}, *GetParam().client).status, 0);
  EXPECT_EQ(successor->wait(), 0);
}

}  // namespace
