// Licence: MIT, see LICENSE.
#include "platform/events/UserWait.h"

#include <CarbonCore/MacErrors.h>

#include <algorithm>
#include <limits>

#include "platform/events/InteractionTurn.h"
#include "platform/host/Ticks.h"

namespace platform::events {
namespace {

// Until the idle procedure says otherwise it is called every second.
constexpr SInt32 kFirstIdleTicks = 60;

constexpr int kAttempts = 100;

UInt32 now() { return host::ticksAt(host::monotonicNow()); }

}  // namespace

UserWait::UserWait(AEIdleUPP idleProcedure, host::Deadline end)
    : idle(idleProcedure), deadline(end), idleTicks(kFirstIdleTicks) {
  CFMachPortContext context = {0, this, nullptr, nullptr, nullptr};
  notice = corefoundation::Held<CFMachPortRef>(
      CFMachPortCreate(nullptr, &UserWait::told, &context, nullptr));
  if (!notice) return;
  noticeSource = corefoundation::Held<CFRunLoopSourceRef>(
      CFMachPortCreateRunLoopSource(nullptr, notice.get(), 0));
  CFRunLoopAddSource(CFRunLoopGetMain(), noticeSource.get(), kCFRunLoopDefaultMode);
}

UserWait::~UserWait() {
  if (notice) CFMachPortInvalidate(notice.get());
  if (wasStopped) CFRunLoopStop(CFRunLoopGetMain());
}

void UserWait::told(CFMachPortRef, void*, CFIndex, void* info) {
  static_cast<UserWait*>(info)->mayBeFree = true;
}

OSErr UserWait::run() {
  for (;;) {
    if (tookTurn()) return noErr;
    if (idle != nullptr && idleEnds()) return errAEWaitCanceled;
    if (deadline.remaining() == 0) return errAETimeout;
    sleep();
  }
}

bool UserWait::runUnless(const std::function<bool()>& givesUp) {
  while (!tookTurn()) {
    if (givesUp()) return false;
    sleep();
  }
  return true;
}

// Between finding the turn taken and asking to be told of its end, the end may come. Where that
// seems to happen again and again nobody can be waited for.
bool UserWait::tookTurn() {
  if (!notice) return true;
  InteractionTurn& turn = InteractionTurn::ours();
  for (int attempt = 0; mayBeFree && attempt < kAttempts; ++attempt) {
    if (turn.take() == InteractionTurn::Answer::kOurs) return true;
    mayBeFree = !turn.noticeEnd(CFMachPortGetPort(notice.get()));
  }
  return mayBeFree;
}

/// Offers the procedure what has arrived, then a null event.
bool UserWait::idleEnds() {
  source.drain();
  while (const EventQueue::Entry* entry = source.events().firstAfter(lastOffered)) {
    lastOffered = entry->arrival;
    source.events().loseAside();
    if (call(entry->record)) return true;
  }
  return call(nullEventAt(now()));
}

bool UserWait::call(const EventRecord& record) {
  EventRecord offered = record;
  return InvokeAEIdleUPP(&offered, &idleTicks, &mouseRegion, idle);
}

void UserWait::sleep() {
  const host::Nanoseconds left = deadline.remaining();
  const host::Nanoseconds idling =
      idle == nullptr ? std::numeric_limits<host::Nanoseconds>::max()
                      : host::ticksSpan(static_cast<UInt32>(std::max<SInt32>(idleTicks, 1)));
  const auto seconds = static_cast<CFTimeInterval>(std::min(left, idling)) /
                       static_cast<CFTimeInterval>(host::kNanosecondsPerSecond);
  const SInt32 why = CFRunLoopRunInMode(kCFRunLoopDefaultMode, seconds, true);
  wasStopped = wasStopped || why == kCFRunLoopRunStopped;
}

}  // namespace platform::events
