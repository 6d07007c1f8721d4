// Licence: MIT, see LICENSE.
/// Resources with a status that tells what went wrong, and copies of them in the caller's buffers.
#ifndef QUORVANT_UTIL_RESOURCEUTILS_H
#define QUORVANT_UTIL_RESOURCEUTILS_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>

extern "C" {

/// A resource, in memory, from the current file on or (the call with 1) of the current file alone.
/// The handle is the Resource Manager's; null when there is none, with ResError or resNotFound. A
/// resource that cannot be loaded keeps its empty handle: ResError, else MemError, else memFullErr.
QRL_EXPORT OSErr NFGetResource(ResType type, ResID id, Handle& h);
QRL_EXPORT OSErr NFGet1Resource(ResType type, ResID id, Handle& h);

/// Copies a resource of the current file, as much of it as the buffer holds, and zeroes the rest of
/// the buffer. `resourceSize`, which may be null, gets the resource's own size, 0 on failure.
QRL_EXPORT OSErr NFCopy1Resource(ResType type, ResID id, void* buffer, SInt32 size,
                                 SInt32* resourceSize);

/// Copies a Pascal string of the current file. One that does not fit is cut and is writingPastEnd;
/// of a resource shorter than its length byte says only what there is gets copied, length byte as
/// it stands. On failure the buffer has an empty string, but for a missing resource the fallback,
/// if one is given, and then the result is noErr. A null buffer or a size below 1 gets nothing.
QRL_EXPORT OSErr NFCopy1StringResource(ResType type, ResID id, unsigned char* buffer, SInt32 size,
                                       const unsigned char* fallback);
}

#endif
