// Licence: MIT, see LICENSE.
// Events on their way from a message to a handler and back, for the event queue.
//
// Any thread. Descriptors follow the rules of <AE/AEDataModel.h>.
#ifndef PLATFORM_APPLEEVENTS_DISPATCH_H
#define PLATFORM_APPLEEVENTS_DISPATCH_H

#include <AE/AppleEvents.h>

#include <optional>

#include "platform/mach/PortSpace.h"

namespace platform::appleevents {

struct EventKind {
  AEEventClass eventClass;
  AEEventID eventID;
};

/// The class and ID of a message's body, read without decoding it; nothing if it is no Apple event.
/// A body that has them may still turn out to be corrupt.
std::optional<EventKind> peekKind(mach::Bytes body);

/// Makes an event, and the reply if the message can be answered, of a message. Takes the message's
/// body and reply right; on errAECorruptData both are given up. See AEDecodeMessage.
OSStatus decodeMessage(mach::Message message, AppleEvent* event, AppleEvent* reply);

/// Runs the handler that is installed for an event: its result, errAEEventNotHandled where there is
/// none. A result that is not noErr becomes the keyErrorNumber of a reply that is not null and has
/// none yet.
OSErr dispatchEvent(const AppleEvent& event, AppleEvent& reply);

/// Decodes, dispatches, and sends the reply if the event's sender wants one. Returns the handler's
/// result, or errAECorruptData.
OSStatus processMessage(mach::Message message);

/// An event that a handler is running for.
struct CurrentEvent {
  const AppleEvent* event;
  AESendMode interactionLevel;  // kAENeverInteract to kAEAlwaysInteract
  AEEventSource source;
  const CurrentEvent* outer;  // the event whose handler sent this one, or null
};

/// The innermost event that dispatchEvent is running a handler for on the calling thread, or null.
const CurrentEvent* currentEvent();

}  // namespace platform::appleevents

#endif
