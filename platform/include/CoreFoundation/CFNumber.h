/* Licence: MIT, see LICENSE. */
/*
 * Booleans and numbers. Both are immutable and may be used on several threads at once. Numbers of
 * equal value are equal and have equal hashes, whatever their types. An argument that is null or of
 * another type gives null, 0 or false.
 */
#ifndef COREFOUNDATION_CFNUMBER_H
#define COREFOUNDATION_CFNUMBER_H

#include <CoreFoundation/CFBase.h>

typedef const struct __CFBoolean* CFBooleanRef;
typedef const struct __CFNumber* CFNumberRef;

typedef SInt32 CFNumberType;
enum {
  /* Fixed widths. */
  kCFNumberSInt8Type = 1,
  kCFNumberSInt16Type = 2,
  kCFNumberSInt32Type = 3,
  kCFNumberSInt64Type = 4,
  kCFNumberFloat32Type = 5,
  kCFNumberFloat64Type = 6,
  /* Types of C, as wide as this host has them. */
  kCFNumberCharType = 7,
  kCFNumberShortType = 8,
  kCFNumberIntType = 9,
  kCFNumberLongType = 10,
  kCFNumberLongLongType = 11,
  kCFNumberFloatType = 12,
  kCFNumberDoubleType = 13,
  kCFNumberCFIndexType = 14,
  kCFNumberMaxType = 14
};

EXTERN_API_BEGIN

/* The only two booleans; retaining and releasing them does nothing. */
extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;
CFTypeID CFBooleanGetTypeID(void);
Boolean CFBooleanGetValue(CFBooleanRef boolean);

CFTypeID CFNumberGetTypeID(void);

/* A number of the value found at `value`, which is of the type given. Null for a null pointer, an
 * unknown type or lack of memory. */
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);

/* How the number is stored: the type of fixed width that the one it was made with stands for. */
CFNumberType CFNumberGetType(CFNumberRef number);
CFIndex CFNumberGetByteSize(CFNumberRef number);
Boolean CFNumberIsFloatType(CFNumberRef number);

/*
 * Stores the value as the type asked for. False if that is not exactly the number's value, and the
 * nearest that the type holds is stored: for an integer type what is left without the fraction, the
 * bound of its range for what is beyond it and 0 for not-a-number; for a floating-point type the
 * rounded value. For bad arguments false, and nothing is stored.
 */
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

/* By exact value. Not-a-number equals itself and comes before all others. Null comes first. The
 * context is not used. */
CFComparisonResult CFNumberCompare(CFNumberRef a, CFNumberRef b, void* context);

EXTERN_API_END

#endif
