// Licence: MIT, see LICENSE.
// `new` that counts among the allocations which fail on purpose: see AllocationFailures.h.
#include <cstdlib>
#include <new>

#include "platform/memory/Allocation.h"

namespace {

void* allocateOrNull(std::size_t size) noexcept { return platform::memory::allocate(size); }

void* allocateOrThrow(std::size_t size) {
  if (void* block = allocateOrNull(size)) return block;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocateOrNull(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocateOrNull(size);
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { std::free(block); }
