/* Licence: MIT, see LICENSE. */
/*
 * Nonrelocatable blocks (Ptr) and relocatable blocks (Handle, a pointer to the block's master
 * pointer). A relocatable block may move whenever its size changes, unless it is locked; an empty
 * handle is one whose master pointer is null.
 *
 * All calls may be made from any thread, but one block is used by one thread at a time. Every call
 * but MemError and BlockMoveData sets the thread's MemError to its own result:
 *   noErr, memFullErr (no memory, or a negative size), nilHandleErr (an empty handle where a block
 * is needed), memWZErr (not a block of this kind: null, disposed of, or never allocated). Calls
 * that fail change nothing.
 */
#ifndef CARBONCORE_MACMEMORY_H
#define CARBONCORE_MACMEMORY_H

#include <CarbonCore/MacTypes.h>

/* Bits of a handle's state. */
enum { kHandleLockedMask = 0x80, kHandlePurgeableMask = 0x40, kHandleIsResourceMask = 0x20 };

EXTERN_API_BEGIN

/* The result of the calling thread's last Memory Manager call. */
OSErr MemError(void);

/* A block of the caller's, to be disposed of by it; null on failure. A size of 0 is a block too. */
Ptr NewPtr(Size size);
Ptr NewPtrClear(Size size);
void DisposePtr(Ptr pointer);
/* 0 on failure. */
Size GetPtrSize(Ptr pointer);

/* As for pointers. The block is unlocked and unpurgeable. */
Handle NewHandle(Size size);
Handle NewHandleClear(Size size);
/* A handle without a block. */
Handle NewEmptyHandle(void);
/* A handle in temporary memory, which is the same memory on this host. The result is stored as well
   as told by MemError; `result` may be null. */
Handle TempNewHandle(Size size, OSErr* result);
/* Frees block and master pointer, locked or not. A resource that is disposed of counts as not
 * loaded. */
void DisposeHandle(Handle handle);

/* 0 on failure and for an empty handle. */
Size GetHandleSize(Handle handle);
/* Keeps the contents up to the smaller size. A locked block never moves: memFullErr where it would
   have to. */
void SetHandleSize(Handle handle, Size size);
/* Gives the handle a fresh block of that size, with undefined contents, unlocked and unpurgeable. A
   locked handle is memLockedErr. */
void ReallocateHandle(Handle handle, Size size);
/* Appends bytes, which may lie in the block itself, and answers MemError. A locked block never
   moves; null bytes of a size above 0 are paramErr. */
OSErr PtrAndHand(const void* bytes, Handle handle, Size size);
/* Frees the block and keeps the handle. A locked handle is memPurErr. */
void EmptyHandle(Handle handle);

void HLock(Handle handle);
void HUnlock(Handle handle);
/* Marks the block as one that may be given up when memory is short. This host never runs short of
   it, so that only EmptyHandle does so. */
void HPurge(Handle handle);
void HNoPurge(Handle handle);
/* The state as kHandle... bits, 0 on failure. */
SInt8 HGetState(Handle handle);
/* Sets the locked and the purgeable bit; whether a handle is a resource is the Resource Manager's
   to say. */
void HSetState(Handle handle, SInt8 state);

/* Copies bytes between areas that may overlap. A count below 1 copies nothing. */
void BlockMoveData(const void* source, void* destination, Size count);

EXTERN_API_END

#endif
