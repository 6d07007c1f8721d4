// Licence: MIT, see LICENSE.
#include "platform/host/Descriptor.h"

#include <unistd.h>

namespace platform::host {

// Never retried: the kernel has released the number even where close() reports an interruption.
void Descriptor::reset() {
  const int number = std::exchange(fd, -1);
  if (number >= 0) close(number);
}

}  // namespace platform::host
