// Licence: MIT, see LICENSE.
// How long a sender waits: until its time-out, with calls of its idle procedure meanwhile.
#ifndef PLATFORM_APPLEEVENTS_PATIENCE_H
#define PLATFORM_APPLEEVENTS_PATIENCE_H

#include <AE/AppleEvents.h>

#include "platform/host/Clock.h"

namespace platform::appleevents {

class Patience final {
 public:
  /// The idle procedure may be null. Its first call is due at once.
  Patience(SInt32 timeOutInTicks, AEIdleUPP idle);

  /// Until when to wait before pausing.
  host::Deadline step() const;

  /// Called when a step's time is over: noErr to go on waiting, errAETimeout, or errAEWaitCanceled
  /// when the idle procedure says so.
  OSErr pause();

 private:
  host::Deadline deadline;
  AEIdleUPP idle;
  host::Deadline nextCall;
};

}  // namespace platform::appleevents

#endif
