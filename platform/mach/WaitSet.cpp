// Licence: MIT, see LICENSE.
#include "platform/mach/WaitSet.h"

#include <algorithm>
#include <array>

namespace platform::mach {

namespace {

constexpr std::uint64_t kEventKey = 0;  // no source has it
constexpr std::size_t kKeysAtOnce = 32;
constexpr host::Nanoseconds kMillisecond = 1'000'000;
// How long a listener rests when there is no descriptor for a new connection, and how often a set
// that could not get descriptors looks around.
constexpr host::Nanoseconds kPause = 20 * kMillisecond;

}  // namespace

bool WaitSet::open() {
  if (event) return true;
  host::Result<host::WakeEvent> newEvent = host::WakeEvent::make();
  host::Result<host::Poll> newPoll = host::Poll::make();
  if (!newEvent || !newPoll || !newPoll->add(newEvent->descriptor(), kEventKey)) return false;
  poll = std::move(*newPoll);
  event = std::move(*newEvent);
  for (Port* port : ports) watchPort(*port);
  return true;
}

void WaitSet::watchPort(const Port& port) {
  for (const std::shared_ptr<Listener>& listener : port.listeners) watch(listener);
  for (const std::shared_ptr<Connection>& connection : port.accepted) watch(connection);
  for (const Port::Awaited& answer : port.awaited) {
    if (answer.connection) watch(answer.connection);
  }
}

kern_return_t WaitSet::insert(const std::shared_ptr<Port>& port) {
  if (std::find(ports.begin(), ports.end(), port.get()) != ports.end()) return KERN_SUCCESS;
  if (!open()) return KERN_RESOURCE_SHORTAGE;
  ports.push_back(port.get());
  port->sets.push_back(this);
  watchPort(*port);
  if (!port->queue.empty()) wake();
  return KERN_SUCCESS;
}

void WaitSet::remove(Port& port) {
  if (std::erase(ports, &port) == 0) return;
  std::erase(port.sets, this);
  for (const std::shared_ptr<Listener>& listener : port.listeners) forget(*listener);
  for (const std::shared_ptr<Connection>& connection : port.accepted) forget(*connection);
  for (const Port::Awaited& answer : port.awaited) {
    if (answer.connection && !awaits(*answer.connection)) forget(*answer.connection);
  }
}

void WaitSet::clear() {
  while (!ports.empty()) remove(*ports.back());
  while (!watched.empty()) forget(*std::shared_ptr<Source>(watched.begin()->second));
}

void WaitSet::watch(const std::shared_ptr<Source>& source) {
  if (!poll || source->isDead() || watched.contains(source->key)) return;
  if (!poll->add(*source->socket, source->key)) return;
  watched.emplace(source->key, source);
  source->watchers.push_back(this);
  if (source->kind == Source::Kind::kConnection) adjust(static_cast<Connection&>(*source));
}

void WaitSet::adjust(const Connection& connection) {
  using Reporting = host::Poll::Reporting;
  if (connection.isDead() || !watched.contains(connection.key)) return;
  Reporting reporting = connection.backlog.empty() ? Reporting::kInput : Reporting::kBoth;
  if (connection.isBackedUp()) reporting = Reporting::kOutput;
  static_cast<void>(poll->report(*connection.socket, connection.key, reporting));
}

void WaitSet::forget(Source& source) {
  const auto found = watched.find(source.key);
  if (found == watched.end()) return;
  const std::shared_ptr<Source> kept = std::move(found->second);
  watched.erase(found);
  std::erase(source.watchers, this);
  std::erase(paused, kept);
  if (kept->socket) poll->remove(*kept->socket);
}

void WaitSet::wake() {
  if (asleep == 0 || raised) return;
  raised = true;
  event->raise();
}

void WaitSet::retire() {
  retired = true;
  if (event && !raised) event->raise();
}

bool WaitSet::awaits(const Connection& connection) const {
  return std::any_of(ports.begin(), ports.end(),
                     [&](const Port* port) { return port->awaits(connection); });
}

void WaitSet::sleep(Lock& lock, Deadline deadline) {
  if (!open()) {
    lock.unlock();
    host::waitForAny({}, std::min(deadline, Deadline::after(kPause)));
    lock.lock();
    return;
  }
  std::array<std::uint64_t, kKeysAtOnce> keys;
  const Deadline until = std::min(deadline, resumption);
  ++asleep;
  lock.unlock();
  const std::size_t ready = poll->wait(keys, until);
  lock.lock();
  --asleep;
  startWithThePassedOver({keys.data(), ready});
  for (std::size_t i = 0; i < ready; ++i) {
    if (keys[i] != kEventKey) {
      serveKey(lock, keys[i]);
    } else if (!retired) {
      event->drain();
      raised = false;
    }
  }
  if (!resumption.isNever() && resumption.remaining() == 0) resume();
}

// The host reports those that stay ready in the same order each time. When the first of them fill a
// port at once, the others would never have their turn.
void WaitSet::startWithThePassedOver(std::span<std::uint64_t> keys) {
  const std::uint64_t first = std::exchange(passedOver, kNobody);
  if (first == kNobody) return;
  const auto found = std::find(keys.begin(), keys.end(), first);
  if (found != keys.end()) std::rotate(keys.begin(), found, keys.end());
}

void WaitSet::serveKey(Lock& lock, std::uint64_t key) {
  const auto found = watched.find(key);
  if (found == watched.end()) return;
  const std::shared_ptr<Source> source = found->second;
  const Socket socket = source->socket;
  if (source->kind == Source::Kind::kListener) {
    lock.unlock();
    const bool taken = acceptWaiting(std::static_pointer_cast<Listener>(source), socket);
    lock.lock();
    if (!taken) pause(source);
    return;
  }
  const auto connection = std::static_pointer_cast<Connection>(source);
  if (connection->made && !awaits(*connection)) return forget(*connection);
  flushBacklog(lock, connection);
  if (connection->isBackedUp()) return;
  const std::shared_ptr<Port> port = connection->port.lock();
  if (port && port->isFull()) {
    if (passedOver == kNobody) passedOver = key;
    return;
  }
  lock.unlock();
  serve(connection, socket);
  lock.lock();
}

// A connection that cannot be taken would be reported again at once and for ever.
void WaitSet::pause(const std::shared_ptr<Source>& source) {
  if (!watched.contains(source->key) || source->isDead()) return;
  if (!poll->report(*source->socket, source->key, host::Poll::Reporting::kHangUps)) return;
  paused.push_back(source);
  resumption = Deadline::after(kPause);
}

void WaitSet::resume() {
  resumption = Deadline::never();
  for (const std::shared_ptr<Source>& source : std::exchange(paused, {})) {
    static_cast<void>(poll->report(*source->socket, source->key, host::Poll::Reporting::kInput));
  }
}

}  // namespace platform::mach
