// Licence: MIT, see LICENSE.
#include "platform/appleevents/Patience.h"

#include <HIToolbox/Events.h>

#include <algorithm>

#include "platform/host/Ticks.h"

namespace platform::appleevents {
namespace {

constexpr SInt32 kDefaultTicks = 60 * host::kTicksPerSecond;

host::Deadline deadlineOf(SInt32 ticks) {
  if (ticks == kNoTimeOut) return host::Deadline::never();
  if (ticks == kAEDefaultTimeout) ticks = kDefaultTicks;
  return host::Deadline::after(host::ticksSpan(static_cast<UInt32>(ticks)));
}

}  // namespace

Patience::Patience(SInt32 timeOutInTicks, AEIdleUPP idleProcedure)
    : deadline(deadlineOf(timeOutInTicks)),
      idle(idleProcedure),
      nextCall(idle == nullptr ? host::Deadline::never() : host::Deadline::immediate()) {}

host::Deadline Patience::step() const { return std::min(deadline, nextCall); }

OSErr Patience::pause() {
  if (!deadline.isNever() && deadline.remaining() == 0) return errAETimeout;
  if (idle == nullptr || nextCall.remaining() > 0) return noErr;
  EventRecord event = {};
  event.what = nullEvent;
  event.when = host::ticksAt(host::monotonicNow());
  SInt32 sleepTime = 0;
  RgnHandle mouseRegion = nullptr;
  if (idle(&event, &sleepTime, &mouseRegion)) return errAEWaitCanceled;
  const UInt32 ticks = static_cast<UInt32>(std::max<SInt32>(sleepTime, 1));
  nextCall = host::Deadline::after(host::ticksSpan(ticks));
  return noErr;
}

}  // namespace platform::appleevents
