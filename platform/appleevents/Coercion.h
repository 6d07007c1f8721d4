// Licence: MIT, see LICENSE.
// Making descriptors, and which types answer which wishes. AECoerceDesc itself is here too.
#ifndef PLATFORM_APPLEEVENTS_COERCION_H
#define PLATFORM_APPLEEVENTS_COERCION_H

#include "platform/appleevents/Storage.h"

namespace platform::appleevents {

/// Makes a descriptor of data in the host's order; errAECorruptData when it is to be a list, record
/// or event and is none.
OSErr makeDesc(DescType type, Bytes data, AEDesc* result);

/// Whether data of a type is what somebody asks for who asks for `desired`.
inline bool satisfies(DescType type, DescType desired) {
  return type == desired || desired == typeWildCard || desired == typeBest;
}

}  // namespace platform::appleevents

#endif
