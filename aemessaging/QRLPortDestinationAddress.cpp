// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/QRLPortDestinationAddress.h>

#include <cstring>

QRLPortDestinationAddress::QRLPortDestinationAddress()
    : port(MACH_PORT_NULL), name{}, located(false) {}

QRLPortDestinationAddress::QRLPortDestinationAddress(const QRLPortDestinationAddress& other)
    : QRLPortDestinationAddress() {
  *this = other;
}

QRLPortDestinationAddress::~QRLPortDestinationAddress() = default;

SInt32 QRLPortDestinationAddress::initialize() {
  if (located) return 0;
  const SInt32 err = locatePort();
  located = err == 0;
  return err;
}

OSErr QRLPortDestinationAddress::getDestinationAddress(AEDesc* out) {
  if (!located) return -1;
  return AECreateDesc(typeMachPort, &port, sizeof port, out);
}

QRLPortDestinationAddress& QRLPortDestinationAddress::operator=(
    const QRLPortDestinationAddress& other) {
  if (this == &other) return *this;
  located = other.located;
  port = other.port;
  const std::size_t length = strnlen(other.name, sizeof name - 1);
  std::memcpy(name, other.name, length);
  name[length] = '\0';
  return *this;
}

SInt32 QRLPortDestinationAddress::locatePort() {
  const std::size_t length = strnlen(name, sizeof name);
  if (length == 0 || length == sizeof name) return -1;
  mach_port_t bootstrap = MACH_PORT_NULL;
  const kern_return_t result =
      task_get_special_port(mach_task_self(), TASK_BOOTSTRAP_PORT, &bootstrap);
  if (result != KERN_SUCCESS) return result;
  return bootstrap_look_up(bootstrap, name, &port);
}
