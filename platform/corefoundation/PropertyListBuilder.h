// Licence: MIT, see LICENSE.
// Makes the objects of a property list, mutable as far as is asked for. Each function gives null,
// or false, if there is no memory.
#ifndef PLATFORM_COREFOUNDATION_PROPERTYLISTBUILDER_H
#define PLATFORM_COREFOUNDATION_PROPERTYLISTBUILDER_H

#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFPropertyList.h>

#include <string_view>

#include "platform/corefoundation/CFRuntime.h"
#include "platform/corefoundation/StringEncodings.h"

namespace platform::corefoundation {

/// How deeply containers may be nested, whether read or written.
constexpr int kMaximumDepth = 512;
/// What a file of the binary form begins with.
constexpr std::string_view kBinaryHeader = "bplist00";

class PropertyListBuilder final {
 public:
  PropertyListBuilder(CFAllocatorRef owner, CFOptionFlags mutability)
      : allocator(owner),
        changesContainers(mutability == kCFPropertyListMutableContainers ||
                          mutability == kCFPropertyListMutableContainersAndLeaves),
        changesLeaves(mutability == kCFPropertyListMutableContainersAndLeaves) {}

  bool hasMutableContainers() const { return changesContainers; }

  /// Leaves that never change: keys, and what others are made of.
  Held<CFStringRef> text(Bytes bytes, CFStringEncoding encoding) const;
  Held<CFStringRef> text(Units units) const;
  Held<CFDataRef> data(Bytes bytes) const;
  /// The leaf as it is to stand in the list: itself, or one that can be changed.
  Held<CFTypeRef> leaf(Held<CFTypeRef> immutable) const;

  Held<CFTypeRef> integer(SInt64 value) const;
  Held<CFTypeRef> real(Float32 value) const;
  Held<CFTypeRef> real(Float64 value) const;
  Held<CFTypeRef> date(CFAbsoluteTime at) const;
  static Held<CFTypeRef> boolean(bool value);

  Held<CFTypeRef> array() const;
  Held<CFTypeRef> dictionary() const;
  /// To a container that these have made. Of equal keys the last one counts.
  static bool append(const Held<CFTypeRef>& array, const Held<CFTypeRef>& value);
  static bool set(const Held<CFTypeRef>& dictionary, const Held<CFStringRef>& key,
                  const Held<CFTypeRef>& value);

 private:
  CFAllocatorRef allocator;
  bool changesContainers;
  bool changesLeaves;
};

}  // namespace platform::corefoundation

#endif
