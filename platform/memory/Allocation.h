// Licence: MIT, see LICENSE.
// Where the blocks of the Memory Manager come from, and a way to make it run out of memory on
// purpose: every road that handles a lack of memory can be walked that way, one allocation after
// the other.
//
// Unless somebody asks for a failure, an allocation costs one comparison more than malloc.
#ifndef PLATFORM_MEMORY_ALLOCATION_H
#define PLATFORM_MEMORY_ALLOCATION_H

#include <CarbonCore/MacTypes.h>

#include <cstddef>

namespace platform::memory {

/// Like malloc, calloc and realloc, but a size of 0 gives a block too. Null when there is no
/// memory, or when it is this one's turn to fail. Any thread. The blocks are freed by std::free.
void* allocate(std::size_t size);
void* allocateCleared(std::size_t size);
void* reallocate(void* block, std::size_t size);

enum class FailureRun { kOne, kAllFollowing };

/// Lets the `turn`th allocation of the process from now on fail, counted from 1, or it and all that
/// follow. 0 ends that. The environment variable QRL_FAIL_ALLOCATION sets the same at the start of
/// a program: `3` is the third one, `3+` the third and all that follow.
void failAllocation(UInt32 turn, FailureRun run = FailureRun::kOne);

/// Counts an allocation that is made by other means, such as `new`. False if it is to fail.
bool mayAllocate();

/// Whether an allocation has failed on purpose since failAllocation was called.
bool allocationHasFailed();

}  // namespace platform::memory

#endif
