// Licence: MIT, see LICENSE.
#include "platform/mach/WaitSet.h"

namespace platform::mach {

namespace {

// Messages handed out in a row before the connections are looked at again, so that ports that are
// fed from within the process do not starve them.
constexpr unsigned kTurnsWithoutLooking = 32;

}  // namespace

struct PortSet::Implementation {
  WaitSet set;
  bool woken = false;
  unsigned turns = 0;

  // The member whose message arrived first.
  const Port* oldest() const {
    const Port* found = nullptr;
    for (const Port* port : set.members()) {
      if (port->queue.empty()) continue;
      if (found == nullptr || port->queue.front().sequence < found->queue.front().sequence) {
        found = port;
      }
    }
    return found;
  }

  // What there is to report, kTimedOut for nothing.
  Outcome present(mach_port_name_t& port) {
    if (std::exchange(woken, false)) return Outcome::kWoken;
    const Port* ready = oldest();
    if (ready == nullptr) return Outcome::kTimedOut;
    port = ready->name;
    return Outcome::kMessage;
  }

  void takeTurn(Lock& lock) {
    if (++turns < kTurnsWithoutLooking) return;
    turns = 0;
    set.sleep(lock, Deadline::immediate());
  }
};

PortSet::PortSet() : implementation(new Implementation) {}

PortSet::~PortSet() {
  const Lock lock(space().mutex);
  implementation->set.clear();
}

kern_return_t PortSet::insert(mach_port_name_t port) {
  const Lock lock(space().mutex);
  const std::shared_ptr<Port> member = findPort(port);
  return member ? implementation->set.insert(member) : KERN_INVALID_NAME;
}

void PortSet::remove(mach_port_name_t port) {
  const Lock lock(space().mutex);
  if (const std::shared_ptr<Port> member = findPort(port)) implementation->set.remove(*member);
}

void PortSet::wake() {
  const Lock lock(space().mutex);
  implementation->woken = true;
  implementation->set.wake();
}

PortSet::Outcome PortSet::wait(mach_port_name_t& port, Deadline deadline) {
  Lock lock(space().mutex);
  implementation->takeTurn(lock);
  for (bool looked = false;; looked = true) {
    const Outcome outcome = implementation->present(port);
    if (outcome != Outcome::kTimedOut) return outcome;
    if (looked && deadline.remaining() == 0) return outcome;
    implementation->turns = 0;
    implementation->set.sleep(lock, deadline);
  }
}

PortSet::Outcome PortSet::glance(mach_port_name_t& port) {
  Lock lock(space().mutex);
  implementation->takeTurn(lock);
  return implementation->present(port);
}

}  // namespace platform::mach
