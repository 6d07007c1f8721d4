// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/QRLAppleEventWrapper.h>

namespace {

constexpr SInt32 kReplyModeBits = kAENoReply | kAEQueueReply | kAEWaitReply;
constexpr AEDesc kNullDesc = {typeNull, nullptr};

// Disposes a descriptor that its flag says is there.
void disposeIf(Boolean32& exists, AEDesc& desc) {
  if (!exists) return;
  AEDisposeDesc(&desc);
  exists = false;
}

}  // namespace

QRLAppleEventWrapper::QRLAppleEventWrapper()
    : target(kNullDesc),
      targetCreated(false),
      eventCreated(false),
      replyReceived(false),
      replyHadError(false),
      eventClass(0),
      eventID(0),
      replyMode(0),
      returnID(0),
      transactionID(0),
      destination(nullptr),
      event(kNullDesc),
      reply(kNullDesc) {}

QRLAppleEventWrapper::~QRLAppleEventWrapper() {
  disposeIf(targetCreated, target);
  disposeIf(eventCreated, event);
  disposeIf(replyReceived, reply);
}

SInt32 QRLAppleEventWrapper::finalizeEvent() {
  returnAddress.finalize();
  return 0;
}

OSErr QRLAppleEventWrapper::createEvent() {
  if (destination == nullptr) return paramErr;
  OSErr err = static_cast<OSErr>(returnAddress.initialize());
  if (err != noErr) return err;

  disposeIf(targetCreated, target);
  err = destination->getDestinationAddress(&target);
  targetCreated = err == noErr;
  if (err != noErr) return err;

  disposeIf(eventCreated, event);
  err = AECreateAppleEvent(eventClass, eventID, &target, returnID, transactionID, &event);
  eventCreated = err == noErr;
  if (err != noErr) return err;

  return static_cast<OSErr>(returnAddress.addReturnAddress(event));
}

SInt32 QRLAppleEventWrapper::sendEvent(SInt32 sendMode, SInt32 timeout, SInt16 priority) {
  disposeIf(replyReceived, reply);
  replyHadError = false;

  replyMode &= kReplyModeBits;
  const SInt32 mode = (sendMode & ~kReplyModeBits) | replyMode;
  const OSErr err = doSendEvent(mode, timeout, priority);
  if (err != noErr || replyMode == kAENoReply) return err;

  SInt32 remoteError = noErr;
  const OSErr found = AEGetParamPtr(&reply, keyErrorNumber, typeSInt32, nullptr, &remoteError,
                                    sizeof remoteError, nullptr);
  replyHadError = found != errAEDescNotFound;
  replyReceived = true;
  return remoteError;
}
