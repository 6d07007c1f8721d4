/* Licence: MIT, see LICENSE. */
/*
 * Notices that a background process posts for the user. Records are shown one after the other, in
 * the order of their installation, and stay installed until the user has dismissed them.
 */
#ifndef HITOOLBOX_NOTIFICATION_H
#define HITOOLBOX_NOTIFICATION_H

#include <CarbonCore/MacTypes.h>
#include <CarbonCore/OSUtils.h>

struct NMRec;
typedef struct NMRec* NMRecPtr;
typedef void (*NMProcPtr)(NMRecPtr record);
typedef NMProcPtr NMUPP;

#pragma pack(push, 2)
typedef struct NMRec {
  QElemPtr qLink; /* the manager's */
  SInt16 qType;   /* nmType */
  SInt16 nmFlags; /* the manager's, like the next two */
  SInt32 nmPrivate;
  SInt16 nmReserved;
  SInt16 nmMark;   /* a mark in a menu, of which this host has none; 0 for none */
  Handle nmIcon;   /* likewise an icon */
  Handle nmSound;  /* null for none, (Handle)-1 for the alert sound */
  StringPtr nmStr; /* the text, null for none */
  NMUPP nmResp;    /* called when the notice is over; null for none, (NMUPP)-1 to only remove it */
  SInt32 nmRefCon; /* the caller's */
} NMRec;
#pragma pack(pop)

EXTERN_API_BEGIN

/*
 * Posts a notice. The text is copied; the record stays the caller's and must live until it is
 * removed or its response was called. When the user has dismissed the notice (at once, where there
 * is no text), the response is called on the main run loop in its default mode, never before this
 * returns. The record then stays installed, without effect; installing it again posts it again. One
 * whose notice is not over is left as it is. nmTypErr when qType is not nmType, memFullErr. May be
 * called on any thread.
 */
OSErr NMInstall(NMRecPtr record);

/*
 * Takes a record out, and its notice down if that is not over. Its response is not called any more,
 * but for one that the main loop is just about to call when this is another thread. nmTypErr when
 * qType is not nmType, qErr when it is not installed. May be called on any thread, and by
 * responses.
 */
OSErr NMRemove(NMRecPtr record);

NMUPP NewNMUPP(NMProcPtr procedure);
void DisposeNMUPP(NMUPP procedure);
void InvokeNMUPP(NMRecPtr record, NMUPP procedure);

EXTERN_API_END

#endif
