/* Licence: MIT, see LICENSE. */
/*
 * Points in time: seconds since the start of 1 January 2001 in universal time, before it negative.
 * Dates are immutable and may be used on several threads at once.
 */
#ifndef COREFOUNDATION_CFDATE_H
#define COREFOUNDATION_CFDATE_H

#include <CoreFoundation/CFBase.h>

typedef double CFTimeInterval; /* seconds */
typedef CFTimeInterval CFAbsoluteTime;
typedef const struct __CFDate* CFDateRef;

EXTERN_API_BEGIN

/* From 1 January 1970 and 1 January 1904 to 1 January 2001. */
extern const CFTimeInterval kCFAbsoluteTimeIntervalSince1970;
extern const CFTimeInterval kCFAbsoluteTimeIntervalSince1904;

/* Now by the wall clock, which may be set back. */
CFAbsoluteTime CFAbsoluteTimeGetCurrent(void);

CFTypeID CFDateGetTypeID(void);
/* Null if there is no memory. */
CFDateRef CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime at);
/* 0 for what is not a date. */
CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef date);
/* How long `date` is after `other`: negative if it is before. */
CFTimeInterval CFDateGetTimeIntervalSinceDate(CFDateRef date, CFDateRef other);
/* The context is not used. */
CFComparisonResult CFDateCompare(CFDateRef a, CFDateRef b, void* context);

EXTERN_API_END

#endif
