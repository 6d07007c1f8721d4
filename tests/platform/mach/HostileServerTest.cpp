// Licence: MIT, see LICENSE.
// Whatever a server answers: the request that it answers may fail, and nothing else happens.
#include "platform/host/NameDirectory.h"
#include "platform/host/Poll.h"
#include "platform/host/SeqPacket.h"
#include "platform/mach/NameList.h"
#include "platform/mach/Packet.h"
#include "tests/platform/mach/MachTesting.h"

namespace tests {
namespace {

namespace host = platform::host;
using platform::mach::decodeHeader;
using platform::mach::encodeHeader;
using platform::mach::kBootstrapFolder;
using platform::mach::PacketHeader;
using platform::mach::receive;
using platform::mach::send;
using Kind = PacketHeader::Kind;

/// A server that speaks in bytes, and a client of it that has asked for something.
class HostileServer : public MachTest {
 protected:
  HostileServer() : socket(std::move(*(*platform::mach::ownDirectory())->bind())) {
    EXPECT_TRUE((*platform::mach::ownDirectory())->claim(socket, kBootstrapFolder, "server"));
    right = lookUp("server");
    connection = std::move(*host::acceptConnection(socket.listener));
    token = ask();
  }

  /// Sends a request, and gives the token for its answer.
  platform::mach::Token ask() {
    EXPECT_EQ(KERN_SUCCESS, send(right, reply, 1, {}, soon()));
    std::array<std::byte, 100> packet;
    EXPECT_TRUE(host::receivePacket(connection, packet));
    return decodeHeader(packet)->reply;
  }

  void put(const PacketHeader& header, Bytes body = {}) {
    ASSERT_TRUE(host::sendPacket(connection, encodeHeader(header), body, nullptr));
  }

  void expectAnswer(mach_msg_id_t id) {
    Message message;
    ASSERT_EQ(KERN_SUCCESS, receive(reply, message, soon()));
    EXPECT_EQ(id, message.id);
    EXPECT_EQ(MACH_PORT_NULL, message.reply);
  }
  void expectNoAnswer() {
    Message message;
    EXPECT_EQ(MACH_RCV_TIMED_OUT, receive(reply, message, shortly()));
  }

  host::BoundSocket socket;
  mach_port_name_t right = MACH_PORT_NULL;
  host::Descriptor connection;
  OwnPort reply;
  platform::mach::Token token = 0;
};

TEST_F(HostileServer, CannotAnswerTwice) {
  ASSERT_NO_FATAL_FAILURE(put({.destination = token, .id = 5}));
  ASSERT_NO_FATAL_FAILURE(put({.destination = token, .id = 6}));
  expectAnswer(5);
  const platform::mach::Token second = ask();
  ASSERT_NO_FATAL_FAILURE(put({.destination = token, .id = 7}));
  expectNoAnswer();
  ASSERT_NO_FATAL_FAILURE(put({.destination = second, .id = 8}));
  expectAnswer(8);
}

TEST_F(HostileServer, CannotAnswerWithTokensThatItGuesses) {
  for (const platform::mach::Token guess : {token + 1, token + 2, ~token, 0xffffffffu}) {
    ASSERT_NO_FATAL_FAILURE(put({.destination = guess, .id = 5}));
    ASSERT_NO_FATAL_FAILURE(put({.kind = Kind::kAbandoned, .destination = guess}));
  }
  expectNoAnswer();
  ASSERT_NO_FATAL_FAILURE(put({.destination = token, .id = 6}));
  expectAnswer(6);
}

TEST_F(HostileServer, CannotAnswerForAnother) {
  const auto honest = startServer("honest");
  const mach_port_name_t other = lookUp("honest");
  const OwnPort otherReply;
  ASSERT_EQ(KERN_SUCCESS, send(other, otherReply, kEcho, pattern(10), soon()));
  for (platform::mach::Token guess = 1; guess < token + 100; ++guess) {
    if (guess == token) continue;
    ASSERT_NO_FATAL_FAILURE(put({.destination = guess, .id = 666}));
  }
  expectNoAnswer();
  Message message;
  ASSERT_EQ(KERN_SUCCESS, receive(otherReply, message, soon()));
  EXPECT_EQ(kEcho + 1, message.id);
  EXPECT_EQ(pattern(10), bytesOf(message));
}

TEST_F(HostileServer, IsLeftWhenItAsksInsteadOfAnswering) {
  ASSERT_NO_FATAL_FAILURE(put({.id = 5}));
  expectAnswer(MACH_NOTIFY_SEND_ONCE);
  EXPECT_TRUE(host::hasHungUp(connection));
  EXPECT_EQ(MACH_SEND_INVALID_DEST, send(right, reply, 1, {}, soon()));
}

TEST_F(HostileServer, IsLeftForAnAnswerThatIsMalformed) {
  ASSERT_NO_FATAL_FAILURE(put({.destination = token, .id = 5, .total = 10}, pattern(11)));
  expectAnswer(MACH_NOTIFY_SEND_ONCE);
  EXPECT_TRUE(host::hasHungUp(connection));
}

TEST_F(HostileServer, ThatNeverEndsItsAnswerCostsItsTimeOutOnly) {
  ASSERT_NO_FATAL_FAILURE(put({.destination = token, .id = 5, .total = 10}, pattern(9)));
  expectNoAnswer();
  platform::mach::abandonReplies(reply);
  const platform::mach::Token second = ask();
  ASSERT_NO_FATAL_FAILURE(put({.destination = second, .id = 6}));
  expectAnswer(6);
}

// A late answer that asked back used to count as a right that somebody holds, and the connection
// stayed for ever.
TEST_F(HostileServer, DoesNotKeepTheConnectionByAskingBackTooLate) {
  platform::mach::abandonReplies(reply);
  ASSERT_NO_FATAL_FAILURE(put({.destination = token, .reply = 77, .id = 5}));
  const platform::mach::Token second = ask();
  ASSERT_NO_FATAL_FAILURE(put({.destination = second, .id = 6}));
  expectAnswer(6);
  std::array<std::byte, 100> packet;
  ASSERT_TRUE(host::receivePacket(connection, packet));
  EXPECT_EQ(Kind::kAbandoned, decodeHeader(packet)->kind);
  EXPECT_EQ(77u, decodeHeader(packet)->destination);
  EXPECT_FALSE(host::hasHungUp(connection));
  EXPECT_EQ(KERN_SUCCESS, mach_port_deallocate(mach_task_self(), right));
  EXPECT_TRUE(host::hasHungUp(connection));
}

}  // namespace
}  // namespace tests
