/* Licence: MIT, see LICENSE. */
#ifndef MACH_TASK_SPECIAL_PORTS_H
#define MACH_TASK_SPECIAL_PORTS_H

#include <CarbonCore/ConditionalMacros.h>
#include <mach/kern_return.h>
#include <mach/mach_init.h>

#define TASK_BOOTSTRAP_PORT 4

EXTERN_API_BEGIN

/*
 * Gives a port that the kernel keeps for a task. Only this process's own task and
 * TASK_BOOTSTRAP_PORT exist; any other task is KERN_INVALID_TASK, any other port
 * KERN_INVALID_ARGUMENT. The bootstrap port's name stays the same for the life of the process and
 * is not the caller's to destroy.
 */
kern_return_t task_get_special_port(task_t task, int which, mach_port_t* port);

EXTERN_API_END

#endif
