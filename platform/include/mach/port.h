/* Licence: MIT, see LICENSE. */
/*
 * Port names and rights. A name is a task's own number for the rights that it holds to one port:
 * the receive right and any number of send rights to the same port share one name.
 */
#ifndef MACH_PORT_H
#define MACH_PORT_H

typedef unsigned int natural_t;
typedef int integer_t;
typedef natural_t mach_port_name_t;
typedef mach_port_name_t mach_port_t;
typedef natural_t mach_port_right_t;
typedef natural_t mach_port_type_t;
typedef natural_t mach_port_urefs_t;
typedef natural_t mach_msg_type_name_t;

#define MACH_PORT_NULL ((mach_port_t)0)
#define MACH_PORT_DEAD ((mach_port_t)~0u)
#define MACH_PORT_VALID(name) ((name) != MACH_PORT_NULL && (name) != MACH_PORT_DEAD)

#define MACH_PORT_RIGHT_SEND ((mach_port_right_t)0)
#define MACH_PORT_RIGHT_RECEIVE ((mach_port_right_t)1)
#define MACH_PORT_RIGHT_SEND_ONCE ((mach_port_right_t)2)
#define MACH_PORT_RIGHT_PORT_SET ((mach_port_right_t)3)
#define MACH_PORT_RIGHT_DEAD_NAME ((mach_port_right_t)4)

/* The bit of a right in the answer of mach_port_type. */
#define MACH_PORT_TYPE(right) ((mach_port_type_t)(1u << ((right) + 16)))
#define MACH_PORT_TYPE_NONE ((mach_port_type_t)0)
#define MACH_PORT_TYPE_SEND MACH_PORT_TYPE(MACH_PORT_RIGHT_SEND)
#define MACH_PORT_TYPE_RECEIVE MACH_PORT_TYPE(MACH_PORT_RIGHT_RECEIVE)
#define MACH_PORT_TYPE_SEND_ONCE MACH_PORT_TYPE(MACH_PORT_RIGHT_SEND_ONCE)
#define MACH_PORT_TYPE_DEAD_NAME MACH_PORT_TYPE(MACH_PORT_RIGHT_DEAD_NAME)

#endif
