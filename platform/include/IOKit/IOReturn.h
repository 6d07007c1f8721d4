/* Licence: MIT, see LICENSE. */
/* Results of the I/O Kit: bits 31 to 26 name the system, 25 to 14 the subsystem, 13 to 0 the code.
 */
#ifndef IOKIT_IORETURN_H
#define IOKIT_IORETURN_H

#include <mach/kern_return.h>

typedef kern_return_t IOReturn;

#define sys_iokit ((int)(0x38u << 26))
#define sub_iokit_common 0
#define iokit_common_err(code) \
  ((IOReturn)((unsigned)sys_iokit | (unsigned)sub_iokit_common | (code)))

#define kIOReturnSuccess KERN_SUCCESS
#define kIOReturnError iokit_common_err(0x2bcu)
#define kIOReturnNoMemory iokit_common_err(0x2bdu)
#define kIOReturnNoResources iokit_common_err(0x2beu)

#endif
