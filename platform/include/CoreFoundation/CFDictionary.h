/* Licence: MIT, see LICENSE. */
/*
 * Values by key, in no order. Keys and values are any pointer-sized values; the call-backs say how
 * they are held, compared and described.
 *
 * Immutable dictionaries may be used on several threads at once, a mutable one by one thread at a
 * time. An argument that is null, of another type or (where something is to be changed) not mutable
 * gives null or 0, or leaves everything as it is; so does a lack of memory. A dictionary with the
 * key call-backs or value call-backs for objects takes no null key or value.
 */
#ifndef COREFOUNDATION_CFDICTIONARY_H
#define COREFOUNDATION_CFDICTIONARY_H

#include <CoreFoundation/CFBase.h>

typedef const struct __CFDictionary* CFDictionaryRef;
typedef struct __CFDictionary* CFMutableDictionaryRef;

typedef const void* (*CFDictionaryRetainCallBack)(CFAllocatorRef allocator, const void* value);
typedef void (*CFDictionaryReleaseCallBack)(CFAllocatorRef allocator, const void* value);
typedef CFStringRef (*CFDictionaryCopyDescriptionCallBack)(const void* value);
typedef Boolean (*CFDictionaryEqualCallBack)(const void* a, const void* b);
typedef CFHashCode (*CFDictionaryHashCallBack)(const void* value);
typedef void (*CFDictionaryApplierFunction)(const void* key, const void* value, void* context);

/* Version 0. Retain gives the value that is stored. Without a call-back a value is stored as it is,
 * compared and hashed by its address, and described by it. */
typedef struct {
  CFIndex version;
  CFDictionaryRetainCallBack retain;
  CFDictionaryReleaseCallBack release;
  CFDictionaryCopyDescriptionCallBack copyDescription;
  CFDictionaryEqualCallBack equal;
  CFDictionaryHashCallBack hash;
} CFDictionaryKeyCallBacks;

typedef struct {
  CFIndex version;
  CFDictionaryRetainCallBack retain;
  CFDictionaryReleaseCallBack release;
  CFDictionaryCopyDescriptionCallBack copyDescription;
  CFDictionaryEqualCallBack equal;
} CFDictionaryValueCallBacks;

EXTERN_API_BEGIN

/* Keys that are objects; the same for strings that are copied when they become a key; values that
 * are objects. */
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

CFTypeID CFDictionaryGetTypeID(void);

/* The call-backs are copied; null stands for none at all. Of equal keys the first one is taken.
 * Null for a negative count, or arrays that are null though the count is not 0. */
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values,
                                   CFIndex count, const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks);
/* Copies have the call-backs of the original, and retain keys and values once more. */
CFDictionaryRef CFDictionaryCreateCopy(CFAllocatorRef allocator, CFDictionaryRef dictionary);
/* No more than `capacity` entries are taken (0: no limit). A copy needs room for the original. */
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks);
CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity,
                                                     CFDictionaryRef dictionary);

/* Values and keys that these give belong to the dictionary. */
CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary);
CFIndex CFDictionaryGetCountOfKey(CFDictionaryRef dictionary, const void* key);
CFIndex CFDictionaryGetCountOfValue(CFDictionaryRef dictionary, const void* value);
Boolean CFDictionaryContainsKey(CFDictionaryRef dictionary, const void* key);
Boolean CFDictionaryContainsValue(CFDictionaryRef dictionary, const void* value);
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);
/* True if the key is there; *value (may be null) is written only then. */
Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, const void* key,
                                      const void** value);
/* All keys and values, in matching order, into arrays of the count's length; either may be null. */
void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys,
                                  const void** values);
/* Calls once for each entry; the function must not change the dictionary. */
void CFDictionaryApplyFunction(CFDictionaryRef dictionary, CFDictionaryApplierFunction applier,
                               void* context);

/* Add only if the key is not there; replace only if it is; set either way, keeping a key that is
 * there. The new value is retained before the old one is released. */
void CFDictionaryAddValue(CFMutableDictionaryRef dictionary, const void* key, const void* value);
void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key, const void* value);
void CFDictionaryReplaceValue(CFMutableDictionaryRef dictionary, const void* key,
                              const void* value);
void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, const void* key);
void CFDictionaryRemoveAllValues(CFMutableDictionaryRef dictionary);

EXTERN_API_END

#endif
