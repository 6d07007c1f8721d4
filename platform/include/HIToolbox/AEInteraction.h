/* Licence: MIT, see LICENSE. */
/*
 * Apple events between the event queue and their handlers, and a server's interaction with its
 * user. Main thread.
 */
#ifndef HITOOLBOX_AEINTERACTION_H
#define HITOOLBOX_AEINTERACTION_H

#include <AE/AppleEvents.h>
#include <CarbonCore/ConditionalMacros.h>
#include <CarbonCore/MacTypes.h>
#include <HIToolbox/Events.h>
#include <HIToolbox/Notification.h>

/* Whose Apple events a server may interact with the user for. */
typedef UInt8 AEInteractAllowed;
enum {
  kAEInteractWithSelf = 0,  /* those that it sends to itself */
  kAEInteractWithLocal = 1, /* those of processes of this machine; the default */
  kAEInteractWithAll = 2
};

EXTERN_API_BEGIN

/*
 * Handles the high-level event that EventAvail, WaitNextEvent or an idle procedure described: the
 * oldest Apple event with the record's class and ID is taken out of the queue and given to its
 * handler, and the reply is sent if the sender wants one ("errn" errAEEventNotHandled where there
 * is no handler). Returns the handler's result. paramErr for null or another kind of event;
 * errAENotAppleEvent when no such event waits, errAECorruptData when its message is damaged.
 */
OSErr AEProcessAppleEvent(const EventRecord* event);

/* paramErr for a level that does not exist. */
OSErr AESetInteractionAllowed(AEInteractAllowed level);

/* paramErr for null. */
OSErr AEGetInteractionAllowed(AEInteractAllowed* level);

/*
 * Asks for the user's attention before a handler shows something. errAENoUserInteraction when the
 * level of AESetInteractionAllowed or the client's choice forbids it. When no other process of the
 * session interacts with the user it is this one's turn: noErr at once. Otherwise waits for the
 * turn for `timeOutInTicks` (kNoTimeOut: as long as it takes; kAEDefaultTimeout: a minute), with
 * the notice posted, if one is given; errAETimeout when the time is over. While it waits the run
 * loop runs in its default mode, and the idle procedure, if there is one, is called with each
 * high-level event of the queue, which it passes to AEProcessAppleEvent, and with null events
 * otherwise: at the start, whenever the run loop has served something, and when the time that it
 * asked for has passed. When it returns true the wait is over: errAEWaitCanceled. Without an idle
 * procedure the events stay in the queue.
 *
 * The turn ends with the alert that follows, or once the event loop has nothing to do.
 */
OSErr AEInteractWithUser(SInt32 timeOutInTicks, NMRecPtr notification, AEIdleUPP idleProcedure);

EXTERN_API_END

#endif
