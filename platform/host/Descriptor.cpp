// Licence: MIT, see LICENSE.
#include "platform/host/Descriptor.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

namespace platform::host {

// Never retried: the kernel has released the number even where close() reports an interruption.
void Descriptor::reset() {
  const int number = std::exchange(fd, -1);
  if (number >= 0) close(number);
}

std::size_t descriptorLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) == -1) return 0;
  constexpr rlim_t kMost = std::numeric_limits<int>::max();
  return static_cast<std::size_t>(std::min(limit.rlim_cur, kMost));
}

}  // namespace platform::host
