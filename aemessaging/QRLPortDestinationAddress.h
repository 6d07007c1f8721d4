// Licence: MIT, see LICENSE.
#ifndef QUORVANT_AEMESSAGING_QRLPORTDESTINATIONADDRESS_H
#define QUORVANT_AEMESSAGING_QRLPORTDESTINATIONADDRESS_H

#include <mach/mach.h>
#include <quorvant/aemessaging/QRLAppleEventDestinationAddress.h>
#include <servers/bootstrap.h>

/// The port that is registered under a name. Fill in `name`, then initialize. The address only
/// holds values: the send right that it found is not given up with it, since copies share it.
class QRL_EXPORT QRLPortDestinationAddress : public QRLAppleEventDestinationAddress {
 public:
  QRLPortDestinationAddress();
  QRLPortDestinationAddress(const QRLPortDestinationAddress& other);
  ~QRLPortDestinationAddress() override;

  /// Locates the port unless that was done before. A failed look-up may be tried again.
  SInt32 initialize() override;

  /// A "port" descriptor; -1 while the port is not located.
  OSErr getDestinationAddress(AEDesc* out) override;

  QRLPortDestinationAddress& operator=(const QRLPortDestinationAddress& other);

  /// Looks the name up and stores the port. -1 without a name (an empty one, or one that does not
  /// end within its array), else the kernel's or the bootstrap server's result.
  SInt32 locatePort();

  mach_port_t port;                   // send right, 0 until found
  char name[BOOTSTRAP_MAX_NAME_LEN];  // zero-terminated
  Boolean32 located;                  // whether initialize has found the port
};

#endif
