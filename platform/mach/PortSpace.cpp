// Licence: MIT, see LICENSE.
#include "platform/mach/PortSpace.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "platform/host/Poll.h"
#include "platform/host/ThreadIdentity.h"
#include "platform/mach/Guard.h"
#include "platform/mach/Space.h"
#include "platform/mach/Wait.h"
#include "platform/mach/WaitSet.h"

namespace platform::mach {

namespace {

constexpr std::size_t kBodyLimit = std::numeric_limits<std::int32_t>::max();

// Sending

constexpr Token kEveryAnswer = 0;

/// Throws away an answer that has arrived, or all of them.
void dropAnswers(Lock& lock, Port& port, Token token) {
  std::vector<ReplyRight> rights;
  std::erase_if(port.queue, [&](QueuedMessage& message) {
    if (message.answers == 0 || (token != kEveryAnswer && message.answers != token)) return false;
    port.queuedBytes -= message.body.size;
    if (message.reply) rights.push_back(std::move(message.reply));
    return true;
  });
  for (ReplyRight& right : rights) giveUp(lock, std::move(right));
}

/// A message on its way to a right, with the answer that it asks for.
struct Sending {
  std::shared_ptr<Port> replyPort;
  mach_msg_id_t id;
  Bytes body;
  Deadline deadline;

  kern_return_t toPort(Lock& lock, Port& port, Token answers) const {
    std::optional<Buffer> copy = copyOf(body);
    if (!copy) return MACH_SEND_NO_BUFFER;
    ++port.sendersWaiting;
    bool inTime = true;
    while (answers == 0 && !port.dead && port.isFull() && inTime) {
      inTime = waitUntil(port.room, lock, deadline);
    }
    --port.sendersWaiting;
    if (port.dead) return MACH_SEND_INVALID_DEST;
    if (answers == 0 && port.isFull()) return MACH_SEND_TIMED_OUT;
    if (answers != 0 && !forgetAnswer(port, answers)) return KERN_SUCCESS;  // no longer awaited
    QueuedMessage message{.id = id, .answers = answers, .isOwn = true, .body = std::move(*copy)};
    if (replyPort && !replyPort->dead) {
      message.reply = {nullptr, replyPort, expectAnswer(replyPort, nullptr)};
    }
    enqueue(port, std::move(message));
    return KERN_SUCCESS;
  }

  kern_return_t toConnection(Lock& lock, const std::shared_ptr<Connection>& connection,
                             Token answers) const {
    if (connection->isDead()) return MACH_SEND_INVALID_DEST;
    PacketHeader header{.destination = answers, .id = id};
    if (replyPort) header.reply = expectAnswer(replyPort, connection);
    const kern_return_t result = transmit(lock, connection, header, body, deadline);
    // The failure is told by the result alone: the notice of a connection that ended meanwhile
    // goes.
    if (result != KERN_SUCCESS && header.reply != 0 && !forgetAnswer(*replyPort, header.reply)) {
      dropAnswers(lock, *replyPort, header.reply);
    }
    return result;
  }
};

kern_return_t spend(Lock& lock, mach_port_name_t name, const Sending& message) {
  Entry* entry = space().names.find(name);
  if (entry->inUse) return MACH_SEND_INVALID_DEST;
  entry->inUse = true;
  const ReplyRight right = entry->reply;
  const kern_return_t result = right.port
                                   ? message.toPort(lock, *right.port, right.token)
                                   : message.toConnection(lock, right.connection, right.token);
  entry = space().names.find(name);
  if (entry == nullptr) return result;
  entry->inUse = false;
  if (result != KERN_SUCCESS) return result;
  space().names.remove(name);
  if (right.connection) {
    --right.connection->replyRights;
    dropIfUnused(right.connection);
  }
  return result;
}

kern_return_t sendTo(mach_port_name_t destination, mach_port_name_t replyPort, Sending message) {
  Lock lock(space().mutex);
  if (replyPort != MACH_PORT_NULL) {
    message.replyPort = findPort(replyPort);
    if (!message.replyPort) return MACH_SEND_INVALID_REPLY;
  }
  const Entry* entry = space().names.find(destination);
  if (entry == nullptr) return MACH_SEND_INVALID_DEST;
  if (entry->reply) return spend(lock, destination, message);
  if (const std::shared_ptr<Port> port = entry->port) return message.toPort(lock, *port, 0);
  return message.toConnection(lock, std::shared_ptr<Connection>(entry->connection), 0);
}

// Receiving

/// The calling thread's place among those that wait; none when descriptors are exhausted.
Waiter* thisWaiter() {
  Waiter& waiter = ownWaiter();
  if (!waiter.event) {
    host::Result<host::WakeEvent> event = host::WakeEvent::make();
    if (!event) return nullptr;
    waiter.event = std::move(*event);
  }
  return &waiter;
}

void endLead(Waiter& waiter) {
  const std::shared_ptr<Connection> connection = std::exchange(waiter.led, nullptr);
  if (!connection) return;
  connection->leader = nullptr;
  passLead(connection);
}

void takeLead(Waiter& waiter, const Port& port) {
  if (waiter.led && waiter.led->isDead()) endLead(waiter);
  if (waiter.led || port.awaited.empty()) return;
  const std::shared_ptr<Connection>& connection = port.awaited.front().connection;
  if (!connection || connection->isDead() || connection->leader != nullptr) return;
  connection->leader = &waiter;
  waiter.led = connection;
}

/// Whether a port may hear from more than one connection, so that it takes a set to wait for it.
bool needsSet(const Port& port) {
  if (port.ownSet || !port.listeners.empty() || !port.accepted.empty()) return true;
  return std::any_of(port.awaited.begin(), port.awaited.end(), [&](const Port::Awaited& answer) {
    return answer.connection != port.awaited.front().connection;
  });
}

void sleepInSet(Lock& lock, const std::shared_ptr<Port>& port, Deadline deadline) {
  if (!port->ownSet) port->ownSet = std::make_unique<WaitSet>();
  static_cast<void>(port->ownSet->insert(port));
  port->ownSet->sleep(lock, deadline);
}

void sleepAlone(Lock& lock, Port& port, Waiter& waiter, Deadline deadline) {
  takeLead(waiter, port);
  const std::shared_ptr<Connection> led = waiter.led;
  const Socket socket = led ? led->socket : nullptr;
  const bool isBehind = led && !led->backlog.empty();
  if (socket && !isBehind && host::isOnlyThread()) {
    lock.unlock();
    serveAlone(led, socket, deadline);
    return lock.lock();
  }
  port.waiters.push_back(&waiter);
  waiter.asleep = true;
  lock.unlock();
  using In = host::Interest::In;
  std::array<host::Interest, 2> interests{
      {{&waiter.event->descriptor()}, {socket.get(), isBehind ? In::kBoth : In::kInput}}};
  host::waitForAny({interests.data(), socket ? 2u : 1u}, deadline);
  if (interests[1].readable) serve(led, socket);
  lock.lock();
  if (interests[1].writable) flushBacklog(lock, led);
  waiter.asleep = false;
  if (std::exchange(waiter.raised, false)) waiter.event->drain();
  std::erase(port.waiters, &waiter);
}

void takeOldest(Lock& lock, Port& port, Message& message) {
  QueuedMessage oldest = std::move(port.queue.front());
  port.queue.pop_front();
  port.queuedBytes -= oldest.body.size;
  if (port.sendersWaiting > 0) port.room.notify_all();
  if (!port.queue.empty()) wakeWaiters(port);  // another thread may take the next one
  message.id = oldest.id;
  message.receiver = port.name;
  message.isOwn = oldest.isOwn;
  message.body = std::move(oldest.body);
  message.reply = MACH_PORT_NULL;
  if (!oldest.reply) return;
  message.reply = space().names.add({.reply = oldest.reply});
  if (message.reply == MACH_PORT_NULL) giveUp(lock, std::move(oldest.reply));
}

kern_return_t receiveFrom(Lock& lock, const std::shared_ptr<Port>& port, Message& message,
                          Deadline deadline) {
  for (bool looked = false;; looked = true) {
    if (port->dead) return MACH_RCV_PORT_DIED;
    if (!port->queue.empty()) {
      takeOldest(lock, *port, message);
      return KERN_SUCCESS;
    }
    if (looked && deadline.remaining() == 0) return MACH_RCV_TIMED_OUT;
    if (needsSet(*port)) {
      endLead(ownWaiter());
      sleepInSet(lock, port, deadline);
    } else if (Waiter* waiter = thisWaiter()) {
      sleepAlone(lock, *port, *waiter, deadline);
    } else {
      return KERN_RESOURCE_SHORTAGE;
    }
  }
}

kern_return_t receiveAt(mach_port_name_t port, Message& message, Deadline deadline) {
  Lock lock(space().mutex);
  const std::shared_ptr<Port> receiver = findPort(port);
  if (!receiver) return MACH_RCV_INVALID_NAME;
  const kern_return_t result = receiveFrom(lock, receiver, message, deadline);
  endLead(ownWaiter());
  return result;
}

}  // namespace

kern_return_t send(mach_port_name_t destination, mach_port_name_t replyPort, mach_msg_id_t id,
                   Bytes body, Deadline deadline) {
  if (body.size() > kBodyLimit) return MACH_SEND_TOO_LARGE;
  return guarded(MACH_SEND_NO_BUFFER, [&] {
    return sendTo(destination, replyPort, {nullptr, id, body, deadline});
  });
}

kern_return_t receive(mach_port_name_t port, Message& message, Deadline deadline) {
  return guarded(KERN_RESOURCE_SHORTAGE, [&] { return receiveAt(port, message, deadline); });
}

void abandonReplies(mach_port_name_t replyPort) {
  Lock lock(space().mutex);
  const std::shared_ptr<Port> port = findPort(replyPort);
  if (!port) return;
  while (!port->awaited.empty()) forgetAnswer(*port, port->awaited.back().token);
  dropAnswers(lock, *port, kEveryAnswer);
}

std::uint32_t noticeDeath(mach_port_name_t port, std::function<void()> onDeath) {
  Lock lock(space().mutex);
  const std::shared_ptr<Port> watched = findPort(port);
  if (!watched) {
    lock.unlock();
    onDeath();
    return 0;
  }
  const std::uint32_t token = space().nextToken();
  space().deathNotices.emplace(token, watched);
  watched->deathNotices.push_back({token, std::move(onDeath)});
  return token;
}

void cancelDeathNotice(std::uint32_t token) {
  const Lock lock(space().mutex);
  const auto found = space().deathNotices.find(token);
  if (found == space().deathNotices.end()) return;
  if (const std::shared_ptr<Port> port = found->second.lock()) {
    std::erase_if(port->deathNotices, [&](const auto& notice) { return notice.token == token; });
  }
  space().deathNotices.erase(found);
}

int ownerOf(mach_port_name_t right) {
  const Lock lock(space().mutex);
  const Entry* entry = space().names.find(right);
  if (entry == nullptr) return 0;
  if (entry->port || entry->reply.port) return host::currentProcess();
  if (entry->reply) return entry->reply.connection->peer.process;
  return entry->connection->peer.process;
}

}  // namespace platform::mach
