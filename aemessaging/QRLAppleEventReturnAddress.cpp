// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/QRLAppleEventReturnAddress.h>

QRLAppleEventReturnAddress::QRLAppleEventReturnAddress() : port(MACH_PORT_NULL), allocated(false) {}

QRLAppleEventReturnAddress::~QRLAppleEventReturnAddress() = default;

SInt32 QRLAppleEventReturnAddress::initialize() {
  if (allocated) return 0;
  const kern_return_t result = mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &port);
  allocated = true;
  return result;
}

SInt32 QRLAppleEventReturnAddress::finalize() {
  if (!allocated || port == MACH_PORT_NULL) return 0;
  mach_port_destroy(mach_task_self(), port);
  port = MACH_PORT_NULL;
  allocated = false;
  return 0;
}

SInt32 QRLAppleEventReturnAddress::addReturnAddress(AEDesc& event) {
  if (!allocated || port == MACH_PORT_NULL) return -1;
  return AEPutAttributePtr(&event, keyReplyPortAttr, typeMachPort, &port, sizeof port);
}
