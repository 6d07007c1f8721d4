/* Licence: MIT, see LICENSE. */
/*
 * Bytes. Immutable data may be used on several threads at once, mutable data by one thread at a
 * time. An argument that is null, of another type, out of range or (where bytes are to be changed)
 * not mutable gives null or 0, or leaves everything as it is; so does a lack of memory.
 */
#ifndef COREFOUNDATION_CFDATA_H
#define COREFOUNDATION_CFDATA_H

#include <CoreFoundation/CFBase.h>

typedef const struct __CFData* CFDataRef;
typedef struct __CFData* CFMutableDataRef;

EXTERN_API_BEGIN

CFTypeID CFDataGetTypeID(void);

/* A copy of the bytes. */
CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);
/*
 * The bytes themselves, given back to the deallocator (null: the default allocator) with the data.
 * With kCFAllocatorNull they stay the caller's and must outlive the data. Where null is returned
 * they stay the caller's too.
 */
CFDataRef CFDataCreateWithBytesNoCopy(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length,
                                      CFAllocatorRef bytesDeallocator);
/* The bytes as they are now: the same object again where that is as good. */
CFDataRef CFDataCreateCopy(CFAllocatorRef allocator, CFDataRef data);
/* Data that holds no more than `capacity` bytes (0: no limit). A copy needs room for the original.
 */
CFMutableDataRef CFDataCreateMutable(CFAllocatorRef allocator, CFIndex capacity);
CFMutableDataRef CFDataCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity,
                                         CFDataRef data);

CFIndex CFDataGetLength(CFDataRef data);
/* Valid until the data changes or goes. Null for mutable data that never held a byte. */
const UInt8* CFDataGetBytePtr(CFDataRef data);
UInt8* CFDataGetMutableBytePtr(CFMutableDataRef data);
void CFDataGetBytes(CFDataRef data, CFRange range, UInt8* buffer);

/* Bytes that are added by these two are 0. */
void CFDataSetLength(CFMutableDataRef data, CFIndex length);
void CFDataIncreaseLength(CFMutableDataRef data, CFIndex extraLength);
void CFDataAppendBytes(CFMutableDataRef data, const UInt8* bytes, CFIndex length);
/* Puts other bytes, which may be more or fewer, in the place of a range. */
void CFDataReplaceBytes(CFMutableDataRef data, CFRange range, const UInt8* newBytes,
                        CFIndex newLength);
void CFDataDeleteBytes(CFMutableDataRef data, CFRange range);

EXTERN_API_END

#endif
