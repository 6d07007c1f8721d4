// Licence: MIT, see LICENSE.
#include "platform/host/ProcessIdentity.h"

#include <unistd.h>

namespace platform::host {

int parentProcess() { return getppid(); }

}  // namespace platform::host
