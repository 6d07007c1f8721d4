// Licence: MIT, see LICENSE.
#include <algorithm>
#include <array>
#include <new>

#include "platform/host/Poll.h"
#include "platform/host/SharedMemory.h"
#include "platform/mach/Space.h"
#include "platform/mach/Wait.h"
#include "platform/mach/WaitSet.h"

namespace platform::mach {

namespace {

constexpr int kMostAccepted = 64;
// After so many packets of one connection the others get their turn: a peer that never stops
// beginning messages would hold its reader for ever.
constexpr int kPacketsInARow = 32;

// An honest process has one connection to a port, on which one message is under way; a few more may
// not have been seen to end yet. What a dishonest one may have, while it is alive:
constexpr std::size_t kMostConnections = 128;
constexpr std::size_t kMostUnfinished = std::size_t{64} << 20;  // bytes, on several connections

/// Where a packet is read to. One block for all of it is what the host fills fastest; but where the
/// last message was large the body gets a place of its own, from which it need not be copied.
class Intake final {
 public:
  explicit Intake(Assembler& assemblerToFeed);

  host::Rooms rooms() const { return {parts.data(), count}; }
  Assembler::Outcome feed(std::size_t size);

  /// Gives a large block back, for whatever else the thread does.
  static void end();

 private:
  static constexpr std::size_t kPacketLimit = kPacketHeaderSize + kPacketBodyLimit;

  static Block& ownBlock();  // the thread's
  static void keep();
  void suit(std::size_t size);

  Assembler& assembler;
  Block& block = ownBlock();
  std::array<std::byte, kPacketHeaderSize> head;
  std::array<std::span<std::byte>, 3> parts;
  std::size_t count = 0;
};

Intake::Intake(Assembler& assemblerToFeed) : assembler(assemblerToFeed) {
  const std::size_t last = assembler.lastTotal();
  const std::span<std::byte> room = assembler.room();
  suit(room.empty() && last <= kLargestKept ? last : 0);
  const std::span<std::byte> whole(block.memory.get(), kPacketLimit);
  if (last < kSmallestKept) {
    parts[count++] = whole;
    return;
  }
  parts[count++] = head;
  const std::size_t placed = std::min(room.size(), kPacketBodyLimit);
  if (placed > 0) parts[count++] = room.first(placed);
  if (placed < kPacketBodyLimit) parts[count++] = whole.first(kPacketBodyLimit - placed);
}

/// Sees to it that the thread has a block, one that holds a message of this size if there is any.
void Intake::suit(std::size_t size) {
  if (block && block.capacity >= size) return;
  if (Block larger = withdrawKept(std::max(size, kPacketLimit))) {
    keep();
    block = std::move(larger);
  }
  if (!block) block = withdrawKept(kPacketLimit);
  if (!block) block = freshBlock(kPacketLimit);
  if (!block) throw std::bad_alloc();
}

void Intake::keep() {
  Block& own = ownBlock();
  if (!own) return;
  keepOnceFree(own.memory.get(), own.capacity);
  own = Block();
}

void Intake::end() {
  if (ownBlock().capacity > kPacketLimit) keep();
}

/// Takes what was read into the rooms.
Assembler::Outcome Intake::feed(std::size_t size) {
  if (count == 1) return assembler.feed(parts[0].first(size));
  std::array<Bytes, 3> read;
  for (std::size_t i = 0; i < count; ++i) {
    read[i] = parts[i].first(std::min(size, parts[i].size()));
    size -= read[i].size();
  }
  const bool isPlaced = !assembler.room().empty();
  if (isPlaced) return assembler.feed(read[0], {.placed = read[1], .rest = read[2]});
  return assembler.feed(read[0], {.rest = read[1], .block = &block});
}

Block& Intake::ownBlock() {
  static thread_local Block own;
  return own;
}

std::optional<Buffer> readMemoryFile(const host::ReceivedPacket& packet, std::uint32_t total) {
  const host::Result<std::size_t> size = host::sealedSize(packet.passed);
  if (!size || *size != total) return std::nullopt;
  std::optional<Buffer> body = makeBuffer(total);
  if (!body || !host::readSealedMemory(packet.passed, {body->memory.get(), body->size})) {
    return std::nullopt;
  }
  return body;
}

/// Feeds a packet, which may bring a descriptor only where it must bring one.
Assembler::Outcome feed(Intake& intake, const host::ReceivedPacket& packet) {
  const Assembler::Outcome outcome = intake.feed(packet.size);
  const bool expectsFile = outcome == Assembler::Outcome::kMemoryFile;
  const bool honest = !packet.surplus && static_cast<bool>(packet.passed) == expectsFile;
  return honest ? outcome : Assembler::Outcome::kMalformed;
}

/// The body of the message that a packet completed; none if there is no honest one.
std::optional<Buffer> bodyOf(Assembler& assembler, Assembler::Outcome outcome,
                             const host::ReceivedPacket& packet) {
  if (outcome == Assembler::Outcome::kComplete) return assembler.takeBody();
  if (outcome != Assembler::Outcome::kMemoryFile) return std::nullopt;
  return readMemoryFile(packet, assembler.header().total);
}

/// Whom a message is for; null if that is nobody (any more).
std::shared_ptr<Port> addressee(const std::shared_ptr<Connection>& connection, Token destination) {
  if (destination == 0) return connection->port.lock();
  const auto found = connection->awaited.find(destination);
  if (found == connection->awaited.end()) return nullptr;
  const std::shared_ptr<Port> port = found->second.lock();
  return port && forgetAnswer(*port, destination) ? port : nullptr;
}

/// False if an honest peer would not have sent this.
bool deliver(const std::shared_ptr<Connection>& connection, const PacketHeader& header,
             Buffer body) {
  Lock lock(space().mutex);
  if (connection->isDead()) return false;
  if (header.destination == 0 && connection->made) return false;
  QueuedMessage message{.id = header.id, .answers = header.destination, .body = std::move(body)};
  if (header.kind == PacketHeader::Kind::kAbandoned) message.id = MACH_NOTIFY_SEND_ONCE;
  if (header.reply != 0) {
    message.reply = {connection, nullptr, header.reply};
    ++connection->replyRights;
  }
  const std::shared_ptr<Port> port = addressee(connection, header.destination);
  if (!port || port->dead) {
    giveUp(lock, std::move(message.reply));
    return header.destination != 0;  // a late answer is nobody's fault
  }
  enqueue(*port, std::move(message));
  return true;
}

/// Whether a process has more unfinished messages to a port than one that is honest.
bool beginsTooMuch(const Connection& connection) {
  const Lock lock(space().mutex);
  const std::shared_ptr<Port> port = connection.port.lock();
  if (!port) return false;
  std::size_t bytes = 0;
  unsigned messages = 0;
  for (const std::shared_ptr<Connection>& other : port->accepted) {
    const std::size_t unfinished = other->unfinished.load(std::memory_order_relaxed);
    if (unfinished == 0 || other->peer != connection.peer) continue;
    bytes += unfinished;
    ++messages;
  }
  return messages > 1 && bytes > kMostUnfinished;
}

enum class Progress { kPart, kMessage, kEnd };

/// What a packet brings the connection's reader. Exhausted memory ends the connection alone.
Progress take(const std::shared_ptr<Connection>& connection, Intake& intake,
              const host::ReceivedPacket& packet) {
  try {
    Assembler& assembler = connection->assembler;
    const Assembler::Outcome outcome = feed(intake, packet);
    connection->unfinished.store(assembler.unfinished(), std::memory_order_relaxed);
    if (outcome == Assembler::Outcome::kPartial) {
      return beginsTooMuch(*connection) ? Progress::kEnd : Progress::kPart;
    }
    std::optional<Buffer> body = bodyOf(assembler, outcome, packet);
    const bool delivered = body && deliver(connection, assembler.header(), std::move(*body));
    return delivered ? Progress::kMessage : Progress::kEnd;
  } catch (const std::bad_alloc&) {
    return Progress::kEnd;
  }
}

void hangUpNow(const std::shared_ptr<Connection>& connection) {
  const Lock lock(space().mutex);
  hangUp(connection);
}

/// Reads until a message is complete, and delivers it. False once there is nothing to read now.
template <typename Receive>
bool takeMessage(const std::shared_ptr<Connection>& connection, Receive receive) {
  for (int i = 0; i < kPacketsInARow; ++i) {
    Intake intake(connection->assembler);
    const host::Result<host::ReceivedPacket> packet = receive(intake.rooms());
    if (!packet && packet.error() == host::Error::kWouldBlock) return false;
    const Progress progress = packet ? take(connection, intake, *packet) : Progress::kEnd;
    if (progress == Progress::kMessage) return true;
    if (progress == Progress::kEnd) {
      connection->assembler = Assembler();
      hangUpNow(connection);
      return false;
    }
  }
  return true;
}

bool mayConnect(const Listener& listener, const host::Peer& peer) {
  if (listener.directory->audience() == host::NameDirectory::Audience::kEveryone) return true;
  return peer.user == host::effectiveUser() || peer.user == 0;
}

/// Whether a process has as many connections to a port as it may. Those that it has closed count
/// no more, even where they have not been read to their end.
bool hasTooMany(const Port& port, const host::Peer& peer) {
  const auto isTheirs = [&](const auto& connection) { return connection->peer == peer; };
  const auto isOpen = [&](const auto& connection) {
    return isTheirs(connection) && !host::hasHungUp(*connection->socket);
  };
  const auto atLeast = static_cast<std::ptrdiff_t>(kMostConnections);
  return std::ranges::count_if(port.accepted, isTheirs) >= atLeast &&
         std::ranges::count_if(port.accepted, isOpen) >= atLeast;
}

/// Whether there is a descriptor for one more connection. A part of them is for what this process
/// does itself.
bool mayTakeOneOf(std::size_t limit) {
  const Lock lock(space().mutex);
  return space().accepted < limit / 4 * 3;
}

void welcome(const std::shared_ptr<Listener>& listener, host::Descriptor accepted) {
  const host::Result<host::Peer> peer = host::peerOf(accepted);
  if (!peer || !mayConnect(*listener, *peer)) return;
  const Lock lock(space().mutex);
  const std::shared_ptr<Port> port = listener->port.lock();
  if (!port || port->dead || hasTooMany(*port, *peer)) return;
  auto connection = std::make_shared<Connection>(std::move(accepted));
  connection->peer = *peer;
  connection->port = port;
  port->accepted.push_back(connection);
  ++space().accepted;
  for (WaitSet* set : port->sets) set->watch(connection);
}

}  // namespace

Connection::Connection(host::Descriptor descriptor)
    : Source(Kind::kConnection, std::move(descriptor)) {
  const std::size_t limit = host::packetLimit(*socket);
  packetBody = limit > 2 * kPacketHeaderSize ? limit - kPacketHeaderSize : kPacketHeaderSize;
  packetBody = std::min(packetBody, kPacketBodyLimit);
}

bool serve(const std::shared_ptr<Connection>& connection, const Socket& socket) {
  const std::lock_guard reading(connection->reading);
  const bool mayBeMore = takeMessage(
      connection, [&](host::Rooms rooms) { return host::receivePacket(*socket, rooms); });
  Intake::end();
  return mayBeMore;
}

void serveAlone(const std::shared_ptr<Connection>& connection, const Socket& socket,
                Deadline deadline) {
  const std::lock_guard reading(connection->reading);
  takeMessage(connection, [&](host::Rooms rooms) {
    return host::awaitPacket(*socket, rooms, deadline, connection->patience);
  });
  Intake::end();
}

void hangUp(std::shared_ptr<Connection> connection) {
  if (connection->isDead()) return;
  for (WaitSet* set : std::vector<WaitSet*>(connection->watchers)) set->forget(*connection);
  const Socket socket = std::exchange(connection->socket, nullptr);
  host::shutDown(*socket);
  if (connection->made) {
    std::erase(space().made, connection);
  } else {
    --space().accepted;
  }
  if (const std::shared_ptr<Port> port = connection->port.lock()) {
    std::erase(port->accepted, connection);
  }
  connection->sendable.notify_all();
  connection->backlog.clear();
  connection->backlogBytes = 0;
  for (const auto& [token, weak] : std::exchange(connection->awaited, {})) {
    const std::shared_ptr<Port> port = weak.lock();
    if (!port || !forgetAnswer(*port, token)) continue;
    enqueue(*port, {.id = MACH_NOTIFY_SEND_ONCE, .answers = token});
  }
}

void dropIfUnused(const std::shared_ptr<Connection>& connection) {
  if (!connection->made || connection->name != MACH_PORT_NULL) return;
  if (connection->awaited.empty() && connection->replyRights == 0) hangUp(connection);
}

void passLead(const std::shared_ptr<Connection>& connection) {
  if (connection->isDead() || connection->leader != nullptr) return;
  for (const auto& [token, weak] : connection->awaited) {
    const std::shared_ptr<Port> port = weak.lock();
    if (!port) continue;
    for (Waiter* waiter : port->waiters) {
      if (waiter->led) continue;
      connection->leader = waiter;
      waiter->led = connection;
      waiter->wake();
      return;
    }
  }
}

bool acceptWaiting(const std::shared_ptr<Listener>& listener, const Socket& socket) {
  const std::size_t limit = host::descriptorLimit();
  for (int i = 0; i < kMostAccepted; ++i) {
    if (!mayTakeOneOf(limit)) return false;
    host::Result<host::Descriptor> accepted = host::acceptConnection(*socket);
    if (accepted) {
      welcome(listener, std::move(*accepted));
    } else if (accepted.error() == host::Error::kNoResources ||
               accepted.error() == host::Error::kNoMemory) {
      return false;
    } else if (accepted.error() != host::Error::kDisconnected) {
      break;
    }
  }
  return true;
}

}  // namespace platform::mach
