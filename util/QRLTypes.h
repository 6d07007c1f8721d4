// Licence: MIT, see LICENSE.
#ifndef QUORVANT_UTIL_QRLTYPES_H
#define QUORVANT_UTIL_QRLTYPES_H

#include <CoreFoundation/CoreFoundation.h>

/// A Boolean field: a whole word, so that an object has the same layout for every compiler. 0 is
/// false; we store 1 for true and read any other value as true.
typedef UInt32 Boolean32;

#endif
