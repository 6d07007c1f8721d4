// Licence: MIT, see LICENSE.
#include "platform/corefoundation/ArrayObject.h"

#include <CoreFoundation/CFString.h>

#include <algorithm>

#include "platform/corefoundation/ObjectCallBacks.h"

namespace platform::corefoundation {

namespace {

// Merging by halves: an order that contradicts itself gives some order, never an access out of
// range.
template <typename Less>
void mergeSort(const void** first, const void** last, const Less& less) {
  if (last - first < 2) return;
  const void** middle = first + (last - first) / 2;
  mergeSort(first, middle, less);
  mergeSort(middle, last, less);
  std::inplace_merge(first, middle, last, less);
}

}  // namespace

Array::~Array() { removeAll(); }

bool Array::equals(const Object& other) const {
  const Array& array = static_cast<const Array&>(other);
  if (count() != array.count() || callBacks.equal != array.callBacks.equal) return false;
  for (CFIndex i = 0; i < count(); ++i) {
    if (!isEqual(i, array.at(i))) return false;
  }
  return true;
}

CFStringRef Array::copyDescription() const {
  const Held text(CFStringCreateMutable(nullptr, 0));
  CFStringAppendFormat(text.get(), nullptr,
                       CFSTR("<CFArray %p [%p]>{type = %s, count = %ld, values = (\n"), this,
                       allocator(), changes ? "mutable" : "immutable", static_cast<long>(count()));
  for (CFIndex i = 0; i < count(); ++i) {
    CFStringAppendFormat(text.get(), nullptr, CFSTR("\t%ld : "), static_cast<long>(i));
    describeValue(callBacks, at(i), text.get());
    CFStringAppend(text.get(), CFSTR("\n"));
  }
  CFStringAppend(text.get(), CFSTR(")}"));
  return CFStringCreateCopy(nullptr, text.get());
}

bool Array::isEqual(CFIndex index, const void* value) const {
  return areEqual(callBacks, at(index), value);
}

bool Array::keepFrom(Values& buffer, CFIndex first, CFIndex number) {
  for (CFIndex i = 0; i < number; ++i) {
    const void*& value = buffer.data()[first + i];
    const void* kept = nullptr;
    if (!keepValue(callBacks, allocator(), value, kept)) {
      releaseValues(buffer.data() + first, i);
      return false;
    }
    value = kept;
  }
  return true;
}

void Array::releaseValues(const void* const* first, CFIndex number) {
  for (CFIndex i = 0; i < number; ++i) releaseValue(callBacks, allocator(), first[i]);
}

bool Array::append(const void* const* added, CFIndex addedCount) {
  const CFIndex before = count();
  if (!fits(addedCount) ||
      !values.append(allocator(), const_cast<const void**>(added), addedCount)) {
    return false;
  }
  if (keepFrom(values, before, addedCount)) return true;
  values.replace(allocator(), before, addedCount, nullptr, 0);
  return false;
}

bool Array::insert(CFIndex index, const void* value) {
  const void* kept = nullptr;
  if (!fits(1) || !keepValue(callBacks, allocator(), value, kept)) return false;
  if (values.replace(allocator(), index, 0, &kept, 1)) return true;
  releaseValue(callBacks, allocator(), kept);
  return false;
}

void Array::set(CFIndex index, const void* value) {
  const void* kept = nullptr;
  if (!keepValue(callBacks, allocator(), value, kept)) return;
  std::swap(values.data()[index], kept);
  releaseValue(callBacks, allocator(), kept);
}

void Array::remove(CFIndex index) {
  const void* removed = at(index);
  values.replace(allocator(), index, 1, nullptr, 0);
  releaseValue(callBacks, allocator(), removed);
}

void Array::replace(CFRange range, const void* const* added, CFIndex addedCount) {
  if (!fits(addedCount - range.length)) return;
  const CFIndex behind = range.location + range.length;
  Values next;
  const bool isMade = next.append(allocator(), values.data(), range.location) &&
                      next.append(allocator(), const_cast<const void**>(added), addedCount) &&
                      next.append(allocator(), values.data() + behind, count() - behind) &&
                      keepFrom(next, range.location, addedCount);
  if (isMade) {
    values.swap(next);
    releaseValues(next.data() + range.location, range.length);
  }
  next.release(allocator());
}

void Array::removeAll() {
  Values removed;
  removed.swap(values);
  releaseValues(removed.data(), removed.size());
  removed.release(allocator());
}

void Array::sort(CFRange range, CFComparatorFunction comparator, void* context) {
  const void** first = values.data() + range.location;
  mergeSort(first, first + range.length, [comparator, context](const void* a, const void* b) {
    return comparator(a, b, context) == kCFCompareLessThan;
  });
}

}  // namespace platform::corefoundation
