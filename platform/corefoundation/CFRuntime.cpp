// Licence: MIT, see LICENSE.
#include "platform/corefoundation/CFRuntime.h"

#include <CoreFoundation/CFString.h>

#include <array>
#include <limits>

namespace platform::corefoundation {

namespace {

constexpr CFTypeID kMaximumTypes = 256;

// ID 0 is no type.
constinit std::array<std::atomic<const char*>, kMaximumTypes> gTypeNames{};
constinit std::atomic<CFTypeID> gLastType{0};

}  // namespace

CFTypeID registerType(const char* name) {
  const CFTypeID type = gLastType.fetch_add(1) + 1;
  if (type >= kMaximumTypes) return 0;
  gTypeNames[type].store(name);
  return type;
}

const char* typeName(CFTypeID type) {
  return type < kMaximumTypes ? gTypeNames[type].load() : nullptr;
}

bool Object::equals(const Object& other) const { return this == &other; }

CFHashCode Object::hash() const {
  // The lowest bits of an address are always 0.
  return reinterpret_cast<CFHashCode>(this) >> 4;
}

CFStringRef Object::copyDescription() const {
  return CFStringCreateWithFormat(nullptr, nullptr, CFSTR("<%s %p [%p]>"), typeName(typeID()), this,
                                  allocator());
}

CFStringRef Object::copyFormatted() const { return copyDescription(); }

void Object::retain() const {
  if (references.load(std::memory_order_relaxed) == kImmortal) return;
  references.fetch_add(1, std::memory_order_relaxed);
}

void Object::release() const {
  if (references.load(std::memory_order_relaxed) == kImmortal) return;
  if (references.fetch_sub(1, std::memory_order_acq_rel) == 1) const_cast<Object*>(this)->destroy();
}

CFIndex Object::retainCount() const {
  const UInt32 count = references.load(std::memory_order_relaxed);
  return count == kImmortal ? std::numeric_limits<CFIndex>::max() : static_cast<CFIndex>(count);
}

void Object::destroy() {
  const CFAllocatorRef from = owner;
  this->~Object();
  freeObject(from, this);
}

void* allocateObject(CFAllocatorRef& allocator, std::size_t size) {
  if (allocator == nullptr) allocator = CFAllocatorGetDefault();
  if (size > static_cast<std::size_t>(std::numeric_limits<CFIndex>::max())) return nullptr;
  void* memory = CFAllocatorAllocate(allocator, static_cast<CFIndex>(size), 0);
  if (memory != nullptr) CFRetain(allocator);
  return memory;
}

void freeObject(CFAllocatorRef allocator, void* memory) {
  CFAllocatorDeallocate(allocator, memory);
  CFRelease(allocator);
}

}  // namespace platform::corefoundation
