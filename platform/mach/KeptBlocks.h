// Licence: MIT, see LICENSE.
// Blocks of large messages, kept for the next ones. The allocator gives memory of that size back to
// the host, which clears every page of it anew: that takes longer than sending it.
//
// A block is in use or waits here. What is in use may be larger than what lies in it, which a
// stranger has chosen; so there are few places, and whoever finds none uses a block of the size
// that it needs and frees it for good.
#ifndef PLATFORM_MACH_KEPTBLOCKS_H
#define PLATFORM_MACH_KEPTBLOCKS_H

#include <cstddef>
#include <memory>

#include "platform/mach/PortSpace.h"

namespace platform::mach {

/// Smaller blocks are not worth it, and larger ones too much to hold for nothing.
inline constexpr std::size_t kSmallestKept = std::size_t{32} << 10;
inline constexpr std::size_t kLargestKept = std::size_t{2} << 20;
/// How many blocks a process keeps, those in use included.
inline constexpr std::size_t kMostKept = 4;

inline bool isWorthKeeping(std::size_t size) {
  return size >= kSmallestKept && size <= kLargestKept;
}

/// Memory that may be larger than what lies in it.
struct Block {
  std::unique_ptr<std::byte[], Buffer::Free> memory;
  std::size_t capacity = 0;
  explicit operator bool() const { return memory != nullptr; }
};

/// A fresh block, placed so that it is sent and received fast; none when memory is exhausted.
Block freshBlock(std::size_t capacity);

/// Takes out the smallest waiting block of at least this size; none if there is none.
Block withdrawKept(std::size_t size);

/// Gives a block that is in use a place, to which Buffer::Free brings it. A smaller one that waits
/// makes room for it. False if there is no place.
bool keepOnceFree(std::byte* memory, std::size_t capacity);

/// Keeps a fresh block of this size, if there is a place.
void keepOne(std::size_t capacity);

/// Lets a block in use be moved or freed by others, as if it had never had a place.
void keepNoMore(std::byte* memory);

}  // namespace platform::mach

#endif
