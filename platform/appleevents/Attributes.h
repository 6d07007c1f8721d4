// Licence: MIT, see LICENSE.
// Starting events, and the attributes that the Apple Event Manager itself reads and writes.
#ifndef PLATFORM_APPLEEVENTS_ATTRIBUTES_H
#define PLATFORM_APPLEEVENTS_ATTRIBUTES_H

#include <AE/AppleEvents.h>

#include "platform/appleevents/ByteOrder.h"
#include "platform/appleevents/EventForm.h"

namespace platform::appleevents {

/// The number in an attribute whose type is fixed; nothing where there is none or it is no number.
/// Codes are UInt32, as are ports.
template <typename T>
std::optional<T> attribute(const AppleEvent& event, AEKeyword keyword, DescType type) {
  const std::optional<Item> item = findAttribute(event, keyword);
  if (!item || item->type != type || item->data.size() != sizeof(T)) return std::nullopt;
  T value;
  reorder(type, item->data, {reinterpret_cast<std::byte*>(&value), sizeof value});
  return value;
}

template <typename T>
OSErr putAttribute(AppleEvent& event, AEKeyword keyword, DescType type, const T& value) {
  return AEPutAttributePtr(&event, keyword, type, &value, sizeof value);
}

/// Writes the postmark into an event; one that AECreateAppleEvent made does not grow.
OSErr stamp(const AppleEvent& event, const Postmark& mark);

/// Starts to remember which parameters a handler reads.
OSErr trackReads(const AppleEvent& event);

/// The reply to an event, with its return and transaction IDs, addressed as the descriptor of that
/// type and those bytes, in the host's order, says.
OSErr createReply(const AppleEvent& event, DescType addressType, Bytes address, AppleEvent* reply);

}  // namespace platform::appleevents

#endif
