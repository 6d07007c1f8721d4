/* Licence: MIT, see LICENSE. */
/*
 * Values in order, counted from 0. Values are any pointer-sized values; the call-backs say how they
 * are held, compared and described.
 *
 * Immutable arrays may be used on several threads at once, a mutable one by one thread at a time.
 * An argument that is null, of another type, out of range or (where something is to be changed) not
 * mutable gives null, 0 or false, or leaves everything as it is; so does a lack of memory. An array
 * with kCFTypeArrayCallBacks takes no null value.
 */
#ifndef COREFOUNDATION_CFARRAY_H
#define COREFOUNDATION_CFARRAY_H

#include <CoreFoundation/CFBase.h>

typedef const struct __CFArray* CFArrayRef;
typedef struct __CFArray* CFMutableArrayRef;

typedef const void* (*CFArrayRetainCallBack)(CFAllocatorRef allocator, const void* value);
typedef void (*CFArrayReleaseCallBack)(CFAllocatorRef allocator, const void* value);
typedef CFStringRef (*CFArrayCopyDescriptionCallBack)(const void* value);
typedef Boolean (*CFArrayEqualCallBack)(const void* a, const void* b);
typedef void (*CFArrayApplierFunction)(const void* value, void* context);

/* Version 0. Retain gives the value that is stored. Without a call-back a value is stored as it is,
 * compared by its address, and described by it. */
typedef struct {
  CFIndex version;
  CFArrayRetainCallBack retain;
  CFArrayReleaseCallBack release;
  CFArrayCopyDescriptionCallBack copyDescription;
  CFArrayEqualCallBack equal;
} CFArrayCallBacks;

EXTERN_API_BEGIN

/* Values that are objects. */
extern const CFArrayCallBacks kCFTypeArrayCallBacks;

CFTypeID CFArrayGetTypeID(void);

/* The call-backs are copied; null stands for none at all. Null for a negative count, or values that
 * are null though the count is not 0. */
CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex count,
                         const CFArrayCallBacks* callBacks);
/* Copies have the call-backs of the original, and retain the values once more. */
CFArrayRef CFArrayCreateCopy(CFAllocatorRef allocator, CFArrayRef array);
/* No more than `capacity` values are taken (0: no limit). A copy needs room for the original. */
CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                       const CFArrayCallBacks* callBacks);
CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity,
                                           CFArrayRef array);

/* Values that these give belong to the array. Ranges must lie within it. */
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
void CFArrayGetValues(CFArrayRef array, CFRange range, const void** values);
CFIndex CFArrayGetCountOfValue(CFArrayRef array, CFRange range, const void* value);
Boolean CFArrayContainsValue(CFArrayRef array, CFRange range, const void* value);
/* The lowest and the highest index of an equal value, or kCFNotFound. */
CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef array, CFRange range, const void* value);
CFIndex CFArrayGetLastIndexOfValue(CFArrayRef array, CFRange range, const void* value);
/* Calls for each value in order; the function must not change the array. */
void CFArrayApplyFunction(CFArrayRef array, CFRange range, CFArrayApplierFunction applier,
                          void* context);

/* The new value is retained before an old one is released. */
void CFArrayAppendValue(CFMutableArrayRef array, const void* value);
/* Every value of a range of another array (or the same one). */
void CFArrayAppendArray(CFMutableArrayRef array, CFArrayRef other, CFRange otherRange);
/* Up to the count, at which it appends. */
void CFArrayInsertValueAtIndex(CFMutableArrayRef array, CFIndex index, const void* value);
/* Up to the count, at which it appends. */
void CFArraySetValueAtIndex(CFMutableArrayRef array, CFIndex index, const void* value);
void CFArrayRemoveValueAtIndex(CFMutableArrayRef array, CFIndex index);
void CFArrayRemoveAllValues(CFMutableArrayRef array);
/* Puts other values, which may be more or fewer, in the place of a range. */
void CFArrayReplaceValues(CFMutableArrayRef array, CFRange range, const void** newValues,
                          CFIndex newCount);
void CFArrayExchangeValuesAtIndices(CFMutableArrayRef array, CFIndex index1, CFIndex index2);
/* Values that compare as equal keep their order. The comparator must not change the array. */
void CFArraySortValues(CFMutableArrayRef array, CFRange range, CFComparatorFunction comparator,
                       void* context);

EXTERN_API_END

#endif
