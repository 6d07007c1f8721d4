// Licence: MIT, see LICENSE.
#include "platform/appleevents/Dispatch.h"

#include <utility>

#include "platform/appleevents/Attributes.h"
#include "platform/appleevents/HandlerTable.h"
#include "platform/appleevents/Sending.h"

namespace platform::appleevents {
namespace {

thread_local const CurrentEvent* tCurrent = nullptr;

/// Makes an event the current one while its handler runs.
class Handling final {
 public:
  explicit Handling(const AppleEvent& event)
      : current{&event,
                attribute<SInt32>(event, keyInteractLevelAttr, typeSInt32).value_or(kAECanInteract),
                attribute<SInt16>(event, keyEventSourceAttr, typeSInt16).value_or(kAEUnknownSource),
                tCurrent} {
    tCurrent = &current;
  }
  ~Handling() { tCurrent = current.outer; }
  Handling(const Handling&) = delete;
  Handling& operator=(const Handling&) = delete;

 private:
  CurrentEvent current;
};

void putErrorNumber(AppleEvent& reply, OSErr result) {
  const SInt32 number = result;
  if (AESizeOfParam(&reply, keyErrorNumber, nullptr, nullptr) != errAEDescNotFound) return;
  AEPutParamPtr(&reply, keyErrorNumber, typeSInt32, &number, sizeof number);
}

}  // namespace

OSErr dispatchEvent(const AppleEvent& event, AppleEvent& reply) {
  const auto eventClass = attribute<AEEventClass>(event, keyEventClassAttr, typeType);
  const auto eventID = attribute<AEEventID>(event, keyEventIDAttr, typeType);
  if (!eventClass || !eventID) return errAENotAppleEvent;
  OSErr result = trackReads(event);
  if (result != noErr) return result;
  const std::optional<Handler> handler = findHandler(*eventClass, *eventID);
  if (handler) {
    const Handling handling(event);
    result = handler->procedure(&event, &reply, handler->refcon);
  } else {
    result = errAEEventNotHandled;
  }
  if (result != noErr && reply.descriptorType == typeAppleEvent) putErrorNumber(reply, result);
  return result;
}

OSStatus processMessage(mach::Message message) {
  HeldDesc event;
  HeldDesc reply;
  const OSStatus status = decodeMessage(std::move(message), event.out(), reply.out());
  if (status != noErr) return status;
  const auto wanted = attribute<Boolean>(event.get(), keyReplyRequestedAttr, typeBoolean);
  if (!wanted.value_or(false)) AEDisposeDesc(reply.out());
  const OSErr result = dispatchEvent(event.get(), *reply.out());
  if (reply.get().descriptorType != typeNull) {
    // The client has gone or given up if this fails: nobody is left to tell.
    static_cast<void>(sendMessage(reply.get(), nullptr, {kAENoReply, kAEDefaultTimeout}));
  }
  return result;
}

const CurrentEvent* currentEvent() { return tCurrent; }

}  // namespace platform::appleevents
