// Licence: MIT, see LICENSE.
#include "platform/mach/KeptBlocks.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <type_traits>
#include <utility>

namespace platform::mach {

namespace {

/// Guarded by the lock, but that whoever owns a block may see without it whether it stands here:
/// nobody else puts it in or takes it out meanwhile.
struct Place {
  std::atomic<std::byte*> memory{nullptr};
  std::size_t capacity = 0;
  bool waits = false;

  bool holds(const std::byte* block) const {
    return memory.load(std::memory_order_relaxed) == block;
  }
  bool isEmpty() const { return holds(nullptr); }
  std::byte* clear() {
    waits = false;
    return memory.exchange(nullptr, std::memory_order_relaxed);
  }
};

struct Places {
  std::mutex mutex;
  std::array<Place, kMostKept> all;

  Place* find(const std::byte* block) {
    for (Place& place : all) {
      if (place.holds(block)) return &place;
    }
    return nullptr;
  }
};

Places& places() {
  // Freeing must not fail, so this takes no memory; and threads may outlive main.
  static_assert(std::is_trivially_destructible_v<Places>);
  static constinit Places only;
  return only;
}

// Packets are copied in and out of the kernel with the processor's own instruction for that. On
// some it is several times as slow where the one address follows the other at a distance of less
// than a cache line, pages not counted. In the kernel a body begins behind a header at the
// beginning of a page; memory as malloc maps it begins just before that.
constexpr std::size_t kPage = 4096;
constexpr std::size_t kAlignment = 128;  // beyond the header and a line

Block alignedBlock(std::size_t capacity) {
  Block block;
  const std::size_t whole = (capacity + kAlignment - 1) / kAlignment * kAlignment;
  block.memory.reset(static_cast<std::byte*>(std::aligned_alloc(kAlignment, whole)));
  if (block) block.capacity = capacity;
  return block;
}

bool isWellPlaced(const Block& block) {
  return reinterpret_cast<std::uintptr_t>(block.memory.get()) % kPage != 0;
}

/// The place for a block of this size: an empty one, or that of the smallest block that waits.
Place* placeFor(std::size_t capacity) {
  Place* best = nullptr;
  for (Place& place : places().all) {
    if (place.isEmpty()) return &place;
    if (!place.waits || place.capacity >= capacity) continue;
    if (best == nullptr || place.capacity < best->capacity) best = &place;
  }
  return best;
}

}  // namespace

void Buffer::Free::operator()(std::byte* block) const {
  Place* place = places().find(block);
  if (place == nullptr) return std::free(block);
  const std::lock_guard lock(places().mutex);
  place->waits = true;
}

Block freshBlock(std::size_t capacity) {
  Block block = alignedBlock(capacity);
  if (block && !isWellPlaced(block)) {
    Block another = alignedBlock(capacity);  // while the first one is where it is
    if (another) std::swap(block, another);
  }
  return block;
}

Block withdrawKept(std::size_t size) {
  Block block;
  const std::lock_guard lock(places().mutex);
  Place* best = nullptr;
  for (Place& place : places().all) {
    if (!place.waits || place.capacity < size) continue;
    if (best == nullptr || place.capacity < best->capacity) best = &place;
  }
  if (best == nullptr) return block;
  block.capacity = best->capacity;
  block.memory.reset(best->clear());
  return block;
}

bool keepOnceFree(std::byte* memory, std::size_t capacity) {
  if (!isWorthKeeping(capacity)) return false;
  const std::lock_guard lock(places().mutex);
  Place* place = placeFor(capacity);
  if (place == nullptr) return false;
  std::free(place->clear());
  place->capacity = capacity;
  place->memory.store(memory, std::memory_order_relaxed);
  return true;
}

void keepOne(std::size_t capacity) {
  const Block block = freshBlock(capacity);
  if (block) keepOnceFree(block.memory.get(), capacity);
}

void keepNoMore(std::byte* memory) {
  if (memory == nullptr) return;
  const std::lock_guard lock(places().mutex);
  if (Place* place = places().find(memory)) place->clear();
}

}  // namespace platform::mach
