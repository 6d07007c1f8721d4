// Licence: MIT, see LICENSE.
// Many threads and many processes at once. Counts are full in a native build and a tenth elsewhere.
#include <atomic>
#include <thread>

#include "tests/platform/mach/MachTesting.h"

namespace tests {
namespace {

using platform::mach::receive;
using platform::mach::send;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__x86_64__)
constexpr int kShare = 10;
#else
constexpr int kShare = 1;
#endif

class Stress : public MachTest {
 protected:
  static void runThreads(int count, const std::function<void(int)>& body) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) threads.emplace_back(body, i);
    for (std::thread& thread : threads) thread.join();
  }
};

TEST_F(Stress, ManyThreadsTalkOverOneConnection) {
  const auto server = startServer("echo");
  const mach_port_name_t right = lookUp("echo");
  std::atomic<int> wrong{0};
  runThreads(8, [&](int thread) {
    const OwnPort reply;
    for (int i = 0; i < 2000 / kShare; ++i) {
      const auto body = pattern(static_cast<std::size_t>(i % 300), static_cast<unsigned>(thread));
      Message answer;
      const bool exchanged = send(right, reply, kEcho, body, soon()) == KERN_SUCCESS &&
                             receive(reply, answer, soon()) == KERN_SUCCESS;
      if (!exchanged || answer.id != kEcho + 1 || bytesOf(answer) != body) ++wrong;
    }
  });
  EXPECT_EQ(0, wrong.load());
}

TEST_F(Stress, LargeAndSmallBodiesShareAConnection) {
  const auto server = startServer("echo");
  const mach_port_name_t right = lookUp("echo");
  std::atomic<int> wrong{0};
  runThreads(4, [&](int thread) {
    const OwnPort reply;
    const auto body = pattern(thread % 2 == 0 ? 700'000 : 50, static_cast<unsigned>(thread));
    for (int i = 0; i < 200 / kShare; ++i) {
      Message answer;
      const bool exchanged = send(right, reply, kEcho, body, soon()) == KERN_SUCCESS &&
                             receive(reply, answer, soon()) == KERN_SUCCESS;
      if (!exchanged || bytesOf(answer) != body) ++wrong;
    }
  });
  EXPECT_EQ(0, wrong.load());
}

TEST_F(Stress, ManyThreadsReceiveFromOnePort) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("shared", port));
  constexpr int kMessages = 4000 / kShare;
  std::atomic<int> received{0};
  std::thread sender([&] {
    for (int i = 0; i < kMessages; ++i) {
      EXPECT_EQ(KERN_SUCCESS, send(port, MACH_PORT_NULL, i, {}, soon()));
    }
  });
  runThreads(4, [&](int) {
    for (int i = 0; i < kMessages / 4; ++i) {
      Message message;
      if (receive(port, message, soon()) == KERN_SUCCESS) ++received;
    }
  });
  sender.join();
  EXPECT_EQ(kMessages, received.load());
}

TEST_F(Stress, ADyingServerTellsEveryThread) {
  for (int round = 0; round < 20 / kShare; ++round) {
    const auto server = startServer("mortal");
    const mach_port_name_t right = lookUp("mortal");
    std::atomic<int> told{0};
    runThreads(6, [&](int thread) {
      const OwnPort reply;
      Message answer;
      const int id = thread == 5 ? kKillYourself : kKeepSilent;
      const kern_return_t sent = send(right, reply, id, {}, soon());
      if (sent == MACH_SEND_INVALID_DEST) ++told;
      if (sent != KERN_SUCCESS) return;
      if (receive(reply, answer, soon()) == KERN_SUCCESS && answer.id == MACH_NOTIFY_SEND_ONCE) {
        ++told;
      }
    });
    EXPECT_EQ(6, told.load());
    EXPECT_EQ(KERN_SUCCESS, mach_port_destroy(mach_task_self(), right));
  }
}

TEST_F(Stress, OneOfTwoThreadsWinsAName) {
  for (int round = 0; round < 300 / kShare; ++round) {
    OwnPort ports[2];
    std::atomic<int> winners{0};
    std::atomic<int> losers{0};
    runThreads(2, [&](int thread) {
      const kern_return_t result = registerName("prize", ports[thread]);
      if (result == KERN_SUCCESS) ++winners;
      if (result == BOOTSTRAP_NAME_IN_USE) ++losers;
    });
    ASSERT_EQ(1, winners.load());
    ASSERT_EQ(1, losers.load());
  }
}

TEST_F(Stress, OneOfTwoProcessesInheritsFromADeadOne) {
  for (int round = 0; round < 50 / kShare; ++round) {
    const auto dead = startServer("throne", "deaf");
    const auto first = startPeer({"contend", "throne"});
    const auto second = startPeer({"contend", "throne"});
    dead->signal(9);
    ASSERT_EQ(-9, dead->wait());
    ASSERT_TRUE(first->writeLine("go") && second->writeLine("go"));
    const std::string results = first->readLine().value_or("?") + second->readLine().value_or("?");
    EXPECT_TRUE(results == "01101" || results == "11010") << results;
    const mach_port_name_t right = lookUp("throne");
    EXPECT_NE(MACH_PORT_NULL, right);
    EXPECT_EQ(KERN_SUCCESS, mach_port_destroy(mach_task_self(), right));
  }
}

TEST_F(Stress, PortsComeAndGoWhileOthersWaitForThem) {
  std::atomic<bool> over{false};
  PortSet set;
  std::thread waiter([&] {
    mach_port_name_t ready = MACH_PORT_NULL;
    while (!over.load()) {
      if (set.wait(ready, soon()) != PortSet::Outcome::kMessage) continue;
      Message message;
      static_cast<void>(receive(ready, message, Deadline::immediate()));
    }
  });
  runThreads(4, [&](int thread) {
    for (int i = 0; i < 300 / kShare; ++i) {
      const OwnPort port;
      const OwnPort reply;
      EXPECT_EQ(KERN_SUCCESS, set.insert(port));
      EXPECT_EQ(KERN_SUCCESS, registerName("port" + std::to_string(thread), port));
      EXPECT_EQ(KERN_SUCCESS, send(port, reply, i, pattern(10), soon()));
    }
  });
  over = true;
  set.wake();
  waiter.join();
}

}  // namespace
}  // namespace tests
