// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFString.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <limits>
#include <string>

#include "tests/platform/corefoundation/ObjectTesting.h"

using namespace tests;

namespace {

struct Made {
  CFIndex units;
  CFIndex used;
  std::string bytes;
};

Made bytesOf(CFStringRef string, CFRange range, CFStringEncoding encoding, UInt8 loss,
             Boolean external, CFIndex room) {
  UInt8 buffer[64];
  std::memset(buffer, '#', sizeof buffer);
  Made made = {0, -1, {}};
  made.units = CFStringGetBytes(string, range, encoding, loss, external, buffer, room, &made.used);
  made.bytes.assign(reinterpret_cast<char*>(buffer), static_cast<std::size_t>(made.used));
  EXPECT_EQ(buffer[made.used], '#') << "wrote past what it says";
  return made;
}

}  // namespace

TEST(CFStringGetCString, GivesTextInEachByteEncoding) {
  const Held<CFStringRef> cafe = stringOf("café");
  const struct {
    CFStringEncoding encoding;
    const char* bytes;
  } rows[] = {{kCFStringEncodingMacRoman, "caf\x8e"},
              {kCFStringEncodingISOLatin1, "caf\xe9"},
              {kCFStringEncodingUTF8, "caf\xc3\xa9"}};
  for (const auto& row : rows) {
    char buffer[16] = "###############";
    EXPECT_TRUE(CFStringGetCString(cafe.get(), buffer, sizeof buffer, row.encoding));
    EXPECT_STREQ(buffer, row.bytes);
  }
}

TEST(CFStringGetCString, NeedsRoomForTheTerminator) {
  char buffer[4] = "###";
  EXPECT_FALSE(CFStringGetCString(CFSTR("abc"), buffer, 3, kCFStringEncodingMacRoman));
  EXPECT_STREQ(buffer, "");
  EXPECT_TRUE(CFStringGetCString(CFSTR("abc"), buffer, 4, kCFStringEncodingMacRoman));
  EXPECT_STREQ(buffer, "abc");
}

TEST(CFStringGetCString, FailsOnACharacterThatTheEncodingLacks) {
  const Held<CFStringRef> string = stringOf("a\u0416");
  char buffer[8] = "#######";
  EXPECT_FALSE(CFStringGetCString(string.get(), buffer, 8, kCFStringEncodingMacRoman));
  EXPECT_STREQ(buffer, "");
  EXPECT_TRUE(CFStringGetCString(string.get(), buffer, 8, kCFStringEncodingUTF8));
}

TEST(CFStringGetCString, FailsOnBadArguments) {
  char buffer[8] = "#######";
  EXPECT_FALSE(CFStringGetCString(CFSTR("a"), nullptr, 8, kCFStringEncodingUTF8));
  EXPECT_FALSE(CFStringGetCString(CFSTR("a"), buffer, 0, kCFStringEncodingUTF8));
  EXPECT_FALSE(CFStringGetCString(CFSTR("a"), buffer, -1, kCFStringEncodingUTF8));
  EXPECT_STREQ(buffer, "#######");
  EXPECT_FALSE(CFStringGetCString(nullptr, buffer, 8, kCFStringEncodingUTF8));
  EXPECT_FALSE(CFStringGetCString(CFSTR("a"), buffer, 8, kCFStringEncodingUnicode));
  EXPECT_FALSE(CFStringGetCString(CFSTR("a"), buffer, 8, 0x0500));
  EXPECT_STREQ(buffer, "");
}

TEST(CFStringGetPascalString, GivesTextBehindItsLength) {
  const Held<CFStringRef> cafe = stringOf("café");
  UInt8 buffer[8] = {};
  EXPECT_TRUE(CFStringGetPascalString(cafe.get(), buffer, 8, kCFStringEncodingMacRoman));
  EXPECT_EQ(std::memcmp(buffer,
                        "\x04"
                        "caf\x8e",
                        5),
            0);
}

TEST(CFStringGetPascalString, HoldsAtMost255Bytes) {
  const Held<CFStringRef> longest = stringOf(std::string(255, 'x').c_str());
  const Held<CFStringRef> longer = stringOf(std::string(256, 'x').c_str());
  UInt8 buffer[300] = {};
  EXPECT_TRUE(CFStringGetPascalString(longest.get(), buffer, 300, kCFStringEncodingMacRoman));
  EXPECT_EQ(buffer[0], 255);
  EXPECT_EQ(buffer[255], 'x');
  EXPECT_FALSE(CFStringGetPascalString(longest.get(), buffer, 255, kCFStringEncodingMacRoman));
  EXPECT_EQ(buffer[0], 0);
  EXPECT_FALSE(CFStringGetPascalString(longer.get(), buffer, 300, kCFStringEncodingMacRoman));
  EXPECT_EQ(buffer[0], 0);
}

TEST(CFStringGetBytes, GivesTheBytesOfARange) {
  const Made made = bytesOf(CFSTR("abcdef"), {2, 3}, kCFStringEncodingUTF8, 0, false, 63);
  EXPECT_EQ(made.units, 3);
  EXPECT_EQ(made.bytes, "cde");
}

TEST(CFStringGetBytes, StopsWhereItCannotConvert) {
  const Held<CFStringRef> string = stringOf("ab\u0416cd");
  const Made made = bytesOf(string.get(), {0, 5}, kCFStringEncodingMacRoman, 0, false, 63);
  EXPECT_EQ(made.units, 2);
  EXPECT_EQ(made.bytes, "ab");
}

TEST(CFStringGetBytes, PutsTheLossByteForEachCharacterThatIsLacking) {
  const Held<CFStringRef> string = stringOf("a\u0416\U0001D11Eb");
  const Made made = bytesOf(string.get(), {0, 5}, kCFStringEncodingASCII, '?', false, 63);
  EXPECT_EQ(made.units, 5);
  EXPECT_EQ(made.bytes, "a??b");
}

TEST(CFStringGetBytes, StopsBeforeACharacterThatDoesNotFit) {
  const Held<CFStringRef> string = stringOf("a\u20ac\U0001D11E");
  const struct {
    CFIndex room;
    CFIndex units;
    CFIndex used;
  } rows[] = {{0, 0, 0}, {1, 1, 1}, {3, 1, 1}, {4, 2, 4}, {7, 2, 4}, {8, 4, 8}};
  for (const auto& row : rows) {
    const Made made = bytesOf(string.get(), {0, 4}, kCFStringEncodingUTF8, 0, false, row.room);
    EXPECT_EQ(made.units, row.units) << row.room;
    EXPECT_EQ(made.used, row.used) << row.room;
  }
}

TEST(CFStringGetBytes, DoesNotLookPastTheRange) {
  const Held<CFStringRef> string = stringOf("\U0001D11E");
  const Made made = bytesOf(string.get(), {0, 1}, kCFStringEncodingUTF8, '?', false, 63);
  EXPECT_EQ(made.units, 1);
  EXPECT_EQ(made.bytes, "?");
}

TEST(CFStringGetBytes, CountsWithoutABuffer) {
  const Held<CFStringRef> string = stringOf("a\u20ac");
  CFIndex used = 0;
  EXPECT_EQ(
      CFStringGetBytes(string.get(), {0, 2}, kCFStringEncodingUTF8, 0, false, nullptr, 0, &used),
      2);
  EXPECT_EQ(used, 4);
  EXPECT_EQ(
      CFStringGetBytes(string.get(), {0, 2}, kCFStringEncodingUTF8, 0, false, nullptr, 0, nullptr),
      2);
}

TEST(CFStringGetBytes, MarksTheByteOrderOfExternalUnicode) {
  const bool isBig = std::endian::native == std::endian::big;
  const std::string outside(isBig ? "\xFE\xFF\x20\xAC" : "\xFF\xFE\xAC\x20");
  const Held<CFStringRef> euro = stringOf("\u20ac");
  const auto made = [&](CFStringEncoding encoding, Boolean external, CFIndex room) {
    return bytesOf(euro.get(), {0, 1}, encoding, 0, external, room).bytes;
  };
  EXPECT_EQ(made(kCFStringEncodingUnicode, true, 63), outside);
  EXPECT_EQ(made(kCFStringEncodingUnicode, false, 63), outside.substr(2));
  EXPECT_EQ(made(kCFStringEncodingUTF16BE, true, 63), "\x20\xAC");
  EXPECT_EQ(made(kCFStringEncodingUTF16LE, true, 63), "\xAC\x20");
  EXPECT_EQ(made(kCFStringEncodingUTF8, true, 63), "\u20ac");
  EXPECT_EQ(made(kCFStringEncodingUnicode, true, 1), "");
}

TEST(CFStringGetBytes, GivesNothingForBadArguments) {
  EXPECT_EQ(bytesOf(CFSTR("abc"), {2, 2}, kCFStringEncodingUTF8, 0, false, 63).used, 0);
  EXPECT_EQ(bytesOf(CFSTR("abc"), {-1, 2}, kCFStringEncodingUTF8, 0, false, 63).used, 0);
  EXPECT_EQ(bytesOf(CFSTR("abc"), {0, 3}, 0x0500, 0, false, 63).used, 0);
  EXPECT_EQ(bytesOf(CFSTR("abc"), {0, 3}, kCFStringEncodingUTF8, 0, false, -1).used, 0);
  EXPECT_EQ(bytesOf(nullptr, {0, 0}, kCFStringEncodingUTF8, 0, false, 63).used, 0);
}

TEST(CFStringGetMaximumSizeForEncoding, IsEnoughForTheLongestText) {
  const struct {
    CFStringEncoding encoding;
    CFIndex size;
  } rows[] = {{kCFStringEncodingMacRoman, 10},  {kCFStringEncodingASCII, 10},
              {kCFStringEncodingISOLatin1, 10}, {kCFStringEncodingUTF8, 30},
              {kCFStringEncodingUnicode, 20},   {kCFStringEncodingUTF16BE, 20},
              {kCFStringEncodingUTF16LE, 20}};
  for (const auto& row : rows) {
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(10, row.encoding), row.size);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(0, row.encoding), 0);
  }
}

TEST(CFStringGetMaximumSizeForEncoding, IsNotFoundWhereThereIsNone) {
  constexpr CFIndex kMost = std::numeric_limits<CFIndex>::max();
  EXPECT_EQ(CFStringGetMaximumSizeForEncoding(kMost, kCFStringEncodingUTF8), kCFNotFound);
  EXPECT_EQ(CFStringGetMaximumSizeForEncoding(kMost, kCFStringEncodingMacRoman), kMost);
  EXPECT_EQ(CFStringGetMaximumSizeForEncoding(-1, kCFStringEncodingUTF8), kCFNotFound);
  EXPECT_EQ(CFStringGetMaximumSizeForEncoding(1, 0x0500), kCFNotFound);
}
