// Licence: MIT, see LICENSE.
#include <mach/mach_init.h>

#include "platform/mach/NameSpace.h"

mach_port_t mach_task_self(void) { return platform::mach::kTaskPort; }
