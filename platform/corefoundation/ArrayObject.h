// Licence: MIT, see LICENSE.
// What a CFArrayRef points to. Values are retained before others are released, and the array is
// whole again when a release call-back runs.
#ifndef PLATFORM_COREFOUNDATION_ARRAYOBJECT_H
#define PLATFORM_COREFOUNDATION_ARRAYOBJECT_H

#include <CoreFoundation/CFArray.h>

#include "platform/corefoundation/CFRuntime.h"
#include "platform/corefoundation/GrowingBuffer.h"

namespace platform::corefoundation {

class Array final : public Object {
 public:
  enum class Kind { kImmutable, kMutable };

  static CFTypeID type() {
    static const CFTypeID id = registerType("CFArray");
    return id;
  }

  /// A limit of 0 is none.
  Array(Kind kind, const CFArrayCallBacks& callBackFunctions, CFIndex limit)
      : callBacks(callBackFunctions), maximumCount(limit), changes(kind == Kind::kMutable) {}
  ~Array() override;

  CFTypeID typeID() const override { return type(); }
  bool equals(const Object& other) const override;
  CFHashCode hash() const override { return static_cast<CFHashCode>(count()); }
  CFStringRef copyDescription() const override;

  bool isMutable() const { return changes; }
  CFIndex count() const { return values.size(); }
  const void* at(CFIndex index) const { return values.data()[index]; }
  const void* const* data() const { return values.data(); }
  bool isEqual(CFIndex index, const void* value) const;

  // Each does all or, if values are not taken, do not fit or there is no memory, nothing.
  bool append(const void* const* added, CFIndex addedCount);
  bool insert(CFIndex index, const void* value);
  void set(CFIndex index, const void* value);
  void remove(CFIndex index);
  void replace(CFRange range, const void* const* added, CFIndex addedCount);
  void removeAll();

  void exchange(CFIndex index1, CFIndex index2) {
    std::swap(values.data()[index1], values.data()[index2]);
  }
  void sort(CFRange range, CFComparatorFunction comparator, void* context);

  const CFArrayCallBacks callBacks;

 private:
  using Values = GrowingBuffer<const void*>;

  bool fits(CFIndex added) const { return maximumCount == 0 || added <= maximumCount - count(); }
  // Retains values of a buffer from an index on; undone if one is not taken.
  bool keepFrom(Values& buffer, CFIndex first, CFIndex number);
  void releaseValues(const void* const* first, CFIndex number);

  const CFIndex maximumCount;
  const bool changes;
  Values values;
};

}  // namespace platform::corefoundation

#endif
