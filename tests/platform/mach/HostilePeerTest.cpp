// Licence: MIT, see LICENSE.
// Whatever a peer sends: its own connection may be closed, and nothing else happens.
#include <fcntl.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

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
using platform::mach::kPacketBodyLimit;
using platform::mach::PacketHeader;
using platform::mach::receive;
using platform::mach::send;
using Kind = PacketHeader::Kind;

class HostilePeer : public MachTest {
 protected:
  HostilePeer() {
    EXPECT_EQ(KERN_SUCCESS, registerName("victim", port));
    EXPECT_EQ(KERN_SUCCESS, set.insert(port));
    connection = connect();
  }

  static host::Descriptor connect() {
    host::Result<host::NamedConnection> made =
        (*platform::mach::ownDirectory())->connect(kBootstrapFolder, "victim");
    EXPECT_TRUE(made);
    return std::move(made->connection);
  }

  static void put(const host::Descriptor& to, const PacketHeader& header, Bytes body = {},
                  const host::Descriptor* passed = nullptr) {
    ASSERT_TRUE(host::sendPacket(to, encodeHeader(header), body, passed));
  }

  /// What the victim has not read yet of a connection, as its sender's buffer counts it.
  static int unreadBytes(const host::Descriptor& of) {
    int count = -1;
    EXPECT_EQ(0, ioctl(of.number(), SIOCOUTQ, &count));
    return count;
  }

  /// Gives the victim a turn. On a slow machine it takes several to see what has happened.
  void expectNoMessage() {
    mach_port_name_t ready = MACH_PORT_NULL;
    EXPECT_EQ(PortSet::Outcome::kTimedOut, set.wait(ready, shortly()));
  }

  /// Whatever arrived was no message and cost the peer its connection; others are still served.
  void expectExpulsion() {
    const Deadline end = soon();
    while (!host::hasHungUp(connection) && end.remaining() > 0) expectNoMessage();
    EXPECT_TRUE(host::hasHungUp(connection));
    const host::Descriptor honest = connect();
    put(honest, {.id = 5});
    Message message;
    EXPECT_EQ(KERN_SUCCESS, receive(port, message, soon()));
    EXPECT_EQ(5, message.id);
  }

  OwnPort port;
  PortSet set;
  host::Descriptor connection;
};

TEST_F(HostilePeer, IsExpelledForABadHeader) {
  for (const std::size_t at : {0u, 3u, 4u, 5u, 6u, 7u, 20u}) {
    SCOPED_TRACE(at);
    auto header = encodeHeader({.id = 1});
    header[at] = std::byte{0xff};
    connection = connect();
    ASSERT_TRUE(host::sendPacket(connection, header, {}, nullptr));
    expectExpulsion();
  }
}

TEST_F(HostilePeer, IsExpelledForATruncatedHeader) {
  const auto header = encodeHeader({.id = 1});
  for (std::size_t size = 1; size < header.size(); ++size) {
    connection = connect();
    ASSERT_TRUE(host::sendPacket(connection, Bytes(header).first(size), {}, nullptr));
    expectExpulsion();
  }
}

TEST_F(HostilePeer, IsExpelledForABodyThatDoesNotFitItsClaim) {
  const std::vector<std::byte> body = pattern(100);
  const auto header = [](std::uint32_t total) { return PacketHeader{.id = 1, .total = total}; };
  ASSERT_NO_FATAL_FAILURE(put(connection, header(99), body));
  expectExpulsion();
  connection = connect();
  ASSERT_NO_FATAL_FAILURE(put(connection, header(100)));
  expectExpulsion();
  connection = connect();
  ASSERT_NO_FATAL_FAILURE(put(connection, header(150), body));
  ASSERT_NO_FATAL_FAILURE(put(connection, {.kind = Kind::kContinuation, .total = 150}, body));
  expectExpulsion();
}

TEST_F(HostilePeer, IsExpelledForAContinuationOfNothing) {
  ASSERT_NO_FATAL_FAILURE(put(connection, {.kind = Kind::kContinuation, .total = 10}, pattern(10)));
  expectExpulsion();
}

TEST_F(HostilePeer, IsExpelledForAnOversizedPacket) {
  const int size = 1 << 20;
  setsockopt(connection.number(), SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
  const std::vector<std::byte> body = pattern(kPacketBodyLimit + 1);
  const auto total = static_cast<std::uint32_t>(body.size());
  ASSERT_NO_FATAL_FAILURE(put(connection, {.id = 1, .total = total}, body));
  expectExpulsion();
}

TEST_F(HostilePeer, IsExpelledForAnOversizedPacketAfterALargeMessage) {
  const int size = 1 << 20;
  setsockopt(connection.number(), SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
  ASSERT_NO_FATAL_FAILURE(put(connection, {.id = 1, .total = 100'000}, pattern(100'000)));
  Message message;
  ASSERT_EQ(KERN_SUCCESS, receive(port, message, soon()));
  ASSERT_NO_FATAL_FAILURE(put(connection, {.id = 2, .total = 250'000}, pattern(40'000)));
  const PacketHeader rest{.kind = Kind::kContinuation, .total = 250'000};
  ASSERT_NO_FATAL_FAILURE(put(connection, rest, pattern(kPacketBodyLimit + 1)));
  expectExpulsion();
}

TEST_F(HostilePeer, MayGiveALargeMessageUpForAnother) {
  for (const std::size_t size : {100u, 50'000u, 100'000u, 190'000u}) {
    SCOPED_TRACE(size);
    ASSERT_NO_FATAL_FAILURE(put(connection, {.id = 1, .total = 200'000}, pattern(40'000)));
    const auto total = static_cast<std::uint32_t>(size);
    ASSERT_NO_FATAL_FAILURE(put(connection, {.id = 2, .total = total}, pattern(size, 5)));
    Message message;
    ASSERT_EQ(KERN_SUCCESS, receive(port, message, soon()));
    EXPECT_EQ(2, message.id);
    EXPECT_TRUE(pattern(size, 5) == bytesOf(message));
  }
}

TEST_F(HostilePeer, IsExpelledForAnEmptyPacket) {
  ASSERT_EQ(0, ::send(connection.number(), "", 0, 0));
  expectExpulsion();
}

TEST_F(HostilePeer, IsExpelledForAnAbandonmentOfNothing) {
  ASSERT_NO_FATAL_FAILURE(put(connection, {.kind = Kind::kAbandoned}));
  expectExpulsion();
}

TEST_F(HostilePeer, IsExpelledForAnAbandonmentThatWantsAnAnswer) {
  const PacketHeader header{.kind = Kind::kAbandoned, .destination = 1, .reply = 2};
  ASSERT_NO_FATAL_FAILURE(put(connection, header));
  expectExpulsion();
}

// Packets that only ever begin messages keep no reader from its other connections.
TEST_F(HostilePeer, HoldsItsReaderForAFewPacketsOnly) {
  mach_port_name_t ready = MACH_PORT_NULL;
  EXPECT_EQ(PortSet::Outcome::kTimedOut, set.wait(ready, shortly()));  // takes the connection
  for (int i = 0; i < 100; ++i) {
    ASSERT_NO_FATAL_FAILURE(put(connection, {.id = 1, .total = 100}, pattern(1)));
  }
  const int before = unreadBytes(connection);
  EXPECT_EQ(PortSet::Outcome::kTimedOut, set.wait(ready, Deadline::immediate()));
  const int after = unreadBytes(connection);
  EXPECT_LT(after, before);
  EXPECT_GT(after, before / 2);
  while (unreadBytes(connection) > 0) set.wait(ready, Deadline::immediate());
  ASSERT_NO_FATAL_FAILURE(put(connection, {.id = 2}));
  Message message;
  ASSERT_EQ(KERN_SUCCESS, receive(port, message, soon()));
  EXPECT_EQ(2, message.id);
}

TEST_F(HostilePeer, IsToldWhenItsAnswerToNobodyWantsAnAnswer) {
  ASSERT_NO_FATAL_FAILURE(put(connection, {.destination = 12345, .reply = 7, .id = 1}));
  host::Interest answer{&connection};
  const Deadline end = soon();
  while (!host::waitForAny({&answer, 1}, Deadline::immediate()) && end.remaining() > 0) {
    expectNoMessage();
  }
  std::vector<std::byte> buffer(100);
  ASSERT_TRUE(host::receivePacket(connection, buffer));
  const auto notice = platform::mach::decodeHeader(buffer);
  EXPECT_EQ(Kind::kAbandoned, notice->kind);
  EXPECT_EQ(7u, notice->destination);
}

TEST_F(HostilePeer, AllocatesNothingForABodyThatIsOnlyClaimed) {
  rlimit before{};
  getrlimit(RLIMIT_AS, &before);
  ASSERT_NO_FATAL_FAILURE(put(connection, {.id = 1, .total = 0x7fffffff}, pattern(10)));
  mach_port_name_t ready = MACH_PORT_NULL;
  EXPECT_EQ(PortSet::Outcome::kTimedOut, set.wait(ready, shortly()));
  EXPECT_FALSE(host::hasHungUp(connection));
  ASSERT_NO_FATAL_FAILURE(put(connection, {.id = 2, .total = 10}, pattern(10)));
  Message message;
  ASSERT_EQ(KERN_SUCCESS, receive(port, message, soon()));
  EXPECT_EQ(2, message.id);
  EXPECT_EQ(pattern(10), bytesOf(message));
}

TEST_F(HostilePeer, AnswersToNobodyAreDropped) {
  ASSERT_NO_FATAL_FAILURE(put(connection, {.destination = 12345, .id = 1}));
  ASSERT_NO_FATAL_FAILURE(put(connection, {.kind = Kind::kAbandoned, .destination = 12345}));
  ASSERT_NO_FATAL_FAILURE(put(connection, {.id = 2}));
  Message message;
  ASSERT_EQ(KERN_SUCCESS, receive(port, message, soon()));
  EXPECT_EQ(2, message.id);
}

/// Descriptors that come along, where they must not or are not what they should be.
class HostileDescriptors : public HostilePeer {
 protected:
  HostileDescriptors() : sealed(std::move(*host::makeSealedMemory(pattern(100)))) {}

  /// How many descriptors are open once the victim has seen all that has happened. On a slow
  /// machine that takes it more than one wait.
  std::size_t settledDescriptors() {
    mach_port_name_t ready = MACH_PORT_NULL;
    std::size_t counted = 0;
    for (std::size_t now = openDescriptors(); now != counted; now = openDescriptors()) {
      counted = now;
      EXPECT_EQ(PortSet::Outcome::kTimedOut, set.wait(ready, shortly()));
    }
    return counted;
  }

  void expectRefusal(const host::Descriptor& passed, std::uint32_t total) {
    connection = connect();
    const std::size_t before = settledDescriptors();
    ASSERT_NO_FATAL_FAILURE(
        put(connection, {.inMemoryFile = true, .id = 1, .total = total}, {}, &passed));
    // The victim's end of the connection is gone, and nothing that came with it is left.
    EXPECT_EQ(before - 1, settledDescriptors());
    EXPECT_TRUE(host::hasHungUp(connection));
  }

  host::Descriptor sealed;
};

TEST_F(HostileDescriptors, AreTakenWhenTheyAreHonest) {
  ASSERT_NO_FATAL_FAILURE(
      put(connection, {.inMemoryFile = true, .id = 1, .total = 100}, {}, &sealed));
  Message message;
  ASSERT_EQ(KERN_SUCCESS, receive(port, message, soon()));
  EXPECT_EQ(pattern(100), bytesOf(message));
}

TEST_F(HostileDescriptors, MustHaveTheClaimedSize) {
  expectRefusal(sealed, 99);
  expectRefusal(sealed, 101);
  expectRefusal(sealed, 0);
}

TEST_F(HostileDescriptors, MustBeSealed) {
  const host::Descriptor open(memfd_create("open", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  ASSERT_EQ(0, ftruncate(open.number(), 100));
  expectRefusal(open, 100);
  ASSERT_EQ(0, fcntl(open.number(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW));
  expectRefusal(open, 100);
}

TEST_F(HostileDescriptors, MustBeMemory) {
  const host::Descriptor file(::open("/dev/zero", O_RDONLY | O_CLOEXEC));
  expectRefusal(file, 100);
  expectRefusal(connection, 100);
}

TEST_F(HostileDescriptors, MustNotBeMadeOfHoles) {
  const host::Descriptor hollow(memfd_create("hollow", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  ASSERT_EQ(0, ftruncate(hollow.number(), 1 << 30));
  ASSERT_EQ(0, fcntl(hollow.number(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE));
  expectRefusal(hollow, 1 << 30);
}

TEST_F(HostileDescriptors, MustNotComeUnannounced) {
  ASSERT_NO_FATAL_FAILURE(put(connection, {.id = 1, .total = 10}, pattern(10), &sealed));
  expectExpulsion();
}

TEST_F(HostileDescriptors, MustComeWhenTheyAreAnnounced) {
  ASSERT_NO_FATAL_FAILURE(put(connection, {.inMemoryFile = true, .id = 1, .total = 100}));
  expectExpulsion();
}

TEST_F(HostileDescriptors, MustNotBeMany) {
  const std::size_t before = settledDescriptors();
  const auto header = encodeHeader({.inMemoryFile = true, .id = 1, .total = 100});
  constexpr std::size_t kMany = 200;
  alignas(cmsghdr) char control[CMSG_SPACE(kMany * sizeof(int))] = {};
  iovec part{const_cast<std::byte*>(header.data()), header.size()};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  cmsghdr* rights = CMSG_FIRSTHDR(&message);
  *rights = cmsghdr{};
  rights->cmsg_len = CMSG_LEN(kMany * sizeof(int));
  rights->cmsg_level = SOL_SOCKET;
  rights->cmsg_type = SCM_RIGHTS;
  for (std::size_t i = 0; i < kMany; ++i) {
    reinterpret_cast<int*>(CMSG_DATA(rights))[i] = sealed.number();
  }
  ASSERT_EQ(static_cast<ssize_t>(header.size()), sendmsg(connection.number(), &message, 0));
  EXPECT_EQ(before - 1, settledDescriptors());
  EXPECT_TRUE(host::hasHungUp(connection));
}

/// Descriptors of this process run out.
class ExhaustedDescriptors : public HostilePeer {
 protected:
  ~ExhaustedDescriptors() override { relax(); }

  // The sanitizers need descriptors to look at objects whose type they have not seen before.
  bool exhaust() {
    getrlimit(RLIMIT_NOFILE, &limit);
    const host::Descriptor lowestFree(dup(0));
    rlimit tight = limit;
    tight.rlim_cur = static_cast<rlim_t>(lowestFree.number());
    return setrlimit(RLIMIT_NOFILE, &tight) == 0;
  }
  void relax() {
    if (limit.rlim_cur != 0) setrlimit(RLIMIT_NOFILE, &limit);
  }

  rlimit limit{};
};

TEST_F(ExhaustedDescriptors, LeaveExistingConnectionsServed) {
  mach_port_name_t ready = MACH_PORT_NULL;
  EXPECT_EQ(PortSet::Outcome::kTimedOut, set.wait(ready, shortly()));
  ASSERT_NO_FATAL_FAILURE(put(connection, {.id = 6}));
  const host::Descriptor waiting = connect();
  ASSERT_NO_FATAL_FAILURE(put(waiting, {.id = 7}));
  ASSERT_TRUE(exhaust());
  Message message;
  ASSERT_EQ(PortSet::Outcome::kMessage, set.wait(ready, soon()));
  ASSERT_EQ(KERN_SUCCESS, receive(port, message, Deadline::immediate()));
  EXPECT_EQ(6, message.id);
  EXPECT_EQ(PortSet::Outcome::kTimedOut, set.wait(ready, shortly()));
  relax();
  ASSERT_EQ(PortSet::Outcome::kMessage, set.wait(ready, soon()));
  ASSERT_EQ(KERN_SUCCESS, receive(port, message, Deadline::immediate()));
  EXPECT_EQ(7, message.id);
}

TEST_F(ExhaustedDescriptors, AreReportedByTheCallsThatNeedOne) {
  const auto server = startServer("theirs");
  const OwnPort other;
  PortSet second;
  ASSERT_TRUE(exhaust());
  mach_port_t found = 7;
  EXPECT_EQ(BOOTSTRAP_NO_MEMORY, bootstrap_look_up(kBootstrapPort, "theirs", &found));
  EXPECT_EQ(MACH_PORT_NULL, found);
  EXPECT_EQ(BOOTSTRAP_NO_MEMORY, bootstrap_register(kBootstrapPort, "other", other));
  EXPECT_EQ(KERN_RESOURCE_SHORTAGE, second.insert(other));
  relax();
  EXPECT_NE(MACH_PORT_NULL, lookUp("theirs"));
  EXPECT_EQ(KERN_SUCCESS, registerName("other", other));
  EXPECT_EQ(KERN_SUCCESS, second.insert(other));
}

}  // namespace
}  // namespace tests
