// Licence: MIT, see LICENSE.
#include "platform/corefoundation/ObjectCallBacks.h"

namespace platform::corefoundation {

const void* retainObject(CFAllocatorRef, const void* object) { return CFRetain(object); }

const void* copyString(CFAllocatorRef allocator, const void* string) {
  return CFStringCreateCopy(allocator, static_cast<CFStringRef>(string));
}

void releaseObject(CFAllocatorRef, const void* object) { CFRelease(object); }

}  // namespace platform::corefoundation
