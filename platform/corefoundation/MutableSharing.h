// Licence: MIT, see LICENSE.
// Mutable objects that share what an immutable one holds until they are changed, so that many of
// them cost no more than one.
#ifndef PLATFORM_COREFOUNDATION_MUTABLESHARING_H
#define PLATFORM_COREFOUNDATION_MUTABLESHARING_H

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>

#include "platform/corefoundation/CFRuntime.h"

namespace platform::corefoundation {

/// Of data or a string that is immutable; null if there is no memory.
CFMutableDataRef createMutableSharing(CFAllocatorRef allocator, Held<CFDataRef> data);
CFMutableStringRef createMutableSharing(CFAllocatorRef allocator, Held<CFStringRef> string);

}  // namespace platform::corefoundation

#endif
