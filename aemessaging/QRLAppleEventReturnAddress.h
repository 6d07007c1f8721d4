// Licence: MIT, see LICENSE.
#ifndef QUORVANT_AEMESSAGING_QRLAPPLEEVENTRETURNADDRESS_H
#define QUORVANT_AEMESSAGING_QRLAPPLEEVENTRETURNADDRESS_H

#include <Carbon/Carbon.h>
#include <mach/mach.h>
#include <quorvant/util/QRLExport.h>
#include <quorvant/util/QRLTypes.h>

/// A private port for the answer to an Apple event. The destructor leaves the port alone: whoever
/// initialized the address finalizes it.
class QRL_EXPORT QRLAppleEventReturnAddress {
 public:
  QRLAppleEventReturnAddress();
  virtual ~QRLAppleEventReturnAddress();
  QRLAppleEventReturnAddress(const QRLAppleEventReturnAddress&) = delete;
  QRLAppleEventReturnAddress& operator=(const QRLAppleEventReturnAddress&) = delete;

  /// Allocates the port, once: it is not tried again after a failure. Returns 0 or the kernel's
  /// result.
  SInt32 initialize();

  /// Destroys the port, if there is one, and makes the object reusable. Returns 0.
  SInt32 finalize();

  /// Stores the port in the event's reply-port attribute. -1 without a port, else the Apple Event
  /// Manager's result.
  SInt32 addReturnAddress(AEDesc& event);

  mach_port_t port;     // receive right, 0 when none
  Boolean32 allocated;  // whether initialize has tried to allocate the port
};

#endif
