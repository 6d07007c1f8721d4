/* Licence: MIT, see LICENSE. */
/*
 * The process's event queue. The only events of a process without windows are high-level events:
 * the Apple events that other processes send to its serial number, in the order of their arrival.
 * For the main thread, where not said otherwise.
 */
#ifndef HITOOLBOX_EVENTS_H
#define HITOOLBOX_EVENTS_H

#include <CarbonCore/ConditionalMacros.h>
#include <CarbonCore/MacTypes.h>
#include <QD/Quickdraw.h>

typedef UInt16 EventKind;
typedef UInt16 EventMask;
typedef UInt16 EventModifiers;

enum { nullEvent = 0, kHighLevelEvent = 23 };

enum { highLevelEventMask = 0x0400, everyEvent = 0xFFFF };

/* The same 16 bytes everywhere. */
#pragma pack(push, 2)
typedef struct EventRecord {
  EventKind what;
  UInt32 message; /* of a high-level event: its class */
  UInt32 when;    /* the tick count of its arrival */
  Point where;    /* of a high-level event: its ID, the high half in v and the low half in h */
  EventModifiers modifiers;
} EventRecord;
#pragma pack(pop)

EXTERN_API_BEGIN

/*
 * Tells whether an event of the mask waits, without taking it: the oldest is described in the
 * record, or a null event if there is none. An empty mask finds nothing. Does not wait and runs no
 * call-back. A process that calls this has a serial number and can be sent high-level events.
 */
Boolean EventAvail(EventMask mask, EventRecord* event);

/*
 * Takes the oldest event of the mask out of the queue, waiting up to `sleep` ticks for one while
 * the run loop runs in its default mode; false and a null event if none came. A high-level event
 * that is taken goes to AEProcessAppleEvent before the next call of this, or is lost. The mouse
 * does not leave the region, which may be null.
 */
Boolean WaitNextEvent(EventMask mask, EventRecord* event, UInt32 sleep, RgnHandle mouseRegion);

/* Sixtieths of a second since the machine started. Any thread. */
UInt32 TickCount(void);

EXTERN_API_END

#endif
