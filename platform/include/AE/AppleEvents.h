/* Licence: MIT, see LICENSE. */
/* Apple events between processes: handlers, and sending. */
#ifndef AE_APPLEEVENTS_H
#define AE_APPLEEVENTS_H

#include <AE/AEDataModel.h>

struct EventRecord;
struct OpaqueRgnHandle;

/* Events that every process knows, and the class that they have. */
enum {
  kCoreEventClass = 'aevt',
  kAEOpenApplication = 'oapp',
  kAEQuitApplication = 'quit',
  kAEAnswer = 'ansr' /* a reply */
};

enum {
  keyDirectObject = '----',
  keyErrorNumber = 'errn', /* in a reply: typeSInt32, absent or 0 when all went well */
  keyErrorString = 'errs'
};

typedef SInt32 AESendMode;
enum {
  kAENoReply = 1,          /* none is wanted */
  kAEQueueReply = 2,       /* it arrives later, as an event kAEAnswer */
  kAEWaitReply = 3,        /* wait for it */
  kAENeverInteract = 0x10, /* whether the server may interact with the user; none of the three */
  kAECanInteract = 0x20,   /* counts as kAECanInteract */
  kAEAlwaysInteract = 0x30
};

typedef SInt16 AESendPriority;
enum { kAENormalPriority = 0, kAEHighPriority = 1 };

/* Time-outs, in ticks of a sixtieth of a second. */
enum { kAEDefaultTimeout = -1 /* a minute */, kNoTimeOut = -2 };

typedef SInt16 AEEventSource;
enum {
  kAEUnknownSource = 0,
  kAEDirectCall = 1,   /* AESend to {0, kCurrentProcess} */
  kAESameProcess = 2,  /* another way to this process itself */
  kAELocalProcess = 3, /* from another process of this machine */
  kAERemoteProcess = 4
};

/* Handles an event; puts what it has to say, with keyErrorNumber if it likes, into the reply, which
   is the null descriptor when none is wanted. Owns neither. A result that is not noErr becomes the
   reply's keyErrorNumber unless the handler put one. */
typedef OSErr (*AEEventHandlerProcPtr)(const AppleEvent* event, AppleEvent* reply, SInt32 refcon);
typedef AEEventHandlerProcPtr AEEventHandlerUPP;

/* Called with null events while AESend waits; true ends the wait. `sleepTime`, in ticks, says when
   to call again. */
typedef Boolean (*AEIdleProcPtr)(struct EventRecord* event, SInt32* sleepTime,
                                 struct OpaqueRgnHandle** mouseRegion);
typedef AEIdleProcPtr AEIdleUPP;

/* Chooses the events that AESend serves while it waits. */
typedef Boolean (*AEFilterProcPtr)(struct EventRecord* event, SInt32 returnID, SInt32 transactionID,
                                   const AEAddressDesc* sender);
typedef AEFilterProcPtr AEFilterUPP;

EXTERN_API_BEGIN

AEEventHandlerUPP NewAEEventHandlerUPP(AEEventHandlerProcPtr handler);
void DisposeAEEventHandlerUPP(AEEventHandlerUPP handler);
OSErr InvokeAEEventHandlerUPP(const AppleEvent* event, AppleEvent* reply, SInt32 refcon,
                              AEEventHandlerUPP handler);
AEIdleUPP NewAEIdleUPP(AEIdleProcPtr idle);
void DisposeAEIdleUPP(AEIdleUPP idle);
Boolean InvokeAEIdleUPP(struct EventRecord* event, SInt32* sleepTime,
                        struct OpaqueRgnHandle** mouseRegion, AEIdleUPP idle);
AEFilterUPP NewAEFilterUPP(AEFilterProcPtr filter);
void DisposeAEFilterUPP(AEFilterUPP filter);

/*
 * The process's handlers, in two tables: the application's, and behind it the system's. Class and
 * ID may be typeWildCard, which matches any. Of the handlers that match, the application's go
 * first, then a class named outranks an ID named, and both outrank none. Any thread.
 */

/* Takes the place of a handler for the same class and ID. paramErr for a null handler. */
OSErr AEInstallEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                            SInt32 refcon, Boolean isSystemHandler);
/* A handler given must be the one installed, null is any: else errAEHandlerNotFound. */
OSErr AERemoveEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                           Boolean isSystemHandler);
/* Gives what was installed for exactly this class and ID: else errAEHandlerNotFound. */
OSErr AEGetEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP* handler,
                        SInt32* refcon, Boolean isSystemHandler);

/*
 * Sends an event to the process or the port of its address, and waits for the reply if the mode
 * says so; the reply is otherwise the null descriptor and may be a null pointer. Sending and
 * waiting together take no longer than the time-out: errAETimeout, and a reply that comes later is
 * dropped. With an idle procedure the wait can be ended: errAEWaitCanceled. An event to {0,
 * kCurrentProcess} is handled before the call returns. A reply with keyErrorNumber is a success of
 * this call. Sending writes the mode, the time-out and the sender into the event's attributes; the
 * event may be sent again, but not by two threads at once.
 *
 * procNotFound when there is no such process; connectionInvalid when it or the port is gone, or
 * goes before it has answered; errAEUnknownAddressType for another address or none;
 * errAEUnknownSendMode. errAEEventNotHandled for an event to {0, kCurrentProcess} without a handler
 * and without a reply. The priority makes no difference; the filter is never called, because no
 * other event is served meanwhile.
 */
OSErr AESend(const AppleEvent* event, AppleEvent* reply, AESendMode sendMode,
             AESendPriority priority, SInt32 timeOutInTicks, AEIdleUPP idle, AEFilterUPP filter);

EXTERN_API_END

#endif
