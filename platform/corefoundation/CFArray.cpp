// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFArray.h>

#include "platform/corefoundation/ArrayObject.h"
#include "platform/corefoundation/ObjectCallBacks.h"

using namespace platform::corefoundation;

namespace {

Array* arrayOf(CFArrayRef reference) { return checkedObject<Array>(reference); }

Array* arrayWith(CFArrayRef reference, CFRange range) {
  Array* array = arrayOf(reference);
  return array != nullptr && isWithin(range, array->count()) ? array : nullptr;
}

Array* mutableArrayWith(CFMutableArrayRef reference, CFRange range) {
  Array* array = arrayWith(reference, range);
  return array != nullptr && array->isMutable() ? array : nullptr;
}

template <typename Ref>
Ref make(CFAllocatorRef allocator, Array::Kind kind, const CFArrayCallBacks& callBacks,
         CFIndex limit, const void* const* values, CFIndex count) {
  Array* array = create<Array>(allocator, kind, callBacks, limit);
  if (array == nullptr) return nullptr;
  Held made(referenceTo<Ref>(array));
  return array->append(values, count) ? made.take() : nullptr;
}

// Null stands for no call-backs; null is also the answer for ones of an unknown version.
const CFArrayCallBacks* checked(const CFArrayCallBacks* callBacks) {
  static constexpr CFArrayCallBacks kNone = {};
  if (callBacks == nullptr) return &kNone;
  return callBacks->version == 0 ? callBacks : nullptr;
}

}  // namespace

const CFArrayCallBacks kCFTypeArrayCallBacks = {0, retainObject, releaseObject, CFCopyDescription,
                                                CFEqual};

CFTypeID CFArrayGetTypeID(void) { return Array::type(); }

CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex count,
                         const CFArrayCallBacks* callBacks) {
  const CFArrayCallBacks* known = checked(callBacks);
  if (known == nullptr || count < 0 || (values == nullptr && count > 0)) return nullptr;
  return make<CFArrayRef>(allocator, Array::Kind::kImmutable, *known, 0, values, count);
}

CFArrayRef CFArrayCreateCopy(CFAllocatorRef allocator, CFArrayRef array) {
  const Array* original = arrayOf(array);
  if (original == nullptr) return nullptr;
  return make<CFArrayRef>(allocator, Array::Kind::kImmutable, original->callBacks, 0,
                          original->data(), original->count());
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                       const CFArrayCallBacks* callBacks) {
  const CFArrayCallBacks* known = checked(callBacks);
  if (known == nullptr || capacity < 0) return nullptr;
  return make<CFMutableArrayRef>(allocator, Array::Kind::kMutable, *known, capacity, nullptr, 0);
}

CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity,
                                           CFArrayRef array) {
  const Array* original = arrayOf(array);
  if (original == nullptr || capacity < 0) return nullptr;
  return make<CFMutableArrayRef>(allocator, Array::Kind::kMutable, original->callBacks, capacity,
                                 original->data(), original->count());
}

CFIndex CFArrayGetCount(CFArrayRef array) {
  const Array* object = arrayOf(array);
  return object != nullptr ? object->count() : 0;
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  const Array* object = arrayWith(array, {index, 1});
  return object != nullptr ? object->at(index) : nullptr;
}

void CFArrayGetValues(CFArrayRef array, CFRange range, const void** values) {
  const Array* object = arrayWith(array, range);
  if (object == nullptr || values == nullptr) return;
  for (CFIndex i = 0; i < range.length; ++i) values[i] = object->at(range.location + i);
}

CFIndex CFArrayGetCountOfValue(CFArrayRef array, CFRange range, const void* value) {
  const Array* object = arrayWith(array, range);
  if (object == nullptr) return 0;
  CFIndex count = 0;
  for (CFIndex i = 0; i < range.length; ++i) count += object->isEqual(range.location + i, value);
  return count;
}

Boolean CFArrayContainsValue(CFArrayRef array, CFRange range, const void* value) {
  return CFArrayGetFirstIndexOfValue(array, range, value) != kCFNotFound;
}

CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef array, CFRange range, const void* value) {
  const Array* object = arrayWith(array, range);
  if (object == nullptr) return kCFNotFound;
  for (CFIndex i = range.location; i < range.location + range.length; ++i) {
    if (object->isEqual(i, value)) return i;
  }
  return kCFNotFound;
}

CFIndex CFArrayGetLastIndexOfValue(CFArrayRef array, CFRange range, const void* value) {
  const Array* object = arrayWith(array, range);
  if (object == nullptr) return kCFNotFound;
  for (CFIndex i = range.location + range.length - 1; i >= range.location; --i) {
    if (object->isEqual(i, value)) return i;
  }
  return kCFNotFound;
}

void CFArrayApplyFunction(CFArrayRef array, CFRange range, CFArrayApplierFunction applier,
                          void* context) {
  const Array* object = arrayWith(array, range);
  if (object == nullptr || applier == nullptr) return;
  const CFIndex end = range.location + range.length;
  for (CFIndex i = range.location; i < end && i < object->count(); ++i) {
    applier(object->at(i), context);
  }
}

void CFArrayAppendValue(CFMutableArrayRef array, const void* value) {
  CFArrayInsertValueAtIndex(array, CFArrayGetCount(array), value);
}

void CFArrayAppendArray(CFMutableArrayRef array, CFArrayRef other, CFRange otherRange) {
  Array* object = mutableArrayWith(array, {0, 0});
  const Array* source = arrayWith(other, otherRange);
  if (object == nullptr || source == nullptr || otherRange.length == 0) return;
  object->append(source->data() + otherRange.location, otherRange.length);
}

void CFArrayInsertValueAtIndex(CFMutableArrayRef array, CFIndex index, const void* value) {
  Array* object = mutableArrayWith(array, {index, 0});
  if (object != nullptr) object->insert(index, value);
}

void CFArraySetValueAtIndex(CFMutableArrayRef array, CFIndex index, const void* value) {
  if (index == CFArrayGetCount(array)) return CFArrayAppendValue(array, value);
  Array* object = mutableArrayWith(array, {index, 1});
  if (object != nullptr) object->set(index, value);
}

void CFArrayRemoveValueAtIndex(CFMutableArrayRef array, CFIndex index) {
  Array* object = mutableArrayWith(array, {index, 1});
  if (object != nullptr) object->remove(index);
}

void CFArrayRemoveAllValues(CFMutableArrayRef array) {
  Array* object = mutableArrayWith(array, {0, 0});
  if (object != nullptr) object->removeAll();
}

void CFArrayReplaceValues(CFMutableArrayRef array, CFRange range, const void** newValues,
                          CFIndex newCount) {
  Array* object = mutableArrayWith(array, range);
  if (object == nullptr || newCount < 0 || (newValues == nullptr && newCount > 0)) return;
  object->replace(range, newValues, newCount);
}

void CFArrayExchangeValuesAtIndices(CFMutableArrayRef array, CFIndex index1, CFIndex index2) {
  Array* object = mutableArrayWith(array, {index1, 1});
  if (object != nullptr && isWithin({index2, 1}, object->count())) object->exchange(index1, index2);
}

void CFArraySortValues(CFMutableArrayRef array, CFRange range, CFComparatorFunction comparator,
                       void* context) {
  Array* object = mutableArrayWith(array, range);
  if (object != nullptr && comparator != nullptr) object->sort(range, comparator, context);
}
