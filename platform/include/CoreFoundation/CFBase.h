/* Licence: MIT, see LICENSE. */
/*
 * The base of Core Foundation: types, allocators and the functions that work on every object.
 *
 * Ownership: a reference got from a function with Create or Copy in its name is the caller's to
 * CFRelease; any other belongs to somebody else. Objects may be retained and released on any
 * thread; what else may be done on several threads at once is said with each type.
 */
#ifndef COREFOUNDATION_CFBASE_H
#define COREFOUNDATION_CFBASE_H

#include <CarbonCore/MacTypes.h>

#if __SIZEOF_LONG__ == 4
typedef UInt32 CFTypeID;
typedef UInt32 CFOptionFlags;
typedef UInt32 CFHashCode;
typedef SInt32 CFIndex;
#else
typedef unsigned long CFTypeID;
typedef unsigned long CFOptionFlags;
typedef unsigned long CFHashCode;
typedef signed long CFIndex;
#endif

typedef const void* CFTypeRef;
typedef const struct __CFString* CFStringRef;
typedef struct __CFString* CFMutableStringRef;
typedef const struct __CFAllocator* CFAllocatorRef;

/* Order of two values, as comparators give it. */
typedef enum {
  kCFCompareLessThan = -1,
  kCFCompareEqualTo = 0,
  kCFCompareGreaterThan = 1
} CFComparisonResult;
typedef CFComparisonResult (*CFComparatorFunction)(const void* a, const void* b, void* context);

enum { kCFNotFound = -1 };

typedef struct {
  CFIndex location;
  CFIndex length;
} CFRange;

static inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
  CFRange range;
  range.location = location;
  range.length = length;
  return range;
}

typedef const void* (*CFAllocatorRetainCallBack)(const void* info);
typedef void (*CFAllocatorReleaseCallBack)(const void* info);
typedef CFStringRef (*CFAllocatorCopyDescriptionCallBack)(const void* info);
typedef void* (*CFAllocatorAllocateCallBack)(CFIndex size, CFOptionFlags hint, void* info);
typedef void* (*CFAllocatorReallocateCallBack)(void* block, CFIndex size, CFOptionFlags hint,
                                               void* info);
typedef void (*CFAllocatorDeallocateCallBack)(void* block, void* info);
typedef CFIndex (*CFAllocatorPreferredSizeCallBack)(CFIndex size, CFOptionFlags hint, void* info);

typedef struct {
  CFIndex version; /* 0 */
  void* info;
  CFAllocatorRetainCallBack retain; /* may be null, as every call-back but allocate */
  CFAllocatorReleaseCallBack release;
  CFAllocatorCopyDescriptionCallBack copyDescription;
  CFAllocatorAllocateCallBack allocate;
  CFAllocatorReallocateCallBack reallocate;
  CFAllocatorDeallocateCallBack deallocate;
  CFAllocatorPreferredSizeCallBack preferredSize;
} CFAllocatorContext;

EXTERN_API_BEGIN

/* Null, which stands for the thread's default allocator wherever an allocator is asked for. */
extern const CFAllocatorRef kCFAllocatorDefault;
extern const CFAllocatorRef kCFAllocatorSystemDefault;
extern const CFAllocatorRef kCFAllocatorMalloc;
/* Allocates nothing and frees nothing: for memory that somebody else owns. */
extern const CFAllocatorRef kCFAllocatorNull;
/* For CFAllocatorCreate alone: the context's own functions allocate the allocator. */
extern const CFAllocatorRef kCFAllocatorUseContext;

CFTypeID CFAllocatorGetTypeID(void);
CFAllocatorRef CFAllocatorCreate(CFAllocatorRef allocator, CFAllocatorContext* context);
void* CFAllocatorAllocate(CFAllocatorRef allocator, CFIndex size, CFOptionFlags hint);
void* CFAllocatorReallocate(CFAllocatorRef allocator, void* block, CFIndex size,
                            CFOptionFlags hint);
void CFAllocatorDeallocate(CFAllocatorRef allocator, void* block);
CFIndex CFAllocatorGetPreferredSizeForSize(CFAllocatorRef allocator, CFIndex size,
                                           CFOptionFlags hint);
void CFAllocatorGetContext(CFAllocatorRef allocator, CFAllocatorContext* context);
/* The calling thread's default; the allocator set is retained and stays for good. */
CFAllocatorRef CFAllocatorGetDefault(void);
void CFAllocatorSetDefault(CFAllocatorRef allocator);

CFTypeID CFGetTypeID(CFTypeRef object);
CFStringRef CFCopyTypeIDDescription(CFTypeID type);
CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);
CFIndex CFGetRetainCount(CFTypeRef object);
Boolean CFEqual(CFTypeRef a, CFTypeRef b);
CFHashCode CFHash(CFTypeRef object);
CFStringRef CFCopyDescription(CFTypeRef object);
CFAllocatorRef CFGetAllocator(CFTypeRef object);

EXTERN_API_END

#endif
