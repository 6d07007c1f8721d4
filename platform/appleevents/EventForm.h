// Licence: MIT, see LICENSE.
// The attributes that every event has, written and changed in one walk. On its way between two
// processes an event has its attributes touched some forty times; looking each of them up by itself
// would cost more than the message does.
#ifndef PLATFORM_APPLEEVENTS_EVENTFORM_H
#define PLATFORM_APPLEEVENTS_EVENTFORM_H

#include <AE/AppleEvents.h>
#include <mach/port.h>

#include "platform/appleevents/EventFront.h"

namespace platform::appleevents {

/// The parts of a send mode.
inline constexpr AESendMode kReplyModes = 0x3;
inline constexpr AESendMode kInteractionLevels = 0x30;

/// What changes in an event each time that it is sent.
struct Postmark {
  AESendMode mode;
  SInt32 timeOutInTicks;
  AEEventSource source;
  ProcessSerialNumber sender;

  Boolean wantsReply() const { return (mode & kReplyModes) != kAENoReply; }
  SInt32 interactionLevel() const {
    const SInt32 level = mode & kInteractionLevels;
    return level == 0 ? SInt32{kAECanInteract} : level;
  }
};

/// What an event starts with.
struct Beginning {
  AEEventClass eventClass;
  AEEventID eventID;
  AEReturnID returnID;
  AETransactionID transactionID;
  DescType addressType;  // typeNull: it has no address
  Bytes address;         // in the host's order
};

/// The block of an event with all attributes that it starts with and no parameter; null without
/// memory.
std::unique_ptr<Storage> makeEvent(const Beginning& beginning, const Postmark& mark);

/// Writes a postmark over the one that an event has. False if it lacks a part of one, as an event
/// may that was made of bytes; the parts that are there have been written.
bool writeOver(WritableBytes event, const Postmark& mark);
/// The same for an event that starts with the front.
void writeOverFront(WritableBytes event, const Postmark& mark);

/// Writes into a message what only the receiver knows: the port at which it arrived, if it was sent
/// to one, and that it came from elsewhere unless it is this process's own and says so.
void writeArrival(WritableBytes message, mach_port_name_t receiver, bool isOwn, Front front);

/// An attribute as it lies in an event; nothing if there is none, or the descriptor is no event.
std::optional<Item> findAttribute(const AppleEvent& event, AEKeyword keyword);

}  // namespace platform::appleevents

#endif
