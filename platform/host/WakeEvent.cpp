// Licence: MIT, see LICENSE.
#include "platform/host/WakeEvent.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

#include "platform/host/Retry.h"

namespace platform::host {

Result<WakeEvent> WakeEvent::make() {
  Descriptor event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!event) return lastError();
  return WakeEvent(std::move(event));
}

// Fails only when the counter is full or empty, and then the event already is as wanted.
void WakeEvent::raise() const {
  const std::uint64_t one = 1;
  static_cast<void>(retry([&] { return write(event.number(), &one, sizeof one); }));
}

void WakeEvent::drain() const {
  std::uint64_t count = 0;
  static_cast<void>(retry([&] { return read(event.number(), &count, sizeof count); }));
}

}  // namespace platform::host
