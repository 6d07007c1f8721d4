// Licence: MIT, see LICENSE.
#include "platform/corefoundation/GrowingBuffer.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/platform/corefoundation/CountingAllocator.h"

using namespace tests;
using platform::corefoundation::GrowingBuffer;
using platform::corefoundation::isWithin;

namespace {

class GrowingBufferOfLetters : public testing::Test {
 protected:
  ~GrowingBufferOfLetters() override {
    buffer.release(allocator.get());
    EXPECT_EQ(allocator.blocks(), 0);
  }

  bool append(const std::string& text) {
    return buffer.append(allocator.get(), text.data(), static_cast<CFIndex>(text.size()));
  }
  std::string text() const {
    return std::string(buffer.data(), static_cast<std::size_t>(buffer.size()));
  }

  CountingAllocator allocator;
  GrowingBuffer<char> buffer;
};

TEST_F(GrowingBufferOfLetters, TakesNoMemoryBeforeItHoldsAnything) {
  EXPECT_TRUE(buffer.replace(allocator.get(), 0, 0, nullptr, 0));
  EXPECT_EQ(buffer.data(), nullptr);
  EXPECT_EQ(allocator.allocations(), 0);
}

TEST_F(GrowingBufferOfLetters, DoublesItsRoom) {
  for (int i = 0; i < 1000; ++i) EXPECT_TRUE(append("x"));
  EXPECT_EQ(buffer.size(), 1000);
  EXPECT_EQ(allocator.allocations(), 8);
}

TEST_F(GrowingBufferOfLetters, FillsWithZerosWhereThereIsNoSource) {
  append("ab");
  EXPECT_TRUE(buffer.replace(allocator.get(), 1, 0, nullptr, 2));
  EXPECT_EQ(text(), std::string("a\0\0b", 4));
}

TEST_F(GrowingBufferOfLetters, TakesASourceWithinItself) {
  append("abcdefgh");
  EXPECT_TRUE(buffer.replace(allocator.get(), 1, 3, buffer.data() + 2, 4));
  EXPECT_EQ(text(), "acdefefgh");
  EXPECT_TRUE(buffer.replace(allocator.get(), 0, 8, buffer.data() + 6, 2));
  EXPECT_EQ(text(), "fgh");
}

TEST_F(GrowingBufferOfLetters, ChangesNothingWithoutMemory) {
  append("abc");
  allocator.failAfter(0);
  EXPECT_FALSE(append("0123456789"));
  EXPECT_EQ(text(), "abc");
  EXPECT_TRUE(append("de"));
  EXPECT_EQ(text(), "abcde");
}

TEST_F(GrowingBufferOfLetters, RefusesCountsThatNoMemoryHolds) {
  append("abc");
  EXPECT_FALSE(buffer.append(allocator.get(), nullptr, std::numeric_limits<CFIndex>::max()));
  EXPECT_EQ(text(), "abc");
}

TEST(Ranges, LieWithinACountOrNot) {
  constexpr CFIndex kMost = std::numeric_limits<CFIndex>::max();
  EXPECT_TRUE(isWithin({0, 0}, 0));
  EXPECT_TRUE(isWithin({0, 3}, 3));
  EXPECT_TRUE(isWithin({3, 0}, 3));
  EXPECT_FALSE(isWithin({3, 1}, 3));
  EXPECT_FALSE(isWithin({-1, 1}, 3));
  EXPECT_FALSE(isWithin({1, -1}, 3));
  EXPECT_FALSE(isWithin({1, kMost}, 3));
  EXPECT_FALSE(isWithin({kMost, kMost}, 3));
}

}  // namespace
