// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <cstdlib>

#include "platform/corefoundation/CFRuntime.h"

namespace platform::corefoundation {

namespace {

class Allocator final : public Object {
 public:
  static CFTypeID type() {
    static const CFTypeID id = registerType("CFAllocator");
    return id;
  }

  constexpr Allocator(Immortality immortal, const CFAllocatorContext& functions)
      : Object(immortal), context(functions) {}
  explicit Allocator(const CFAllocatorContext& functions) : context(functions) {
    setAllocator(referenceTo<CFAllocatorRef>(this));
  }

  CFTypeID typeID() const override { return type(); }
  CFStringRef copyDescription() const override;

  void* allocate(CFIndex size, CFOptionFlags hint) const {
    if (size <= 0 || context.allocate == nullptr) return nullptr;
    return context.allocate(size, hint, context.info);
  }
  void deallocate(void* block) const {
    if (block != nullptr && context.deallocate != nullptr) context.deallocate(block, context.info);
  }
  void* reallocate(void* block, CFIndex size, CFOptionFlags hint) const;
  CFIndex preferredSize(CFIndex size, CFOptionFlags hint) const;

  CFAllocatorContext context;

 private:
  void destroy() override;
};

void* Allocator::reallocate(void* block, CFIndex size, CFOptionFlags hint) const {
  if (size < 0) return nullptr;
  if (block == nullptr) return allocate(size, hint);
  if (size == 0) {
    deallocate(block);
    return nullptr;
  }
  if (context.reallocate == nullptr) return nullptr;
  return context.reallocate(block, size, hint, context.info);
}

CFIndex Allocator::preferredSize(CFIndex size, CFOptionFlags hint) const {
  if (size <= 0) return 0;
  if (context.preferredSize == nullptr) return size;
  return std::max(size, context.preferredSize(size, hint, context.info));
}

// The functions must outlast the memory, and the info outlasts both.
void Allocator::destroy() {
  const CFAllocatorContext functions = context;
  if (allocator() != referenceTo<CFAllocatorRef>(this)) {
    Object::destroy();
  } else {
    this->~Allocator();
    if (functions.deallocate != nullptr) functions.deallocate(this, functions.info);
  }
  if (functions.release != nullptr) functions.release(functions.info);
}

CFStringRef Allocator::copyDescription() const {
  const Held info(context.copyDescription != nullptr ? context.copyDescription(context.info)
                                                     : CFStringRef(nullptr));
  if (!info) return Object::copyDescription();
  return CFStringCreateWithFormat(nullptr, nullptr, CFSTR("<CFAllocator %p [%p]>{info = %@}"), this,
                                  allocator(), info.get());
}

void* systemAllocate(CFIndex size, CFOptionFlags, void*) {
  return std::malloc(static_cast<std::size_t>(size));
}
void* systemReallocate(void* block, CFIndex size, CFOptionFlags, void*) {
  return std::realloc(block, static_cast<std::size_t>(size));
}
void systemDeallocate(void* block, void*) { std::free(block); }

constexpr CFAllocatorContext kSystemContext = {
    0,      nullptr, nullptr, nullptr, nullptr, systemAllocate, systemReallocate, systemDeallocate,
    nullptr};
constexpr CFAllocatorContext kNullContext = {};

constinit Static<Allocator> gSystemDefault(Immortality{}, kSystemContext);
constinit Static<Allocator> gMalloc(Immortality{}, kSystemContext);
constinit Static<Allocator> gNull(Immortality{}, kNullContext);
constinit Static<Allocator> gUseContext(Immortality{}, kNullContext);

constinit thread_local CFAllocatorRef gThreadDefault = nullptr;

const Allocator* allocatorOf(CFAllocatorRef reference) {
  return checkedObject<Allocator>(reference != nullptr ? reference : CFAllocatorGetDefault());
}

Allocator* createOfItself(const CFAllocatorContext& context) {
  void* memory = context.allocate(sizeof(Allocator), 0, context.info);
  return memory != nullptr ? new (memory) Allocator(context) : nullptr;
}

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

// Casts written out: these must have their values before any constructor runs.
const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFAllocatorRef kCFAllocatorSystemDefault = reinterpret_cast<CFAllocatorRef>(&gSystemDefault);
const CFAllocatorRef kCFAllocatorMalloc = reinterpret_cast<CFAllocatorRef>(&gMalloc);
const CFAllocatorRef kCFAllocatorNull = reinterpret_cast<CFAllocatorRef>(&gNull);
const CFAllocatorRef kCFAllocatorUseContext = reinterpret_cast<CFAllocatorRef>(&gUseContext);

CFTypeID CFAllocatorGetTypeID(void) { return Allocator::type(); }

CFAllocatorRef CFAllocatorCreate(CFAllocatorRef allocator, CFAllocatorContext* context) {
  if (context == nullptr || context->version != 0 || context->allocate == nullptr) return nullptr;
  CFAllocatorContext kept = *context;
  if (kept.retain != nullptr) kept.info = const_cast<void*>(kept.retain(kept.info));
  const Allocator* made = allocator == kCFAllocatorUseContext ? createOfItself(kept)
                                                              : create<Allocator>(allocator, kept);
  if (made == nullptr && kept.release != nullptr) kept.release(kept.info);
  return referenceTo<CFAllocatorRef>(made);
}

void* CFAllocatorAllocate(CFAllocatorRef allocator, CFIndex size, CFOptionFlags hint) {
  const Allocator* from = allocatorOf(allocator);
  return from != nullptr ? from->allocate(size, hint) : nullptr;
}

void* CFAllocatorReallocate(CFAllocatorRef allocator, void* block, CFIndex size,
                            CFOptionFlags hint) {
  const Allocator* from = allocatorOf(allocator);
  return from != nullptr ? from->reallocate(block, size, hint) : nullptr;
}

void CFAllocatorDeallocate(CFAllocatorRef allocator, void* block) {
  const Allocator* from = allocatorOf(allocator);
  if (from != nullptr) from->deallocate(block);
}

CFIndex CFAllocatorGetPreferredSizeForSize(CFAllocatorRef allocator, CFIndex size,
                                           CFOptionFlags hint) {
  const Allocator* from = allocatorOf(allocator);
  return from != nullptr ? from->preferredSize(size, hint) : 0;
}

void CFAllocatorGetContext(CFAllocatorRef allocator, CFAllocatorContext* context) {
  const Allocator* from = allocatorOf(allocator);
  if (from != nullptr && context != nullptr) *context = from->context;
}

CFAllocatorRef CFAllocatorGetDefault(void) {
  return gThreadDefault != nullptr ? gThreadDefault : kCFAllocatorSystemDefault;
}

void CFAllocatorSetDefault(CFAllocatorRef allocator) {
  if (checkedObject<Allocator>(allocator) == nullptr || allocator == kCFAllocatorUseContext) return;
  CFRetain(allocator);
  gThreadDefault = allocator;
}
