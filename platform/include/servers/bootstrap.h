/* Licence: MIT, see LICENSE. */
/*
 * The bootstrap name space: names by which processes find each other's ports. A name is at most
 * BOOTSTRAP_MAX_NAME_LEN - 1 bytes; it lives as long as its port, and ends with the process that
 * holds the port, however that ends. Names of the system's own name space are found from every
 * user's. All calls may be made from any thread.
 */
#ifndef SERVERS_BOOTSTRAP_H
#define SERVERS_BOOTSTRAP_H

#include <CarbonCore/ConditionalMacros.h>
#include <mach/kern_return.h>
#include <mach/port.h>

#define BOOTSTRAP_MAX_NAME_LEN 128

typedef char name_t[BOOTSTRAP_MAX_NAME_LEN];
typedef name_t* name_array_t;
typedef int bootstrap_status_t;
typedef bootstrap_status_t* bool_array_t;

#define BOOTSTRAP_SUCCESS 0
#define BOOTSTRAP_NOT_PRIVILEGED 1100
#define BOOTSTRAP_NAME_IN_USE 1101
#define BOOTSTRAP_UNKNOWN_SERVICE 1102
#define BOOTSTRAP_SERVICE_ACTIVE 1103
#define BOOTSTRAP_BAD_COUNT 1104
#define BOOTSTRAP_NO_MEMORY 1105

EXTERN_API_BEGIN

/*
 * Gives a send right to the port registered under the name. Works while the owner is busy. The same
 * live port has the same name in this process at every look-up, and a process that looks up a port
 * of its own gets that port's own name; each success adds one send right. BOOTSTRAP_UNKNOWN_SERVICE
 * for a name that nobody alive holds, with `*port` set to MACH_PORT_NULL.
 */
kern_return_t bootstrap_look_up(mach_port_t bootstrap, const char* name, mach_port_t* port);

/*
 * Registers a port, whose receive right this process must hold, under a name. One caller wins a
 * name; others get BOOTSTRAP_NAME_IN_USE while the winner's port lives. A name that is empty or too
 * long is BOOTSTRAP_BAD_COUNT; a name space that refuses us BOOTSTRAP_NOT_PRIVILEGED; exhausted
 * descriptors, disk or memory BOOTSTRAP_NO_MEMORY. A port may hold several names. MACH_PORT_NULL as
 * the port gives a name of this process up.
 */
kern_return_t bootstrap_register(mach_port_t bootstrap, const char* name, mach_port_t port);

EXTERN_API_END

#endif
