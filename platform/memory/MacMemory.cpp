// Licence: MIT, see LICENSE.
#include <CarbonCore/MacMemory.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "platform/memory/Allocation.h"
#include "platform/memory/BlockTable.h"
#include "platform/memory/MemoryError.h"

namespace platform::memory {
namespace {

thread_local OSErr memError = noErr;

struct PointerRecord {
  Size size;
};

/// Never destroyed: blocks outlive the destructors of the program's last moments.
BlockTable<PointerRecord>& pointers() {
  static auto* table = new BlockTable<PointerRecord>;
  return *table;
}

Ptr allocatePointer(Size size, bool clear) {
  if (size < 0) return nullptr;
  const auto length = static_cast<std::size_t>(size);
  void* block = clear ? allocateCleared(length) : allocate(length);
  if (block == nullptr) return nullptr;
  try {
    pointers().add(block, {size});
  } catch (const std::bad_alloc&) {
    std::free(block);
    return nullptr;
  }
  return static_cast<Ptr>(block);
}

Ptr newPointer(Size size, bool clear) {
  Ptr pointer = allocatePointer(size, clear);
  setMemError(pointer == nullptr ? OSErr{memFullErr} : OSErr{noErr});
  return pointer;
}

}  // namespace

OSErr setMemError(OSErr result) { return memError = result; }

}  // namespace platform::memory

using namespace platform::memory;

OSErr MemError(void) { return memError; }

Ptr NewPtr(Size size) { return newPointer(size, false); }

Ptr NewPtrClear(Size size) { return newPointer(size, true); }

void DisposePtr(Ptr pointer) {
  if (!pointers().remove(pointer)) {
    setMemError(memWZErr);
    return;
  }
  std::free(pointer);
  setMemError(noErr);
}

Size GetPtrSize(Ptr pointer) {
  auto record = pointers().find(pointer);
  setMemError(record ? OSErr{noErr} : OSErr{memWZErr});
  return record ? record->size : 0;
}

void BlockMoveData(const void* source, void* destination, Size count) {
  if (count > 0) std::memmove(destination, source, static_cast<std::size_t>(count));
}
