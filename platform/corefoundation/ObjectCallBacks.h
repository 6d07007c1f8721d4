// Licence: MIT, see LICENSE.
// How collections hold values through call-backs, and the call-backs for values that are objects.
#ifndef PLATFORM_COREFOUNDATION_OBJECTCALLBACKS_H
#define PLATFORM_COREFOUNDATION_OBJECTCALLBACKS_H

#include <CoreFoundation/CFString.h>

namespace platform::corefoundation {

const void* retainObject(CFAllocatorRef allocator, const void* object);
/// Retains an immutable copy of a string.
const void* copyString(CFAllocatorRef allocator, const void* string);
void releaseObject(CFAllocatorRef allocator, const void* object);

/// Takes a value over as the call-backs say. False if it is not taken: null, or a copy for which
/// there is no memory, where values are objects.
template <typename CallBacks>
bool keepValue(const CallBacks& callBacks, CFAllocatorRef allocator, const void* value,
               const void*& kept) {
  kept = callBacks.retain != nullptr ? callBacks.retain(allocator, value) : value;
  return kept != nullptr || (callBacks.retain != retainObject && callBacks.retain != copyString);
}

template <typename CallBacks>
void releaseValue(const CallBacks& callBacks, CFAllocatorRef allocator, const void* value) {
  if (callBacks.release != nullptr) callBacks.release(allocator, value);
}

template <typename CallBacks>
bool areEqual(const CallBacks& callBacks, const void* a, const void* b) {
  return a == b || (callBacks.equal != nullptr && callBacks.equal(a, b));
}

/// Appends a value's description.
template <typename CallBacks>
void describeValue(const CallBacks& callBacks, const void* value, CFMutableStringRef text) {
  const CFStringRef description =
      callBacks.copyDescription != nullptr ? callBacks.copyDescription(value) : nullptr;
  if (description == nullptr) return CFStringAppendFormat(text, nullptr, CFSTR("<%p>"), value);
  CFStringAppend(text, description);
  CFRelease(description);
}

}  // namespace platform::corefoundation

#endif
