// Licence: MIT, see LICENSE.
#ifndef QUORVANT_AEMESSAGING_QRLAPPLEEVENTDESTINATIONADDRESS_H
#define QUORVANT_AEMESSAGING_QRLAPPLEEVENTDESTINATIONADDRESS_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>
#include <quorvant/util/QRLTypes.h>

/// Where an Apple event goes. An address is a value that its user keeps for as long as an event
/// points to it; one thread uses it at a time.
class QRL_EXPORT QRLAppleEventDestinationAddress {
 public:
  virtual ~QRLAppleEventDestinationAddress();

  /// Makes the address ready for use. Returns 0 or the reason why it is not ready; may be called
  /// again.
  virtual SInt32 initialize() = 0;

  /// Makes an address descriptor, which the caller disposes. Nothing is stored on failure.
  virtual OSErr getDestinationAddress(AEDesc* out) = 0;

 protected:
  QRLAppleEventDestinationAddress() = default;
  QRLAppleEventDestinationAddress(const QRLAppleEventDestinationAddress&) = default;
  QRLAppleEventDestinationAddress& operator=(const QRLAppleEventDestinationAddress&) = default;
};

#endif
