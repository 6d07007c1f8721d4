// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFData.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/ObjectTesting.h"

using namespace tests;

namespace {

const UInt8 kBytes[] = {'a', 'b', 0, 'c', 0xFF};
const std::string kText("ab\0c\xFF", 5);

Held<CFDataRef> dataOf(const std::string& bytes, CFAllocatorRef allocator = nullptr) {
  return Held<CFDataRef>(CFDataCreate(allocator, reinterpret_cast<const UInt8*>(bytes.data()),
                                      static_cast<CFIndex>(bytes.size())));
}

Held<CFMutableDataRef> mutableDataOf(const std::string& bytes, CFIndex capacity = 0) {
  return Held<CFMutableDataRef>(CFDataCreateMutableCopy(nullptr, capacity, dataOf(bytes).get()));
}

std::string bytesOf(CFDataRef data) {
  return std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
                     static_cast<std::size_t>(CFDataGetLength(data)));
}

const UInt8* bytes(const char* text) { return reinterpret_cast<const UInt8*>(text); }

}  // namespace

TEST(CFData, CopiesItsBytes) {
  UInt8 source[5];
  std::memcpy(source, kBytes, 5);
  const Held data(CFDataCreate(nullptr, source, 5));
  std::memset(source, 0, 5);
  EXPECT_EQ(CFDataGetLength(data.get()), 5);
  EXPECT_EQ(bytesOf(data.get()), kText);
  EXPECT_EQ(CFGetTypeID(data.get()), CFDataGetTypeID());
}

TEST(CFData, MayBeEmpty) {
  const Held data(CFDataCreate(nullptr, nullptr, 0));
  ASSERT_TRUE(data);
  EXPECT_EQ(CFDataGetLength(data.get()), 0);
}

TEST(CFData, IsNotMadeOfBadArguments) {
  EXPECT_EQ(CFDataCreate(nullptr, nullptr, 1), nullptr);
  EXPECT_EQ(CFDataCreate(nullptr, kBytes, -1), nullptr);
  EXPECT_EQ(CFDataCreate(nullptr, kBytes, std::numeric_limits<CFIndex>::max()), nullptr);
  EXPECT_EQ(CFDataCreateWithBytesNoCopy(nullptr, nullptr, 1, kCFAllocatorNull), nullptr);
  EXPECT_EQ(CFDataCreateWithBytesNoCopy(nullptr, kBytes, -1, kCFAllocatorNull), nullptr);
  EXPECT_EQ(CFDataCreateCopy(nullptr, nullptr), nullptr);
  EXPECT_EQ(CFDataCreateMutable(nullptr, -1), nullptr);
}

TEST(CFData, WithoutCopyingLeavesTheBytesToTheCaller) {
  const CFDataRef data = CFDataCreateWithBytesNoCopy(nullptr, kBytes, 5, kCFAllocatorNull);
  EXPECT_EQ(CFDataGetBytePtr(data), kBytes);
  CFRelease(data);
  EXPECT_EQ(kBytes[0], 'a');
}

TEST(CFData, WithoutCopyingGivesTheBytesToTheirDeallocator) {
  CountingAllocator allocator;
  const CFIndex references = CFGetRetainCount(allocator.get());
  UInt8* block = static_cast<UInt8*>(CFAllocatorAllocate(allocator.get(), 5, 0));
  std::memcpy(block, kBytes, 5);
  const CFDataRef data = CFDataCreateWithBytesNoCopy(nullptr, block, 5, allocator.get());
  EXPECT_EQ(CFDataGetBytePtr(data), block);
  EXPECT_EQ(CFGetRetainCount(allocator.get()), references + 1);
  CFRelease(data);
  EXPECT_EQ(allocator.blocks(), 0);
  EXPECT_EQ(CFGetRetainCount(allocator.get()), references);
}

TEST(CFData, WithoutADeallocatorTheDefaultOneTakesTheBytes) {
  UInt8* block = static_cast<UInt8*>(CFAllocatorAllocate(nullptr, 5, 0));
  std::memcpy(block, kBytes, 5);
  const Held data(CFDataCreateWithBytesNoCopy(nullptr, block, 5, nullptr));
  EXPECT_EQ(bytesOf(data.get()), kText);
}

TEST(CFData, LeavesTheBytesToTheCallerWhenThereIsNoMemory) {
  CountingAllocator allocator;
  void* block = CFAllocatorAllocate(allocator.get(), 5, 0);
  allocator.failAfter(0);
  EXPECT_EQ(
      CFDataCreateWithBytesNoCopy(allocator.get(), static_cast<UInt8*>(block), 5, allocator.get()),
      nullptr);
  EXPECT_EQ(allocator.blocks(), 1);
  CFAllocatorDeallocate(allocator.get(), block);
}

TEST(CFData, CopiesByRetainingBytesOfItsOwn) {
  const Held<CFDataRef> data = dataOf("bytes");
  const Held copy(CFDataCreateCopy(nullptr, data.get()));
  EXPECT_EQ(copy.get(), data.get());
}

TEST(CFData, CopiesBytesThatMayChangeOrGo) {
  CountingAllocator allocator;
  const Held caller(CFDataCreateWithBytesNoCopy(nullptr, kBytes, 5, kCFAllocatorNull));
  const Held<CFMutableDataRef> changing = mutableDataOf("changing");
  const Held<CFDataRef> elsewhere = dataOf("elsewhere", allocator.get());
  for (const CFDataRef original :
       {caller.get(), static_cast<CFDataRef>(changing.get()), elsewhere.get()}) {
    const Held copy(CFDataCreateCopy(nullptr, original));
    EXPECT_NE(copy.get(), original);
    EXPECT_NE(CFDataGetBytePtr(copy.get()), CFDataGetBytePtr(original));
    EXPECT_TRUE(CFEqual(copy.get(), original));
  }
}

TEST(CFData, EqualsAndHashesByItsBytes) {
  const Held<CFDataRef> data = dataOf(kText);
  const Held<CFMutableDataRef> same = mutableDataOf(kText);
  EXPECT_TRUE(CFEqual(data.get(), same.get()));
  EXPECT_EQ(CFHash(data.get()), CFHash(same.get()));
  EXPECT_FALSE(CFEqual(data.get(), dataOf("ab").get()));
  EXPECT_NE(CFHash(data.get()), CFHash(dataOf("ab").get()));
  EXPECT_FALSE(CFEqual(dataOf("abc").get(), dataOf("abd").get()));
}

TEST(CFData, GivesTheBytesOfARange) {
  const Held<CFDataRef> data = dataOf("abcdef");
  UInt8 buffer[4] = "###";
  CFDataGetBytes(data.get(), {2, 2}, buffer);
  EXPECT_STREQ(reinterpret_cast<char*>(buffer), "cd#");
  for (const CFRange range : {CFRange{5, 2}, {-1, 1}, {2, -1}, {7, 0}}) {
    CFDataGetBytes(data.get(), range, buffer);
    EXPECT_STREQ(reinterpret_cast<char*>(buffer), "cd#");
  }
}

TEST(CFMutableData, StartsEmptyAndAppends) {
  const Held data(CFDataCreateMutable(nullptr, 0));
  EXPECT_EQ(CFDataGetLength(data.get()), 0);
  CFDataAppendBytes(data.get(), bytes("one"), 3);
  CFDataAppendBytes(data.get(), bytes("two"), 3);
  EXPECT_EQ(bytesOf(data.get()), "onetwo");
}

TEST(CFMutableData, GrowsWithZerosAndShrinks) {
  const Held<CFMutableDataRef> data = mutableDataOf("abc");
  CFDataSetLength(data.get(), 5);
  EXPECT_EQ(bytesOf(data.get()), std::string("abc\0\0", 5));
  CFDataSetLength(data.get(), 2);
  CFDataIncreaseLength(data.get(), 2);
  EXPECT_EQ(bytesOf(data.get()), std::string("ab\0\0", 4));
  CFDataSetLength(data.get(), 0);
  EXPECT_EQ(CFDataGetLength(data.get()), 0);
}

TEST(CFMutableData, ReplacesRangesWithMoreOrFewerBytes) {
  const Held<CFMutableDataRef> data = mutableDataOf("abcdef");
  CFDataReplaceBytes(data.get(), {1, 2}, bytes("12345"), 5);
  EXPECT_EQ(bytesOf(data.get()), "a12345def");
  CFDataReplaceBytes(data.get(), {1, 5}, bytes("x"), 1);
  EXPECT_EQ(bytesOf(data.get()), "axdef");
  CFDataDeleteBytes(data.get(), {3, 2});
  EXPECT_EQ(bytesOf(data.get()), "axd");
  CFDataReplaceBytes(data.get(), {3, 0}, bytes("end"), 3);
  EXPECT_EQ(bytesOf(data.get()), "axdend");
}

TEST(CFMutableData, AppendsItsOwnBytes) {
  const Held<CFMutableDataRef> data = mutableDataOf("abc");
  for (int i = 0; i < 5; ++i) {
    CFDataAppendBytes(data.get(), CFDataGetBytePtr(data.get()), CFDataGetLength(data.get()));
  }
  EXPECT_EQ(CFDataGetLength(data.get()), 96);
  EXPECT_EQ(bytesOf(data.get()).substr(90), "abcabc");
  CFDataReplaceBytes(data.get(), {0, 95}, CFDataGetBytePtr(data.get()) + 1, 2);
  EXPECT_EQ(bytesOf(data.get()), "bcc");
}

TEST(CFMutableData, IsWrittenInPlace) {
  const Held<CFMutableDataRef> data = mutableDataOf("abc");
  CFDataGetMutableBytePtr(data.get())[1] = 'X';
  EXPECT_EQ(bytesOf(data.get()), "aXc");
  EXPECT_EQ(CFDataGetMutableBytePtr(const_cast<CFMutableDataRef>(dataOf("abc").get())), nullptr);
}

TEST(CFMutableData, HoldsNoMoreThanItsCapacity) {
  const Held<CFMutableDataRef> data = mutableDataOf("abc", 4);
  CFDataAppendBytes(data.get(), bytes("de"), 2);
  CFDataSetLength(data.get(), 5);
  CFDataIncreaseLength(data.get(), 2);
  EXPECT_EQ(bytesOf(data.get()), "abc");
  CFDataReplaceBytes(data.get(), {0, 1}, bytes("xy"), 2);
  EXPECT_EQ(bytesOf(data.get()), "xybc");
  EXPECT_FALSE(mutableDataOf("abcde", 4));
}

TEST(CFMutableData, StaysAsItIsForBadArguments) {
  const Held<CFMutableDataRef> data = mutableDataOf("abc");
  CFDataAppendBytes(data.get(), nullptr, 2);
  CFDataAppendBytes(data.get(), kBytes, -1);
  CFDataReplaceBytes(data.get(), {2, 2}, kBytes, 1);
  CFDataReplaceBytes(data.get(), {-1, 1}, kBytes, 1);
  CFDataDeleteBytes(data.get(), {0, 4});
  CFDataSetLength(data.get(), -1);
  CFDataIncreaseLength(data.get(), -1);
  CFDataIncreaseLength(data.get(), std::numeric_limits<CFIndex>::max());
  EXPECT_EQ(bytesOf(data.get()), "abc");
}

TEST(CFMutableData, ImmutableDataDoesNotChange) {
  const Held<CFDataRef> data = dataOf("abc");
  const CFMutableDataRef forced = const_cast<CFMutableDataRef>(data.get());
  CFDataAppendBytes(forced, bytes("d"), 1);
  CFDataSetLength(forced, 1);
  CFDataIncreaseLength(forced, 1);
  CFDataDeleteBytes(forced, {0, 1});
  EXPECT_EQ(bytesOf(data.get()), "abc");
}

TEST(CFMutableData, StaysAsItIsWhenThereIsNoMemory) {
  CountingAllocator allocator;
  {
    const Held data(CFDataCreateMutable(allocator.get(), 0));
    CFDataAppendBytes(data.get(), bytes("abc"), 3);
    allocator.failAfter(0);
    CFDataAppendBytes(data.get(), bytes("0123456789"), 10);
    CFDataSetLength(data.get(), 1000);
    EXPECT_EQ(bytesOf(data.get()), "abc");
    EXPECT_EQ(CFDataCreateMutableCopy(allocator.get(), 0, data.get()), nullptr);
  }
  EXPECT_EQ(allocator.blocks(), 0);
}

TEST(CFData, TakesOtherObjectsForNoData) {
  const CFDataRef text = reinterpret_cast<CFDataRef>(CFSTR("text"));
  EXPECT_EQ(CFDataGetLength(text), 0);
  EXPECT_EQ(CFDataGetBytePtr(text), nullptr);
  EXPECT_EQ(CFDataGetLength(nullptr), 0);
  EXPECT_EQ(CFDataGetBytePtr(nullptr), nullptr);
}

TEST(CFData, DescribesItsFirstBytes) {
  EXPECT_THAT(describe(dataOf(kText).get()),
              testing::HasSubstr("{length = 5, bytes = 0x61620063ff}"));
  EXPECT_THAT(describe(dataOf(std::string(100, 'a')).get()), testing::HasSubstr("6161...}"));
}
