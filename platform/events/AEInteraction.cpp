// Licence: MIT, see LICENSE.
#include <HIToolbox/AEInteraction.h>

#include <CarbonCore/MacErrors.h>

#include <new>

#include "platform/appleevents/Dispatch.h"
#include "platform/events/EventSource.h"
#include "platform/events/Interaction.h"
#include "platform/events/InteractionTurn.h"
#include "platform/events/UserWait.h"
#include "platform/host/Ticks.h"

namespace platform::events {
namespace {

constexpr UInt32 kDefaultTimeoutTicks = 60 * host::kTicksPerSecond;

AEInteractAllowed allowedLevel = kAEInteractWithLocal;
NoticeCalls noticeCalls = {nullptr, nullptr};

/// Whether the server may interact for events from a source.
bool isAllowedFor(AEEventSource source) {
  switch (source) {
    case kAEDirectCall:
    case kAESameProcess:
      return true;
    case kAELocalProcess:
      return allowedLevel >= kAEInteractWithLocal;
    default:
      return allowedLevel >= kAEInteractWithAll;
  }
}

/// What happens outside a handler of the Apple Event Manager's is the server's own affair.
bool isAllowedNow() {
  const appleevents::CurrentEvent* current = appleevents::currentEvent();
  if (current == nullptr) return true;
  return current->interactionLevel != kAENeverInteract && isAllowedFor(current->source);
}

host::Deadline deadlineAfter(SInt32 ticks) {
  if (ticks == kNoTimeOut) return host::Deadline::never();
  const UInt32 span =
      ticks == kAEDefaultTimeout ? kDefaultTimeoutTicks : static_cast<UInt32>(ticks);
  return host::Deadline::after(host::ticksSpan(span));
}

/// A notice that is up for as long as this lives.
class PostedNotice final {
 public:
  explicit PostedNotice(NMRecPtr notice) : record(notice) {
    if (record != nullptr && noticeCalls.install != nullptr) noticeCalls.install(record);
  }
  ~PostedNotice() {
    if (record != nullptr && noticeCalls.remove != nullptr) noticeCalls.remove(record);
  }
  PostedNotice(const PostedNotice&) = delete;
  PostedNotice& operator=(const PostedNotice&) = delete;

 private:
  NMRecPtr record;
};

OSErr waitForTurn(SInt32 timeOutInTicks, NMRecPtr notification, AEIdleUPP idle) {
  InteractionTurn& turn = InteractionTurn::ours();
  OSErr result = noErr;
  if (turn.take() == InteractionTurn::Answer::kTaken) {
    const PostedNotice notice(notification);
    result = UserWait(idle, deadlineAfter(timeOutInTicks)).run();
  }
  if (result == noErr) turn.grant();
  return result;
}

}  // namespace

bool awaitTurn(const std::function<bool()>& givesUp) {
  if (CFRunLoopGetCurrent() != CFRunLoopGetMain()) return true;
  if (InteractionTurn::ours().take() == InteractionTurn::Answer::kOurs) return true;
  return UserWait(nullptr, host::Deadline::never()).runUnless(givesUp);
}

void setNoticeCalls(NoticeCalls calls) { noticeCalls = calls; }

}  // namespace platform::events

OSErr AEProcessAppleEvent(const EventRecord* event) {
  if (event == nullptr || event->what != kHighLevelEvent) return paramErr;
  try {
    return static_cast<OSErr>(platform::events::EventSource::prepared().process(*event));
  } catch (const std::bad_alloc&) {
    return memFullErr;
  }
}

OSErr AESetInteractionAllowed(AEInteractAllowed level) {
  if (level > kAEInteractWithAll) return paramErr;
  platform::events::allowedLevel = level;
  return noErr;
}

OSErr AEGetInteractionAllowed(AEInteractAllowed* level) {
  if (level == nullptr) return paramErr;
  *level = platform::events::allowedLevel;
  return noErr;
}

OSErr AEInteractWithUser(SInt32 timeOutInTicks, NMRecPtr notification, AEIdleUPP idleProcedure) {
  if (timeOutInTicks < kNoTimeOut) return paramErr;
  if (!platform::events::isAllowedNow()) return errAENoUserInteraction;
  try {
    return platform::events::waitForTurn(timeOutInTicks, notification, idleProcedure);
  } catch (const std::bad_alloc&) {
    return memFullErr;
  }
}
