// Licence: MIT, see LICENSE.
// A peer that asks and does not read, or not at once, what it is answered; and one that keeps a
// port full.
#include <gtest/gtest.h>

#include <thread>

#include "platform/host/NameDirectory.h"
#include "platform/host/Poll.h"
#include "platform/host/SeqPacket.h"
#include "platform/host/SharedMemory.h"
#include "platform/mach/NameList.h"
#include "platform/mach/Packet.h"
#include "tests/platform/mach/MachTesting.h"

namespace tests {
namespace {

namespace host = platform::host;
using platform::mach::encodeHeader;
using platform::mach::kBootstrapFolder;
using platform::mach::PacketHeader;
using platform::mach::receive;
using platform::mach::send;
using Kind = PacketHeader::Kind;

class SlowReader : public MachTest {
 protected:
  SlowReader() {
    EXPECT_EQ(KERN_SUCCESS, registerName("server", port));
    EXPECT_EQ(KERN_SUCCESS, set.insert(port));
    connection = connect();
  }

  static host::Descriptor connect() {
    host::Result<host::NamedConnection> made =
        (*platform::mach::ownDirectory())->connect(kBootstrapFolder, "server");
    EXPECT_TRUE(made);
    return std::move(made->connection);
  }

  static void put(const host::Descriptor& to, const PacketHeader& header,
                  const host::Descriptor* passed = nullptr) {
    ASSERT_TRUE(host::sendPacket(to, encodeHeader(header), {}, passed));
  }

  /// The rights to answer requests that the peer has made under these tokens.
  std::vector<mach_port_name_t> takeRequests(const std::vector<std::uint32_t>& tokens) {
    std::vector<mach_port_name_t> replies;
    for (const std::uint32_t token : tokens) {
      put(connection, {.reply = token, .id = 1});
      Message message;
      EXPECT_EQ(KERN_SUCCESS, receive(port, message, soon()));
      replies.push_back(message.reply);
    }
    return replies;
  }

  /// Reads what the victim sends, while that waits for messages, until the answer under a token.
  std::vector<PacketHeader> readUntil(std::uint32_t token) {
    std::vector<PacketHeader> headers;
    std::vector<std::byte> buffer(1 << 20);
    const Deadline deadline = soon();
    while (deadline.remaining() > 0 && (headers.empty() || headers.back().destination != token)) {
      mach_port_name_t ready = MACH_PORT_NULL;
      set.wait(ready, Deadline::immediate());
      while (host::receivePacket(connection, buffer)) {
        headers.push_back(*platform::mach::decodeHeader(buffer));
      }
    }
    return headers;
  }

  OwnPort port;
  PortSet set;
  host::Descriptor connection;
};

TEST_F(SlowReader, IsAnsweredInOrderOnceItReads) {
  const std::vector<mach_port_name_t> replies = takeRequests({21, 22, 23});
  ASSERT_EQ(KERN_SUCCESS, send(replies[0], MACH_PORT_NULL, 1, pattern(4 << 20), soon()));
  ASSERT_EQ(KERN_SUCCESS, mach_port_deallocate(mach_task_self(), replies[1]));
  ASSERT_EQ(KERN_SUCCESS, send(replies[2], MACH_PORT_NULL, 1, {}, Deadline::immediate()));
  const std::vector<PacketHeader> answers = readUntil(23);
  ASSERT_GT(answers.size(), 4u);
  EXPECT_EQ(21u, answers.front().destination);
  EXPECT_EQ(Kind::kContinuation, answers[answers.size() - 3].kind);
  EXPECT_EQ(Kind::kAbandoned, answers[answers.size() - 2].kind);
  EXPECT_EQ(22u, answers[answers.size() - 2].destination);
}

TEST_F(SlowReader, IsNotReadWhileItDoesNotRead) {
  Message message;
  int served = 0;
  for (; served < 10'000; ++served) {
    ASSERT_NO_FATAL_FAILURE(put(connection, {.reply = 9, .id = served}));
    if (receive(port, message, shortly()) != KERN_SUCCESS) break;
    ASSERT_EQ(KERN_SUCCESS, mach_port_deallocate(mach_task_self(), message.reply));
  }
  EXPECT_GT(served, 256);
  EXPECT_LT(served, 10'000);
  EXPECT_FALSE(host::hasHungUp(connection));
  std::vector<std::byte> buffer(100);
  while (host::receivePacket(connection, buffer)) {
  }
  ASSERT_EQ(KERN_SUCCESS, receive(port, message, soon()));
  EXPECT_EQ(served, message.id);
}

// Two memory files that nobody has taken would be memory that no socket's buffer bounds.
TEST_F(SlowReader, GetsOneMemoryFileAtATime) {
  const std::vector<mach_port_name_t> replies = takeRequests({21, 22});
  const std::vector<std::byte> body(16 << 20, std::byte{5});
  ASSERT_EQ(KERN_SUCCESS, send(replies[0], MACH_PORT_NULL, 1, body, soon()));
  ASSERT_EQ(KERN_SUCCESS, send(replies[1], MACH_PORT_NULL, 1, body, soon()));
  std::vector<std::byte> buffer(1 << 20);
  ASSERT_TRUE(host::receivePacket(connection, buffer));
  EXPECT_TRUE(platform::mach::decodeHeader(buffer)->inMemoryFile);
  ASSERT_TRUE(host::receivePacket(connection, buffer));
  EXPECT_EQ(22u, platform::mach::decodeHeader(buffer)->destination);
  EXPECT_FALSE(platform::mach::decodeHeader(buffer)->inMemoryFile);
}

// What a port has answered reaches those who read it, though the port itself is gone.
TEST_F(SlowReader, IsGivenTheTimeToReadWhenThePortGoes) {
  const std::vector<mach_port_name_t> replies = takeRequests({21});
  ASSERT_EQ(KERN_SUCCESS, send(replies[0], MACH_PORT_NULL, 1, pattern(4 << 20), soon()));
  std::thread owner([this] { port.destroy(); });
  std::size_t read = 0;
  std::vector<std::byte> buffer(1 << 20);
  host::Result<host::ReceivedPacket> packet = host::Error::kWouldBlock;
  do {
    host::Interest interest{&connection};
    host::waitForAny({&interest, 1}, soon());
    packet = host::receivePacket(connection, buffer);
    if (packet) read += packet->size - platform::mach::kPacketHeaderSize;
  } while (packet || packet.error() == host::Error::kWouldBlock);
  owner.join();
  EXPECT_EQ(std::size_t{4} << 20, read);
}

TEST_F(SlowReader, HoldsNoPortUpThatGoes) {
  const std::vector<mach_port_name_t> replies = takeRequests({21});
  ASSERT_EQ(KERN_SUCCESS, send(replies[0], MACH_PORT_NULL, 1, pattern(4 << 20), soon()));
  const Deadline deadline = Deadline::after(10'000 * kMillisecond);
  port.destroy();
  EXPECT_GT(deadline.remaining(), 0);
}

// Each of these messages fills the port at once, so that reading stops behind it.
TEST_F(SlowReader, LeavesOthersTheirTurnWhenItKeepsThePortFull) {
  const host::Result<host::Descriptor> file = host::makeSealedMemory(pattern(1 << 20));
  const host::Descriptor other = connect();
  for (int i = 0; i < 10; ++i) {
    ASSERT_NO_FATAL_FAILURE(put(connection, {.inMemoryFile = true, .total = 1 << 20}, &*file));
  }
  ASSERT_NO_FATAL_FAILURE(put(other, {.id = 77}));
  Message message;
  int before = 0;
  for (; message.id != 77; ++before) {
    mach_port_name_t ready = MACH_PORT_NULL;
    ASSERT_EQ(PortSet::Outcome::kMessage, set.wait(ready, soon()));
    ASSERT_EQ(KERN_SUCCESS, receive(port, message, Deadline::immediate()));
  }
  EXPECT_LE(before, 4);
}

}  // namespace
}  // namespace tests
