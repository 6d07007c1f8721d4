// Licence: MIT, see LICENSE.
// The conversions that the coercion table consists of. Each makes data of `toType`, a type of the
// family that it is in the table for, or answers errAECoercionFail, memFullErr or errAECorruptData.
#ifndef PLATFORM_APPLEEVENTS_CONVERSIONS_H
#define PLATFORM_APPLEEVENTS_CONVERSIONS_H

#include "platform/appleevents/Storage.h"

namespace platform::appleevents {

/// A value in the host's order.
struct Source {
  DescType type;
  Bytes data;
};

// Values, in ValueConversions.cpp. "Truth" is a Boolean in any of its three types.
OSErr numberToNumber(const Source& from, DescType toType, AEDesc* result);
OSErr numberToText(const Source& from, DescType toType, AEDesc* result);
OSErr numberToTruth(const Source& from, DescType toType, AEDesc* result);
OSErr textToNumber(const Source& from, DescType toType, AEDesc* result);
OSErr textToTruth(const Source& from, DescType toType, AEDesc* result);
OSErr textToCode(const Source& from, DescType toType, AEDesc* result);
OSErr truthToNumber(const Source& from, DescType toType, AEDesc* result);
OSErr truthToTruth(const Source& from, DescType toType, AEDesc* result);
OSErr truthToText(const Source& from, DescType toType, AEDesc* result);
OSErr truthToCode(const Source& from, DescType toType, AEDesc* result);
OSErr codeToCode(const Source& from, DescType toType, AEDesc* result);
OSErr codeToText(const Source& from, DescType toType, AEDesc* result);
OSErr codeToTruth(const Source& from, DescType toType, AEDesc* result);

// Texts, in TextConversions.cpp.
bool isText(DescType type);
OSErr textToText(const Source& from, DescType toType, AEDesc* result);

// Processes, in ProcessConversions.cpp: their serial numbers, IDs and signatures.
OSErr processToProcess(const Source& from, DescType toType, AEDesc* result);
OSErr processToCode(const Source& from, DescType toType, AEDesc* result);
OSErr codeToProcess(const Source& from, DescType toType, AEDesc* result);

// Lists, records and events, in ContainerConversions.cpp.
OSErr anyToList(const Source& from, DescType toType, AEDesc* result);
OSErr listToAny(const Source& from, DescType toType, AEDesc* result);
OSErr eventToRecord(const Source& from, DescType toType, AEDesc* result);

}  // namespace platform::appleevents

#endif
