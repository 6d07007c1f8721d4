// Licence: MIT, see LICENSE.
#include <algorithm>
#include <cstdlib>

#include "platform/mach/Space.h"
#include "platform/mach/WaitSet.h"

namespace platform::mach {

namespace {

// How much a port holds before senders have to wait. Answers are not held up: there is one for each
// request at most.
constexpr std::size_t kQueueLength = 256;
constexpr std::size_t kQueueBytes = 1 << 20;

// Removes the names while the socket still listens, so that they are nobody else's yet.
void removeNames(Lock& lock, const std::vector<std::shared_ptr<Listener>>& listeners) {
  for (const std::shared_ptr<Listener>& listener : listeners) {
    const std::vector<Listener::Name> names = std::exchange(listener->names, {});
    lock.unlock();
    for (const Listener::Name& held : names) {
      listener->directory->release(listener->file.identity, held.folder, held.name);
    }
    listener->directory->unbind(listener->file);
    lock.lock();
  }
}

void closeListener(const std::shared_ptr<Listener>& listener) {
  for (WaitSet* set : std::vector<WaitSet*>(listener->watchers)) set->forget(*listener);
  std::erase(space().listeners, listener);
  if (listener->isDead()) return;
  host::shutDown(*listener->socket);
  listener->socket.reset();
}

void leaveSets(Port& port) {
  for (WaitSet* set : std::vector<WaitSet*>(port.sets)) set->remove(port);
  if (!port.ownSet) return;
  port.ownSet->retire();
  port.ownSet->clear();  // of connections that outlive the port
}

void forgetAllAnswers(Port& port) {
  while (!port.awaited.empty()) forgetAnswer(port, port.awaited.back().token);
}

std::vector<Port::DeathNotice> takeDeathNotices(Port& port) {
  std::vector<Port::DeathNotice> notices = std::exchange(port.deathNotices, {});
  for (const Port::DeathNotice& notice : notices) space().deathNotices.erase(notice.token);
  return notices;
}

// Spares others the finding out that a process which ended in good order is gone, and lets them
// have its last answers.
void takeLeave() {
  if (host::currentProcess() != space().process)
    return;  // a child that was split off holds no names
  Lock lock(space().mutex);
  const std::vector<std::shared_ptr<Listener>> listeners = space().listeners;
  removeNames(lock, listeners);
  for (const std::shared_ptr<Listener>& listener : listeners) {
    const std::shared_ptr<Port> port = listener->port.lock();
    if (port) drainBacklogs(lock, std::vector<std::shared_ptr<Connection>>(port->accepted));
  }
}

}  // namespace

Space& space() {
  static Space& only = *new Space;
  return only;
}

Token Space::nextToken() {
  if (++lastToken == 0) ++lastToken;
  return lastToken;
}

Source::Source(Kind kindOfSource, host::Descriptor descriptor)
    : kind(kindOfSource),
      key(++space().lastKey),
      socket(std::make_shared<const host::Descriptor>(std::move(descriptor))) {}

Listener::Listener(std::shared_ptr<host::NameDirectory> nameSpace, host::BoundSocket bound)
    : Source(Kind::kListener, std::move(bound.listener)),
      directory(std::move(nameSpace)),
      file(std::move(bound)) {}

Waiter& ownWaiter() {
  static thread_local Waiter own;
  return own;
}

// A thread that delivers to the port that it waits for itself is awake enough.
void Waiter::wake() {
  if (!asleep || raised || this == &ownWaiter()) return;
  raised = true;
  event->raise();
}

Port::~Port() = default;

bool Port::isFull() const { return queue.size() >= kQueueLength || queuedBytes >= kQueueBytes; }

bool Port::awaits(const Connection& connection) const {
  return std::any_of(awaited.begin(), awaited.end(),
                     [&](const Awaited& answer) { return answer.connection.get() == &connection; });
}

std::shared_ptr<Port> findPort(mach_port_name_t name) {
  const Entry* entry = space().names.find(name);
  return entry == nullptr ? nullptr : entry->port;
}

void addListener(const std::shared_ptr<Port>& port, const std::shared_ptr<Listener>& listener) {
  if (space().process == 0) {
    space().process = host::currentProcess();
    static_cast<void>(std::atexit(takeLeave));
  }
  listener->port = port;
  port->listeners.push_back(listener);
  space().listeners.push_back(listener);
  for (WaitSet* set : port->sets) set->watch(listener);
  wakeWaiters(*port);
}

void wakeWaiters(Port& port) {
  for (Waiter* waiter : port.waiters) waiter->wake();
  for (WaitSet* set : port.sets) set->wake();
}

void enqueue(Port& port, QueuedMessage message) {
  message.sequence = ++space().lastSequence;
  port.queuedBytes += message.body.size;
  port.queue.push_back(std::move(message));
  wakeWaiters(port);
}

Token expectAnswer(const std::shared_ptr<Port>& port,
                   const std::shared_ptr<Connection>& connection) {
  const Token token = space().nextToken();
  if (connection) {
    connection->awaited.emplace(token, port);
    if (!port->awaits(*connection)) {
      for (WaitSet* set : port->sets) set->watch(connection);
      for (Waiter* waiter : port->waiters) waiter->wake();
    }
  }
  port->awaited.push_back({token, connection});
  return token;
}

bool forgetAnswer(Port& port, Token token) {
  const auto found =
      std::find_if(port.awaited.begin(), port.awaited.end(),
                   [&](const Port::Awaited& answer) { return answer.token == token; });
  if (found == port.awaited.end()) return false;
  const std::shared_ptr<Connection> connection = std::move(found->connection);
  port.awaited.erase(found);
  if (connection) {
    connection->awaited.erase(token);
    dropIfUnused(connection);
  }
  return true;
}

void giveUp(Lock& lock, ReplyRight right) {
  if (right.port) {
    if (forgetAnswer(*right.port, right.token)) {
      enqueue(*right.port, {.id = MACH_NOTIFY_SEND_ONCE, .answers = right.token});
    }
    return;
  }
  if (!right.connection) return;
  abandonRequest(lock, right.connection, right.token);
  --right.connection->replyRights;
  dropIfUnused(right.connection);
}

void killPort(Lock& lock, std::shared_ptr<Port> port) {
  port->dead = true;
  removeNames(lock, port->listeners);
  for (const std::shared_ptr<Listener>& listener : std::exchange(port->listeners, {})) {
    closeListener(listener);
  }
  drainBacklogs(lock, std::vector<std::shared_ptr<Connection>>(port->accepted));
  for (const std::shared_ptr<Connection>& connection : std::exchange(port->accepted, {})) {
    hangUp(connection);
  }
  forgetAllAnswers(*port);
  leaveSets(*port);
  wakeWaiters(*port);
  port->room.notify_all();
  port->queuedBytes = 0;
  std::deque<QueuedMessage> lost = std::exchange(port->queue, {});
  for (QueuedMessage& message : lost) giveUp(lock, std::move(message.reply));
  const std::vector<Port::DeathNotice> notices = takeDeathNotices(*port);
  lock.unlock();
  for (const Port::DeathNotice& notice : notices) notice.onDeath();
}

}  // namespace platform::mach
