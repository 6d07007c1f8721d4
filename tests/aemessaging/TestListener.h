// Licence: MIT, see LICENSE.
// A listener whose inside a test can look at, and helpers for what surrounds it: rights and names.
#ifndef TESTS_AEMESSAGING_TESTLISTENER_H
#define TESTS_AEMESSAGING_TESTLISTENER_H

#include <quorvant/aemessaging/QRLPortAEMachPortListener.h>

#include <cstddef>
#include <functional>
#include <string>

namespace tests {

/// The name that the listeners of the tests stand under.
inline constexpr char kListenerName[] = "com.quorvant.test.listener.1.1";

class TestListener : public QRLPortAEMachPortListener {
 public:
  using QRLPortAEMachPortListener::callback;
  using QRLPortAEMachPortListener::gBootstrapPort;
  using QRLPortAEMachPortListener::machPort;
  using QRLPortAEMachPortListener::portName;
  using QRLPortAEMachPortListener::refcon;
  using QRLPortAEMachPortListener::registeredPort;
  using QRLPortAEMachPortListener::runLoopSource;
};

/// A dispatch callback that does nothing.
SInt32 ignoreEvent(UInt32 eventClass, UInt32 eventID, const AEDesc* event, AEDesc* reply,
                   void* refcon);

/// The rights that this process holds under a port name, as MACH_PORT_TYPE_... bits.
mach_port_type_t rightsOf(mach_port_t port);
/// The number of send rights under a port name.
mach_port_urefs_t sendRightsOf(mach_port_t port);

/// The port that a name leads to, without keeping the right; MACH_PORT_NULL for none.
mach_port_t portBehind(const char* name);

/// How many files, sockets and the like this process has open.
std::ptrdiff_t openDescriptors();

/// A port of this process that somebody else could have: registered under a name, and destroyed
/// with the object.
class OtherPort final {
 public:
  explicit OtherPort(const char* name = nullptr);
  ~OtherPort();
  OtherPort(const OtherPort&) = delete;
  OtherPort& operator=(const OtherPort&) = delete;
  mach_port_t port = MACH_PORT_NULL;
};

/// Does something on another thread while this one's run loop runs in its default mode. False if
/// that did not end in a minute.
bool whileServing(const std::function<void()>& work);

}  // namespace tests

#endif
