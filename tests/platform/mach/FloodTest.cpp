// Licence: MIT, see LICENSE.
// More of everything than anybody needs: connections that are never used, messages that are never
// ended. They cost what was sent, up to a bound, and those who were there before notice nothing.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>

#include "platform/host/NameDirectory.h"
#include "platform/host/Poll.h"
#include "platform/host/SeqPacket.h"
#include "platform/mach/NameList.h"
#include "platform/mach/Packet.h"
#include "tests/platform/mach/MachTesting.h"
#include "tests/support/Command.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
namespace host = platform::host;
using platform::mach::encodeHeader;
using platform::mach::kBootstrapFolder;
using platform::mach::PacketHeader;

constexpr std::size_t kMostOfOneProcess = 128;

/// Connections and packets that a process with no manners makes.
class Flood : public MachTest {
 protected:
  host::Descriptor connect() const {
    host::Result<host::NamedConnection> made =
        (*platform::mach::ownDirectory())->connect(kBootstrapFolder, "victim");
    EXPECT_TRUE(made);
    return std::move(made->connection);
  }

  /// Asks the victim for an echo over a connection: whether it comes.
  static bool isAnswered(const host::Descriptor& connection) {
    const std::vector<std::byte> word = pattern(10);
    const PacketHeader header{.reply = 1, .id = kEcho, .total = 10};
    if (!host::sendPacket(connection, encodeHeader(header), word, nullptr)) return false;
    std::array<std::byte, 100> buffer;
    host::Interest answer{&connection};
    if (!host::waitForAny({&answer, 1}, soon())) return false;
    const auto packet = host::receivePacket(connection, buffer);
    return packet && packet->size == platform::mach::kPacketHeaderSize + word.size();
  }

  static void awaitEnd(const host::Descriptor& connection) {
    host::Interest end{&connection};
    while (!host::hasHungUp(connection)) ASSERT_TRUE(host::waitForAny({&end, 1}, soon()));
  }
};

class FloodOfConnections : public Flood {
 protected:
  void open(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) flood.push_back(connect());
  }

  std::unique_ptr<ChildProcess> server = startServer("victim");
  host::Descriptor innocent = connect();
  std::vector<host::Descriptor> flood;
};

TEST_F(FloodOfConnections, OfOneProcessEndsAtABound) {
  ASSERT_TRUE(isAnswered(innocent));
  open(kMostOfOneProcess - 1);
  EXPECT_TRUE(isAnswered(flood.back()));
  const host::Descriptor surplus = connect();
  awaitEnd(surplus);
  EXPECT_TRUE(isAnswered(innocent));
  for (const host::Descriptor& unused : flood) EXPECT_FALSE(host::hasHungUp(unused));
}

TEST_F(FloodOfConnections, LeavesRoomOnceItIsOver) {
  open(kMostOfOneProcess - 1);
  ASSERT_TRUE(isAnswered(flood.back()));
  flood.pop_back();
  EXPECT_TRUE(isAnswered(connect()));
}

TEST_F(FloodOfConnections, OfOneProcessDoesNotStopAnother) {
  open(2 * kMostOfOneProcess);
  const auto client = startPeer({"ask", "victim"});
  for (int step = 0; step < 3; ++step) EXPECT_EQ("0", client->readLine());
  EXPECT_EQ(std::to_string(kEcho + 1) + " word", client->readLine());
}

/// A connection of another kind, which waits on closing until all that was sent over it has gone.
/// Nobody reads at its other end.
class LingeringSocket final {
 public:
  LingeringSocket() : near(makeSocket()), far(makeSocket()) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const name = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(0, bind(far.number(), name, size));
    EXPECT_EQ(0, listen(far.number(), 1));
    EXPECT_EQ(0, getsockname(far.number(), name, &size));
    EXPECT_EQ(0, ::connect(near.number(), name, size));
    const linger hour{1, 3600};
    EXPECT_EQ(0, setsockopt(near.number(), SOL_SOCKET, SO_LINGER, &hour, sizeof hour));
    const std::vector<std::byte> much(1 << 20);
    while (::send(near.number(), much.data(), much.size(), MSG_DONTWAIT) > 0) {
    }
  }
  host::Descriptor take() { return std::move(near); }

 private:
  static host::Descriptor makeSocket() {
    return host::Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  }
  host::Descriptor near;
  host::Descriptor far;
};

TEST_F(FloodOfConnections, IsNotKeptByADescriptorThatTakesLongToClose) {
  ASSERT_TRUE(isAnswered(innocent));
  LingeringSocket lingering;
  const host::Descriptor stranger = connect();
  {
    const host::Descriptor passed = lingering.take();
    ASSERT_TRUE(host::sendPacket(stranger, encodeHeader({.id = 1}), {}, &passed));
  }
  awaitEnd(stranger);
  EXPECT_TRUE(isAnswered(innocent));
}

/// A victim that may open few descriptors.
class FloodOfDescriptors : public Flood {
 protected:
  static constexpr std::size_t kLimit = 64;

  std::unique_ptr<ChildProcess> startLimited() const {
    ChildProcess::Command command{"/bin/sh", "-c", "ulimit -n 64; exec \"$@\"", "sh"};
    for (const std::string& word :
         withRunner({QRL_MACH_PEER, "serve", "victim"}, Runner::kOfThisBuild)) {
      command.push_back(word);
    }
    auto limited = std::make_unique<ChildProcess>(
        command, ChildOptions{.environment = {}, .runner = Runner::kNone});
    EXPECT_EQ("0", limited->readLine());
    return limited;
  }
  std::size_t descriptors() const {
    return entriesIn("/proc/" + std::to_string(server->pid()) + "/fd");
  }

  std::unique_ptr<ChildProcess> server = startLimited();
};

TEST_F(FloodOfDescriptors, LeavesTheVictimAQuarterForItself) {
  const host::Descriptor innocent = connect();
  ASSERT_TRUE(isAnswered(innocent));
  const std::size_t before = descriptors();
  std::vector<host::Descriptor> flood;
  for (std::size_t i = 0; i < kLimit; ++i) flood.push_back(connect());
  ASSERT_TRUE(isAnswered(flood[kLimit / 4 * 3 - 2]));  // the last that finds room
  EXPECT_TRUE(isAnswered(innocent));
  EXPECT_EQ(before + kLimit / 4 * 3 - 1, descriptors());
  flood.erase(flood.begin(), flood.begin() + kLimit / 2);
  EXPECT_TRUE(isAnswered(flood.back()));
  EXPECT_TRUE(isAnswered(connect()));
}

/// Bodies of which only a part ever comes.
class FloodOfBytes : public Flood {
 protected:
  FloodOfBytes() {
    EXPECT_EQ(KERN_SUCCESS, registerName("victim", port));
    EXPECT_EQ(KERN_SUCCESS, set.insert(port));
  }

  /// Sends a part of a body, while the victim reads. False once it was cut off.
  bool pour(const host::Descriptor& connection, std::size_t bytes) {
    PacketHeader header{.id = 1, .total = 0x7fffffff};
    const std::vector<std::byte> part(180 << 10);
    for (std::size_t poured = 0; poured < bytes;) {
      const host::Status sent = host::sendPacket(connection, encodeHeader(header), part, nullptr);
      if (!sent && sent.error() != host::Error::kWouldBlock) return false;
      if (sent) poured += part.size();
      if (sent) header.kind = PacketHeader::Kind::kContinuation;
      turn();
    }
    return true;
  }
  void turn() {
    mach_port_name_t ready = MACH_PORT_NULL;
    EXPECT_EQ(PortSet::Outcome::kTimedOut, set.wait(ready, Deadline::immediate()));
  }

  static constexpr std::size_t kBound = std::size_t{64} << 20;
  static constexpr std::size_t kMuch = kBound / 8 * 5;
  OwnPort port;
  PortSet set;
};

TEST_F(FloodOfBytes, OnSeveralConnectionsEndsAtABound) {
  const host::Descriptor first = connect();
  const host::Descriptor second = connect();
  EXPECT_TRUE(pour(first, kMuch));
  EXPECT_FALSE(pour(second, kMuch));
  EXPECT_TRUE(host::hasHungUp(second));
  EXPECT_TRUE(pour(connect(), kMuch / 4));
  EXPECT_FALSE(host::hasHungUp(first));
}

// A message may be as large as it likes: an honest process has one under way.
TEST_F(FloodOfBytes, OnOneConnectionIsJustALargeMessage) {
  EXPECT_TRUE(pour(connect(), kBound + kBound / 16));
}

std::size_t residentBytes() {
  std::ifstream status("/proc/self/statm");
  std::size_t whole = 0;
  std::size_t resident = 0;
  status >> whole >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST_F(FloodOfBytes, IsForgottenWithItsConnection) {
  std::size_t before = 0;
  for (int round = 0; round < 20; ++round) {
    if (round == 2) before = residentBytes();
    EXPECT_TRUE(pour(connect(), kMuch / 4));
    turn();
  }
  EXPECT_LT(residentBytes(), before + kMuch);
}

}  // namespace
}  // namespace tests
