// Licence: MIT, see LICENSE.
#include "platform/appleevents/Storage.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/mach/KeptBlocks.h"
#include "platform/memory/Allocation.h"

namespace tests {
namespace {

using platform::appleevents::Storage;
using platform::mach::kLargestKept;
using platform::mach::kSmallestKept;
using platform::mach::withdrawKept;

class StorageBlocks : public testing::Test {
 protected:
  StorageBlocks() { forgetAll(); }
  ~StorageBlocks() override {
    platform::memory::failAllocation(0);
    forgetAll();
  }
  static void forgetAll() {
    while (withdrawKept(0)) continue;
  }
  static bool holds(const Storage& storage, std::size_t offset, std::size_t size, std::byte value) {
    return std::ranges::count(storage.bytes().subspan(offset, size), value) ==
           static_cast<std::ptrdiff_t>(size);
  }
};

TEST_F(StorageBlocks, AreUsedAgainWhenTheyAreLarge) {
  const std::byte* memory = Storage::make(kSmallestKept)->bytes().data();
  const std::unique_ptr<Storage> again = Storage::make(kSmallestKept - 100, kSmallestKept);
  EXPECT_EQ(memory, again->bytes().data());
  EXPECT_FALSE(withdrawKept(0));
}

TEST_F(StorageBlocks, AreNotKeptWhenTheyAreSmallOrHuge) {
  for (const std::size_t size : {kSmallestKept - 1, kLargestKept + 1}) {
    ASSERT_TRUE(Storage::make(size));
    EXPECT_FALSE(withdrawKept(0)) << size;
  }
}

TEST_F(StorageBlocks, KeepTheirContentsHoweverTheyGrow) {
  const std::unique_ptr<Storage> storage = Storage::make(0);
  const std::size_t steps[] = {100, kSmallestKept, 100'000, kLargestKept, kLargestKept};
  std::size_t size = 0;
  for (std::size_t i = 0; i < std::size(steps); ++i) {
    std::byte* room = storage->splice(size, 0, steps[i]);
    ASSERT_NE(nullptr, room);
    std::fill_n(room, steps[i], static_cast<std::byte>(i));
    size += steps[i];
  }
  std::size_t offset = 0;
  for (std::size_t i = 0; i < std::size(steps); ++i) {
    EXPECT_TRUE(holds(*storage, offset, steps[i], static_cast<std::byte>(i))) << i;
    offset += steps[i];
  }
}

TEST_F(StorageBlocks, AreAsTheyWereWhenThereIsNoMemory) {
  ASSERT_TRUE(Storage::make(kSmallestKept));  // which waits to be used
  const std::unique_ptr<Storage> storage = Storage::make(10);
  std::ranges::fill(storage->writable(), std::byte{7});
  platform::memory::failAllocation(1);
  EXPECT_EQ(nullptr, storage->splice(10, 0, kSmallestKept - 10));
  EXPECT_EQ(10u, storage->bytes().size());
  EXPECT_TRUE(holds(*storage, 0, 10, std::byte{7}));
}

}  // namespace
}  // namespace tests
