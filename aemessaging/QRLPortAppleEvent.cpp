// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/QRLPortAppleEvent.h>

QRLPortAppleEvent::QRLPortAppleEvent() = default;

QRLPortAppleEvent::~QRLPortAppleEvent() = default;

OSErr QRLPortAppleEvent::doSendEvent(SInt32 sendMode, SInt32 timeout, SInt16) {
  return static_cast<OSErr>(
      AESendMessage(&event, replyMode == kAENoReply ? nullptr : &reply, sendMode, timeout));
}
