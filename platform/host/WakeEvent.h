// Licence: MIT, see LICENSE.
// A flag that a thread can wait for beside its sockets, and that any thread can raise.
#ifndef PLATFORM_HOST_WAKEEVENT_H
#define PLATFORM_HOST_WAKEEVENT_H

#include "platform/host/Descriptor.h"
#include "platform/host/Result.h"

namespace platform::host {

class WakeEvent final {
 public:
  static Result<WakeEvent> make();

  /// Makes descriptor() readable until the next drain(). Raising it twice is once.
  void raise() const;
  void drain() const;
  const Descriptor& descriptor() const { return event; }

 private:
  explicit WakeEvent(Descriptor opened) : event(std::move(opened)) {}
  Descriptor event;
};

}  // namespace platform::host

#endif
