// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <limits>

#include "platform/corefoundation/CFRuntime.h"
#include "platform/corefoundation/GrowingBuffer.h"
#include "platform/corefoundation/MutableSharing.h"
#include "platform/corefoundation/StringEncodings.h"

namespace platform::corefoundation {

namespace {

constexpr std::size_t kHashedBytes = 256;
constexpr std::size_t kDescribedBytes = 24;

class Data : public Object {
 public:
  static CFTypeID type() {
    static const CFTypeID id = registerType("CFData");
    return id;
  }
  static Data* copying(CFAllocatorRef allocator, Bytes bytes);

  Data() = default;
  // Bytes that a deallocator takes back.
  Data(Bytes bytes, CFAllocatorRef bytesDeallocator)
      : content(bytes), deallocator(Held<CFAllocatorRef>::retaining(bytesDeallocator)) {}
  ~Data() override {
    if (deallocator) {
      CFAllocatorDeallocate(deallocator.get(), const_cast<UInt8*>(content.data()));
    }
  }

  CFTypeID typeID() const final { return type(); }
  bool equals(const Object& other) const final {
    return std::ranges::equal(content, static_cast<const Data&>(other).content);
  }
  CFHashCode hash() const final;
  CFStringRef copyDescription() const final;

  virtual bool isMutable() const { return false; }
  Bytes bytes() const { return content; }
  CFIndex length() const { return static_cast<CFIndex>(content.size()); }
  // Whether the bytes last as long as the object.
  bool ownsBytes() const { return deallocator.get() != kCFAllocatorNull; }

 protected:
  Bytes content;

 private:
  Held<CFAllocatorRef> deallocator;  // none for bytes behind the object or in a buffer
};

Data* Data::copying(CFAllocatorRef allocator, Bytes bytes) {
  constexpr std::size_t kMaximumLength = std::numeric_limits<CFIndex>::max() / 2;
  if (bytes.size() > kMaximumLength) return nullptr;
  Data* made = createWithSpace<Data>(allocator, bytes.size());
  if (made == nullptr) return nullptr;
  UInt8* space = reinterpret_cast<UInt8*>(made + 1);
  std::ranges::copy(bytes, space);
  made->content = Bytes(space, bytes.size());
  return made;
}

CFHashCode Data::hash() const {
  CFHashCode hash = static_cast<CFHashCode>(content.size());
  for (const UInt8 byte : content.first(std::min(content.size(), kHashedBytes))) {
    hash = (hash ^ byte) * 16777619U;
  }
  return hash;
}

CFStringRef Data::copyDescription() const {
  const Held text(CFStringCreateMutable(nullptr, 0));
  CFStringAppendFormat(text.get(), nullptr, CFSTR("<CFData %p [%p]>{length = %ld, bytes = 0x"),
                       this, allocator(), static_cast<long>(length()));
  for (const UInt8 byte : content.first(std::min(content.size(), kDescribedBytes))) {
    CFStringAppendFormat(text.get(), nullptr, CFSTR("%02x"), byte);
  }
  CFStringAppend(text.get(), content.size() > kDescribedBytes ? CFSTR("...}") : CFSTR("}"));
  return CFStringCreateCopy(nullptr, text.get());
}

class MutableData final : public Data {
 public:
  explicit MutableData(CFIndex capacity) : limit(capacity) {}
  // Shares the bytes of immutable data until they are to be changed.
  explicit MutableData(Held<CFDataRef> original) : limit(0), shared(std::move(original)) {
    content = objectOf<Data>(shared.get())->bytes();
  }
  ~MutableData() override { buffer.release(allocator()); }

  bool isMutable() const override { return true; }
  UInt8* data() { return stopSharing() ? buffer.data() : nullptr; }

  // Nothing happens if the result would not fit or there is no memory; then it answers false.
  bool replace(CFRange range, const UInt8* bytes, CFIndex count) {
    if (!stopSharing()) return false;
    const CFIndex kept = length() - range.length;
    if (limit > 0 && count > limit - kept) return false;
    if (!buffer.replace(allocator(), range.location, range.length, bytes, count)) return false;
    content = Bytes(buffer.data(), static_cast<std::size_t>(buffer.size()));
    return true;
  }

 private:
  bool stopSharing() {
    if (!shared) return true;
    if (!buffer.append(allocator(), content.data(), length())) return false;
    content = Bytes(buffer.data(), static_cast<std::size_t>(buffer.size()));
    shared = Held<CFDataRef>();
    return true;
  }

  const CFIndex limit;
  Held<CFDataRef> shared;
  GrowingBuffer<UInt8> buffer;
};

Data* dataOf(CFDataRef reference) { return checkedObject<Data>(reference); }

MutableData* mutableDataOf(CFMutableDataRef reference) {
  Data* data = dataOf(reference);
  return data != nullptr && data->isMutable() ? static_cast<MutableData*>(data) : nullptr;
}

}  // namespace

CFMutableDataRef createMutableSharing(CFAllocatorRef allocator, Held<CFDataRef> data) {
  return referenceTo<CFMutableDataRef>(create<MutableData>(allocator, std::move(data)));
}

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFTypeID CFDataGetTypeID(void) { return Data::type(); }

CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length) {
  if (length < 0 || (bytes == nullptr && length > 0)) return nullptr;
  return referenceTo<CFDataRef>(
      Data::copying(allocator, {bytes, static_cast<std::size_t>(length)}));
}

CFDataRef CFDataCreateWithBytesNoCopy(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length,
                                      CFAllocatorRef bytesDeallocator) {
  if (length < 0 || (bytes == nullptr && length > 0)) return nullptr;
  if (bytesDeallocator == nullptr) bytesDeallocator = CFAllocatorGetDefault();
  return referenceTo<CFDataRef>(
      create<Data>(allocator, Bytes(bytes, static_cast<std::size_t>(length)), bytesDeallocator));
}

CFDataRef CFDataCreateCopy(CFAllocatorRef allocator, CFDataRef data) {
  const Data* original = dataOf(data);
  if (original == nullptr) return nullptr;
  if (allocator == nullptr) allocator = CFAllocatorGetDefault();
  if (!original->isMutable() && original->ownsBytes() && original->allocator() == allocator) {
    CFRetain(data);
    return data;
  }
  return referenceTo<CFDataRef>(Data::copying(allocator, original->bytes()));
}

CFMutableDataRef CFDataCreateMutable(CFAllocatorRef allocator, CFIndex capacity) {
  if (capacity < 0) return nullptr;
  return referenceTo<CFMutableDataRef>(create<MutableData>(allocator, capacity));
}

CFMutableDataRef CFDataCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity,
                                         CFDataRef data) {
  const Data* original = dataOf(data);
  if (original == nullptr) return nullptr;
  Held made(CFDataCreateMutable(allocator, capacity));
  MutableData* copy = mutableDataOf(made.get());
  if (copy == nullptr) return nullptr;
  return copy->replace({0, 0}, original->bytes().data(), original->length()) ? made.take()
                                                                             : nullptr;
}

CFIndex CFDataGetLength(CFDataRef data) {
  const Data* object = dataOf(data);
  return object != nullptr ? object->length() : 0;
}

const UInt8* CFDataGetBytePtr(CFDataRef data) {
  const Data* object = dataOf(data);
  return object != nullptr ? object->bytes().data() : nullptr;
}

UInt8* CFDataGetMutableBytePtr(CFMutableDataRef data) {
  MutableData* object = mutableDataOf(data);
  return object != nullptr ? object->data() : nullptr;
}

void CFDataGetBytes(CFDataRef data, CFRange range, UInt8* buffer) {
  const Data* object = dataOf(data);
  if (object == nullptr || buffer == nullptr || !isWithin(range, object->length())) return;
  std::ranges::copy(object->bytes().subspan(static_cast<std::size_t>(range.location),
                                            static_cast<std::size_t>(range.length)),
                    buffer);
}

void CFDataSetLength(CFMutableDataRef data, CFIndex length) {
  MutableData* object = mutableDataOf(data);
  if (object == nullptr || length < 0) return;
  const CFIndex current = object->length();
  if (length < current) {
    object->replace({length, current - length}, nullptr, 0);
  } else {
    object->replace({current, 0}, nullptr, length - current);
  }
}

void CFDataIncreaseLength(CFMutableDataRef data, CFIndex extraLength) {
  MutableData* object = mutableDataOf(data);
  if (object != nullptr && extraLength > 0)
    object->replace({object->length(), 0}, nullptr, extraLength);
}

void CFDataAppendBytes(CFMutableDataRef data, const UInt8* bytes, CFIndex length) {
  CFDataReplaceBytes(data, {CFDataGetLength(data), 0}, bytes, length);
}

void CFDataReplaceBytes(CFMutableDataRef data, CFRange range, const UInt8* newBytes,
                        CFIndex newLength) {
  MutableData* object = mutableDataOf(data);
  if (object == nullptr || newLength < 0 || (newBytes == nullptr && newLength > 0)) return;
  if (isWithin(range, object->length())) object->replace(range, newBytes, newLength);
}

void CFDataDeleteBytes(CFMutableDataRef data, CFRange range) {
  CFDataReplaceBytes(data, range, nullptr, 0);
}
