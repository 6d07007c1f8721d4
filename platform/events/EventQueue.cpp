// Licence: MIT, see LICENSE.
#include "platform/events/EventQueue.h"

#include <mach/mach.h>

#include <algorithm>
#include <utility>

#include "platform/appleevents/Dispatch.h"

namespace platform::events {
namespace {

EventRecord describe(const appleevents::EventKind& kind, UInt32 ticks) {
  EventRecord record = nullEventAt(ticks);
  record.what = kHighLevelEvent;
  record.message = kind.eventClass;
  record.where.v = static_cast<SInt16>(kind.eventID >> 16);
  record.where.h = static_cast<SInt16>(kind.eventID & 0xFFFF);
  return record;
}

bool describesSame(const EventRecord& one, const EventRecord& other) {
  return one.message == other.message && one.where.v == other.where.v &&
         one.where.h == other.where.h;
}

}  // namespace

OwnedMessage::~OwnedMessage() {
  if (message.reply != MACH_PORT_NULL) mach_port_deallocate(mach_task_self(), message.reply);
}

mach::Message OwnedMessage::take() {
  mach::Message taken = std::move(message);
  message.reply = MACH_PORT_NULL;
  return taken;
}

EventRecord nullEventAt(UInt32 ticks) { return {nullEvent, 0, ticks, {0, 0}, 0}; }

void EventQueue::append(mach::Message message, UInt32 ticks) {
  OwnedMessage owned(std::move(message));
  const std::optional<appleevents::EventKind> kind = appleevents::peekKind(owned.body());
  if (!kind) return;
  entries.push_back({++arrivals, describe(*kind, ticks), std::move(owned)});
}

const EventQueue::Entry* EventQueue::oldest(EventMask mask) const {
  const bool wanted = (mask & highLevelEventMask) != 0;
  return wanted && !entries.empty() ? &entries.front() : nullptr;
}

const EventQueue::Entry* EventQueue::firstAfter(Arrival arrival) const {
  const auto entry = std::find_if(entries.begin(), entries.end(),
                                  [&](const Entry& each) { return each.arrival > arrival; });
  return entry == entries.end() ? nullptr : &*entry;
}

std::optional<OwnedMessage> EventQueue::take(const EventRecord& record) {
  if (aside && describesSame(aside->record, record)) {
    OwnedMessage message = std::move(aside->message);
    aside.reset();
    return message;
  }
  const auto entry = std::find_if(entries.begin(), entries.end(), [&](const Entry& each) {
    return describesSame(each.record, record);
  });
  if (entry == entries.end()) return std::nullopt;
  OwnedMessage message = std::move(entry->message);
  entries.erase(entry);
  return message;
}

std::optional<OwnedMessage> EventQueue::takeOldest() {
  loseAside();
  if (entries.empty()) return std::nullopt;
  OwnedMessage message = std::move(entries.front().message);
  entries.pop_front();
  return message;
}

void EventQueue::setAsideOldest() {
  aside.emplace(std::move(entries.front()));
  entries.pop_front();
}

}  // namespace platform::events
