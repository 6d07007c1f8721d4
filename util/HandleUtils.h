// Licence: MIT, see LICENSE.
/// Relocatable blocks whose every operation returns its status, instead of leaving it to MemError.
///
/// Any thread, one block on one thread at a time. Statuses: noErr; memFullErr (no memory, or a
/// negative size); nilHandleErr (an empty handle where a block is needed, and where a block is to
/// be sized also a null handle); else the Memory Manager's own, as memWZErr for what is no handle.
/// Data that is copied into a block must not lie in that block unless it is said to be allowed.
#ifndef QUORVANT_UTIL_HANDLEUTILS_H
#define QUORVANT_UTIL_HANDLEUTILS_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>

/// Why an allocation gave nothing: MemError, or memFullErr when that is 0.
QRL_EXPORT OSErr NFAllocFailureStatus();

// ---- Creation. The handle is the caller's, to be disposed of by NFDisposeHandle; null on failure.

QRL_EXPORT OSErr NFNewHandle(char**& h, SInt32 size);
/// Zeroed.
QRL_EXPORT OSErr NFNewHandleClear(char**& h, SInt32 size);
/// With a copy of the data. paramErr for null data of a size above 0.
QRL_EXPORT OSErr NFNewHandleFromPtr(char**& h, const void* data, SInt32 size);
/// There is no separate system heap: the same as the forms without Sys.
QRL_EXPORT OSErr NFNewHandleSys(char**& h, SInt32 size);
QRL_EXPORT OSErr NFNewHandleSysClear(char**& h, SInt32 size);
/// In temporary memory.
QRL_EXPORT OSErr NFNewHandleTemp(char**& h, SInt32 size);
QRL_EXPORT OSErr NFNewHandleTempClear(char**& h, SInt32 size);
QRL_EXPORT OSErr NFNewHandleSysTemp(char**& h, SInt32 size);
QRL_EXPORT OSErr NFNewHandleSysTempClear(char**& h, SInt32 size);

// ---- Size and contents

/// On failure the size is 0.
QRL_EXPORT OSErr NFGetHandleSize(char** h, SInt32& size);
/// Nothing for a null handle; otherwise the variable is null afterwards.
QRL_EXPORT OSErr NFDisposeHandle(char**& h);
/// Keeps the contents up to the smaller size. The handle is unlocked.
QRL_EXPORT OSErr NFSetHandleSize(char** h, SInt32 size);
/// The whole block is zeroed on success.
QRL_EXPORT OSErr NFSetHandleSizeClear(char** h, SInt32 size);
/// Frees the block and keeps the handle.
QRL_EXPORT OSErr NFEmptyHandle(char** h);
/// Gives a handle, empty or not, a block of that size, unlocked and not purgeable. The contents are
/// undefined. On failure the handle keeps the block that it had.
QRL_EXPORT OSErr NFReallocHandle(char** h, SInt32 size);
QRL_EXPORT OSErr NFReallocHandleClear(char** h, SInt32 size);
/// The block becomes a copy of a Pascal string, length byte included; of an empty one for null.
QRL_EXPORT OSErr NFSetStringHandle(unsigned char** h, const unsigned char* pstr);
/// The block becomes a copy of the data. paramErr for null data of a size above 0.
QRL_EXPORT OSErr NFPtrToHandle(char** h, const void* data, SInt32 size);
/// Appends the data, which may lie in the block.
QRL_EXPORT OSErr NFPtrAndHand(char** h, const void* data, SInt32 size);

/// The destination's block becomes a copy of the source's; empty if the source is. paramErr for a
/// null handle.
QRL_EXPORT OSErr NFCopyHandle(char** source, char** destination);
/// The same for a destination that may be null: a handle is made then. A null source disposes of
/// the destination; an empty one is nilHandleErr.
QRL_EXPORT OSErr NFCloneHandle(char** source, char**& destination);

// ---- Bytes

/// Copies the source to the end of the destination with the fill byte before it, or as much of the
/// source's end as there is room for. The areas may overlap.
QRL_EXPORT void CopyRightJust(const void* source, SInt32 sourceLength, void* destination,
                              SInt32 destinationLength, char fill);

#endif
