/* Licence: MIT, see LICENSE. */
#ifndef QD_QUICKDRAW_H
#define QD_QUICKDRAW_H

#include <CarbonCore/ConditionalMacros.h>
#include <CarbonCore/MacTypes.h>

typedef struct OpaqueRgnHandle* RgnHandle; /* an area of the screen */

EXTERN_API_BEGIN

/*
 * Gives the cursor the shape of an arrow and shows it. A process without windows has no cursor of
 * its own, so that nothing is to be seen of this.
 */
void InitCursor(void);

EXTERN_API_END

#endif
