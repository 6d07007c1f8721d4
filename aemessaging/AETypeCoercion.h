// Licence: MIT, see LICENSE.
/// Coercion to a type or to the first of several that can be had, from and to descriptors and
/// blocks.
///
/// typeWildCard and typeBest as the type asked for mean: whatever the data has. Results are
/// descriptors of the caller's, at least initialised: what one holds is disposed of as soon as
/// there is something else to put into it, and kept on failure. A result may be the source. Types
/// that cannot be had are errAECoercionFail. Any thread.
#ifndef QUORVANT_AEMESSAGING_AETYPECOERCION_H
#define QUORVANT_AEMESSAGING_AETYPECOERCION_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>

/// Looks a type up in a list. typeWildCard and typeBest are answered with `wildType` and `bestType`
/// when they are not the first in the list. 0 if the type is not in the list, or there is none.
QRL_EXPORT DescType OSTypeInList(DescType type, const DescType* list, SInt32 count,
                                 DescType wildType, DescType bestType);

/// Forms of text that the data cannot be had as are tried by way of typeChar.
QRL_EXPORT OSErr AECoerceDescToType(const AEDesc& source, DescType toType, AEDesc& result);
/// The source's own type, if it is in the list, is tried first, then those in the list in their
/// order; `wildType` and `bestType` take the place of typeWildCard and typeBest. Returns the result
/// of the last attempt.
QRL_EXPORT OSErr AECoerceDescToTypeList(const AEDesc& source, AEDesc& result, const DescType* list,
                                        SInt32 count, DescType wildType, DescType bestType);

QRL_EXPORT OSErr AECopyPtrToDesc(DescType type, const void* data, SInt32 size, AEDesc& result);
QRL_EXPORT OSErr AECoercePtrToDesc(DescType type, const void* data, SInt32 size, DescType toType,
                                   AEDesc& result);
QRL_EXPORT OSErr AECoercePtrToTypeList(DescType type, const void* data, SInt32 size, AEDesc& result,
                                       const DescType* list, SInt32 count, DescType wildType,
                                       DescType bestType);

/// Copies the data from `offset` on, at most `bufferSize` bytes of it, and returns the count of
/// bytes; a negative offset counts from the end. With a null buffer it only counts. `actualSize`,
/// if given, gets the size of the whole. paramErr for a negative buffer size and an offset outside
/// the data; memFullErr.
QRL_EXPORT SInt32 AECopyDescToPtr(const AEDesc& desc, void* buffer, SInt32 bufferSize,
                                  SInt32* actualSize, SInt32 offset);
/// The same of the data as another type.
QRL_EXPORT SInt32 AECoerceDescToPtr(const AEDesc& desc, void* buffer, SInt32 bufferSize,
                                    DescType toType, SInt32* actualSize, SInt32 offset);
/// The same of a block. When it has the type asked for already, the bytes are moved from data +
/// offset whatever the offset is, 0 is the result where there are none to move, and neither is a
/// negative offset counted from the end nor paramErr given.
QRL_EXPORT SInt32 AECoercePtrToPtr(DescType type, const void* data, SInt32 size, DescType toType,
                                   void* buffer, SInt32 bufferSize, SInt32* actualSize,
                                   SInt32 offset);

#endif
