// Licence: MIT, see LICENSE.
#include "platform/host/ThreadIdentity.h"

#include <sys/single_threaded.h>
#include <unistd.h>

namespace platform::host {

bool onFirstThread() { return gettid() == getpid(); }

bool isOnlyThread() { return __libc_single_threaded != 0; }

}  // namespace platform::host
