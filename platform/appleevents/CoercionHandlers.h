// Licence: MIT, see LICENSE.
// The coercion handlers that the program has installed.
#ifndef PLATFORM_APPLEEVENTS_COERCIONHANDLERS_H
#define PLATFORM_APPLEEVENTS_COERCIONHANDLERS_H

#include "platform/appleevents/Conversions.h"

namespace platform::appleevents {

/// Lets the handlers that match try, one after the other. errAECoercionFail if none of them can.
/// `desc` is the data as a descriptor, or null where there is none yet. Stores the null descriptor
/// on failure.
OSErr coerceByHandler(const Source& from, const AEDesc* desc, DescType toType, AEDesc* result);

}  // namespace platform::appleevents

#endif
