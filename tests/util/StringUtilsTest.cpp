// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/util/StringUtils.h>

#include <string>
#include <vector>

#include "tests/util/Destination.h"

namespace {

using namespace std::string_literals;
using tests::bytesOf;
using tests::Destination;
using tests::pascal;

TEST(Comparison, FollowsCaseAndMarksAsAsked) {
  const struct {
    const char* a;
    const char* b;
    bool toCase, toMarks;
    int result;
  } rows[] = {
      {"abc", "abc", true, true, 0},
      {"abc", "abd", true, true, -1},
      {"abd", "abc", true, true, 1},
      {"abc", "ABC", false, true, 0},
      {"abc", "ABC", true, true, 1},
      {"caf\x8E", "cafe", true, false, 0},
      {"caf\x8E", "cafe", true, true, 1},
      {"caf\x83", "CAFE", false, false, 0},
      {"", "", true, true, 0},
      {"", "a", false, false, -1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.a << " : " << row.b);
    EXPECT_EQ(stricmp(row.a, row.b, row.toCase, row.toMarks), row.result);
    EXPECT_EQ(pcstricmp(bytesOf(pascal(row.a)), row.b, row.toCase, row.toMarks), row.result);
  }
}

TEST(Comparison, LooksAt254CharactersOfACString) {
  const std::string same(254, 'x');
  EXPECT_EQ(stricmp((same + "a").c_str(), (same + "b").c_str(), true, true), 0);
  const std::string shorter(253, 'x');
  EXPECT_EQ(stricmp((shorter + "a").c_str(), (shorter + "b").c_str(), true, true), -1);
}

TEST(Comparison, LooksAtAllOfAPascalString) {
  const std::string same(254, 'x');
  EXPECT_EQ(pcstricmp(bytesOf(pascal(same + "a")), (same + "a").c_str(), true, true), 1);
  EXPECT_EQ(pcstricmp(bytesOf(pascal(same)), (same + "a").c_str(), true, true), 0);
}

TEST(Comparison, TakesNullForAnEmptyString) {
  EXPECT_EQ(stricmp(nullptr, nullptr, true, true), 0);
  EXPECT_EQ(stricmp(nullptr, "a", true, true), -1);
  EXPECT_EQ(pcstricmp(nullptr, "", true, true), 0);
  EXPECT_EQ(pcstricmp(bytesOf(pascal("a")), nullptr, true, true), 1);
}

TEST(NumToCString, WritesANumberWithinTheSize) {
  const struct {
    SInt32 number;
    int size;
    std::string written;
  } rows[] = {
      {0, 9, "0\0"s},
      {-15, 9, "-15\0"s},
      {12345, 4, "123\0"s},
      {12345, 1, "\0"s},
      {12345, 0, ""},
      {2147483647, 20, "2147483647\0"s},
      {-2147483647 - 1, 20, "-2147483648\0"s},
  };
  for (const auto& row : rows) {
    Destination to;
    EXPECT_EQ(NumToCString(row.number, to.chars(), row.size), to.chars());
    EXPECT_EQ(to.written(), row.written);
  }
  EXPECT_EQ(NumToCString(1, nullptr, 9), nullptr);
}

TEST(MakePCString, SetsLengthByteAndTerminator) {
  const struct {
    int length, size;
    std::string after;
  } rows[] = {
      {3, 9, "\3abc\0ef"s}, {3, 5, "\3abc\0ef"s},  {3, 4, "\2ab\0def"s}, {6, 9, "\6abcdef\0"s},
      {3, 2, "\0\0bcdef"s}, {3, 1, "\0abcdef"s},   {3, 0, "?abcdef"},    {3, -1, "?abcdef"},
      {0, 9, "\0\0bcdef"s}, {-1, 9, "\0\0bcdef"s},
  };
  for (const auto& row : rows) {
    Destination buffer("?abcdef");
    MakePCString(buffer.pascalBytes(), row.length, row.size);
    EXPECT_EQ(buffer.written(), row.after) << row.length << " in " << row.size;
  }
  MakePCString(nullptr, 3, 9);
}

TEST(MakePCString, NeverSaysMoreThan254) {
  const struct {
    int length, size;
    unsigned char said;
    std::size_t terminator;
  } rows[] = {{253, 400, 253, 254}, {254, 400, 254, 255}, {255, 400, 254, 256},
              {300, 400, 254, 301}, {300, 256, 254, 255}, {300, 255, 253, 254}};
  for (const auto& row : rows) {
    Destination buffer("?" + std::string(350, 'x'));
    MakePCString(buffer.pascalBytes(), row.length, row.size);
    const std::string made = buffer.written();
    EXPECT_EQ(static_cast<unsigned char>(made[0]), row.said);
    EXPECT_EQ(made.find('\0'), row.terminator);
  }
}

TEST(BufToCString, LeavesOutTheLastByte) {
  const struct {
    std::string source;
    int length, size;
    std::string written;
  } rows[] = {
      {"abcde", 5, 100, "abcd\0"s}, {"abcde", 5, 6, "abcd\0"s}, {"abcde", 5, 5, "abcd\0"s},
      {"abcde", 5, 4, "abc\0"s},    {"abcde", 5, 2, "a\0"s},    {"abcde", 5, 1, "\0"s},
      {"abcde", 1, 100, "\0"s},     {"abcde", 0, 100, "\0"s},   {"a\0cde"s, 5, 100, "a\0cd\0"s},
      {"abcde", 5, 0, ""},          {"abcde", 5, -1, ""},       {"abcde", -1, 100, ""},
  };
  for (const auto& row : rows) {
    Destination to;
    EXPECT_EQ(BufToCString(to.chars(), row.source.data(), row.length, row.size), to.chars());
    EXPECT_EQ(to.written(), row.written) << row.length << " into " << row.size;
  }
}

TEST(BufToCString, KeepsFourOfFiveBytes) {
  Destination to;
  BufToCString(to.chars(), "abcde", 5, 100);
  EXPECT_STREQ(to.chars(), "abcd");
}

TEST(BufToCString, TakesANullSourceForNoBytes) {
  Destination to;
  BufToCString(to.chars(), nullptr, 5, 100);
  EXPECT_EQ(to.written(), "\0"s);
  EXPECT_EQ(BufToCString(nullptr, "abcde", 5, 100), nullptr);
}

TEST(TruncToCStr, EndsTheStringAtTheFirstSuchCharacter) {
  const struct {
    char character;
    UInt32 length;
    std::string after;
  } rows[] = {
      {'b', 8, "a\0cdabcd"s}, {'b', 2, "a\0cdabcd"s}, {'b', 1, "abcdabcd"},
      {'a', 8, "\0bcdabcd"s}, {'x', 8, "abcdabcd"},   {'a', 0, "abcdabcd"},
      {'d', 8, "abc\0abcd"s},
  };
  for (const auto& row : rows) {
    Destination buffer("abcdabcd");
    TruncToCStr(buffer.chars(), row.character, row.length);
    EXPECT_EQ(buffer.written(), row.after) << row.character << " within " << row.length;
  }
  TruncToCStr(nullptr, 'a', 8);
}

TEST(TruncToCStr, DoesNotStopAtATerminator) {
  Destination buffer("a\0b"s);
  TruncToCStr(buffer.chars(), 'b', 3);
  EXPECT_EQ(std::string(buffer.chars(), 3), "a\0\0"s);
}

}  // namespace
