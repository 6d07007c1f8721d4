/* Licence: MIT, see LICENSE. */
/*
 * Atomic operations on memory that threads share. Each is one indivisible step with full ordering,
 * and answers the value that was there before.
 */
#ifndef CARBONCORE_DRIVERSYNCHRONIZATION_H
#define CARBONCORE_DRIVERSYNCHRONIZATION_H

#include <CarbonCore/MacTypes.h>

EXTERN_API_BEGIN

/* Stores the new value if the old one is still there, and tells whether it did. */
Boolean CompareAndSwap(UInt32 oldValue, UInt32 newValue, UInt32* address);

SInt32 IncrementAtomic(SInt32* value);
SInt32 DecrementAtomic(SInt32* value);
SInt32 AddAtomic(SInt32 amount, SInt32* value);
UInt32 BitAndAtomic(UInt32 mask, UInt32* value);
UInt32 BitOrAtomic(UInt32 mask, UInt32* value);
UInt32 BitXorAtomic(UInt32 mask, UInt32* value);

/* Of the mask and the amount, the low 16 bits count. */
SInt16 IncrementAtomic16(SInt16* value);
SInt16 DecrementAtomic16(SInt16* value);
SInt16 AddAtomic16(SInt32 amount, SInt16* value);
UInt16 BitAndAtomic16(UInt32 mask, UInt16* value);
UInt16 BitOrAtomic16(UInt32 mask, UInt16* value);
UInt16 BitXorAtomic16(UInt32 mask, UInt16* value);

/* Of the mask and the amount, the low 8 bits count. */
SInt8 IncrementAtomic8(SInt8* value);
SInt8 DecrementAtomic8(SInt8* value);
SInt8 AddAtomic8(SInt32 amount, SInt8* value);
UInt8 BitAndAtomic8(UInt32 mask, UInt8* value);
UInt8 BitOrAtomic8(UInt32 mask, UInt8* value);
UInt8 BitXorAtomic8(UInt32 mask, UInt8* value);

EXTERN_API_END

#endif
