// Licence: MIT, see LICENSE.
// High-level events in the order of their arrival, each with the message that it came in. Main
// thread.
#ifndef PLATFORM_EVENTS_EVENTQUEUE_H
#define PLATFORM_EVENTS_EVENTQUEUE_H

#include <HIToolbox/Events.h>

#include <cstddef>
#include <deque>
#include <optional>

#include "platform/mach/PortSpace.h"

namespace platform::events {

/// A message as its queue owns it: a right to answer that nobody has taken is given up with it, so
/// that the sender learns that there will be no reply.
class OwnedMessage final {
 public:
  explicit OwnedMessage(mach::Message arrived) : message(std::move(arrived)) {}
  OwnedMessage(OwnedMessage&& other) noexcept : message(other.take()) {}
  OwnedMessage& operator=(OwnedMessage&& other) noexcept {
    std::swap(message, other.message);
    return *this;
  }
  ~OwnedMessage();

  mach::Bytes body() const { return message.body.bytes(); }
  mach::Message take();

 private:
  mach::Message message;
};

/// A null event, as calls that find nothing describe it.
EventRecord nullEventAt(UInt32 ticks);

class EventQueue final {
 public:
  /// Counts the arrivals, from 1 on.
  using Arrival = UInt32;

  struct Entry {
    Arrival arrival;
    EventRecord record;
    OwnedMessage message;
  };

  /// Appends an Apple event. What is no Apple event is dropped.
  void append(mach::Message message, UInt32 ticks);

  std::size_t size() const { return entries.size(); }
  /// Senders wait while the queue is full.
  bool isFull() const { return entries.size() >= kCapacity; }

  /// The oldest event of a mask, null if there is none; and the oldest that came after another.
  const Entry* oldest(EventMask mask) const;
  const Entry* firstAfter(Arrival arrival) const;

  /// Takes the oldest event out that a record describes: what AEProcessAppleEvent shall handle. One
  /// that was set aside counts as the oldest of all.
  std::optional<OwnedMessage> take(const EventRecord& record);

  /// Takes the oldest event out, if there is one.
  std::optional<OwnedMessage> takeOldest();

  /// Moves the oldest event out of the queue for the AEProcessAppleEvent that is to come. Whenever
  /// another event is to be handled first, the one that was set aside is lost.
  void setAsideOldest();
  void loseAside() { aside.reset(); }

  static constexpr std::size_t kCapacity = 1024;

 private:
  std::deque<Entry> entries;
  std::optional<Entry> aside;
  Arrival arrivals = 0;
};

}  // namespace platform::events

#endif
