// Licence: MIT, see LICENSE.
// A whole connection with a stranger at its other end: packets in any order, with descriptors of
// any kind, from a client of a port of ours or from a server that we asked something. The first
// byte of the input says which; then come steps, each a byte of what to do, the length of a packet
// in two bytes, and the packet.
//
// No more may arrive than was sent, a request is answered once at most, and no descriptor stays.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <vector>

#include "platform/host/SharedMemory.h"
#include "platform/mach/Space.h"

namespace {

using namespace platform::mach;
namespace host = platform::host;

/// The fuzzer shows where it was called.
void require(bool holds) {
  if (!holds) std::abort();
}

int lowestFreeDescriptor() {
  const host::Descriptor lowest(dup(0));
  return lowest.number();
}

/// What a step asks for beside its packet.
struct Step {
  enum Passed : std::uint8_t { kNothing, kSealed, kOpen, kHollow, kShort, kPipe, kDevice, kItself };
  Passed passed;
  bool answers;  // the owner answers what has arrived, else it gives the rights up
  bool takes;    // the owner takes what has arrived
  bool reads;    // the stranger reads
  Bytes packet;

  static Step takeFrom(Bytes& input) {
    const auto what = std::to_integer<std::uint8_t>(input[0]);
    const std::size_t claimed =
        std::to_integer<std::size_t>(input[1]) << 8 | std::to_integer<std::size_t>(input[2]);
    input = input.subspan(3);
    const Bytes packet = input.first(std::min(claimed, input.size()));
    input = input.subspan(packet.size());
    return {static_cast<Passed>(what & 7), (what & 8) != 0, (what & 16) != 0, (what & 32) != 0,
            packet};
  }
};

host::Descriptor memory(std::size_t size, int seals) {
  host::Descriptor file(memfd_create("fuzz", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  require(ftruncate(file.number(), static_cast<off_t>(size)) == 0);
  if (seals != 0) require(fcntl(file.number(), F_ADD_SEALS, seals) == 0);
  return file;
}

/// Both ends of a connection, ours among the ports of this process.
class Stage final {
 public:
  explicit Stage(bool asServer) {
    require(mach_port_allocate(kTask, MACH_PORT_RIGHT_RECEIVE, &name) == KERN_SUCCESS);
    host::Result<host::ConnectedPair> ends = host::makeConnectedPair();
    stranger = std::move(ends->first);
    Lock lock(space().mutex);
    space().lastToken = 0;
    connection = std::make_shared<Connection>(std::move(ends->second));
    const std::shared_ptr<Port> port = findPort(name);
    if (asServer) {
      connection->made = true;
      space().made.push_back(connection);
      for (int i = 0; i < kRequests; ++i) expectAnswer(port, connection);
    } else {
      connection->port = port;
      port->accepted.push_back(connection);
      ++space().accepted;
    }
    socket = connection->socket;
  }

  ~Stage() {
    stranger.reset();
    while (serve(connection, socket)) {
    }
    require(connection->isDead());
    takeAll(false);
    require(mach_port_destroy(kTask, name) == KERN_SUCCESS);
    require(space().accepted == 0 && space().made.empty());
    require(arrived <= sent);
  }

  void play(const Step& step) {
    const host::Descriptor passed = make(step);
    // What the socket has no room for is never sent.
    const host::Status status =
        host::sendPacket(stranger, step.packet, {}, passed ? &passed : nullptr);
    if (status) count(step, passed);
    for (int turns = 0; turns < kTurns && serve(connection, socket); ++turns) {
    }
    if (step.takes) takeAll(step.answers);
    if (step.reads) readAll();
  }

 private:
  static constexpr mach_port_name_t kTask = 0x103;
  static constexpr int kRequests = 3;
  static constexpr int kTurns = 8;
  static constexpr std::size_t kHollow = std::size_t{1} << 30;

  host::Descriptor make(const Step& step) const {
    const auto header = decodeHeader(step.packet);
    const std::size_t size = header ? std::min<std::size_t>(header->total, 4096) : 0;
    switch (step.passed) {
      case Step::kNothing:
        return {};
      case Step::kSealed:
        return std::move(*host::makeSealedMemory(std::vector<std::byte>(size)));
      case Step::kOpen:
        return memory(size, 0);
      case Step::kHollow:
        return memory(kHollow, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE);
      case Step::kShort:
        return std::move(*host::makeSealedMemory(std::vector<std::byte>(size / 2)));
      case Step::kPipe: {
        int ends[2];
        require(pipe2(ends, O_CLOEXEC) == 0);
        const host::Descriptor writing(ends[1]);
        return host::Descriptor(ends[0]);
      }
      case Step::kDevice:
        return host::Descriptor(open("/dev/zero", O_RDONLY | O_CLOEXEC));
      case Step::kItself:
        return host::Descriptor(fcntl(stranger.number(), F_DUPFD_CLOEXEC, 0));
    }
    return {};
  }

  void count(const Step& step, const host::Descriptor& passed) {
    sent += step.packet.size();
    const auto header = decodeHeader(step.packet);
    if (!header) return;
    if (passed && header->inMemoryFile) sent += std::min<std::size_t>(header->total, 4096);
    if (header->reply != 0) ++asked[header->reply];
  }

  void takeAll(bool answering) {
    Message message;
    while (receive(name, message, Deadline::immediate()) == KERN_SUCCESS) {
      arrived += message.body.size;
      if (message.reply == MACH_PORT_NULL) continue;
      if (answering)
        send(message.reply, MACH_PORT_NULL, 1, message.body.bytes(), Deadline::immediate());
      mach_port_deallocate(kTask, message.reply);  // where it was not spent
    }
  }

  void readAll() {
    std::vector<std::byte> buffer(kPacketHeaderSize + kPacketBodyLimit);
    while (const auto packet = host::receivePacket(stranger, buffer)) {
      const auto header = decodeHeader(Bytes(buffer).first(packet->size));
      require(header.has_value());
      if (header->kind == PacketHeader::Kind::kContinuation) continue;
      require(header->destination != 0 && asked[header->destination]-- > 0);
    }
  }

  mach_port_name_t name = MACH_PORT_NULL;
  host::Descriptor stranger;
  std::shared_ptr<Connection> connection;
  Socket socket;
  std::map<Token, int> asked;  // by the stranger
  std::size_t sent = 0;
  std::size_t arrived = 0;
};

// A thread's first wait makes what it waits with.
bool waitOnce() {
  const Stage stage(true);
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes input = std::as_bytes(std::span(data, size));
  if (input.empty()) return 0;
  static const bool hasWaited = waitOnce();
  require(hasWaited);
  const int free = lowestFreeDescriptor();
  {
    Stage stage((std::to_integer<unsigned>(input[0]) & 1) != 0);
    input = input.subspan(1);
    while (input.size() >= 3) stage.play(Step::takeFrom(input));
  }
  require(lowestFreeDescriptor() == free);
  return 0;
}
