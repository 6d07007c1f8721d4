// Licence: MIT, see LICENSE.
// Repeats a system call that a signal interrupted. For the sources of this folder only.
#ifndef PLATFORM_HOST_RETRY_H
#define PLATFORM_HOST_RETRY_H

#include <cerrno>

namespace platform::host {

template <typename Call>
auto retry(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

}  // namespace platform::host

#endif
