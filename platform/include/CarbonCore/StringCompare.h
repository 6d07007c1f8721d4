/* Licence: MIT, see LICENSE. */
/* Comparison of names. It does not depend on anybody's language: file and resource names that are
   the same here are the same for every user. */
#ifndef CARBONCORE_STRINGCOMPARE_H
#define CARBONCORE_STRINGCOMPARE_H

#include <CarbonCore/MacTypes.h>

EXTERN_API_BEGIN

/*
 * Which of two Pascal strings of MacRoman stands first: -1 if it is the first one, 1 if it is the
 * second one, 0 if they are the same. Any thread.
 *
 * Small letters count as their capitals unless caseSensitive, and letters with diacritical marks as
 * the bare letters unless diacriticalSensitive. Characters stand in the order of their codes, but a
 * letter with a mark stands right behind the bare letter, before the next one, and a ligature or
 * barred letter behind all forms of the letter that it begins with. A string stands before the
 * longer ones that it begins.
 */
SInt16 RelString(ConstStr255Param first, ConstStr255Param second, Boolean caseSensitive,
                 Boolean diacriticalSensitive);

EXTERN_API_END

#endif
