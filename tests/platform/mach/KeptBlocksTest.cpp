// Licence: MIT, see LICENSE.
#include "platform/mach/KeptBlocks.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

namespace tests {
namespace {

using platform::mach::Block;
using platform::mach::freshBlock;
using platform::mach::keepNoMore;
using platform::mach::keepOnceFree;
using platform::mach::kLargestKept;
using platform::mach::kMostKept;
using platform::mach::kSmallestKept;
using platform::mach::withdrawKept;

class KeptBlocks : public testing::Test {
 protected:
  KeptBlocks() { forgetAll(); }
  ~KeptBlocks() override { forgetAll(); }

  static void forgetAll() {
    while (withdrawKept(0)) continue;
  }

  /// A block in use that has a place.
  static Block placed(std::size_t size) {
    Block block = freshBlock(size);
    EXPECT_TRUE(keepOnceFree(block.memory.get(), block.capacity));
    return block;
  }
};

TEST_F(KeptBlocks, ComeBackOnceTheyAreFree) {
  Block block = placed(kSmallestKept);
  const std::byte* memory = block.memory.get();
  EXPECT_FALSE(withdrawKept(0));
  block = Block();
  const Block again = withdrawKept(kSmallestKept);
  EXPECT_EQ(memory, again.memory.get());
  EXPECT_EQ(kSmallestKept, again.capacity);
  EXPECT_FALSE(withdrawKept(0));
}

TEST_F(KeptBlocks, AreNotThereForMoreThanTheyHold) {
  placed(kSmallestKept);
  EXPECT_FALSE(withdrawKept(kSmallestKept + 1));
  EXPECT_TRUE(withdrawKept(kSmallestKept));
}

TEST_F(KeptBlocks, AreTakenOutTheSmallestThatFitsFirst) {
  { const std::array<Block, 3> blocks = {placed(300'000), placed(100'000), placed(200'000)}; }
  EXPECT_EQ(200'000u, withdrawKept(100'001).capacity);
  EXPECT_EQ(100'000u, withdrawKept(0).capacity);
  EXPECT_EQ(300'000u, withdrawKept(0).capacity);
}

TEST_F(KeptBlocks, AreNeitherSmallNorHuge) {
  for (const std::size_t size : {kSmallestKept - 1, kLargestKept + 1}) {
    const Block block = freshBlock(size);
    EXPECT_FALSE(keepOnceFree(block.memory.get(), block.capacity)) << size;
  }
  placed(kLargestKept);
  EXPECT_TRUE(withdrawKept(kLargestKept));
}

TEST_F(KeptBlocks, AreAFewOnly) {
  std::vector<Block> blocks;
  for (std::size_t i = 0; i < kMostKept; ++i) blocks.push_back(placed(kSmallestKept));
  const Block oneMore = freshBlock(kLargestKept);
  EXPECT_FALSE(keepOnceFree(oneMore.memory.get(), oneMore.capacity));
  blocks.pop_back();
  EXPECT_TRUE(keepOnceFree(oneMore.memory.get(), oneMore.capacity));
}

TEST_F(KeptBlocks, MakeRoomForLargerOnes) {
  {
    std::vector<Block> blocks;
    for (std::size_t i = 0; i < kMostKept; ++i) blocks.push_back(placed(kSmallestKept + i));
  }
  const Block same = freshBlock(kSmallestKept);
  EXPECT_FALSE(keepOnceFree(same.memory.get(), same.capacity));
  placed(kLargestKept);
  EXPECT_EQ(kSmallestKept + 1, withdrawKept(0).capacity);  // the smallest of all has gone
}

// Where the host would copy packets slowly into and out of them.
TEST_F(KeptBlocks, AreWellAligned) {
  for (int i = 0; i < 40; ++i) {
    const Block block = freshBlock(kSmallestKept + 4096);
    const auto address = reinterpret_cast<std::uintptr_t>(block.memory.get());
    EXPECT_EQ(0u, address % 128);
  }
}

TEST_F(KeptBlocks, CanBeMadeInAdvance) {
  platform::mach::keepOne(50'000);
  EXPECT_EQ(50'000u, withdrawKept(0).capacity);
}

TEST_F(KeptBlocks, CanBeHadForGood) {
  Block block = placed(kSmallestKept);
  keepNoMore(block.memory.get());
  keepNoMore(nullptr);
  block = Block();
  EXPECT_FALSE(withdrawKept(0));
}

TEST_F(KeptBlocks, BelongToOneThreadAtATime) {
  const auto use = [](unsigned char mark) {
    for (int i = 0; i < 2000; ++i) {
      Block block = withdrawKept(kSmallestKept);
      if (!block) block = freshBlock(kSmallestKept);
      std::memset(block.memory.get(), mark, 64);
      keepOnceFree(block.memory.get(), block.capacity);
      for (int at = 0; at < 64; ++at) ASSERT_EQ(std::byte{mark}, block.memory[at]);
    }
  };
  std::vector<std::thread> threads;
  for (unsigned char mark = 1; mark <= 6; ++mark) threads.emplace_back(use, mark);
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace tests
