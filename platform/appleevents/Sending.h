// Licence: MIT, see LICENSE.
// Events on their way out, as messages.
#ifndef PLATFORM_APPLEEVENTS_SENDING_H
#define PLATFORM_APPLEEVENTS_SENDING_H

#include <AE/AppleEvents.h>

namespace platform::appleevents {

/// Where a reply shall arrive: at the event's own reply port if it has one, or never mind that
/// port.
enum class ReplyTo { kEventsPort, kOwnPort };

struct SendOptions {
  AESendMode mode;
  SInt32 timeOutInTicks;
  ReplyTo replyTo = ReplyTo::kEventsPort;
  AEIdleUPP idle = nullptr;
};

/// Sends an event whose mode and time-out have been checked. `reply` is stored only when one is
/// waited for, and then must not be null. Results are AESend's.
OSStatus sendMessage(const AppleEvent& event, AppleEvent* reply, const SendOptions& options);

/// Checks what is common to the calls that send, and clears the reply.
OSErr checkSending(const AppleEvent* event, AppleEvent* reply, AESendMode mode,
                   SInt32 timeOutInTicks);

}  // namespace platform::appleevents

#endif
