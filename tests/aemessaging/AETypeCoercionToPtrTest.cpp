// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/aemessaging/AETypeCoercion.h>

#include <algorithm>
#include <array>
#include <string>

#include "tests/platform/appleevents/Descriptors.h"
#include "tests/support/AllocationFailures.h"

namespace {

using tests::Desc;

constexpr SInt32 kLowest = -0x7FFFFFFF - 1;
constexpr SInt32 kHighest = 0x7FFFFFFF;

// A buffer of twelve bytes, and what a call left in it.
struct Room {
  std::array<char, 12> bytes;
  Room() { bytes.fill('.'); }
  std::string text() const { return std::string(bytes.begin(), bytes.end()); }
};

struct CopyCase {
  SInt32 bufferSize;
  SInt32 offset;
  SInt32 result;
  const char* room;
};

const CopyCase kCopies[] = {
    {100, 0, 10, "0123456789.."},
    {10, 0, 10, "0123456789.."},
    {4, 0, 4, "0123........"},
    {0, 0, 0, "............"},
    {100, 6, 4, "6789........"},
    {2, 6, 2, "67.........."},
    {100, 9, 1, "9..........."},
    {100, 10, 0, "............"},
    {100, 11, paramErr, "............"},
    {100, kHighest, paramErr, "............"},
    {100, -4, 4, "6789........"},
    {3, -4, 3, "678........."},
    {100, -10, 10, "0123456789.."},
    {100, -11, paramErr, "............"},
    {100, kLowest, paramErr, "............"},
    {-1, 0, paramErr, "............"},
    {kLowest, -4, paramErr, "............"},
};

TEST(CopyDescToPtr, CopiesFromAnOffsetOnAndCountsTheBytes) {
  const Desc desc = tests::makeText("0123456789");
  for (const auto& [bufferSize, offset, result, expected] : kCopies) {
    SCOPED_TRACE(testing::Message() << bufferSize << " bytes from " << offset);
    Room room;
    SInt32 actualSize = 0;
    EXPECT_EQ(AECopyDescToPtr(*&desc, room.bytes.data(), bufferSize, &actualSize, offset), result);
    EXPECT_EQ(actualSize, 10);
    EXPECT_EQ(room.text(), expected);
  }
}

TEST(CopyDescToPtr, OnlyCountsWithoutABuffer) {
  const Desc desc = tests::makeText("0123456789");
  for (const auto& [bufferSize, offset, result, expected] : kCopies) {
    SInt32 actualSize = 0;
    EXPECT_EQ(AECopyDescToPtr(*&desc, nullptr, bufferSize, &actualSize, offset), result);
    EXPECT_EQ(actualSize, 10);
    EXPECT_EQ(AECopyDescToPtr(*&desc, nullptr, bufferSize, nullptr, offset), result);
  }
}

TEST(CopyDescToPtr, CopiesAnySizeFromAnyOffset) {
  std::string text(40, ' ');
  for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>('!' + i);
  const Desc desc = tests::makeText(text);
  const auto size = static_cast<SInt32>(text.size());
  for (SInt32 offset = -size; offset <= size; ++offset) {
    const SInt32 begin = offset < 0 ? offset + size : offset;
    for (SInt32 count = 0; count <= size; ++count) {
      std::string room(text.size(), '.');
      const SInt32 copied = std::min(count, size - begin);
      ASSERT_EQ(AECopyDescToPtr(*&desc, room.data(), count, nullptr, offset), copied);
      ASSERT_EQ(room,
                text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(copied)) +
                    std::string(text.size() - static_cast<std::size_t>(copied), '.'));
    }
  }
}

TEST(CopyDescToPtr, CountsMoreBytesThanAShortHas) {
  const Desc desc = tests::makeText(std::string(70000, 'x'));
  EXPECT_EQ(AECopyDescToPtr(*&desc, nullptr, kHighest, nullptr, 0), 70000);
  EXPECT_EQ(AECopyDescToPtr(*&desc, nullptr, 50000, nullptr, 10000), 50000);
}

TEST(CopyDescToPtr, HasNothingOfANullDescriptor) {
  const Desc nothing;
  Room room;
  SInt32 actualSize = 5;
  EXPECT_EQ(AECopyDescToPtr(*&nothing, room.bytes.data(), 12, &actualSize, 0), 0);
  EXPECT_EQ(actualSize, 0);
  EXPECT_EQ(AECopyDescToPtr(*&nothing, room.bytes.data(), 12, nullptr, -1), paramErr);
  EXPECT_EQ(room.text(), "............");
}

TEST(CopyDescToPtr, NeedsMemoryForAnOffset) {
  const Desc desc = tests::makeText("0123456789");
  Room room;
  const tests::AllocationFailure failure(1);
  EXPECT_EQ(AECopyDescToPtr(*&desc, room.bytes.data(), 12, nullptr, 0), 10);
  room = Room();
  EXPECT_EQ(AECopyDescToPtr(*&desc, room.bytes.data(), 12, nullptr, 6), memFullErr);
  EXPECT_EQ(room.text(), "............");
}

// -- Of a descriptor, coerced --

TEST(CoerceDescToPtr, CopiesWhatHasTheType) {
  const Desc desc = tests::makeText("0123456789");
  for (const auto& [bufferSize, offset, result, expected] : kCopies) {
    Room room;
    SInt32 actualSize = 0;
    EXPECT_EQ(
        AECoerceDescToPtr(*&desc, room.bytes.data(), bufferSize, typeChar, &actualSize, offset),
        result);
    EXPECT_EQ(actualSize, 10);
    EXPECT_EQ(room.text(), expected);
  }
}

TEST(CoerceDescToPtr, CopiesWhatItCoerced) {
  const Desc desc = tests::makeValue<SInt64>(typeSInt64, 123456789);
  const std::pair<SInt32, std::string> cases[] = {
      {0, "123456789..."}, {-3, "789........."}, {4, "56789......."}};
  for (const auto& [offset, expected] : cases) {
    Room room;
    SInt32 actualSize = 0;
    EXPECT_EQ(AECoerceDescToPtr(*&desc, room.bytes.data(), 12, typeChar, &actualSize, offset),
              static_cast<SInt32>(expected.find('.')));
    EXPECT_EQ(actualSize, 9);
    EXPECT_EQ(room.text(), expected);
  }
}

TEST(CoerceDescToPtr, LeavesEverythingAloneWhenItCannotCoerce) {
  const Desc desc = tests::makeText("no number");
  Room room;
  SInt32 actualSize = -7;
  EXPECT_EQ(AECoerceDescToPtr(*&desc, room.bytes.data(), 12, typeSInt32, &actualSize, 0),
            errAECoercionFail);
  EXPECT_EQ(actualSize, -7);
  EXPECT_EQ(room.text(), "............");
}

TEST(CoerceDescToPtr, FailsWithEachAllocationAndLeaksNothing) {
  const Desc desc = tests::makeText("hello");
  tests::failEachAllocation(
      [&] {
        Room room;
        return AECoerceDescToPtr(*&desc, room.bytes.data(), 12, typeUTF8Text, nullptr, 2);
      },
      [](SInt32 result, bool failed) { EXPECT_EQ(result, failed ? SInt32{memFullErr} : 3); });
}

// -- Of a block --

TEST(CoercePtrToPtr, CopiesWhatItCoerced) {
  const SInt32 number = 123456789;
  const CopyCase cases[] = {{12, 0, 9, "123456789..."},
                            {12, -3, 3, "789........."},
                            {12, -10, paramErr, "............"},
                            {-1, 0, paramErr, "............"}};
  for (const auto& [bufferSize, offset, result, expected] : cases) {
    Room room;
    SInt32 actualSize = 0;
    EXPECT_EQ(AECoercePtrToPtr(typeSInt32, &number, 4, typeChar, room.bytes.data(), bufferSize,
                               &actualSize, offset),
              result);
    EXPECT_EQ(actualSize, 9);
    EXPECT_EQ(room.text(), expected);
  }
}

TEST(CoercePtrToPtr, FailsWhereItCannotCoerce) {
  Room room;
  SInt32 actualSize = -7;
  EXPECT_EQ(AECoercePtrToPtr(typeChar, "x", 1, typeSInt32, room.bytes.data(), 12, &actualSize, 0),
            errAECoercionFail);
  EXPECT_EQ(actualSize, -7);
  EXPECT_EQ(room.text(), "............");
}

// The direct path: an offset is taken as it is, and nothing is an error.
TEST(CoercePtrToPtr, MovesBytesOfTheSameTypeAsTheyLie) {
  const char whole[] = "abcd0123456789";
  const char* block = whole + 4;
  const CopyCase cases[] = {
      {100, 0, 10, "0123456789.."},       {4, 0, 4, "0123........"},
      {100, 6, 4, "6789........"},        {100, 10, 0, "............"},
      {100, 11, 0, "............"},       {0, 0, 0, "............"},
      {-1, 0, 0, "............"},         {8, -4, 8, "abcd0123...."},
      {100, kHighest, 0, "............"}, {kLowest, kLowest, 0, "............"},
  };
  for (const auto& [bufferSize, offset, result, expected] : cases) {
    SCOPED_TRACE(testing::Message() << bufferSize << " bytes from " << offset);
    Room room;
    SInt32 actualSize = 0;
    EXPECT_EQ(AECoercePtrToPtr(typeChar, block, 10, typeChar, room.bytes.data(), bufferSize,
                               &actualSize, offset),
              result);
    EXPECT_EQ(actualSize, 10);
    EXPECT_EQ(room.text(), expected);
  }
}

TEST(CoercePtrToPtr, MovesAnySizeFromAnyOffset) {
  const std::string text = "the quick brown fox";
  const auto size = static_cast<SInt32>(text.size());
  for (SInt32 offset = 0; offset <= size; ++offset) {
    for (SInt32 count = 0; count <= size; ++count) {
      std::string room;
      room.resize(text.size());
      const SInt32 moved = std::min(count, size - offset);
      ASSERT_EQ(AECoercePtrToPtr(typeChar, text.data(), size, typeChar, room.data(), count, nullptr,
                                 offset),
                moved);
      ASSERT_EQ(room.substr(0, static_cast<std::size_t>(moved)),
                text.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(moved)));
    }
  }
}

TEST(CoercePtrToPtr, MovesNothingFromOrToNowhere) {
  Room room;
  SInt32 actualSize = 0;
  EXPECT_EQ(AECoercePtrToPtr(typeChar, "text", 4, typeChar, nullptr, 12, &actualSize, 0), 0);
  EXPECT_EQ(actualSize, 4);
  EXPECT_EQ(AECoercePtrToPtr(typeChar, nullptr, 4, typeChar, room.bytes.data(), 12, &actualSize, 0),
            0);
  EXPECT_EQ(room.text(), "............");
}

}  // namespace
