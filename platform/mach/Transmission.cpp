// Licence: MIT, see LICENSE.
//
// Requests wait for room until their sender's time is over. An answer must not hold its sender up
// like that: who asks and does not read the answers would stop a server that has others to serve.
// It gets a moment, which a client that reads never needs in full; what is left then goes to the
// connection's backlog, and out of it whenever somebody who waits finds that there is room. Nothing
// is read from a connection whose backlog is long, so that it grows no further: the client that
// does not read finds its own requests held up.
//
// The same goes for memory files, whose size the socket's buffer does not count: one that has not
// been taken yet keeps the next one from being sent, which goes as packets.
#include <algorithm>

#include "platform/host/Poll.h"
#include "platform/host/SharedMemory.h"
#include "platform/mach/Space.h"
#include "platform/mach/Wait.h"
#include "platform/mach/WaitSet.h"

namespace platform::mach {

namespace {

// From here on a fresh memory file costs less than copying packets in and out of the socket.
constexpr std::size_t kMemoryFileFrom = std::size_t{16} << 20;
// How much may wait in a backlog before its client is no longer listened to.
constexpr std::size_t kBacklogBytes = std::size_t{1} << 20;
constexpr std::size_t kBacklogLength = 256;
// How long an answer may hold its sender up, and how long a port that goes waits for those that
// read what it has answered.
constexpr host::Nanoseconds kMoment = 20'000'000;
constexpr host::Nanoseconds kFarewell = 1'000'000'000;

kern_return_t codeOfSend(host::Error error) {
  switch (error) {
    case host::Error::kWouldBlock:
      return MACH_SEND_TIMED_OUT;
    case host::Error::kNoResources:
    case host::Error::kNoMemory:
      return MACH_SEND_NO_BUFFER;
    case host::Error::kTooLarge:
      return MACH_SEND_TOO_LARGE;
    default:
      return MACH_SEND_INVALID_DEST;
  }
}

bool isAnswer(const PacketHeader& header) { return header.destination != 0; }

/// What is left of a message, while this thread has its turn on the connection.
struct Outgoing {
  const std::shared_ptr<Connection>& connection;
  const Socket& socket;
  PacketHeader header;
  Bytes rest;
  const host::Descriptor* file = nullptr;

  // Sends what there is room for: MACH_SEND_TIMED_OUT if that is not all.
  kern_return_t sendNow() {
    do {
      const Bytes part = rest.first(std::min(rest.size(), connection->packetBody));
      const host::Status sent = host::sendPacket(*socket, encodeHeader(header), part, file);
      if (!sent) return codeOfSend(sent.error());
      rest = rest.subspan(part.size());
      header.kind = PacketHeader::Kind::kContinuation;
    } while (!rest.empty());
    return KERN_SUCCESS;
  }

  kern_return_t send(Deadline deadline) {
    for (;;) {
      const kern_return_t result = sendNow();
      if (result != MACH_SEND_TIMED_OUT || !waitForRoom(deadline)) return result;
    }
  }

  // While there is no room, answers that arrive are taken in, lest both ends wait for each other.
  bool waitForRoom(Deadline deadline) const {
    if (deadline.remaining() == 0) return false;
    host::Interest interest{
        socket.get(), connection->made ? host::Interest::In::kBoth : host::Interest::In::kOutput};
    host::waitForAny({&interest, 1}, deadline);
    if (connection->made && interest.readable && !interest.writable) serve(connection, socket);
    return true;
  }
};

void reportChanges(const Connection& connection) {
  for (WaitSet* set : connection.watchers) set->adjust(connection);
  if (connection.leader != nullptr && !connection.backlog.empty()) connection.leader->wake();
}

/// Keeps a message, or what is left of it, until there is room.
kern_return_t keep(Connection& connection, const PacketHeader& header, Bytes rest,
                   host::Descriptor file) {
  if (connection.isDead()) return MACH_SEND_INVALID_DEST;
  std::optional<Buffer> copy = copyOf(rest);
  if (!copy) return MACH_SEND_NO_BUFFER;
  connection.backlog.push_back({header, std::move(*copy), std::move(file), 0});
  connection.backlogBytes += connection.backlog.back().size();
  return KERN_SUCCESS;
}

void endTurn(Connection& connection) {
  connection.sending = false;
  if (connection.sendersWaiting > 0) connection.sendable.notify_one();
}

/// Goes on with one message of the backlog. False when it has to wait again. Releases the lock
/// meanwhile.
bool sendKept(Lock& lock, const std::shared_ptr<Connection>& connection) {
  Parcel parcel = std::move(connection->backlog.front());
  connection->backlog.pop_front();
  connection->sending = true;
  const Socket socket = connection->socket;
  Outgoing rest{connection, socket, parcel.header, parcel.body.bytes().subspan(parcel.sent),
                parcel.file ? &parcel.file : nullptr};
  lock.unlock();
  const kern_return_t result = rest.sendNow();
  lock.lock();
  endTurn(*connection);
  if (connection->isDead()) return false;
  connection->backlogBytes -= parcel.size();
  if (result == KERN_SUCCESS) return true;
  if (result == MACH_SEND_TIMED_OUT) {
    parcel.header = rest.header;
    parcel.sent = parcel.body.size - rest.rest.size();
    connection->backlogBytes += parcel.size();
    connection->backlog.push_front(std::move(parcel));
  } else {
    hangUp(connection);
  }
  return false;
}

/// Waits until a request may go out: no other message is under way, and the answers before it have
/// gone.
bool awaitTurn(Lock& lock, const std::shared_ptr<Connection>& connection, Deadline deadline) {
  ++connection->sendersWaiting;
  bool inTime = true;
  const auto isBusy = [&] { return connection->sending || !connection->backlog.empty(); };
  while (isBusy() && !connection->isDead() && inTime) {
    if (connection->sending) {
      inTime = waitUntil(connection->sendable, lock, deadline);
      continue;
    }
    flushBacklog(lock, connection);
    if (!isBusy() || connection->isDead()) break;
    const Socket socket = connection->socket;
    lock.unlock();
    inTime = Outgoing{connection, socket, {}, {}}.waitForRoom(deadline);
    lock.lock();
  }
  --connection->sendersWaiting;
  return !isBusy() || connection->isDead();
}

/// The memory file that is to carry a body; none for one that goes as packets.
host::Descriptor fileFor(const host::Descriptor& socket, Bytes body) {
  if (body.size() < kMemoryFileFrom || host::untakenBytes(socket) > 0) return {};
  host::Result<host::Descriptor> file = host::makeSealedMemory(body);
  return file ? std::move(*file) : host::Descriptor();
}

}  // namespace

std::size_t Parcel::size() const { return file ? header.total : body.size - sent; }

bool Connection::isBackedUp() const {
  return backlog.size() >= kBacklogLength || backlogBytes >= kBacklogBytes;
}

kern_return_t transmit(Lock& lock, const std::shared_ptr<Connection>& connection,
                       const PacketHeader& header, Bytes body, Deadline deadline) {
  PacketHeader first = header;
  first.total = static_cast<std::uint32_t>(body.size());
  if (isAnswer(header)) {
    deadline = std::min(deadline, Deadline::after(kMoment));
    if (connection->sending || !connection->backlog.empty()) {
      const kern_return_t kept = keep(*connection, first, body, {});
      flushBacklog(lock, connection);
      return kept;
    }
  } else if (!awaitTurn(lock, connection, deadline)) {
    return MACH_SEND_TIMED_OUT;
  }
  if (connection->isDead()) return MACH_SEND_INVALID_DEST;

  connection->sending = true;
  const Socket socket = connection->socket;
  lock.unlock();
  host::Descriptor file = fileFor(*socket, body);
  first.inMemoryFile = static_cast<bool>(file);
  Outgoing message{connection, socket, first, file ? Bytes{} : body, file ? &file : nullptr};
  kern_return_t result = message.send(deadline);
  lock.lock();
  endTurn(*connection);
  if (isAnswer(header) && result == MACH_SEND_TIMED_OUT) {
    result = keep(*connection, message.header, message.rest, std::move(file));
    reportChanges(*connection);
  }
  flushBacklog(lock, connection);
  return result;
}

void abandonRequest(Lock& lock, const std::shared_ptr<Connection>& connection, Token token) {
  if (connection->isDead()) return;
  const PacketHeader notice{.kind = PacketHeader::Kind::kAbandoned, .destination = token};
  connection->backlog.push_back({notice, {}, {}, 0});
  flushBacklog(lock, connection);
}

void flushBacklog(Lock& lock, const std::shared_ptr<Connection>& connection) {
  if (connection->backlog.empty()) return;
  while (!connection->sending && !connection->backlog.empty()) {
    if (!sendKept(lock, connection)) break;
  }
  reportChanges(*connection);
}

void drainBacklogs(Lock& lock, const std::vector<std::shared_ptr<Connection>>& connections) {
  const Deadline farewell = Deadline::after(kFarewell);
  for (const std::shared_ptr<Connection>& connection : connections) {
    flushBacklog(lock, connection);
    while (!connection->backlog.empty()) {
      const Socket socket = connection->socket;
      host::Interest room{socket.get(), host::Interest::In::kOutput};
      lock.unlock();
      const bool ready = host::waitForAny({&room, 1}, farewell);
      lock.lock();
      if (!ready) break;
      flushBacklog(lock, connection);
    }
  }
}

}  // namespace platform::mach
