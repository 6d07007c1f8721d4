// Licence: MIT, see LICENSE.
#include <CarbonCore/MacErrors.h>
#include <CarbonCore/MacMemory.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <thread>

namespace {

TEST(Pointers, KeepTheSizeThatWasAskedFor) {
  for (Size size : {0, 1, 17, 100000}) {
    Ptr pointer = NewPtr(size);
    ASSERT_NE(pointer, nullptr);
    EXPECT_EQ(MemError(), noErr);
    EXPECT_EQ(GetPtrSize(pointer), size);
    DisposePtr(pointer);
    EXPECT_EQ(MemError(), noErr);
  }
}

TEST(Pointers, AreZeroedWhenClearIsAskedFor) {
  constexpr Size kSize = 4096;
  Ptr pointer = NewPtrClear(kSize);
  ASSERT_NE(pointer, nullptr);
  for (Size i = 0; i < kSize; ++i) ASSERT_EQ(pointer[i], 0) << "byte " << i;
  DisposePtr(pointer);
}

TEST(Pointers, OfANegativeSizeAreRefused) {
  EXPECT_EQ(NewPtr(-1), nullptr);
  EXPECT_EQ(MemError(), memFullErr);
  EXPECT_EQ(NewPtrClear(-100), nullptr);
  EXPECT_EQ(MemError(), memFullErr);
}

TEST(Pointers, ThatAreNoneHaveNoSizeAndAreNotFreed) {
  int local = 0;
  for (Ptr stranger : {Ptr{nullptr}, reinterpret_cast<Ptr>(&local)}) {
    EXPECT_EQ(GetPtrSize(stranger), 0);
    EXPECT_EQ(MemError(), memWZErr);
    DisposePtr(stranger);
    EXPECT_EQ(MemError(), memWZErr);
  }
}

TEST(Pointers, AreFreedOnce) {
  Ptr pointer = NewPtr(8);
  DisposePtr(pointer);
  DisposePtr(pointer);
  EXPECT_EQ(MemError(), memWZErr);
  EXPECT_EQ(GetPtrSize(pointer), 0);
}

TEST(Pointers, AreNotHandles) {
  Ptr pointer = NewPtr(sizeof(Ptr));
  EXPECT_EQ(GetHandleSize(reinterpret_cast<Handle>(pointer)), 0);
  EXPECT_EQ(MemError(), memWZErr);
  DisposePtr(pointer);
}

TEST(MemError, IsTheThreadsOwn) {
  NewPtr(-1);
  std::thread([] { EXPECT_EQ(MemError(), noErr); }).join();
  EXPECT_EQ(MemError(), memFullErr);
}

TEST(BlockMoveData, MovesOverlappingAreasBothWays) {
  std::array<char, 8> text{'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
  BlockMoveData(text.data(), text.data() + 2, 4);
  EXPECT_EQ(std::string(text.data(), text.size()), "ababcdgh");
  BlockMoveData(text.data() + 2, text.data(), 4);
  EXPECT_EQ(std::string(text.data(), text.size()), "abcdcdgh");
}

TEST(BlockMoveData, MovesNothingForACountBelowOne) {
  char target = 'x';
  BlockMoveData("y", &target, 0);
  BlockMoveData("y", &target, -1);
  EXPECT_EQ(target, 'x');
}

TEST(BlockMoveData, LeavesMemErrorAlone) {
  char target = 'x';
  NewPtr(-1);
  BlockMoveData("y", &target, 1);
  EXPECT_EQ(MemError(), memFullErr);
}

}  // namespace
