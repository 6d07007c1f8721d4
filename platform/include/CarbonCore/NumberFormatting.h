/* Licence: MIT, see LICENSE. */
/* Numbers as text. */
#ifndef CARBONCORE_NUMBERFORMATTING_H
#define CARBONCORE_NUMBERFORMATTING_H

#include <CarbonCore/MacTypes.h>

EXTERN_API_BEGIN

/* Writes a number in decimal as a Pascal string: a minus sign if it is negative, no leading zeros,
   11 characters at most. Any thread. */
void NumToString(SInt32 number, Str255 string);

EXTERN_API_END

#endif
