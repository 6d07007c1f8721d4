/* Licence: MIT, see LICENSE. */
#ifndef MACH_MACH_INIT_H
#define MACH_MACH_INIT_H

#include <CarbonCore/ConditionalMacros.h>
#include <mach/port.h>

typedef mach_port_t task_t;

EXTERN_API_BEGIN

/* This process, as the argument of the calls that work on a task's ports. */
mach_port_t mach_task_self(void);

EXTERN_API_END

#endif
