/* Licence: MIT, see LICENSE. */
/*
 * A task's port rights. All calls may be made from any thread. `task` is mach_task_self(); any
 * other is KERN_INVALID_TASK. A name that the task does not hold is KERN_INVALID_NAME.
 */
#ifndef MACH_MACH_PORT_H
#define MACH_MACH_PORT_H

#include <CarbonCore/ConditionalMacros.h>
#include <mach/kern_return.h>
#include <mach/mach_init.h>
#include <mach/port.h>

EXTERN_API_BEGIN

/*
 * Makes a new port and stores the name of its receive right. `right` is MACH_PORT_RIGHT_RECEIVE,
 * else KERN_INVALID_VALUE. KERN_NO_SPACE or KERN_RESOURCE_SHORTAGE when none can be had; `*name` is
 * then untouched.
 */
kern_return_t mach_port_allocate(task_t task, mach_port_right_t right, mach_port_name_t* name);

/*
 * Gives up every right under the name. A port whose receive right is destroyed dies: its names in
 * the bootstrap name space vanish, its queued messages are lost and whoever waits on it or for an
 * answer from it learns so.
 */
kern_return_t mach_port_destroy(task_t task, mach_port_name_t name);

/*
 * Gives up one send or send-once right, or one reference to a dead name. A receive right under the
 * same name stays. KERN_INVALID_RIGHT if the name holds no such right.
 */
kern_return_t mach_port_deallocate(task_t task, mach_port_name_t name);

/* Tells which rights the name holds, as MACH_PORT_TYPE_... bits. */
kern_return_t mach_port_type(task_t task, mach_port_name_t name, mach_port_type_t* type);

/* Tells how many references the name holds to one kind of right; 0 where it holds none. */
kern_return_t mach_port_get_refs(task_t task, mach_port_name_t name, mach_port_right_t right,
                                 mach_port_urefs_t* refs);

EXTERN_API_END

#endif
