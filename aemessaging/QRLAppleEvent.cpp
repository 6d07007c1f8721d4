// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/QRLAppleEvent.h>

QRLAppleEvent::QRLAppleEvent() = default;

QRLAppleEvent::~QRLAppleEvent() = default;

OSErr QRLAppleEvent::doSendEvent(SInt32 sendMode, SInt32 timeout, SInt16 priority) {
  return AESend(&event, replyMode == kAENoReply ? nullptr : &reply, sendMode, priority, timeout,
                nullptr, nullptr);
}
