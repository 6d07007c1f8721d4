// Licence: MIT, see LICENSE.
// Relocatable blocks. A master pointer is a small allocation of its own; size, capacity and state
// are in the table, out of the reach of a program that writes past its block.
#include <CarbonCore/MacMemory.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>

#include "platform/memory/Allocation.h"
#include "platform/memory/BlockTable.h"
#include "platform/memory/HandleTable.h"
#include "platform/memory/MemoryError.h"

namespace platform::memory {
namespace {

struct HandleRecord {
  Size size = 0;
  Size capacity = 0;  // what the block has room for where it stands
  UInt8 state = 0;
};

std::atomic<DisposalNotice> disposalNotice{nullptr};

/// Never destroyed: blocks outlive the destructors of the program's last moments.
BlockTable<HandleRecord>& handles() {
  static auto* table = new BlockTable<HandleRecord>;
  return *table;
}

Ptr allocateBlock(Size size, bool clear) {
  if (size < 0) return nullptr;
  const auto length = static_cast<std::size_t>(size);
  return static_cast<Ptr>(clear ? allocateCleared(length) : allocate(length));
}

/// A handle that owns the block, which may be null; null when there is no memory.
Handle adoptBlock(Ptr block, Size size) {
  auto* handle = static_cast<Handle>(allocate(sizeof(Ptr)));
  if (handle == nullptr) return nullptr;
  *handle = block;
  try {
    handles().add(handle, {size, size, 0});
  } catch (const std::bad_alloc&) {
    std::free(handle);
    return nullptr;
  }
  return handle;
}

Handle newHandle(Size size, bool clear) {
  Ptr block = allocateBlock(size, clear);
  Handle handle = block == nullptr ? nullptr : adoptBlock(block, size);
  if (handle == nullptr) std::free(block);
  setMemError(handle == nullptr ? OSErr{memFullErr} : OSErr{noErr});
  return handle;
}

/// Whether there is a handle, and a block where one is needed.
OSErr check(Handle handle, const std::optional<HandleRecord>& record) {
  if (!record) return memWZErr;
  return *handle == nullptr ? OSErr{nilHandleErr} : OSErr{noErr};
}

/// The record of a handle that has a block; MemError is set.
std::optional<HandleRecord> recordOfBlock(Handle handle) {
  auto record = handles().find(handle);
  if (setMemError(check(handle, record)) != noErr) return std::nullopt;
  return record;
}

void changeState(Handle handle, UInt8 clear, UInt8 set) {
  if (!recordOfBlock(handle)) return;
  handles().update(handle, [=](HandleRecord& record) {
    record.state = static_cast<UInt8>((record.state & ~clear) | set);
  });
}

void setSize(Handle handle, Size size, Size capacity) {
  handles().update(handle, [=](HandleRecord& record) {
    record.size = size;
    record.capacity = capacity;
  });
}

OSErr resize(Handle handle, const HandleRecord& record, Size size) {
  if (size < 0) return memFullErr;
  if ((record.state & kHandleLockedMask) != 0) {
    if (size > record.capacity) return memFullErr;
    setSize(handle, size, record.capacity);
    return noErr;
  }
  void* block = reallocate(*handle, static_cast<std::size_t>(size));
  if (block == nullptr) return memFullErr;
  *handle = static_cast<Ptr>(block);
  setSize(handle, size, size);
  return noErr;
}

OSErr giveFreshBlock(Handle handle, const HandleRecord& record, Size size) {
  if ((record.state & kHandleLockedMask) != 0) return memLockedErr;
  Ptr block = allocateBlock(size, false);
  if (block == nullptr) return memFullErr;
  std::free(*handle);
  *handle = block;
  setSize(handle, size, size);
  handles().update(handle, [](HandleRecord& changed) { changed.state &= kHandleIsResourceMask; });
  return noErr;
}

/// How far into the block of a handle an address points; nothing if it points elsewhere.
std::optional<Size> offsetWithin(Handle handle, Size size, const void* address) {
  const std::less_equal<const void*> notAfter;
  if (!notAfter(*handle, address) || notAfter(*handle + size, address)) return std::nullopt;
  return static_cast<const char*>(address) - *handle;
}

OSErr append(Handle handle, const HandleRecord& record, const void* bytes, Size size) {
  if (size < 0 || size > std::numeric_limits<Size>::max() - record.size) return memFullErr;
  if (size == 0) return noErr;
  if (bytes == nullptr) return paramErr;
  const std::optional<Size> offset = offsetWithin(handle, record.size, bytes);
  const OSErr result = resize(handle, record, record.size + size);
  if (result != noErr) return result;
  const void* source = offset ? *handle + *offset : bytes;
  BlockMoveData(source, *handle + record.size, size);
  return noErr;
}

}  // namespace

void markAsResource(Handle handle, bool isResource) {
  handles().update(handle, [=](HandleRecord& record) {
    record.state = static_cast<UInt8>(record.state & ~kHandleIsResourceMask);
    if (isResource) record.state |= kHandleIsResourceMask;
  });
}

void setDisposalNotice(DisposalNotice notice) { disposalNotice = notice; }

}  // namespace platform::memory

using namespace platform::memory;

Handle NewHandle(Size size) { return newHandle(size, false); }

Handle NewHandleClear(Size size) { return newHandle(size, true); }

Handle NewEmptyHandle(void) {
  Handle handle = adoptBlock(nullptr, 0);
  setMemError(handle == nullptr ? OSErr{memFullErr} : OSErr{noErr});
  return handle;
}

Handle TempNewHandle(Size size, OSErr* result) {
  Handle handle = newHandle(size, false);
  if (result != nullptr) *result = MemError();
  return handle;
}

void DisposeHandle(Handle handle) {
  auto record = handles().remove(handle);
  if (!record) {
    setMemError(memWZErr);
    return;
  }
  std::free(*handle);
  DisposalNotice notice = disposalNotice;
  if ((record->state & kHandleIsResourceMask) != 0 && notice != nullptr) notice(handle);
  std::free(handle);
  setMemError(noErr);
}

Size GetHandleSize(Handle handle) {
  auto record = recordOfBlock(handle);
  return record ? record->size : 0;
}

void SetHandleSize(Handle handle, Size size) {
  auto record = recordOfBlock(handle);
  if (record) setMemError(resize(handle, *record, size));
}

void ReallocateHandle(Handle handle, Size size) {
  auto record = handles().find(handle);
  setMemError(record ? giveFreshBlock(handle, *record, size) : OSErr{memWZErr});
}

OSErr PtrAndHand(const void* bytes, Handle handle, Size size) {
  auto record = recordOfBlock(handle);
  return record ? setMemError(append(handle, *record, bytes, size)) : MemError();
}

void EmptyHandle(Handle handle) {
  auto record = handles().find(handle);
  if (!record) {
    setMemError(memWZErr);
  } else if ((record->state & kHandleLockedMask) != 0) {
    setMemError(memPurErr);
  } else {
    std::free(*handle);
    *handle = nullptr;
    setSize(handle, 0, 0);
    setMemError(noErr);
  }
}

void HLock(Handle handle) { changeState(handle, 0, kHandleLockedMask); }

void HUnlock(Handle handle) { changeState(handle, kHandleLockedMask, 0); }

void HPurge(Handle handle) { changeState(handle, 0, kHandlePurgeableMask); }

void HNoPurge(Handle handle) { changeState(handle, kHandlePurgeableMask, 0); }

SInt8 HGetState(Handle handle) {
  auto record = recordOfBlock(handle);
  return record ? static_cast<SInt8>(record->state) : SInt8{0};
}

void HSetState(Handle handle, SInt8 state) {
  constexpr UInt8 kSettable = kHandleLockedMask | kHandlePurgeableMask;
  changeState(handle, kSettable, static_cast<UInt8>(state) & kSettable);
}
