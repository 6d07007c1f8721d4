// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/util/OSTypeStrings.h>

#include <random>
#include <string>

#include "tests/util/Destination.h"

namespace {

using namespace std::string_literals;
using tests::Destination;

TEST(OSTypeToCString, WritesCodesAndNumbers) {
  const struct {
    UInt32 type;
    const char* text;
  } rows[] = {
      {'CmoN', "'CmoN'"},
      {'****', "'****'"},
      {'a  \'', "'a  ''"},
      {0x20202020, "'    '"},
      {0x7E7E7E7E, "'~~~~'"},
      {0x00000001, "1"},
      {0, "0"},
      {0x7FFF, "32767"},
      {0x8000, "0x00008000"},
      {0xFFFFFFFF, "0xffffffff"},
      {0x1F414141, "0x1f414141"},  // one character that cannot be printed, in each place
      {0x417F4141, "0x417f4141"},
      {0x41418041, "0x41418041"},
      {0x4141410A, "0x4141410a"},
      {0xCAFEBABE, "0xcafebabe"},
  };
  for (const auto& row : rows) {
    Destination to;
    EXPECT_EQ(OSTypeToCString(row.type, to.chars(), 20), to.chars());
    EXPECT_EQ(to.written(), row.text + "\0"s);
  }
}

TEST(OSTypeToCString, KeepsToItsSize) {
  const struct {
    UInt32 type;
    int size;
    std::string written;
  } rows[] = {
      {'CmoN', 7, "'CmoN'\0"s},
      {'CmoN', 6, "'CmoN\0"s},
      {'CmoN', 1, "\0"s},
      {'CmoN', 0, ""},
      {'CmoN', -1, ""},
      {1234, 3, "12\0"s},
      {0x8000, 11, "0x00008000\0"s},
      {0x8000, 10, "0x0000800\0"s},
  };
  for (const auto& row : rows) {
    Destination to;
    OSTypeToCString(row.type, to.chars(), row.size);
    EXPECT_EQ(to.written(), row.written) << row.size;
    Destination copied;
    EXPECT_EQ(OSTypestrcpy(copied.chars(), row.type, row.size), copied.chars());
    EXPECT_EQ(copied.written(), row.written) << row.size;
  }
  EXPECT_EQ(OSTypeToCString('CmoN', nullptr, 9), nullptr);
  EXPECT_EQ(OSTypestrcpy(nullptr, 'CmoN', 9), nullptr);
}

TEST(OSTypestrcat, AppendsWithinTheRemainingSize) {
  const struct {
    std::string before;
    int size;
    std::string after;
  } rows[] = {
      {"ab\0"s, 20, "ab'CmoN'\0"s}, {"ab\0"s, 9, "ab'CmoN'\0"s}, {"ab\0"s, 8, "ab'CmoN\0"s},
      {"ab\0"s, 3, "ab\0"s},        {"ab\0"s, 2, "ab\0"s},       {"ab\0"s, 1, "ab\0"s},
      {"ab\0"s, 0, "ab\0"s},        {"ab\0"s, -1, "ab\0"s},      {"\0"s, 20, "'CmoN'\0"s},
      {"abcd", 4, "abcd"},
  };
  for (const auto& row : rows) {
    Destination to(row.before);
    EXPECT_EQ(OSTypestrcat(to.chars(), 'CmoN', row.size), to.chars());
    EXPECT_EQ(to.written(), row.after) << row.size;
  }
  EXPECT_EQ(OSTypestrcat(nullptr, 'CmoN', 9), nullptr);
}

TEST(CStringToOSType, ReadsTheFirstFormThatFits) {
  const struct {
    const char* text;
    UInt32 type;
  } rows[] = {
      {"'CmoN'", 'CmoN'},
      {"''''''", '\'\'\'\''},
      {"'12 4'", '12 4'},
      {"'\x8E\xFF\x01 '", 0x8EFF0120},
      {"0x10", 10},
      {"0x10x", 10},
      {"0x00008000", 8000},
      {"0x12345678", 12345678},
      {"0x123456789", 12345678},
      {"0x12AB", 12},
      {"0x 12", 12},
      {"0x+12", 12},
      {"0x-1", 0xFFFFFFFF},
      {"0x-12345678", static_cast<UInt32>(-1234567)},
      {"0xFF", 0},  // the number is the 0 before the x
      {"0x", 0},
      {"0X10", 0},
      {"0", 0},
      {"17", 17},
      {"-1", 0xFFFFFFFF},
      {" 42 and more", 42},
      {"1234", 1234},
      {"12ab", 12},
      {"2147483647", 0x7FFFFFFF},
      {"4294967295", 0x7FFFFFFF},
      {"-99999999999", 0x80000000},
      {"CmoN", 'CmoN'},
      {"    ", '    '},
      {" abc", ' abc'},
      {"-abc", '-abc'},
      {"'ab'", '\'ab\''},
      {"\x80\x81\x82\x83", 0x80818283},
  };
  for (const auto& row : rows) {
    UInt32 type = 0xDEADBEEF;
    EXPECT_EQ(CStringToOSType(row.text, type), noErr) << row.text;
    EXPECT_EQ(type, row.type) << row.text;
  }
}

TEST(CStringToOSType, ReadsDecimalDigitsBehindTheHexadecimalPrefix) {
  UInt32 type = 0;
  EXPECT_EQ(CStringToOSType("0x10", type), noErr);
  EXPECT_EQ(type, 10U);
}

TEST(CStringToOSType, RefusesEverythingElseAndLeavesTheTypeAlone) {
  for (const char* text : {"", "a", "abc", "abcde", "'abc'", "'abcde'", "'abcd", "abcd'", "'abcdx",
                           "xabcd'", "-", "+", "x10", "      ", "\"abcd\""}) {
    UInt32 type = 0xDEADBEEF;
    EXPECT_EQ(CStringToOSType(text, type), paramErr) << text;
    EXPECT_EQ(type, 0xDEADBEEFU) << text;
  }
  UInt32 type = 0xDEADBEEF;
  EXPECT_EQ(CStringToOSType(nullptr, type), paramErr);
  EXPECT_EQ(type, 0xDEADBEEFU);
}

TEST(CStringToOSType, ReadsBackCodesAndSmallNumbers) {
  std::mt19937 random(4);
  const auto readBack = [](UInt32 written) {
    char text[20];
    UInt32 read = ~written;
    EXPECT_EQ(CStringToOSType(OSTypeToCString(written, text, sizeof text), read), noErr) << text;
    return read;
  };
  for (int i = 0; i < 5000; ++i) {
    UInt32 code = 0;
    for (int j = 0; j < 4; ++j) code = code << 8 | (0x20 + random() % 0x5F);
    ASSERT_EQ(readBack(code), code);
  }
  for (UInt32 number = 0; number <= 0x7FFF; number += 13) ASSERT_EQ(readBack(number), number);
}

}  // namespace
