// Licence: MIT, see LICENSE.
// Walks an operation with each of its allocations failing in turn. Those of the Memory Manager
// count, and those by `new` in test programs that link test_failing_new. Other threads must be
// quiet meanwhile: the count is the process's.
#ifndef TESTS_SUPPORT_ALLOCATIONFAILURES_H
#define TESTS_SUPPORT_ALLOCATIONFAILURES_H

#include <gtest/gtest.h>

#include "platform/memory/Allocation.h"

namespace tests {

/// Ends the failing of allocations with the test that asked for it.
class AllocationFailure final {
 public:
  explicit AllocationFailure(
      UInt32 turn, platform::memory::FailureRun run = platform::memory::FailureRun::kOne) {
    platform::memory::failAllocation(turn, run);
  }
  ~AllocationFailure() { platform::memory::failAllocation(0); }
  AllocationFailure(const AllocationFailure&) = delete;
  AllocationFailure& operator=(const AllocationFailure&) = delete;
};

/// Runs `operation` with its first allocation failing, then with its second, until none is left to
/// fail. `check(result, failed)` follows each run, with memory to be had again: `failed` is false
/// the last time. Gives the number of allocations.
template <typename Operation, typename Check>
UInt32 failEachAllocation(Operation operation, Check check) {
  constexpr UInt32 kMost = 10000;
  for (UInt32 turn = 1; turn <= kMost; ++turn) {
    SCOPED_TRACE(testing::Message() << "allocation " << turn << " fails");
    platform::memory::failAllocation(turn);
    const auto result = operation();
    const bool failed = platform::memory::allocationHasFailed();
    platform::memory::failAllocation(0);
    check(result, failed);
    if (!failed) return turn - 1;
  }
  ADD_FAILURE() << "the operation never came to its end";
  return kMost;
}

}  // namespace tests

#endif
