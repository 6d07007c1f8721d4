// Licence: MIT, see LICENSE.
#include "platform/host/ThreadIdentity.h"

#include <unistd.h>

namespace platform::host {

bool onFirstThread() { return gettid() == getpid(); }

}  // namespace platform::host
