// Licence: MIT, see LICENSE.
// Whether bytes from elsewhere are what they claim to be, decided before anything uses them.
#ifndef PLATFORM_APPLEEVENTS_VALIDATION_H
#define PLATFORM_APPLEEVENTS_VALIDATION_H

#include "platform/appleevents/EventFront.h"

namespace platform::appleevents {

/// How deep lists, records and events may lie in each other, the outermost counted.
inline constexpr unsigned kMaxDepth = 64;

/// Whether a block of a type with items is complete: counts and lengths fit, to its last byte, and
/// nothing is nested deeper than `depth`. Any block of a type without items is.
bool isWellFormed(DescType type, Bytes block, unsigned depth = kMaxDepth);

/// An attribute of one type and size.
struct FixedAttribute {
  AEKeyword keyword;
  DescType type;
  std::size_t size;
  bool isRequired;  // every event that travels has it
};

/// The rule for an attribute, or null if it may have any type.
const FixedAttribute* fixedAttribute(AEKeyword keyword);

/// Whether a block is an event that can have travelled: well-formed, with an address and the
/// required attributes, each fixed one once.
bool isMessage(Bytes block, Front front);

/// Sets every port name in a well-formed block to MACH_PORT_NULL. The numbers are another
/// process's: taken for ours they would let a message choose which of our ports we use.
void forgetPorts(DescType type, WritableBytes block, Front front = Front::kUnknown);

}  // namespace platform::appleevents

#endif
