/* Licence: MIT, see LICENSE. */
/* Pascal strings from C strings and back. */
#ifndef CARBONCORE_TEXTUTILS_H
#define CARBONCORE_TEXTUTILS_H

#include <CarbonCore/MacTypes.h>

EXTERN_API_BEGIN

/* Both take a null source for an empty string, and source and destination may be the same place.
   Any thread. */

/* Cuts what does not fit into 255 characters. */
void c2pstrcpy(Str255 destination, const char* source);
/* The destination has room for the characters and the terminating zero. */
void p2cstrcpy(char* destination, ConstStr255Param source);

EXTERN_API_END

#endif
