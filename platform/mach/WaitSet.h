// Licence: MIT, see LICENSE.
// What a set of ports, or a port with several connections, sleeps on: one host-level set with
// everything that its ports may hear from, and an event to be woken by. The space's lock guards it.
#ifndef PLATFORM_MACH_WAITSET_H
#define PLATFORM_MACH_WAITSET_H

#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "platform/host/Poll.h"
#include "platform/host/WakeEvent.h"
#include "platform/mach/Space.h"

namespace platform::mach {

class WaitSet final {
 public:
  WaitSet() = default;
  /// Takes all members out; needs the lock.
  void clear();

  /// KERN_RESOURCE_SHORTAGE when no descriptor is left.
  kern_return_t insert(const std::shared_ptr<Port>& port);
  void remove(Port& port);
  const std::vector<Port*>& members() const { return ports; }

  /// Watches or forgets one thing that a member may hear from.
  void watch(const std::shared_ptr<Source>& source);
  void forget(Source& source);
  /// Watches a connection for what is due: input unless it is backed up, room if it has a backlog.
  void adjust(const Connection& connection);

  /// Wakes a thread that sleeps here.
  void wake();
  /// Keeps every thread awake from now on.
  void retire();

  /// Sleeps until something happens or the deadline passes, and serves what is ready: one message
  /// of each ready connection. Releases the lock meanwhile.
  void sleep(Lock& lock, Deadline deadline);

 private:
  static constexpr std::uint64_t kNobody = 0;  // no source has it for a key

  bool open();
  bool awaits(const Connection& connection) const;
  void watchPort(const Port& port);
  void startWithThePassedOver(std::span<std::uint64_t> keys);
  void serveKey(Lock& lock, std::uint64_t key);
  void pause(const std::shared_ptr<Source>& source);
  void resume();

  std::optional<host::Poll> poll;
  std::optional<host::WakeEvent> event;
  std::vector<Port*> ports;
  std::unordered_map<std::uint64_t, std::shared_ptr<Source>> watched;
  std::vector<std::shared_ptr<Source>> paused;  // listeners, while descriptors are exhausted
  Deadline resumption = Deadline::never();
  unsigned asleep = 0;
  std::uint64_t passedOver = kNobody;  // the first whose port was full
  bool raised = false;
  bool retired = false;
};

}  // namespace platform::mach

#endif
