// Licence: MIT, see LICENSE.
#include <optional>
#include <thread>

#include "tests/platform/mach/MachTesting.h"

namespace tests {
namespace {

using platform::mach::receive;
using platform::mach::send;
using Outcome = PortSet::Outcome;

class PortSets : public MachTest {
 protected:
  /// The ID of the next message of any member; none when the wait ends otherwise.
  std::optional<int> next() {
    if (set.wait(ready, soon()) != Outcome::kMessage) return std::nullopt;
    Message message;
    EXPECT_EQ(KERN_SUCCESS, receive(ready, message, Deadline::immediate()));
    EXPECT_EQ(ready, message.receiver);
    return message.id;
  }

  PortSet set;
  mach_port_name_t ready = 7;
};

TEST_F(PortSets, TimesOutWhenNothingComes) {
  EXPECT_EQ(Outcome::kTimedOut, set.wait(ready, Deadline::immediate()));
  const auto start = platform::host::monotonicNow();
  EXPECT_EQ(Outcome::kTimedOut, set.wait(ready, Deadline::after(20 * kMillisecond)));
  EXPECT_GE(platform::host::monotonicNow() - start, 20 * kMillisecond);
  EXPECT_EQ(7u, ready);
}

TEST_F(PortSets, NamesThePortThatHasAMessageAndTakesNothing) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, set.insert(port));
  ASSERT_EQ(KERN_SUCCESS, send(port, MACH_PORT_NULL, 1, {}, soon()));
  EXPECT_EQ(Outcome::kMessage, set.wait(ready, soon()));
  EXPECT_EQ(port, ready);
  EXPECT_EQ(Outcome::kMessage, set.wait(ready, Deadline::immediate()));
  EXPECT_EQ(1, next());
  EXPECT_EQ(Outcome::kTimedOut, set.wait(ready, Deadline::immediate()));
}

TEST_F(PortSets, NamesPortsInTheOrderOfTheirMessages) {
  const OwnPort first;
  const OwnPort second;
  ASSERT_EQ(KERN_SUCCESS, set.insert(first));
  ASSERT_EQ(KERN_SUCCESS, set.insert(second));
  for (int id = 0; id < 6; ++id) {
    ASSERT_EQ(KERN_SUCCESS, send(id % 3 == 0 ? first : second, MACH_PORT_NULL, id, {}, soon()));
  }
  for (int id = 0; id < 6; ++id) EXPECT_EQ(id, next());
}

TEST_F(PortSets, TakesOnlyReceiveRights) {
  const auto server = startServer("a");
  EXPECT_EQ(KERN_INVALID_NAME, set.insert(lookUp("a")));
  EXPECT_EQ(KERN_INVALID_NAME, set.insert(0x7fff00));
  const OwnPort port;
  EXPECT_EQ(KERN_SUCCESS, set.insert(port));
  EXPECT_EQ(KERN_SUCCESS, set.insert(port));
}

TEST_F(PortSets, NoticesMessagesThatWereThereBefore) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, send(port, MACH_PORT_NULL, 1, {}, soon()));
  ASSERT_EQ(KERN_SUCCESS, set.insert(port));
  EXPECT_EQ(1, next());
}

TEST_F(PortSets, ForgetsARemovedPort) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, set.insert(port));
  ASSERT_EQ(KERN_SUCCESS, send(port, MACH_PORT_NULL, 1, {}, soon()));
  set.remove(port);
  EXPECT_EQ(Outcome::kTimedOut, set.wait(ready, Deadline::immediate()));
  set.remove(port);
  ASSERT_EQ(KERN_SUCCESS, set.insert(port));
  EXPECT_EQ(1, next());
}

TEST_F(PortSets, ForgetsADestroyedPort) {
  OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, set.insert(port));
  ASSERT_EQ(KERN_SUCCESS, send(port, MACH_PORT_NULL, 1, {}, soon()));
  port.destroy();
  EXPECT_EQ(Outcome::kTimedOut, set.wait(ready, Deadline::immediate()));
}

TEST_F(PortSets, RemembersAWakeUntilTheNextWait) {
  set.wake();
  set.wake();
  EXPECT_EQ(Outcome::kWoken, set.wait(ready, soon()));
  EXPECT_EQ(Outcome::kTimedOut, set.wait(ready, Deadline::immediate()));
}

TEST_F(PortSets, ReportsAWakeBeforeAMessage) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, set.insert(port));
  ASSERT_EQ(KERN_SUCCESS, send(port, MACH_PORT_NULL, 1, {}, soon()));
  set.wake();
  EXPECT_EQ(Outcome::kWoken, set.wait(ready, soon()));
  EXPECT_EQ(1, next());
}

TEST_F(PortSets, GlancesAtWhatHasBeenTakenIn) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, set.insert(port));
  EXPECT_EQ(Outcome::kTimedOut, set.glance(ready));
  EXPECT_EQ(7u, ready);
  ASSERT_EQ(KERN_SUCCESS, send(port, MACH_PORT_NULL, 1, {}, soon()));
  set.wake();
  EXPECT_EQ(Outcome::kWoken, set.glance(ready));
  EXPECT_EQ(Outcome::kMessage, set.glance(ready));
  EXPECT_EQ(port, ready);
}

TEST_F(PortSets, GlanceAtOtherProcessesNowAndThen) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, set.insert(port));
  ASSERT_EQ(KERN_SUCCESS, registerName("mine", port));
  const auto sender = startPeer({"tell", "mine", "77"});
  const Deadline end = soon();
  Outcome outcome = Outcome::kTimedOut;
  while (outcome == Outcome::kTimedOut && end.remaining() > 0) outcome = set.glance(ready);
  EXPECT_EQ(Outcome::kMessage, outcome);
}

TEST_F(PortSets, IsWokenByAnotherThread) {
  for (int round = 0; round < 100; ++round) {
    std::thread waker([&] { set.wake(); });
    EXPECT_EQ(Outcome::kWoken, set.wait(ready, soon()));
    waker.join();
  }
}

TEST_F(PortSets, IsWokenByAMessageOfAnotherThread) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, set.insert(port));
  for (int id = 0; id < 100; ++id) {
    std::thread sender([&] { send(port, MACH_PORT_NULL, id, {}, soon()); });
    EXPECT_EQ(id, next());
    sender.join();
  }
}

TEST_F(PortSets, HearsOtherProcesses) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, set.insert(port));
  ASSERT_EQ(KERN_SUCCESS, registerName("listener", port));
  const auto sender = startPeer({"tell", "listener", "77"});
  EXPECT_EQ(77, next());
  EXPECT_EQ(0, sender->wait());
}

TEST_F(PortSets, HearsAConnectionThatWasThereBefore) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("listener", port));
  const auto sender = startPeer({"tell", "listener", "77"});
  ASSERT_EQ(0, sender->wait());
  ASSERT_EQ(KERN_SUCCESS, set.insert(port));
  EXPECT_EQ(77, next());
}

TEST_F(PortSets, HearsTheAnswersOfItsMembers) {
  const auto server = startServer("echo");
  const mach_port_name_t right = lookUp("echo");
  const OwnPort before;
  const OwnPort after;
  ASSERT_EQ(KERN_SUCCESS, send(right, before, kEcho, {}, soon()));
  ASSERT_EQ(KERN_SUCCESS, set.insert(before));
  ASSERT_EQ(KERN_SUCCESS, set.insert(after));
  ASSERT_EQ(KERN_SUCCESS, send(right, after, kKillYourself, {}, soon()));
  EXPECT_EQ(kEcho + 1, next());
  EXPECT_EQ(MACH_NOTIFY_SEND_ONCE, next());
}

TEST_F(PortSets, SharesAPortWithAnotherSet) {
  PortSet other;
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, set.insert(port));
  ASSERT_EQ(KERN_SUCCESS, other.insert(port));
  ASSERT_EQ(KERN_SUCCESS, send(port, MACH_PORT_NULL, 1, {}, soon()));
  EXPECT_EQ(Outcome::kMessage, other.wait(ready, soon()));
  EXPECT_EQ(1, next());
  EXPECT_EQ(Outcome::kTimedOut, other.wait(ready, Deadline::immediate()));
}

TEST_F(PortSets, DoesNotStarveOtherProcessesForOnesOwnMessages) {
  const OwnPort own;
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, set.insert(own));
  ASSERT_EQ(KERN_SUCCESS, set.insert(port));
  ASSERT_EQ(KERN_SUCCESS, registerName("listener", port));
  const auto sender = startPeer({"tell", "listener", "77"});
  ASSERT_EQ(0, sender->wait());
  for (int turn = 0; turn < 1000; ++turn) {
    ASSERT_EQ(KERN_SUCCESS, send(own, MACH_PORT_NULL, 1, {}, soon()));
    if (next() == 77) return;
  }
  FAIL() << "the other process's message never came";
}

TEST_F(PortSets, LeavesNoDescriptorBehind) {
  const OwnPort port;
  const std::size_t before = openDescriptors();
  {
    PortSet passing;
    ASSERT_EQ(KERN_SUCCESS, passing.insert(port));
    EXPECT_LT(before, openDescriptors());
  }
  EXPECT_EQ(before, openDescriptors());
}

}  // namespace
}  // namespace tests
