// Licence: MIT, see LICENSE.
#include "platform/corefoundation/PropertyListBuilder.h"

#include "platform/corefoundation/ArrayObject.h"
#include "platform/corefoundation/DictionaryObject.h"
#include "platform/corefoundation/MutableSharing.h"
#include "platform/corefoundation/StringObject.h"

namespace platform::corefoundation {

namespace {

template <typename T>
Held<CFTypeRef> heldNumber(CFAllocatorRef allocator, CFNumberType type, T value) {
  return Held<CFTypeRef>(CFNumberCreate(allocator, type, &value));
}

}  // namespace

Held<CFStringRef> PropertyListBuilder::text(Bytes bytes, CFStringEncoding encoding) const {
  return Held(referenceTo<CFStringRef>(String::decoding(allocator, bytes, encoding)));
}

Held<CFStringRef> PropertyListBuilder::text(Units units) const {
  return Held(referenceTo<CFStringRef>(String::ofUnits(allocator, units)));
}

Held<CFDataRef> PropertyListBuilder::data(Bytes bytes) const {
  return Held(CFDataCreate(allocator, bytes.data(), static_cast<CFIndex>(bytes.size())));
}

Held<CFTypeRef> PropertyListBuilder::leaf(Held<CFTypeRef> immutable) const {
  if (!changesLeaves || !immutable) return immutable;
  const CFTypeID type = CFGetTypeID(immutable.get());
  if (type == CFStringGetTypeID()) {
    Held string(static_cast<CFStringRef>(immutable.take()));
    return Held<CFTypeRef>(createMutableSharing(allocator, std::move(string)));
  }
  if (type == CFDataGetTypeID()) {
    Held bytes(static_cast<CFDataRef>(immutable.take()));
    return Held<CFTypeRef>(createMutableSharing(allocator, std::move(bytes)));
  }
  return immutable;
}

Held<CFTypeRef> PropertyListBuilder::integer(SInt64 value) const {
  const auto narrow = static_cast<SInt32>(value);
  if (narrow == value) return heldNumber(allocator, kCFNumberSInt32Type, narrow);
  return heldNumber(allocator, kCFNumberSInt64Type, value);
}

Held<CFTypeRef> PropertyListBuilder::real(Float32 value) const {
  return heldNumber(allocator, kCFNumberFloat32Type, value);
}

Held<CFTypeRef> PropertyListBuilder::real(Float64 value) const {
  return heldNumber(allocator, kCFNumberFloat64Type, value);
}

Held<CFTypeRef> PropertyListBuilder::date(CFAbsoluteTime at) const {
  return Held<CFTypeRef>(CFDateCreate(allocator, at));
}

Held<CFTypeRef> PropertyListBuilder::boolean(bool value) {
  return Held<CFTypeRef>(value ? kCFBooleanTrue : kCFBooleanFalse);
}

Held<CFTypeRef> PropertyListBuilder::array() const {
  const auto kind = changesContainers ? Array::Kind::kMutable : Array::Kind::kImmutable;
  return Held(referenceTo<CFTypeRef>(create<Array>(allocator, kind, kCFTypeArrayCallBacks, 0)));
}

Held<CFTypeRef> PropertyListBuilder::dictionary() const {
  const DictionaryCallBacks callBacks = {kCFTypeDictionaryKeyCallBacks,
                                         kCFTypeDictionaryValueCallBacks};
  const auto kind = changesContainers ? Dictionary::Kind::kMutable : Dictionary::Kind::kImmutable;
  return Held(referenceTo<CFTypeRef>(create<Dictionary>(allocator, kind, callBacks, 0)));
}

bool PropertyListBuilder::append(const Held<CFTypeRef>& array, const Held<CFTypeRef>& value) {
  const void* const added = value.get();
  return added != nullptr && objectOf<Array>(array.get())->append(&added, 1);
}

bool PropertyListBuilder::set(const Held<CFTypeRef>& dictionary, const Held<CFStringRef>& key,
                              const Held<CFTypeRef>& value) {
  if (!key || !value) return false;
  Dictionary* object = objectOf<Dictionary>(dictionary.get());
  if (HashEntry* entry = object->find(key.get())) {
    object->replace(*entry, value.get());
    return true;
  }
  return object->add(key.get(), value.get());
}

}  // namespace platform::corefoundation
