/* Licence: MIT, see LICENSE. */
/* Apple events as messages between ports. Any thread. */
#ifndef AE_AEMACH_H
#define AE_AEMACH_H

#include <AE/AEDataModel.h>
#include <AE/AppleEvents.h>
#include <mach/message.h>

/* An attribute: the port, typeMachPort, at which the event's sender wants the reply. Of an event
   that has arrived it is MACH_PORT_NULL, as is every port in it but the address. */
enum { keyReplyPortAttr = 'repp' };

EXTERN_API_BEGIN

/*
 * Sends an event as AESend does, but never runs a handler in the calling thread. The reply comes to
 * the event's keyReplyPortAttr if it has one, whose receive right must be this process's (else
 * paramErr); otherwise to a port of the call's own, or with kAEQueueReply to the process's event
 * queue.
 */
OSStatus AESendMessage(const AppleEvent* event, AppleEvent* reply, AESendMode sendMode,
                       SInt32 timeOutInTicks);

/*
 * Makes an event of a message that has arrived at a port, taking the data out of the message, and
 * for a message that can be answered also the reply to fill in and to send with AESendMessage and
 * kAENoReply; it is otherwise the null descriptor. The reply has the event's return and transaction
 * IDs. Disposing of it unsent tells the sender that there will be none, as does a null `reply`.
 * errAECorruptData, with two null descriptors, when the message is not an Apple event.
 */
OSStatus AEDecodeMessage(mach_msg_header_t* message, AppleEvent* event, AppleEvent* reply);

/* Decodes a message, runs the event's handler and sends the reply if one is wanted. Returns the
   handler's result, errAEEventNotHandled where there is none. */
OSStatus AEProcessMessage(mach_msg_header_t* message);

EXTERN_API_END

#endif
