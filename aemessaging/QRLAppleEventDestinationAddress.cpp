// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/QRLAppleEventDestinationAddress.h>

// Out of line, so that the class's table of virtual functions has one home.
QRLAppleEventDestinationAddress::~QRLAppleEventDestinationAddress() = default;
