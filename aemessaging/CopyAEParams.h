// Licence: MIT, see LICENSE.
/// Copies of parameters whose size is not known beforehand, in memory of the caller's choice.
#ifndef QUORVANT_AEMESSAGING_COPYAEPARAMS_H
#define QUORVANT_AEMESSAGING_COPYAEPARAMS_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>

/// Makes a block of so many bytes, at least 1, for the caller of the call that it is given to; null
/// when it cannot. Null in its place stands for NewPtr.
typedef char* (*AEPtrAllocator)(SInt32 size);

/// Stores a block of `size` bytes, or of 1 for less, in `block`. The caller frees it with the
/// allocator's counterpart (DisposePtr for none). memFullErr, and null, when there is no memory.
QRL_EXPORT OSErr CallAEPtrAllocator(AEPtrAllocator allocator, void*& block, SInt32 size);

/// Copies a parameter into a block of the allocator's. It is coerced to `desiredType` unless that
/// is its type already, typeWildCard or typeBest; a caller who does not ask for the actual type
/// gets errAECoercionFail for what had to be coerced, whatever else befell.
///
/// Whatever the result, `data` is the block that was made, the caller's to free, or null;
/// `actualType`, if given, is the type as which the parameter is stored, and `actualSize`, if
/// given, the size of the copy, as far as they became known, else 0. The result is that of the
/// first step that failed.
QRL_EXPORT OSErr AECopyParamData(const AppleEvent& event, AEKeyword keyword, DescType desiredType,
                                 void*& data, SInt32* actualSize, DescType* actualType,
                                 AEPtrAllocator allocator);

/// The same into a handle of the caller's, which gets the size of the copy; it must not be locked
/// by its owner. On failure it is empty: its size is 0. nilHandleErr for a null handle.
QRL_EXPORT OSErr AECopyParamDataToHandle(const AppleEvent& event, AEKeyword keyword,
                                         DescType desiredType, Handle handle, DescType* actualType);

#endif
