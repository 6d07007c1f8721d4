// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFString.h>

#include "platform/corefoundation/CFRuntime.h"

using platform::corefoundation::Object;
using platform::corefoundation::objectOf;
using platform::corefoundation::typeName;

CFTypeID CFGetTypeID(CFTypeRef object) {
  return object != nullptr ? objectOf<Object>(object)->typeID() : 0;
}

CFStringRef CFCopyTypeIDDescription(CFTypeID type) {
  return CFStringCreateWithCString(nullptr, typeName(type), kCFStringEncodingASCII);
}

CFTypeRef CFRetain(CFTypeRef object) {
  if (object != nullptr) objectOf<Object>(object)->retain();
  return object;
}

void CFRelease(CFTypeRef object) {
  if (object != nullptr) objectOf<Object>(object)->release();
}

CFIndex CFGetRetainCount(CFTypeRef object) {
  return object != nullptr ? objectOf<Object>(object)->retainCount() : 0;
}

Boolean CFEqual(CFTypeRef a, CFTypeRef b) {
  if (a == b) return true;
  if (a == nullptr || b == nullptr || CFGetTypeID(a) != CFGetTypeID(b)) return false;
  return objectOf<Object>(a)->equals(*objectOf<Object>(b));
}

CFHashCode CFHash(CFTypeRef object) {
  return object != nullptr ? objectOf<Object>(object)->hash() : 0;
}

CFStringRef CFCopyDescription(CFTypeRef object) {
  return object != nullptr ? objectOf<Object>(object)->copyDescription() : nullptr;
}

CFAllocatorRef CFGetAllocator(CFTypeRef object) {
  return object != nullptr ? objectOf<Object>(object)->allocator() : nullptr;
}
