// Licence: MIT, see LICENSE.
#include <CarbonCore/DriverSynchronization.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

TEST(DriverSynchronization, CompareAndSwapStoresOnlyOverTheExpectedValue) {
  UInt32 word = 5;
  EXPECT_EQ(CompareAndSwap(4, 9, &word), 0);
  EXPECT_EQ(word, 5u);
  EXPECT_EQ(CompareAndSwap(5, 0xFFFFFFFF, &word), 1);
  EXPECT_EQ(word, 0xFFFFFFFFu);
}

TEST(DriverSynchronization, ArithmeticAnswersTheOldValue) {
  SInt32 word = 7;
  EXPECT_EQ(IncrementAtomic(&word), 7);
  EXPECT_EQ(DecrementAtomic(&word), 8);
  EXPECT_EQ(AddAtomic(-10, &word), 7);
  EXPECT_EQ(word, -3);
}

TEST(DriverSynchronization, BitOperationsAnswerTheOldValue) {
  UInt32 word = 0x0F;
  EXPECT_EQ(BitOrAtomic(0xF0, &word), 0x0Fu);
  EXPECT_EQ(BitAndAtomic(~UInt32{1}, &word), 0xFFu);
  EXPECT_EQ(BitXorAtomic(0x80000001, &word), 0xFEu);
  EXPECT_EQ(word, 0x800000FFu);
}

TEST(DriverSynchronization, ArithmeticWrapsRoundAtEachWidth) {
  SInt32 word = 0x7FFFFFFF;
  SInt16 half = 0x7FFF;
  SInt8 byte = 0x7F;
  EXPECT_EQ(IncrementAtomic(&word), 0x7FFFFFFF);
  EXPECT_EQ(IncrementAtomic16(&half), 0x7FFF);
  EXPECT_EQ(IncrementAtomic8(&byte), 0x7F);
  EXPECT_EQ(word, -0x7FFFFFFF - 1);
  EXPECT_EQ(half, -0x8000);
  EXPECT_EQ(byte, -0x80);
}

TEST(DriverSynchronization, HalfWordsLeaveTheirNeighbourAlone) {
  UInt16 halves[2] = {0x0001, 0xAAAA};
  EXPECT_EQ(BitOrAtomic16(0x18000, &halves[0]), 0x0001);
  EXPECT_EQ(BitAndAtomic16(0xFFFF8000, &halves[0]), 0x8001);
  EXPECT_EQ(BitXorAtomic16(0xFFFF, &halves[0]), 0x8000);
  EXPECT_EQ(halves[0], 0x7FFF);
  EXPECT_EQ(halves[1], 0xAAAA);
}

TEST(DriverSynchronization, HalfWordArithmeticUsesTheLowHalfOfTheAmount) {
  SInt16 half = 10;
  EXPECT_EQ(AddAtomic16(0x10005, &half), 10);
  EXPECT_EQ(DecrementAtomic16(&half), 15);
  EXPECT_EQ(half, 14);
}

TEST(DriverSynchronization, BytesLeaveTheirNeighboursAlone) {
  UInt8 bytes[4] = {0x01, 0x11, 0x22, 0x33};
  EXPECT_EQ(BitOrAtomic8(0x180, &bytes[0]), 0x01);
  EXPECT_EQ(BitAndAtomic8(0x80, &bytes[0]), 0x81);
  EXPECT_EQ(BitXorAtomic8(0xFF, &bytes[0]), 0x80);
  EXPECT_EQ(bytes[0], 0x7F);
  EXPECT_EQ(bytes[1], 0x11);
  EXPECT_EQ(bytes[2], 0x22);
  EXPECT_EQ(bytes[3], 0x33);
}

TEST(DriverSynchronization, ByteArithmeticUsesTheLowByteOfTheAmount) {
  SInt8 byte = 1;
  EXPECT_EQ(AddAtomic8(0x102, &byte), 1);
  EXPECT_EQ(DecrementAtomic8(&byte), 3);
  EXPECT_EQ(byte, 2);
}

TEST(DriverSynchronization, OneThreadOfManyFindsABitClear) {
  constexpr int kThreads = 8;
  UInt32 flags = 0;
  SInt32 winners = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      if ((BitOrAtomic(1, &flags) & 1) == 0) IncrementAtomic(&winners);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(winners, 1);
}

TEST(DriverSynchronization, NoChangeIsLostBetweenThreads) {
  constexpr int kRounds = 10000;
  SInt32 word = 0;
  SInt16 halves[2] = {0, 0};
  auto count = [&](int half) {
    for (int i = 0; i < kRounds; ++i) {
      IncrementAtomic(&word);
      IncrementAtomic16(&halves[half]);
    }
  };
  std::thread other(count, 1);
  count(0);
  other.join();
  EXPECT_EQ(word, 2 * kRounds);
  EXPECT_EQ(halves[0], kRounds);
  EXPECT_EQ(halves[1], kRounds);
}

}  // namespace
