// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/QRLProcessDestinationAddress.h>

QRLProcessDestinationAddress::QRLProcessDestinationAddress() : psn{} {}

QRLProcessDestinationAddress::QRLProcessDestinationAddress(
    const QRLProcessDestinationAddress& other)
    : QRLAppleEventDestinationAddress(other), psn(other.psn) {}

QRLProcessDestinationAddress::~QRLProcessDestinationAddress() = default;

SInt32 QRLProcessDestinationAddress::initialize() { return 0; }

OSErr QRLProcessDestinationAddress::getDestinationAddress(AEDesc* out) {
  return AECreateDesc(typeProcessSerialNumber, &psn, sizeof psn, out);
}

QRLProcessDestinationAddress& QRLProcessDestinationAddress::operator=(
    const QRLProcessDestinationAddress& other) {
  if (this == &other) return *this;
  psn.highLongOfPSN = other.psn.highLongOfPSN;
  psn.lowLongOfPSN = other.psn.lowLongOfPSN;
  return *this;
}
