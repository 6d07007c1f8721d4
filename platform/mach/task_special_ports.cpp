// Licence: MIT, see LICENSE.
#include <mach/task_special_ports.h>

#include "platform/mach/NameSpace.h"

kern_return_t task_get_special_port(task_t task, int which, mach_port_t* port) {
  if (task != mach_task_self()) return KERN_INVALID_TASK;
  if (which != TASK_BOOTSTRAP_PORT || port == nullptr) return KERN_INVALID_ARGUMENT;
  *port = platform::mach::kBootstrapPort;
  return KERN_SUCCESS;
}
