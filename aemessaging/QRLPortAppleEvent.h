// Licence: MIT, see LICENSE.
#ifndef QUORVANT_AEMESSAGING_QRLPORTAPPLEEVENT_H
#define QUORVANT_AEMESSAGING_QRLPORTAPPLEEVENT_H

#include <quorvant/aemessaging/QRLAppleEventWrapper.h>

/// An event that goes to a port as one Mach message. The priority is not used.
class QRL_EXPORT QRLPortAppleEvent : public QRLAppleEventWrapper {
 public:
  QRLPortAppleEvent();
  ~QRLPortAppleEvent() override;

 protected:
  OSErr doSendEvent(SInt32 sendMode, SInt32 timeout, SInt16 priority) override;
};

#endif
