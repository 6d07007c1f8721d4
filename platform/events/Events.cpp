// Licence: MIT, see LICENSE.
#include <HIToolbox/Events.h>

#include <new>

#include "platform/events/EventLoop.h"
#include "platform/events/EventSource.h"
#include "platform/host/Ticks.h"

namespace platform::events {
namespace {

/// Describes the oldest event of a mask, or a null event.
bool look(EventSource& source, EventMask mask, EventRecord& record) {
  source.drain();
  const EventQueue::Entry* entry = source.events().oldest(mask);
  record = entry != nullptr ? entry->record : nullEventAt(TickCount());
  return entry != nullptr;
}

bool waitAndTake(EventMask mask, EventRecord& record, UInt32 sleep) {
  const host::Deadline deadline = host::Deadline::after(host::ticksSpan(sleep));
  EventSource& source = EventSource::prepared();
  source.events().loseAside();
  while (!look(source, mask, record)) {
    const host::Nanoseconds left = deadline.remaining();
    if (left == 0) return false;
    EventLoop::main().pass(static_cast<CFTimeInterval>(left) /
                               static_cast<CFTimeInterval>(host::kNanosecondsPerSecond),
                           EventLoop::OnQuit::kIgnore);
  }
  source.setAsideOldest();
  return true;
}

}  // namespace
}  // namespace platform::events

using platform::events::EventSource;

Boolean EventAvail(EventMask mask, EventRecord* event) {
  EventRecord scratch;
  EventRecord& record = event != nullptr ? *event : scratch;
  try {
    return platform::events::look(EventSource::prepared(), mask, record);
  } catch (const std::bad_alloc&) {
    record = platform::events::nullEventAt(TickCount());
    return false;
  }
}

Boolean WaitNextEvent(EventMask mask, EventRecord* event, UInt32 sleep, RgnHandle) {
  EventRecord scratch;
  EventRecord& record = event != nullptr ? *event : scratch;
  try {
    return platform::events::waitAndTake(mask, record, sleep);
  } catch (const std::bad_alloc&) {
    record = platform::events::nullEventAt(TickCount());
    return false;
  }
}

UInt32 TickCount(void) { return platform::host::ticksAt(platform::host::monotonicNow()); }
