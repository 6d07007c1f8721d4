/* Licence: MIT, see LICENSE. */
#ifndef MACH_MACH_H
#define MACH_MACH_H

#include <mach/kern_return.h>
#include <mach/mach_init.h>
#include <mach/mach_port.h>
#include <mach/message.h>
#include <mach/port.h>
#include <mach/task_special_ports.h>

#endif
