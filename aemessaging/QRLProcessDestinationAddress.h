// Licence: MIT, see LICENSE.
#ifndef QUORVANT_AEMESSAGING_QRLPROCESSDESTINATIONADDRESS_H
#define QUORVANT_AEMESSAGING_QRLPROCESSDESTINATIONADDRESS_H

#include <quorvant/aemessaging/QRLAppleEventDestinationAddress.h>

/// A process by its serial number. Fill in `psn`.
class QRL_EXPORT QRLProcessDestinationAddress : public QRLAppleEventDestinationAddress {
 public:
  QRLProcessDestinationAddress();
  QRLProcessDestinationAddress(const QRLProcessDestinationAddress& other);
  ~QRLProcessDestinationAddress() override;

  /// There is nothing to make ready; returns 0.
  SInt32 initialize() override;

  /// A "psn " descriptor.
  OSErr getDestinationAddress(AEDesc* out) override;

  QRLProcessDestinationAddress& operator=(const QRLProcessDestinationAddress& other);

  ProcessSerialNumber psn;
};

#endif
