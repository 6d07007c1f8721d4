// Licence: MIT, see LICENSE.
// The conversions between types of data that every process knows.
#ifndef PLATFORM_APPLEEVENTS_COERCION_H
#define PLATFORM_APPLEEVENTS_COERCION_H

#include "platform/appleevents/Storage.h"

namespace platform::appleevents {

/// Makes data of `toType` of data in the host's order. The data's own type and the types that ask
/// for none always succeed, without memory apart. Stores the null descriptor on failure.
OSErr coerce(DescType type, Bytes data, DescType toType, AEDesc* result);

/// Makes a descriptor of data in the host's order; errAECorruptData when it is to be a list, record
/// or event and is none.
OSErr makeDesc(DescType type, Bytes data, AEDesc* result);

/// Whether data of a type is what somebody asks for who asks for `desired`.
inline bool satisfies(DescType type, DescType desired) {
  return type == desired || desired == typeWildCard || desired == typeBest;
}

}  // namespace platform::appleevents

#endif
