// Licence: MIT, see LICENSE.
// An allocator that counts its blocks and can be told to run out of memory.
#ifndef TESTS_PLATFORM_COREFOUNDATION_COUNTINGALLOCATOR_H
#define TESTS_PLATFORM_COREFOUNDATION_COUNTINGALLOCATOR_H

#include <CoreFoundation/CFBase.h>

#include <cstdlib>

namespace tests {

class CountingAllocator final {
 public:
  CountingAllocator() {
    CFAllocatorContext context = {};
    context.info = this;
    context.allocate = allocate;
    context.deallocate = deallocate;
    allocator = CFAllocatorCreate(nullptr, &context);
  }
  ~CountingAllocator() { CFRelease(allocator); }
  CountingAllocator(const CountingAllocator&) = delete;
  CountingAllocator& operator=(const CountingAllocator&) = delete;

  CFAllocatorRef get() const { return allocator; }
  int blocks() const { return live; }
  int allocations() const { return made; }
  /// So many more allocations succeed, then none.
  void failAfter(int count) { left = count; }
  void recover() { left = -1; }

 private:
  static void* allocate(CFIndex size, CFOptionFlags, void* info) {
    CountingAllocator* self = static_cast<CountingAllocator*>(info);
    if (self->left == 0) return nullptr;
    if (self->left > 0) --self->left;
    ++self->made;
    ++self->live;
    return std::malloc(static_cast<std::size_t>(size));
  }
  static void deallocate(void* block, void* info) {
    --static_cast<CountingAllocator*>(info)->live;
    std::free(block);
  }

  CFAllocatorRef allocator = nullptr;
  int made = 0;
  int live = 0;
  int left = -1;
};

}  // namespace tests

#endif
