// Licence: MIT, see LICENSE.
// The storage of what grows: values in one block of an object's allocator. The object hands its
// allocator to each change and releases the block in its destructor.
#ifndef PLATFORM_COREFOUNDATION_GROWINGBUFFER_H
#define PLATFORM_COREFOUNDATION_GROWINGBUFFER_H

#include <CoreFoundation/CFBase.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <type_traits>
#include <utility>

namespace platform::corefoundation {

template <typename T>
class GrowingBuffer {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  GrowingBuffer() = default;
  GrowingBuffer(const GrowingBuffer&) = delete;
  GrowingBuffer& operator=(const GrowingBuffer&) = delete;

  T* data() { return block; }
  const T* data() const { return block; }
  CFIndex size() const { return count; }

  /// Puts `added` values from `source` (null: zeros) in the place of `removed` ones at `location`,
  /// which lie within. The source may be part of the buffer itself. False, with nothing changed, if
  /// there is no memory.
  bool replace(CFAllocatorRef allocator, CFIndex location, CFIndex removed, const T* source,
               CFIndex added) {
    if (added > kMaximumCount - (count - removed)) return false;
    const CFIndex newCount = count - removed + added;
    if (newCount > capacity || isInside(source)) {
      return rebuild(allocator, location, removed, source, added);
    }
    if (newCount == 0) {
      count = 0;
      return true;
    }
    std::memmove(block + location + added, block + location + removed,
                 bytes(count - location - removed));
    fill(block + location, source, added);
    count = newCount;
    return true;
  }

  bool append(CFAllocatorRef allocator, const T* source, CFIndex added) {
    return replace(allocator, count, 0, source, added);
  }

  void swap(GrowingBuffer& other) {
    std::swap(block, other.block);
    std::swap(count, other.count);
    std::swap(capacity, other.capacity);
  }

  void release(CFAllocatorRef allocator) {
    CFAllocatorDeallocate(allocator, block);
    block = nullptr;
    count = capacity = 0;
  }

 private:
  static constexpr CFIndex kMaximumCount =
      std::numeric_limits<CFIndex>::max() / static_cast<CFIndex>(2 * sizeof(T));
  static constexpr CFIndex kSmallestCapacity = 8;

  static std::size_t bytes(CFIndex values) { return static_cast<std::size_t>(values) * sizeof(T); }

  static void fill(T* to, const T* source, CFIndex added) {
    if (added == 0) return;
    if (source != nullptr) {
      std::memcpy(to, source, bytes(added));
    } else {
      std::memset(to, 0, bytes(added));
    }
  }

  bool isInside(const T* source) const {
    return block != nullptr && !std::less<>()(source, block) &&
           std::less<>()(source, block + capacity);
  }

  // The old block goes last: the source may be in it.
  bool rebuild(CFAllocatorRef allocator, CFIndex location, CFIndex removed, const T* source,
               CFIndex added) {
    const CFIndex newCount = count - removed + added;
    const CFIndex room =
        std::max({newCount, std::min(2 * capacity, kMaximumCount), kSmallestCapacity});
    T* fresh =
        static_cast<T*>(CFAllocatorAllocate(allocator, room * static_cast<CFIndex>(sizeof(T)), 0));
    if (fresh == nullptr) return false;
    fill(fresh + location, source, added);
    if (count > 0) {
      std::memcpy(fresh, block, bytes(location));
      std::memcpy(fresh + location + added, block + location + removed,
                  bytes(count - location - removed));
    }
    release(allocator);
    block = fresh;
    count = newCount;
    capacity = room;
    return true;
  }

  T* block = nullptr;
  CFIndex count = 0;
  CFIndex capacity = 0;
};

/// Whether a range lies within so many values.
inline bool isWithin(CFRange range, CFIndex count) {
  return range.location >= 0 && range.length >= 0 && range.location <= count &&
         range.length <= count - range.location;
}

}  // namespace platform::corefoundation

#endif
