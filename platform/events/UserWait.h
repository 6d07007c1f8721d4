// Licence: MIT, see LICENSE.
// One wait for the turn at interacting with the user. Main thread.
#ifndef PLATFORM_EVENTS_USERWAIT_H
#define PLATFORM_EVENTS_USERWAIT_H

#include <AE/AppleEvents.h>
#include <CoreFoundation/CFMachPort.h>
#include <CoreFoundation/CFRunLoop.h>
#include <HIToolbox/Events.h>

#include <functional>

#include "platform/corefoundation/CFRuntime.h"
#include "platform/events/EventSource.h"
#include "platform/host/Clock.h"

namespace platform::events {

class UserWait final {
 public:
  UserWait(AEIdleUPP idleProcedure, host::Deadline end);
  ~UserWait();
  UserWait(const UserWait&) = delete;
  UserWait& operator=(const UserWait&) = delete;

  /// noErr when the turn is ours, else errAEWaitCanceled or errAETimeout.
  OSErr run();
  /// True when the turn is ours, false once `givesUp` says so. Without an idle procedure.
  bool runUnless(const std::function<bool()>& givesUp);

 private:
  bool tookTurn();
  bool idleEnds();
  bool call(const EventRecord& record);
  void sleep();
  static void told(CFMachPortRef port, void* message, CFIndex size, void* info);

  AEIdleUPP idle;
  host::Deadline deadline;
  EventSource& source = EventSource::prepared();
  EventQueue::Arrival lastOffered = 0;
  SInt32 idleTicks = 0;
  RgnHandle mouseRegion = nullptr;
  bool mayBeFree = true;
  bool wasStopped = false;  // the loop, for whose run the stop was not meant
  corefoundation::Held<CFMachPortRef> notice;
  corefoundation::Held<CFRunLoopSourceRef> noticeSource;
};

}  // namespace platform::events

#endif
