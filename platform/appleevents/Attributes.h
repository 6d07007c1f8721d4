// Licence: MIT, see LICENSE.
// Starting events, and the attributes that the Apple Event Manager itself reads and writes.
#ifndef PLATFORM_APPLEEVENTS_ATTRIBUTES_H
#define PLATFORM_APPLEEVENTS_ATTRIBUTES_H

#include <AE/AppleEvents.h>

#include "platform/appleevents/Items.h"

namespace platform::appleevents {

/// The number in an attribute whose type is fixed; nothing where there is none or it is no number.
/// Codes are UInt32, as are ports.
template <typename T>
std::optional<T> attribute(const AppleEvent& event, AEKeyword keyword, DescType type) {
  T value;
  Size size = 0;
  DescType stored = typeNull;
  const OSErr status =
      AEGetAttributePtr(&event, keyword, typeWildCard, &stored, &value, sizeof value, &size);
  if (status != noErr || stored != type || size != sizeof value) return std::nullopt;
  return value;
}

template <typename T>
OSErr putAttribute(AppleEvent& event, AEKeyword keyword, DescType type, const T& value) {
  return AEPutAttributePtr(&event, keyword, type, &value, sizeof value);
}

/// The parts of a send mode.
inline constexpr AESendMode kReplyModes = 0x3;
inline constexpr AESendMode kInteractionLevels = 0x30;

/// What changes in an event each time that it is sent.
struct Postmark {
  AESendMode mode;
  SInt32 timeOutInTicks;
  AEEventSource source;
  ProcessSerialNumber sender;
};

/// Writes the postmark into an event that AECreateAppleEvent made; the event does not grow.
OSErr stamp(const AppleEvent& event, const Postmark& mark);

/// Starts to remember which parameters a handler reads.
OSErr trackReads(const AppleEvent& event);

/// The reply to an event, with its return and transaction IDs, addressed to `target`.
OSErr createReply(const AppleEvent& event, const AEAddressDesc& target, AppleEvent* reply);

}  // namespace platform::appleevents

#endif
