// Licence: MIT, see LICENSE.
#include "platform/appleevents/Storage.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "platform/appleevents/EventFront.h"
#include "platform/mach/KeptBlocks.h"
#include "platform/memory/Allocation.h"

using platform::appleevents::Storage;

namespace {

constexpr UInt32 kFew = 32;  // parameters whose reading fits a word

UInt32 bitOf(UInt32 index) { return UInt32{1} << (index - 1); }

std::unique_ptr<Storage> makeBare() {
  if (!platform::memory::mayAllocate()) return nullptr;
  return std::unique_ptr<Storage>(new (std::nothrow) Storage);
}

}  // namespace

std::unique_ptr<Storage> Storage::make(std::size_t size) { return make(size, size); }

std::unique_ptr<Storage> Storage::make(std::size_t size, std::size_t room) {
  std::unique_ptr<Storage> storage = makeBare();
  if (storage == nullptr || size > kMaxSize || !storage->reserve(room)) return nullptr;
  storage->block.size = size;
  return storage;
}

std::unique_ptr<Storage> Storage::adopt(platform::mach::Buffer buffer) {
  std::unique_ptr<Storage> storage = makeBare();
  if (storage == nullptr) return nullptr;
  storage->capacity = buffer.size;
  storage->block = std::move(buffer);
  return storage;
}

std::unique_ptr<Storage> Storage::duplicate() const {
  std::unique_ptr<Storage> copy = make(block.size);
  if (copy == nullptr) return nullptr;
  std::ranges::copy(bytes(), copy->writable().begin());
  copy->replyRight = replyRight;
  copy->front = front;
  return copy;
}

bool Storage::reserve(std::size_t size) {
  if (size <= capacity) return true;
  constexpr std::size_t kSmallest = 16;
  const std::size_t roomy = std::max({size, kSmallest, std::min(capacity * 2, kMaxSize)});
  if (platform::mach::isWorthKeeping(size)) return moveToLarge(size, roomy);
  if (capacity >= platform::mach::kSmallestKept) platform::mach::keepNoMore(block.memory.get());
  void* grown = platform::memory::reallocate(block.memory.get(), roomy);
  if (grown == nullptr) return false;
  static_cast<void>(block.memory.release());  // realloc has freed it
  block.memory.reset(static_cast<std::byte*>(grown));
  capacity = roomy;
  return true;
}

/// To a block that is kept for such, if there is one.
bool Storage::moveToLarge(std::size_t size, std::size_t roomy) {
  if (!platform::memory::mayAllocate()) return false;
  platform::mach::Block larger = platform::mach::withdrawKept(size);
  if (!larger) larger = platform::mach::freshBlock(roomy);
  if (!larger) return false;
  std::ranges::copy(bytes(), larger.memory.get());
  platform::mach::keepOnceFree(larger.memory.get(), larger.capacity);
  capacity = larger.capacity;
  block.memory = std::move(larger.memory);
  return true;
}

std::byte* Storage::splice(std::size_t offset, std::size_t removed, std::size_t inserted) {
  const std::size_t kept = block.size - removed;
  if (inserted > kMaxSize - kept || !reserve(kept + inserted)) return nullptr;
  std::byte* at = block.memory.get() + offset;
  if (removed != inserted && offset < block.size) {
    std::memmove(at + inserted, at + removed, kept - offset);
    cursor.set({0, 0});
    keys.clear();
  }
  if (offset < platform::appleevents::kFrontEnd) front = false;
  block.size = kept + inserted;
  readCount = 0;
  return at;
}

bool Storage::trackReads(UInt32 parameters) {
  if (parameters <= kFew) {
    fewReads.store(0, std::memory_order_relaxed);
    readCount = parameters;
    return true;
  }
  const bool mayAllocate = platform::memory::mayAllocate();
  reads.reset(mayAllocate ? new (std::nothrow) std::atomic<bool>[parameters]() : nullptr);
  readCount = reads == nullptr ? 0 : parameters;
  return reads != nullptr;
}

void Storage::markRead(UInt32 index) {
  if (index > readCount) return;
  if (readCount > kFew) {
    reads[index - 1].store(true, std::memory_order_relaxed);
  } else {
    fewReads.fetch_or(bitOf(index), std::memory_order_relaxed);
  }
}

bool Storage::wasRead(UInt32 index) const {
  if (index > readCount) return true;
  if (readCount > kFew) return reads[index - 1].load(std::memory_order_relaxed);
  return (fewReads.load(std::memory_order_relaxed) & bitOf(index)) != 0;
}

namespace platform::appleevents {

ReplyRight::~ReplyRight() {
  if (!spent.load(std::memory_order_relaxed)) mach_port_deallocate(mach_task_self(), port);
}

Cursor::Place Cursor::get() {
  if (busy.test_and_set(std::memory_order_acquire)) return {0, 0};
  const Place known = place;
  busy.clear(std::memory_order_release);
  return known;
}

void Cursor::set(Place to) {
  if (busy.test_and_set(std::memory_order_acquire)) return;
  place = to;
  busy.clear(std::memory_order_release);
}

}  // namespace platform::appleevents
