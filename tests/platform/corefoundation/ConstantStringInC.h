/* Licence: MIT, see LICENSE. */
/* The framework headers and CFSTR as a C program uses them. */
#ifndef TESTS_PLATFORM_COREFOUNDATION_CONSTANTSTRINGINC_H
#define TESTS_PLATFORM_COREFOUNDATION_CONSTANTSTRINGINC_H

#include <CoreFoundation/CoreFoundation.h>

EXTERN_API_BEGIN

CFStringRef constantStringMadeInC(void);

EXTERN_API_END

#endif
