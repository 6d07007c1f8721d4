// Licence: MIT, see LICENSE.
// AESend, and the events that never leave the process.
#include <AE/AppleEvents.h>

#include <span>

#include "platform/appleevents/Attributes.h"
#include "platform/appleevents/Dispatch.h"
#include "platform/appleevents/Sending.h"
#include "platform/processes/ProcessTable.h"

using namespace platform::appleevents;

namespace {

constexpr ProcessSerialNumber kSelf = {0, kCurrentProcess};

bool isDirectCall(const AppleEvent& event) {
  const auto process =
      attribute<ProcessSerialNumber>(event, keyAddressAttr, typeProcessSerialNumber);
  return process && process->highLongOfPSN == kSelf.highLongOfPSN &&
         process->lowLongOfPSN == kSelf.lowLongOfPSN;
}

OSErr createReplyToSelf(const AppleEvent& event, AppleEvent* reply) {
  return createReply(event, typeProcessSerialNumber, std::as_bytes(std::span(&kSelf, 1)), reply);
}

/// Handles an event here and now. The reply, if one is wanted, is handed out or queued.
OSErr callDirectly(const AppleEvent& event, AppleEvent* reply, AESendMode mode, SInt32 timeOut) {
  const AESendMode replyMode = mode & kReplyModes;
  HeldDesc made;
  OSErr status =
      stamp(event, {mode, timeOut, kAEDirectCall, platform::processes::presentSerialNumber()});
  if (status == noErr && replyMode != kAENoReply) status = createReplyToSelf(event, made.out());
  if (status != noErr) return status;
  const OSErr result = dispatchEvent(event, *made.out());
  if (replyMode == kAENoReply) return result == errAEEventNotHandled ? result : OSErr{noErr};
  if (replyMode == kAEWaitReply) {
    *reply = made.take();
    return noErr;
  }
  return static_cast<OSErr>(sendMessage(made.get(), nullptr, {kAENoReply, timeOut}));
}

}  // namespace

OSErr AESend(const AppleEvent* event, AppleEvent* reply, AESendMode sendMode, AESendPriority,
             SInt32 timeOutInTicks, AEIdleUPP idle, AEFilterUPP) {
  const OSErr status = checkSending(event, reply, sendMode, timeOutInTicks);
  if (status != noErr) return status;
  ProcessSerialNumber self;
  // A process that cannot check in can still send to ports, and to itself.
  static_cast<void>(platform::processes::checkIn(self));
  if (isDirectCall(*event)) return callDirectly(*event, reply, sendMode, timeOutInTicks);
  return static_cast<OSErr>(
      sendMessage(*event, reply, {sendMode, timeOutInTicks, ReplyTo::kOwnPort, idle}));
}
