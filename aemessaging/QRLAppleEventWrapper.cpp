// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/QRLAppleEventWrapper.h>

#include <cstring>
#include <new>

namespace {

constexpr SInt32 kReplyModeBits = kAENoReply | kAEQueueReply | kAEWaitReply;
constexpr AEDesc kNullDesc = {typeNull, nullptr};

// Disposes a descriptor that its flag says is there.
void disposeIf(Boolean32& exists, AEDesc& desc) {
  if (!exists) return;
  AEDisposeDesc(&desc);
  exists = false;
}

OSErr copyText(Handle printed, char*& text) {
  if (printed == nullptr || *printed == nullptr) return memFullErr;
  const Size size = GetHandleSize(printed);
  if (size < 1) return memFullErr;
  char* copy = new (std::nothrow) char[static_cast<std::size_t>(size) + 1];
  if (copy == nullptr) return memFullErr;
  std::memcpy(copy, *printed, static_cast<std::size_t>(size));
  copy[size] = 0;
  text = copy;
  return noErr;
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

OSErr QRLAppleEventWrapper::printDescToBufAlloc(const AEDesc* desc, char*& text) {
  Handle printed = nullptr;
  const OSErr err = static_cast<OSErr>(AEPrintDescToHandle(desc, &printed));
  if (err != noErr) return err;
  const OSErr copyErr = copyText(printed, text);
  if (printed != nullptr) DisposeHandle(printed);
  return copyErr;
}

void QRLAppleEventWrapper::printDesc(const char*, const AEDesc* desc) {
  char* text = nullptr;
  if (printDescToBufAlloc(desc, text) == noErr) delete[] text;
}
