/* Licence: MIT, see LICENSE. */
/*
 * The Process Manager: the processes of the user's session that use the Toolbox, under their serial
 * numbers. A process is listed from its first use of the Toolbox until it ends, however it ends,
 * and its number is never given to another while the session lasts. All calls may be made from any
 * thread, and each of them checks this process in.
 */
#ifndef HISERVICES_PROCESSES_H
#define HISERVICES_PROCESSES_H

#include <CarbonCore/ConditionalMacros.h>
#include <CarbonCore/MacTypes.h>
#include <CoreFoundation/CFBase.h>

/* The low words of the serial numbers with a meaning of their own; the high word is 0. */
enum {
  kNoProcess = 0,     /* no process; where GetNextProcess begins and ends */
  kCurrentProcess = 2 /* the calling process */
};

#pragma pack(push, 2)
typedef struct ProcessInfoRec {
  UInt32 processInfoLength;            /* in: bytes of this record */
  StringPtr processName;               /* in: null, or 32 bytes for the name, MacRoman */
  ProcessSerialNumber processNumber;   /* never {0, kCurrentProcess} */
  UInt32 processType;                  /* the file type, 'APPL' */
  OSType processSignature;             /* the creator, '????' where none is stated */
  UInt32 processMode;                  /* 0 */
  Ptr processLocation;                 /* null */
  UInt32 processSize;                  /* 0 */
  UInt32 processFreeMem;               /* 0 */
  ProcessSerialNumber processLauncher; /* who started it, {0, kNoProcess} unless it runs still */
  UInt32 processLaunchDate;            /* the tick count when it started */
  UInt32 processActiveTime;            /* 0 */
  struct FSSpec* processAppSpec;       /* in: null */
} ProcessInfoRec;
#pragma pack(pop)
typedef ProcessInfoRec* ProcessInfoRecPtr;

EXTERN_API_BEGIN

/*
 * Stores the calling process's own serial number. paramErr for null; procNotFound when the
 * session's folder cannot be used.
 */
OSErr GetCurrentProcess(ProcessSerialNumber* psn);

/*
 * Moves a serial number on to the next process in the order of the numbers, from {0, kNoProcess} to
 * the first. Behind the last one procNotFound, and the number becomes {0, kNoProcess}. The process
 * that is moved on from need not run any more. paramErr for null.
 */
OSErr GetNextProcess(ProcessSerialNumber* psn);

/*
 * Fills in the record of a process; {0, kCurrentProcess} is the caller. The three fields marked
 * "in" are the caller's to set before. At least 60 bytes (the record's length where pointers have
 * 4), and never more than processInfoLength says, are read and written. paramErr for a null
 * argument, a shorter length or a processAppSpec that is not null; procNotFound when there is no
 * such process. After an error the record is untouched.
 */
OSErr GetProcessInformation(const ProcessSerialNumber* psn, ProcessInfoRec* info);

/*
 * Tells whether two serial numbers name one process, {0, kCurrentProcess} being the caller's. Both
 * must be running: procNotFound if not. paramErr for null.
 */
OSErr SameProcess(const ProcessSerialNumber* psn1, const ProcessSerialNumber* psn2,
                  Boolean* result);

/* The host's process ID of a process. procNotFound, or paramErr for null. */
OSStatus GetProcessPID(const ProcessSerialNumber* psn, int* pid);

/* The process with a process ID. procNotFound if it has not used the Toolbox; paramErr for null. */
OSStatus GetProcessForPID(int pid, ProcessSerialNumber* psn);

/* A process's name, the caller's to release. procNotFound; paramErr for null; memFullErr. */
OSStatus CopyProcessName(const ProcessSerialNumber* psn, CFStringRef* name);

EXTERN_API_END

#endif
