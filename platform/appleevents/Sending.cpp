// Licence: MIT, see LICENSE.
//
// A request and its answer. The message carries a send-once right to the reply port: its holder
// answers once, or the port learns that there will be no answer. So exactly one message follows
// each request, unless the sender stops waiting. Then it abandons the right, and throws away what
// came in between, so that the next request through the same port is not answered by the last one's
// reply.
#include "platform/appleevents/Sending.h"

#include <AE/AEMach.h>

#include <utility>

#include "platform/appleevents/Attributes.h"
#include "platform/appleevents/Dispatch.h"
#include "platform/appleevents/Patience.h"
#include "platform/mach/MessageBlock.h"
#include "platform/mach/PortSpace.h"
#include "platform/processes/ProcessTable.h"

namespace platform::appleevents {
namespace {

OSErr resultOf(kern_return_t result) {
  switch (result) {
    case KERN_SUCCESS:
      return noErr;
    case MACH_SEND_TIMED_OUT:
    case MACH_RCV_TIMED_OUT:
      return errAETimeout;
    case MACH_SEND_INVALID_REPLY:
    case MACH_RCV_INVALID_NAME:
      return paramErr;
    case MACH_SEND_TOO_LARGE:
    case MACH_SEND_NO_BUFFER:
    case KERN_NO_SPACE:
    case KERN_RESOURCE_SHORTAGE:
      return memFullErr;
    default:
      return connectionInvalid;
  }
}

/// The port that an event's address stands for. A process's port was looked up for this and is
/// given back.
class Destination final {
 public:
  Destination() = default;
  ~Destination() {
    if (isLookedUp) mach_port_deallocate(mach_task_self(), port);
  }
  Destination(const Destination&) = delete;
  Destination& operator=(const Destination&) = delete;

  OSStatus find(const AppleEvent& event) {
    if (const auto name = attribute<mach_port_name_t>(event, keyAddressAttr, typeMachPort)) {
      port = *name;
      return noErr;
    }
    const auto process =
        attribute<ProcessSerialNumber>(event, keyAddressAttr, typeProcessSerialNumber);
    if (!process) return errAEUnknownAddressType;
    const OSStatus status = processes::portOfProcess(*process, port);
    isLookedUp = status == noErr;
    return status;
  }

  mach_port_name_t name() const { return port; }

  AEEventSource source() const {
    const bool isOurs = mach::isReceiveRight(port);
    return isOurs ? AEEventSource{kAESameProcess} : AEEventSource{kAELocalProcess};
  }

 private:
  mach_port_name_t port = MACH_PORT_NULL;
  bool isLookedUp = false;
};

/// The port to which the answer comes, MACH_PORT_NULL if none is wanted.
class ReplyPort final {
 public:
  ReplyPort() = default;
  ~ReplyPort() {
    if (isTemporary) mach_port_destroy(mach_task_self(), port);
  }
  ReplyPort(const ReplyPort&) = delete;
  ReplyPort& operator=(const ReplyPort&) = delete;

  OSStatus open(const AppleEvent& event, const SendOptions& options) {
    const AESendMode replyMode = options.mode & kReplyModes;
    if (replyMode == kAENoReply) return noErr;
    if (options.replyTo == ReplyTo::kEventsPort) {
      port = attribute<mach_port_name_t>(event, keyReplyPortAttr, typeMachPort).value_or(port);
      if (port != MACH_PORT_NULL) return noErr;
    }
    return replyMode == kAEQueueReply ? openQueue() : openTemporary();
  }

  mach_port_name_t name() const { return port; }

  void giveUp() {
    if (isTemporary) return;  // it is about to go altogether
    mach::abandonReplies(port);
    mach::Message late;
    while (mach::receive(port, late, mach::Deadline::immediate()) == KERN_SUCCESS) {
      if (late.reply != MACH_PORT_NULL) mach_port_deallocate(mach_task_self(), late.reply);
    }
  }

 private:
  OSStatus openQueue() {
    ProcessSerialNumber self;
    const OSStatus status = processes::checkIn(self);
    port = processes::privatePort();
    return status;
  }

  OSStatus openTemporary() {
    isTemporary =
        mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &port) == KERN_SUCCESS;
    return isTemporary ? OSStatus{noErr} : OSStatus{memFullErr};
  }

  mach_port_name_t port = MACH_PORT_NULL;
  bool isTemporary = false;
};

OSStatus transmit(const AppleEvent& event, const Destination& to, const ReplyPort& replyPort,
                  Patience& patience) {
  Storage& storage = *event.dataHandle;
  for (;;) {
    const kern_return_t result = mach::send(to.name(), replyPort.name(), mach::kAppleEventMessageID,
                                            storage.bytes(), patience.step());
    if (result == KERN_SUCCESS) {
      const bool isAnswer = storage.replyRight && storage.replyRight->name() == to.name();
      if (isAnswer) storage.replyRight->markSpent();
      return noErr;
    }
    if (result != MACH_SEND_TIMED_OUT) return resultOf(result);
    if (const OSErr status = patience.pause()) return status;
  }
}

/// Takes the answer to a request, dropping what answers another one.
OSStatus awaitReply(const AppleEvent& event, const ReplyPort& port, Patience& patience,
                    AppleEvent* reply) {
  const auto returnID = attribute<AEReturnID>(event, keyReturnIDAttr, typeSInt16);
  for (;;) {
    mach::Message message;
    const kern_return_t result = mach::receive(port.name(), message, patience.step());
    if (result == MACH_RCV_TIMED_OUT) {
      if (const OSErr status = patience.pause()) return status;
      continue;
    }
    if (result != KERN_SUCCESS) return resultOf(result);
    if (message.id == MACH_NOTIFY_SEND_ONCE) return connectionInvalid;
    const OSStatus status = decodeMessage(std::move(message), reply, nullptr);
    if (status != noErr) return status;
    if (attribute<AEReturnID>(*reply, keyReturnIDAttr, typeSInt16) == returnID) return noErr;
    AEDisposeDesc(reply);
  }
}

}  // namespace

OSStatus sendMessage(const AppleEvent& event, AppleEvent* reply, const SendOptions& options) {
  Patience patience(options.timeOutInTicks, options.idle);
  Destination destination;
  OSStatus status = destination.find(event);
  if (status != noErr) return status;
  ReplyPort replyPort;
  status = replyPort.open(event, options);
  if (status != noErr) return status;
  status = stamp(event, {options.mode, options.timeOutInTicks, destination.source(),
                         processes::presentSerialNumber()});
  if (status == noErr) status = transmit(event, destination, replyPort, patience);
  if (status != noErr || (options.mode & kReplyModes) != kAEWaitReply) return status;
  status = awaitReply(event, replyPort, patience, reply);
  if (status != noErr) replyPort.giveUp();
  return status;
}

OSErr checkSending(const AppleEvent* event, AppleEvent* reply, AESendMode mode,
                   SInt32 timeOutInTicks) {
  if (reply != nullptr) *reply = kNullDesc;
  if (event == nullptr || timeOutInTicks < kNoTimeOut) return paramErr;
  if (event->descriptorType != typeAppleEvent || event->dataHandle == nullptr) {
    return errAENotAppleEvent;
  }
  const AESendMode replyMode = mode & kReplyModes;
  if (replyMode == 0) return errAEUnknownSendMode;
  if (replyMode == kAEWaitReply && reply == nullptr) return paramErr;
  return noErr;
}

}  // namespace platform::appleevents
