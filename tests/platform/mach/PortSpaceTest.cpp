// Licence: MIT, see LICENSE.
#include "platform/mach/PortSpace.h"

#include <thread>

#include "tests/platform/mach/MachTesting.h"

namespace tests {
namespace {

using platform::mach::abandonReplies;
using platform::mach::cancelDeathNotice;
using platform::mach::isReceiveRight;
using platform::mach::noticeDeath;
using platform::mach::ownerOf;
using platform::mach::receive;
using platform::mach::send;

constexpr mach_port_name_t kNobodys = 0x7fff00;

/// The promises of sending and receiving, which do not depend on where the receiver is.
class PortSpace : public MachTest {};

TEST_F(PortSpace, CarriesAMessageWithinTheProcess) {
  const OwnPort port;
  Message message;
  ASSERT_EQ(KERN_SUCCESS, send(port, MACH_PORT_NULL, 42, pattern(100), soon()));
  ASSERT_EQ(KERN_SUCCESS, receive(port, message, soon()));
  EXPECT_EQ(42, message.id);
  EXPECT_EQ(port, message.receiver);
  EXPECT_EQ(MACH_PORT_NULL, message.reply);
  EXPECT_EQ(pattern(100), bytesOf(message));
}

TEST_F(PortSpace, KeepsTheOrderOfMessages) {
  const OwnPort port;
  for (int id = 0; id < 100; ++id) {
    ASSERT_EQ(KERN_SUCCESS, send(port, MACH_PORT_NULL, id, {}, soon()));
  }
  for (int id = 0; id < 100; ++id) {
    Message message;
    ASSERT_EQ(KERN_SUCCESS, receive(port, message, Deadline::immediate()));
    EXPECT_EQ(id, message.id);
  }
}

TEST_F(PortSpace, RefusesADestinationThatIsNoRight) {
  EXPECT_EQ(MACH_SEND_INVALID_DEST, send(MACH_PORT_NULL, MACH_PORT_NULL, 1, {}, soon()));
  EXPECT_EQ(MACH_SEND_INVALID_DEST, send(MACH_PORT_DEAD, MACH_PORT_NULL, 1, {}, soon()));
  EXPECT_EQ(MACH_SEND_INVALID_DEST, send(kNobodys, MACH_PORT_NULL, 1, {}, soon()));
}

TEST_F(PortSpace, RefusesAReplyPortThatIsNotOurs) {
  const OwnPort port;
  const auto server = startServer("a");
  EXPECT_EQ(MACH_SEND_INVALID_REPLY, send(port, kNobodys, 1, {}, soon()));
  EXPECT_EQ(MACH_SEND_INVALID_REPLY, send(port, lookUp("a"), 1, {}, soon()));
  Message message;
  EXPECT_EQ(MACH_RCV_TIMED_OUT, receive(port, message, Deadline::immediate()));
}

TEST_F(PortSpace, ReceivesOnlyFromReceiveRights) {
  const auto server = startServer("a");
  Message message;
  EXPECT_EQ(MACH_RCV_INVALID_NAME, receive(lookUp("a"), message, soon()));
  EXPECT_EQ(MACH_RCV_INVALID_NAME, receive(kNobodys, message, soon()));
}

TEST_F(PortSpace, TellsReceiveRightsFromOthers) {
  const OwnPort port;
  const auto server = startServer("a");
  EXPECT_TRUE(isReceiveRight(port));
  EXPECT_FALSE(isReceiveRight(lookUp("a")));
  EXPECT_FALSE(isReceiveRight(kNobodys));
}

TEST_F(PortSpace, TimesOutWhenNothingComes) {
  const OwnPort port;
  const OwnPort named;
  ASSERT_EQ(KERN_SUCCESS, registerName("a", named));
  Message message;
  const auto start = platform::host::monotonicNow();
  EXPECT_EQ(MACH_RCV_TIMED_OUT, receive(port, message, Deadline::after(20 * kMillisecond)));
  EXPECT_EQ(MACH_RCV_TIMED_OUT, receive(named, message, Deadline::after(20 * kMillisecond)));
  EXPECT_GE(platform::host::monotonicNow() - start, 40 * kMillisecond);
  EXPECT_EQ(MACH_RCV_TIMED_OUT, receive(port, message, Deadline::immediate()));
  EXPECT_EQ(MACH_RCV_TIMED_OUT, receive(named, message, Deadline::immediate()));
}

TEST_F(PortSpace, AnswersWithinTheProcess) {
  const OwnPort port;
  const OwnPort reply;
  Message asked;
  Message answered;
  ASSERT_EQ(KERN_SUCCESS, send(port, reply, 1, pattern(10), soon()));
  ASSERT_EQ(KERN_SUCCESS, receive(port, asked, soon()));
  ASSERT_EQ(KERN_SUCCESS, send(asked.reply, MACH_PORT_NULL, 2, asked.body.bytes(), soon()));
  ASSERT_EQ(KERN_SUCCESS, receive(reply, answered, soon()));
  EXPECT_EQ(2, answered.id);
  EXPECT_EQ(pattern(10), bytesOf(answered));
  EXPECT_EQ(MACH_SEND_INVALID_DEST, send(asked.reply, MACH_PORT_NULL, 3, {}, soon()));
}

TEST_F(PortSpace, CarriesBodiesOfEverySizeToAnotherProcess) {
  const auto server = startServer("echo");
  const mach_port_name_t right = lookUp("echo");
  const OwnPort reply;
  for (const std::size_t size : {0u, 1u, 64u, 65536u, 196608u, 196609u, 1u << 20, 20u << 20}) {
    SCOPED_TRACE(size);
    const std::vector<std::byte> body = pattern(size);
    const Message answer = request(right, reply, kEcho, body);
    EXPECT_EQ(kEcho + 1, answer.id);
    EXPECT_EQ(reply, answer.receiver);
    EXPECT_TRUE(body == bytesOf(answer));
  }
}

// What was read into the memory of an earlier message must be this one's nevertheless.
TEST_F(PortSpace, CarriesBodiesOfAllSizesOneAfterTheOther) {
  const auto server = startServer("echo");
  const mach_port_name_t right = lookUp("echo");
  const OwnPort reply;
  std::vector<Message> held;  // so that their memory is in use
  for (unsigned i = 0; i < 60; ++i) {
    const std::size_t sizes[] = {1u << 20, 65536, 100, 200'000, 40'000, 3u << 20, 1u << 20};
    const std::vector<std::byte> body = pattern(sizes[i % std::size(sizes)] + i, i);
    Message answer = request(right, reply, kEcho, body);
    ASSERT_TRUE(body == bytesOf(answer)) << i;
    if (i % 5 == 0) held.push_back(std::move(answer));
  }
  for (std::size_t i = 0; i < held.size(); ++i) {
    EXPECT_TRUE(pattern(held[i].body.size, static_cast<unsigned>(5 * i)) == bytesOf(held[i])) << i;
  }
}

TEST_F(PortSpace, CarriesAConversationBothWays) {
  const auto server = startServer("echo");
  const OwnPort reply;
  const mach_port_name_t right = lookUp("echo");
  ASSERT_EQ(KERN_SUCCESS, send(right, reply, kKeepSilent, {}, soon()));
  const Message answer = request(right, reply, kAnswerTwice, pattern(5));
  EXPECT_EQ(kAnswerTwice + 1, answer.id);
  Message second;
  EXPECT_EQ(MACH_RCV_TIMED_OUT, receive(reply, second, shortly()));
}

TEST_F(PortSpace, TellsAtOnceThatTheReceiverWasKilled) {
  const auto server = startServer("mortal");
  const OwnPort reply;
  const Message notice = request(lookUp("mortal"), reply, kKillYourself, pattern(10));
  EXPECT_EQ(MACH_NOTIFY_SEND_ONCE, notice.id);
  EXPECT_EQ(0u, notice.body.size);
  EXPECT_EQ(MACH_PORT_NULL, notice.reply);
}

TEST_F(PortSpace, TellsAtOnceThatTheReceiverDestroyedItsPort) {
  const auto server = startServer("mortal");
  const OwnPort reply;
  const mach_port_name_t right = lookUp("mortal");
  EXPECT_EQ(MACH_NOTIFY_SEND_ONCE, request(right, reply, kDestroyPort, {}).id);
  EXPECT_EQ(MACH_SEND_INVALID_DEST, send(right, reply, kEcho, {}, soon()));
  Message none;
  EXPECT_EQ(MACH_RCV_TIMED_OUT, receive(reply, none, Deadline::immediate()));
}

TEST_F(PortSpace, TellsEveryRequestThatItWillNotBeAnswered) {
  const auto server = startServer("mortal");
  const OwnPort reply;
  const mach_port_name_t right = lookUp("mortal");
  for (int i = 0; i < 5; ++i) {
    ASSERT_EQ(KERN_SUCCESS, send(right, reply, kKeepSilent, {}, soon()));
  }
  server->signal(9);
  for (int i = 0; i < 5; ++i) {
    Message notice;
    ASSERT_EQ(KERN_SUCCESS, receive(reply, notice, soon()));
    EXPECT_EQ(MACH_NOTIFY_SEND_ONCE, notice.id);
  }
  Message none;
  EXPECT_EQ(MACH_RCV_TIMED_OUT, receive(reply, none, Deadline::immediate()));
}

TEST_F(PortSpace, TellsThatARightToAnswerWasGivenUp) {
  const auto server = startServer("lazy");
  const OwnPort reply;
  const mach_port_name_t right = lookUp("lazy");
  EXPECT_EQ(MACH_NOTIFY_SEND_ONCE, request(right, reply, kGiveUp, {}).id);
  EXPECT_EQ(kEcho + 1, request(right, reply, kEcho, {}).id);

  const OwnPort port;
  Message asked;
  ASSERT_EQ(KERN_SUCCESS, send(port, reply, 1, {}, soon()));
  ASSERT_EQ(KERN_SUCCESS, receive(port, asked, soon()));
  ASSERT_EQ(KERN_SUCCESS, mach_port_deallocate(mach_task_self(), asked.reply));
  Message notice;
  ASSERT_EQ(KERN_SUCCESS, receive(reply, notice, Deadline::immediate()));
  EXPECT_EQ(MACH_NOTIFY_SEND_ONCE, notice.id);
}

TEST_F(PortSpace, TellsThatAPortOfOursDiedWithARequestInItsQueue) {
  OwnPort port;
  const OwnPort reply;
  ASSERT_EQ(KERN_SUCCESS, send(port, reply, 1, {}, soon()));
  port.destroy();
  Message notice;
  ASSERT_EQ(KERN_SUCCESS, receive(reply, notice, Deadline::immediate()));
  EXPECT_EQ(MACH_NOTIFY_SEND_ONCE, notice.id);
}

TEST_F(PortSpace, DeliversTheAnswerOfAServerThatEndedRightAfterIt) {
  const auto server = startServer("brief");
  const OwnPort reply;
  const mach_port_name_t right = lookUp("brief");
  ASSERT_EQ(KERN_SUCCESS, send(right, reply, kEcho, pattern(100), soon()));
  ASSERT_EQ(KERN_SUCCESS, send(right, MACH_PORT_NULL, kKillYourself, {}, soon()));
  // Unread when the server dies, which must not cost us the answer.
  static_cast<void>(send(right, MACH_PORT_NULL, kKeepSilent, pattern(100), soon()));
  ASSERT_EQ(-9, server->wait());
  Message answer;
  ASSERT_EQ(KERN_SUCCESS, receive(reply, answer, soon()));
  EXPECT_EQ(kEcho + 1, answer.id);
}

TEST_F(PortSpace, DeliversTheMessageOfASenderThatHasEnded) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("listener", port));
  const auto sender = startPeer({"tell", "listener", "77"});
  ASSERT_EQ(0, sender->wait());
  Message message;
  ASSERT_EQ(KERN_SUCCESS, receive(port, message, soon()));
  EXPECT_EQ(77, message.id);
  EXPECT_EQ(2u, message.body.size);
}

TEST_F(PortSpace, CannotAnswerASenderThatHasEnded) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("listener", port));
  auto sender = startPeer({"ask", "listener"});
  Message message;
  ASSERT_EQ(KERN_SUCCESS, receive(port, message, soon()));
  EXPECT_EQ(MACH_PORT_TYPE_SEND_ONCE, typeOf(message.reply));
  EXPECT_EQ(sender->pid(), ownerOf(message.reply));
  sender->signal(9);
  ASSERT_EQ(-9, sender->wait());
  EXPECT_EQ(MACH_PORT_TYPE_DEAD_NAME, typeOf(message.reply));
  EXPECT_EQ(MACH_SEND_INVALID_DEST, send(message.reply, MACH_PORT_NULL, 1, {}, soon()));
  EXPECT_EQ(KERN_SUCCESS, mach_port_deallocate(mach_task_self(), message.reply));
}

TEST_F(PortSpace, DropsTheAnswerThatNobodyAwaitsAnyMore) {
  const auto server = startServer("echo");
  const OwnPort reply;
  const mach_port_name_t right = lookUp("echo");
  ASSERT_EQ(KERN_SUCCESS, send(right, reply, kEcho, pattern(1), soon()));
  abandonReplies(reply);
  const Message answer = request(right, reply, kEcho, pattern(2));
  EXPECT_EQ(pattern(2), bytesOf(answer));
}

TEST_F(PortSpace, AbandonsAnAnswerThatHasArrivedToo) {
  const OwnPort port;
  const OwnPort reply;
  Message asked;
  ASSERT_EQ(KERN_SUCCESS, send(port, reply, 1, {}, soon()));
  ASSERT_EQ(KERN_SUCCESS, receive(port, asked, soon()));
  ASSERT_EQ(KERN_SUCCESS, send(asked.reply, MACH_PORT_NULL, 2, {}, soon()));
  ASSERT_EQ(KERN_SUCCESS, send(reply, MACH_PORT_NULL, 3, {}, soon()));
  abandonReplies(reply);
  Message kept;
  ASSERT_EQ(KERN_SUCCESS, receive(reply, kept, Deadline::immediate()));
  EXPECT_EQ(3, kept.id);
  EXPECT_EQ(MACH_RCV_TIMED_OUT, receive(reply, kept, Deadline::immediate()));
}

TEST_F(PortSpace, WaitsForRoomInAFullQueueOfOurs) {
  const OwnPort port;
  int sent = 0;
  kern_return_t result = KERN_SUCCESS;
  while ((result = send(port, MACH_PORT_NULL, sent, {}, Deadline::immediate())) == KERN_SUCCESS) {
    ASSERT_LT(++sent, 100'000);
  }
  EXPECT_EQ(MACH_SEND_TIMED_OUT, result);
  std::thread sender([&] { result = send(port, MACH_PORT_NULL, sent, {}, soon()); });
  Message message;
  for (int id = 0; id <= sent; ++id) {
    ASSERT_EQ(KERN_SUCCESS, receive(port, message, soon()));
    EXPECT_EQ(id, message.id);
  }
  sender.join();
  EXPECT_EQ(KERN_SUCCESS, result);
}

TEST_F(PortSpace, TimesOutWhenSomebodyElsesQueueStaysFull) {
  const auto server = startServer("deaf", "deaf");
  const mach_port_name_t right = lookUp("deaf");
  const std::vector<std::byte> body = pattern(10'000);
  int sent = 0;
  while (send(right, MACH_PORT_NULL, 1, body, shortly()) == KERN_SUCCESS) {
    ASSERT_LT(++sent, 10'000);
  }
  EXPECT_GT(sent, 0);
  EXPECT_EQ(MACH_SEND_TIMED_OUT, send(right, MACH_PORT_NULL, 1, body, Deadline::immediate()));
  server->signal(9);
  ASSERT_EQ(-9, server->wait());
  EXPECT_EQ(MACH_SEND_INVALID_DEST, send(right, MACH_PORT_NULL, 1, body, soon()));
}

TEST_F(PortSpace, LeavesAConnectionUsableAfterABodyThatTimedOutHalfWay) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("slow", port));
  const auto server = startServer("echo");
  const mach_port_name_t right = lookUp("echo");
  const OwnPort reply;
  server->signal(SIGSTOP);
  EXPECT_EQ(MACH_SEND_TIMED_OUT, send(right, reply, kEcho, pattern(4 << 20), shortly()));
  server->signal(SIGCONT);
  const Message answer = request(right, reply, kEcho, pattern(1 << 20, 2));
  EXPECT_TRUE(pattern(1 << 20, 2) == bytesOf(answer));
  Message none;
  EXPECT_EQ(MACH_RCV_TIMED_OUT, receive(reply, none, Deadline::immediate()));
}

TEST_F(PortSpace, WakesAReceiverWhosePortIsDestroyed) {
  OwnPort plain;
  OwnPort named;
  ASSERT_EQ(KERN_SUCCESS, registerName("a", named));
  for (OwnPort* port : {&plain, &named}) {
    kern_return_t result = KERN_SUCCESS;
    const mach_port_name_t name = *port;
    std::thread receiver([&] {
      Message message;
      result = receive(name, message, soon());
    });
    port->destroy();
    receiver.join();
    EXPECT_TRUE(result == MACH_RCV_PORT_DIED || result == MACH_RCV_INVALID_NAME);
  }
}

TEST_F(PortSpace, NoticesTheDeathOfAPortOnce) {
  OwnPort port;
  int deaths = 0;
  EXPECT_NE(0u, noticeDeath(port, [&] { ++deaths; }));
  const std::uint32_t cancelled = noticeDeath(port, [&] { deaths += 100; });
  cancelDeathNotice(cancelled);
  cancelDeathNotice(cancelled);
  EXPECT_EQ(0, deaths);
  const mach_port_name_t name = port;
  port.destroy();
  EXPECT_EQ(1, deaths);
  EXPECT_EQ(0u, noticeDeath(name, [&] { deaths += 10; }));
  EXPECT_EQ(11, deaths);
}

TEST_F(PortSpace, HoldsNoLockWhileItNoticesADeath) {
  OwnPort port;
  const OwnPort other;
  noticeDeath(port, [&] { EXPECT_EQ(KERN_SUCCESS, send(other, MACH_PORT_NULL, 5, {}, soon())); });
  port.destroy();
  Message message;
  EXPECT_EQ(KERN_SUCCESS, receive(other, message, Deadline::immediate()));
  EXPECT_EQ(5, message.id);
}

TEST_F(PortSpace, TellsWhoOwnsAPort) {
  const auto server = startServer("a");
  const OwnPort port;
  EXPECT_EQ(server->pid(), ownerOf(lookUp("a")));
  EXPECT_EQ(getpid(), ownerOf(port));
  EXPECT_EQ(0, ownerOf(kNobodys));
}

TEST_F(PortSpace, AwaitsAnswersFromSeveralServersOnOnePort) {
  const auto first = startServer("first");
  const auto second = startServer("second");
  const OwnPort reply;
  ASSERT_EQ(KERN_SUCCESS, send(lookUp("first"), reply, kKeepSilent, {}, soon()));
  ASSERT_EQ(KERN_SUCCESS, send(lookUp("second"), reply, kEcho, {}, soon()));
  Message message;
  ASSERT_EQ(KERN_SUCCESS, receive(reply, message, soon()));
  EXPECT_EQ(kEcho + 1, message.id);
  first->signal(9);
  ASSERT_EQ(KERN_SUCCESS, receive(reply, message, soon()));
  EXPECT_EQ(MACH_NOTIFY_SEND_ONCE, message.id);
}

// A port that awaited answers over two connections watched them with a set of its own, and once
// left that set behind in a connection that outlived the port.
TEST_F(PortSpace, OutlivesAPortThatAwaitedAnswersFromSeveralServers) {
  const auto first = startServer("first");
  const auto second = startServer("second");
  const mach_port_name_t right = lookUp("first");
  {
    const OwnPort reply;
    ASSERT_EQ(KERN_SUCCESS, send(right, reply, kKeepSilent, {}, soon()));
    ASSERT_EQ(KERN_SUCCESS, send(lookUp("second"), reply, kKeepSilent, {}, soon()));
    Message none;
    ASSERT_EQ(MACH_RCV_TIMED_OUT, receive(reply, none, shortly()));
  }
  first->signal(9);
  ASSERT_EQ(-9, first->wait());
  EXPECT_EQ(MACH_PORT_TYPE_DEAD_NAME, typeOf(right));
}

TEST_F(PortSpace, LeaksNoDescriptor) {
  const auto server = startServer("echo");
  const auto once = [&] {
    const OwnPort port;
    const OwnPort reply;
    EXPECT_EQ(KERN_SUCCESS, registerName("own", port));
    const mach_port_name_t right = lookUp("echo");
    request(right, reply, kEcho, pattern(20 << 20));
    request(right, reply, kGiveUp, {});
    EXPECT_EQ(KERN_SUCCESS, mach_port_deallocate(mach_task_self(), right));
  };
  once();
  const std::size_t before = openDescriptors();
  for (int i = 0; i < 3; ++i) once();
  EXPECT_EQ(before, openDescriptors());
}

}  // namespace
}  // namespace tests
