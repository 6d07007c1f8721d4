// Licence: MIT, see LICENSE.
#include "platform/memory/Allocation.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "tests/support/AllocationFailures.h"
#include "tests/support/ChildProcess.h"

namespace {

using platform::memory::allocate;
using platform::memory::allocateCleared;
using platform::memory::allocationHasFailed;
using platform::memory::FailureRun;
using platform::memory::mayAllocate;
using tests::AllocationFailure;

struct Free {
  void operator()(void* block) const { std::free(block); }
};
using Block = std::unique_ptr<void, Free>;

/// A + for each of so many allocations that is granted, a - for each that is not.
std::string granted(int count) {
  std::string marks;
  marks.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) marks += mayAllocate() ? '+' : '-';
  return marks;
}

/// The same of a program's handles, with the setting in its environment.
std::string grantedWith(const std::string& setting) {
  tests::ChildOptions options;
  options.environment = {{"QRL_FAIL_ALLOCATION", setting}};
  tests::ChildProcess program({QRL_ALLOCATING_PROGRAM}, options);
  return program.readLine().value_or("no output");
}

TEST(Allocation, GivesABlockAlsoForNothing) {
  EXPECT_NE(Block(allocate(0)), nullptr);
  EXPECT_NE(Block(allocateCleared(0)), nullptr);
  EXPECT_NE(Block(platform::memory::reallocate(allocate(4), 0)), nullptr);
}

TEST(Allocation, FailsOnItsTurnAlone) {
  std::string marks(8, ' ');
  {
    const AllocationFailure failure(3);
    for (char& mark : marks) mark = mayAllocate() ? '+' : '-';
  }
  EXPECT_EQ(marks, "++-+++++");
}

TEST(Allocation, FailsFromItsTurnOn) {
  std::string marks(8, ' ');
  {
    const AllocationFailure failure(3, FailureRun::kAllFollowing);
    for (char& mark : marks) mark = mayAllocate() ? '+' : '-';
  }
  EXPECT_EQ(marks, "++------");
}

TEST(Allocation, DoesNotFailUnasked) {
  EXPECT_EQ(granted(8), "++++++++");
  EXPECT_FALSE(allocationHasFailed());
}

TEST(Allocation, TellsWhetherOneHasFailedSinceThatWasAskedFor) {
  const AllocationFailure failure(2);
  EXPECT_TRUE(mayAllocate());
  const bool before = allocationHasFailed();
  EXPECT_FALSE(mayAllocate());
  const bool after = allocationHasFailed();
  platform::memory::failAllocation(0);
  EXPECT_FALSE(before);
  EXPECT_TRUE(after);
  EXPECT_FALSE(allocationHasFailed());
}

TEST(Allocation, LeavesABlockAloneThatItCannotResize) {
  char* block = static_cast<char*>(allocate(4));
  ASSERT_NE(block, nullptr);
  const Block owner(block);
  block[3] = 'x';
  const AllocationFailure failure(1);
  EXPECT_EQ(platform::memory::reallocate(block, 400), nullptr);
  EXPECT_EQ(block[3], 'x');
}

TEST(Allocation, FailsByNewToo) {
  bool thrown = false;
  {
    const AllocationFailure failure(1);
    try {
      std::make_unique<int>(1);
    } catch (const std::bad_alloc&) {
      thrown = true;
    }
  }
  EXPECT_TRUE(thrown);
}

TEST(AllocationSetting, LetsAProgramsAllocationsFail) {
  // A handle takes a block, a master pointer and an entry in the table; one whose block or master
  // pointer is missing goes no further.
  const struct {
    const char* setting;
    const char* handles;
  } rows[] = {
      {"1", "-+++++"},
      {"2", "-+++++"},
      {"3", "-+++++"},
      {"4", "+-++++"},
      {"13", "++++-+"},
      {"19", "++++++"},
      {"1+", "------"},
      {"7+", "++----"},
      {"0", "++++++"},
      {"", "++++++"},
      {"x", "++++++"},
      {"-1", "++++++"},
      {"1 +", "++++++"},
      {" 1", "++++++"},
      {"1x", "++++++"},
      {"1++", "++++++"},
      {"99999999999999999999", "++++++"},
  };
  for (const auto& row : rows) EXPECT_EQ(grantedWith(row.setting), row.handles) << row.setting;
}

}  // namespace
