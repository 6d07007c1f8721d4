/* Licence: MIT, see LICENSE. */
/*
 * A receive right of this process as an object: valid while the port lives, and a source of
 * messages for run loops. All calls may be made from any thread. A null or foreign reference has no
 * effect, and gives null, MACH_PORT_NULL or false; so does a lack of memory.
 *
 * The context is copied, its info retained by the context's function if there is one. Invalidation
 * releases the info (a call-back that is under way on another thread ending first); an info that
 * was so released is handed out as null from then on.
 */
#ifndef COREFOUNDATION_CFMACHPORT_H
#define COREFOUNDATION_CFMACHPORT_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFRunLoop.h>
#include <mach/port.h>

typedef struct __CFMachPort* CFMachPortRef;

typedef struct {
  CFIndex version; /* 0 */
  void* info;
  const void* (*retain)(const void* info);
  void (*release)(const void* info);
  CFStringRef (*copyDescription)(const void* info);
} CFMachPortContext;

/*
 * Called for each message, on the thread of the run loop that serves the port. `message` starts
 * with a mach_msg_header_t and is destroyed, with what nobody took from it, after the call; `size`
 * are its bytes.
 */
typedef void (*CFMachPortCallBack)(CFMachPortRef port, void* message, CFIndex size, void* info);
/* Called once, on the thread that invalidates the port or destroys its receive right. */
typedef void (*CFMachPortInvalidationCallBack)(CFMachPortRef port, void* info);

EXTERN_API_BEGIN

CFTypeID CFMachPortGetTypeID(void);

/*
 * Makes a port with a receive right of its own, which is destroyed with the object's last reference
 * if it still exists. Null when no port can be had. `*shouldFreeInfo` (may be null) becomes true
 * when the context was not used.
 */
CFMachPortRef CFMachPortCreate(CFAllocatorRef allocator, CFMachPortCallBack callBack,
                               CFMachPortContext* context, Boolean* shouldFreeInfo);

/*
 * Wraps a receive right that stays its owner's. If a valid object for that port exists, it is the
 * result, retained, with the call-back and context that it has: `*shouldFreeInfo` is then true.
 * Null, and true likewise, for a name that is no receive right of ours.
 */
CFMachPortRef CFMachPortCreateWithPort(CFAllocatorRef allocator, mach_port_t port,
                                       CFMachPortCallBack callBack, CFMachPortContext* context,
                                       Boolean* shouldFreeInfo);

/* The port's name, also when it is no longer valid. */
mach_port_t CFMachPortGetPort(CFMachPortRef port);
void CFMachPortGetContext(CFMachPortRef port, CFMachPortContext* context);

CFMachPortInvalidationCallBack CFMachPortGetInvalidationCallBack(CFMachPortRef port);
/* Null for none. On a port that is already invalid the call-back is called at once. */
void CFMachPortSetInvalidationCallBack(CFMachPortRef port, CFMachPortInvalidationCallBack callBack);

/*
 * Ends the receiving of messages: calls the invalidation call-back, releases the info and
 * invalidates the run-loop source. The receive right lives on. Its death has the same effect.
 */
void CFMachPortInvalidate(CFMachPortRef port);
Boolean CFMachPortIsValid(CFMachPortRef port);

/*
 * The source that has run loops serve the port: the same one for all callers, each of whom gets a
 * reference, as long as it is valid; the order is that of the first call. It retains the port. Null
 * for an invalid port.
 */
CFRunLoopSourceRef CFMachPortCreateRunLoopSource(CFAllocatorRef allocator, CFMachPortRef port,
                                                 CFIndex order);

EXTERN_API_END

#endif
