// Licence: MIT, see LICENSE.
#include <algorithm>
#include <array>
#include <chrono>

#include "platform/host/Poll.h"
#include "platform/host/SharedMemory.h"
#include "platform/mach/Space.h"
#include "platform/mach/Wait.h"
#include "platform/mach/WaitSet.h"

namespace platform::mach {

namespace {

// From here on a fresh memory file costs less than copying packets in and out of the socket.
constexpr std::size_t kMemoryFileFrom = std::size_t{16} << 20;
constexpr int kMostAccepted = 64;

kern_return_t codeOfSend(host::Error error) {
  switch (error) {
    case host::Error::kNoResources:
    case host::Error::kNoMemory:
      return MACH_SEND_NO_BUFFER;
    case host::Error::kTooLarge:
      return MACH_SEND_TOO_LARGE;
    default:
      return MACH_SEND_INVALID_DEST;
  }
}

/// One message on its way out, while this thread has its turn on the connection.
struct Outgoing {
  const std::shared_ptr<Connection>& connection;
  const Socket& socket;
  PacketHeader header;
  Deadline deadline;

  // While there is no room, answers that arrive are taken in, lest both ends wait for each other.
  bool waitForRoom() const {
    if (deadline.remaining() == 0) return false;
    host::Interest interest{
        socket.get(), connection->made ? host::Interest::In::kBoth : host::Interest::In::kOutput};
    host::waitForAny({&interest, 1}, deadline);
    if (connection->made && interest.readable && !interest.writable) serve(connection, socket);
    return true;
  }

  kern_return_t sendPart(Bytes part, const host::Descriptor* file) const {
    const auto head = encodeHeader(header);
    for (;;) {
      const host::Status sent = host::sendPacket(*socket, head, part, file);
      if (sent) return KERN_SUCCESS;
      if (sent.error() != host::Error::kWouldBlock) return codeOfSend(sent.error());
      if (!waitForRoom()) return MACH_SEND_TIMED_OUT;
    }
  }

  kern_return_t sendPackets(Bytes body) {
    do {
      const Bytes part = body.first(std::min(body.size(), connection->packetBody));
      if (const kern_return_t result = sendPart(part, nullptr); result != KERN_SUCCESS) {
        return result;
      }
      body = body.subspan(part.size());
      header.kind = PacketHeader::Kind::kContinuation;
    } while (!body.empty());
    return KERN_SUCCESS;
  }

  kern_return_t send(Bytes body) {
    header.total = static_cast<std::uint32_t>(body.size());
    if (body.size() >= kMemoryFileFrom) {
      const host::Result<host::Descriptor> file = host::makeSealedMemory(body);
      if (file) {
        header.inMemoryFile = true;
        return sendPart({}, &*file);
      }
    }
    return sendPackets(body);
  }
};

bool awaitTurn(Lock& lock, Connection& connection, Deadline deadline) {
  ++connection.sendersWaiting;
  bool inTime = true;
  while (connection.sending && !connection.isDead() && inTime) {
    inTime = waitUntil(connection.sendable, lock, deadline);
  }
  --connection.sendersWaiting;
  return !connection.sending || connection.isDead();
}

kern_return_t transmitOne(Lock& lock, const std::shared_ptr<Connection>& connection,
                          const PacketHeader& header, Bytes body, Deadline deadline) {
  if (!awaitTurn(lock, *connection, deadline)) return MACH_SEND_TIMED_OUT;
  if (connection->isDead()) return MACH_SEND_INVALID_DEST;
  connection->sending = true;
  const Socket socket = connection->socket;
  lock.unlock();
  const kern_return_t result = Outgoing{connection, socket, header, deadline}.send(body);
  lock.lock();
  connection->sending = false;
  if (connection->sendersWaiting > 0) connection->sendable.notify_one();
  return result;
}

// What finds no room waits for the next message to go out.
void flushAbandoned(Lock& lock, const std::shared_ptr<Connection>& connection) {
  while (!connection->sending && !connection->abandoned.empty()) {
    const Token token = connection->abandoned.back();
    connection->abandoned.pop_back();
    const PacketHeader notice{.kind = PacketHeader::Kind::kAbandoned, .destination = token};
    const kern_return_t result = transmitOne(lock, connection, notice, {}, Deadline::immediate());
    if (result == KERN_SUCCESS || connection->isDead()) continue;
    connection->abandoned.push_back(token);
    return;
  }
}

std::span<std::byte> packetBuffer() {
  static thread_local const std::unique_ptr<std::byte[]> buffer(
      new std::byte[kPacketHeaderSize + kPacketBodyLimit]);
  return {buffer.get(), kPacketHeaderSize + kPacketBodyLimit};
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
Assembler::Outcome feed(Assembler& assembler, const host::ReceivedPacket& packet) {
  const Assembler::Outcome outcome = assembler.feed(packetBuffer().first(packet.size));
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

void deliverAnswer(const std::shared_ptr<Connection>& connection, const PacketHeader& header,
                   QueuedMessage message) {
  const auto found = connection->awaited.find(header.destination);
  if (found == connection->awaited.end()) return;  // given up meanwhile
  const std::shared_ptr<Port> port = found->second.lock();
  if (!port || !forgetAnswer(*port, header.destination)) return;
  message.answers = header.destination;
  if (header.kind == PacketHeader::Kind::kAbandoned) message.id = MACH_NOTIFY_SEND_ONCE;
  enqueue(*port, std::move(message));
}

bool deliver(const std::shared_ptr<Connection>& connection, const PacketHeader& header,
             Buffer body) {
  const Lock lock(space().mutex);
  if (connection->isDead()) return false;
  if (header.destination == 0 && connection->made) return false;
  QueuedMessage message{.id = header.id, .body = std::move(body)};
  const std::shared_ptr<Port> listening = connection->port.lock();
  if (header.destination == 0 && (!listening || listening->dead)) return false;
  if (header.reply != 0) {
    message.reply = {connection, nullptr, header.reply};
    ++connection->replyRights;
  }
  if (header.destination == 0) {
    enqueue(*listening, std::move(message));
  } else {
    deliverAnswer(connection, header, std::move(message));
  }
  return true;
}

void hangUpNow(const std::shared_ptr<Connection>& connection) {
  const Lock lock(space().mutex);
  hangUp(connection);
}

bool mayConnect(const Listener& listener, const host::Peer& peer) {
  if (listener.directory->audience() == host::NameDirectory::Audience::kEveryone) return true;
  return peer.user == host::effectiveUser() || peer.user == 0;
}

void welcome(const std::shared_ptr<Listener>& listener, host::Descriptor accepted) {
  const host::Result<host::Peer> peer = host::peerOf(accepted);
  if (!peer || !mayConnect(*listener, *peer)) return;
  const Lock lock(space().mutex);
  const std::shared_ptr<Port> port = listener->port.lock();
  if (!port || port->dead) return;
  auto connection = std::make_shared<Connection>(std::move(accepted));
  connection->peer = *peer;
  connection->port = port;
  port->accepted.push_back(connection);
  for (WaitSet* set : port->sets) set->watch(connection);
}

}  // namespace

Connection::Connection(host::Descriptor descriptor)
    : Source(Kind::kConnection, std::move(descriptor)) {
  const std::size_t limit = host::packetLimit(*socket);
  packetBody = limit > 2 * kPacketHeaderSize ? limit - kPacketHeaderSize : kPacketHeaderSize;
  packetBody = std::min(packetBody, kPacketBodyLimit);
}

kern_return_t transmit(Lock& lock, const std::shared_ptr<Connection>& connection,
                       const PacketHeader& header, Bytes body, Deadline deadline) {
  const kern_return_t result = transmitOne(lock, connection, header, body, deadline);
  flushAbandoned(lock, connection);
  return result;
}

void abandonRequest(Lock& lock, const std::shared_ptr<Connection>& connection, Token token) {
  if (!connection->isDead()) connection->abandoned.push_back(token);
  flushAbandoned(lock, connection);
}

bool serve(const std::shared_ptr<Connection>& connection, const Socket& socket) {
  const std::lock_guard reading(connection->reading);
  Assembler& assembler = connection->assembler;
  host::Result<host::ReceivedPacket> packet = host::Error::kWouldBlock;
  Assembler::Outcome outcome = Assembler::Outcome::kMalformed;
  do {
    packet = host::receivePacket(*socket, packetBuffer());
    if (!packet && packet.error() == host::Error::kWouldBlock) return false;
    outcome = packet ? feed(assembler, *packet) : Assembler::Outcome::kMalformed;
  } while (outcome == Assembler::Outcome::kPartial);

  std::optional<Buffer> body;
  if (packet) body = bodyOf(assembler, outcome, *packet);
  if (body && deliver(connection, assembler.header(), std::move(*body))) return true;
  hangUpNow(connection);
  return false;
}

void hangUp(std::shared_ptr<Connection> connection) {
  if (connection->isDead()) return;
  const Socket socket = std::exchange(connection->socket, nullptr);
  for (WaitSet* set : std::vector<WaitSet*>(connection->watchers)) set->forget(*connection);
  host::shutDown(*socket);
  if (connection->made) std::erase(space().made, connection);
  if (const std::shared_ptr<Port> port = connection->port.lock()) {
    std::erase(port->accepted, connection);
  }
  connection->sendable.notify_all();
  connection->abandoned.clear();
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
  for (int i = 0; i < kMostAccepted; ++i) {
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
