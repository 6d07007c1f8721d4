// Licence: MIT, see LICENSE.
#ifndef QUORVANT_AEMESSAGING_QRLAPPLEEVENT_H
#define QUORVANT_AEMESSAGING_QRLAPPLEEVENT_H

#include <quorvant/aemessaging/QRLAppleEventWrapper.h>

/// An event that the Apple Event Manager sends to a process or a port.
class QRL_EXPORT QRLAppleEvent : public QRLAppleEventWrapper {
 public:
  QRLAppleEvent();
  ~QRLAppleEvent() override;

 protected:
  OSErr doSendEvent(SInt32 sendMode, SInt32 timeout, SInt16 priority) override;
};

#endif
