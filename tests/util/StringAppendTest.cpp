// Licence: MIT, see LICENSE.
// Every row: the destination as it was, the source, the size, and the destination afterwards.
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

struct AppendRow {
  std::string before;
  std::string source;
  int size;
  std::string after;
};

const std::string k200(200, 'y');
const std::string k100(100, 'z');

// Of two Pascal strings; those of a C string to a Pascal string are the same.
const std::vector<AppendRow> kPascalRows = {
    {"\2ab", "cd", 9, "\4abcd"},
    {"\2ab", "cd", 5, "\4abcd"},
    {"\2ab", "cd", 4, "\3abc"},
    {"\2ab", "cd", 3, "\2ab"},
    {"\2ab", "cd", 2, "\2ab"},
    {"\2ab", "cd", 0, "\2ab"},
    {"\2ab", "cd", -9, "\2ab"},
    {"\2ab", "", 9, "\2ab"},
    {"\0"s, "cd", 9, "\2cd"},
    {"\0"s, "cd", 1, "\0"s},
    {"\xC8" + k200, k100, 256, "\xFF" + k200 + k100.substr(0, 55)},
    {"\xC8" + k200, k100.substr(0, 55), 256, "\xFF" + k200 + k100.substr(0, 55)},
};

TEST(PascalAppend, TakesWhatThereIsRoomFor) {
  for (const AppendRow& row : kPascalRows) {
    Destination to(row.before);
    const std::string source = pascal(row.source);
    EXPECT_EQ(pstrcat(to.pascalBytes(), bytesOf(source), row.size), to.pascalBytes());
    EXPECT_EQ(to.written(), row.after) << row.before << " + " << row.source << ", " << row.size;
  }
}

TEST(CToPascalAppend, TakesWhatThereIsRoomFor) {
  for (const AppendRow& row : kPascalRows) {
    Destination to(row.before);
    EXPECT_EQ(cpstrcat(to.pascalBytes(), row.source.c_str(), row.size), to.pascalBytes());
    EXPECT_EQ(to.written(), row.after) << row.before << " + " << row.source << ", " << row.size;
  }
}

TEST(PascalAppend, AddsToTheLengthByteModulo256) {
  Destination to("\xC8" + k200);
  pstrcat(to.pascalBytes(), bytesOf(pascal(k100)), 1000);
  EXPECT_EQ(to.written(), "\x2C" + k200 + k100);  // 300 - 256
}

TEST(PascalAppend, DoublesAString) {
  Destination to("\3abc");
  pstrcat(to.pascalBytes(), to.pascalBytes(), 9);
  EXPECT_EQ(to.written(), "\6abcabc");
}

TEST(CAppend, FillsADestinationThatIsTooShort) {
  const std::vector<AppendRow> rows = {
      {"ab\0"s, "cd", 9, "abcd\0"s}, {"ab\0"s, "cd", 5, "abcd\0"s}, {"ab\0"s, "cd", 4, "abcd"},
      {"ab\0"s, "cd", 3, "ab\0"s},   {"ab\0"s, "cd", 2, "ab\0"s},   {"ab\0"s, "cd", 0, "ab\0"s},
      {"ab\0"s, "cd", -9, "ab\0"s},  {"ab\0"s, "", 9, "ab\0"s},     {"\0"s, "cd", 9, "cd\0"s},
      {"\0"s, "cd", 1, "\0"s},
  };
  for (const AppendRow& row : rows) {
    Destination to(row.before);
    EXPECT_EQ(cstrcat(to.chars(), row.source.c_str(), row.size), to.chars());
    EXPECT_EQ(to.written(), row.after) << row.before << " + " << row.source << ", " << row.size;
  }
}

TEST(CAppend, DoesNothingForNullPointers) {
  EXPECT_EQ(cstrcat(nullptr, "cd", 9), nullptr);
  Destination to("ab\0"s);
  EXPECT_EQ(cstrcat(to.chars(), nullptr, 9), to.chars());
  EXPECT_EQ(to.written(), "ab\0"s);
}

TEST(CAppend, AddsNothingToAnUnterminatedString) {
  Destination to("abcd");
  cstrcat(to.chars(), "ef", 4);
  EXPECT_EQ(to.written(), "abcd");
}

TEST(PascalToCAppend, TakesWhatThereIsRoomForAndTerminates) {
  const std::vector<AppendRow> rows = {
      {"ab\0"s, "cd", 9, "abcd\0"s},
      {"ab\0"s, "cd", 5, "abcd\0"s},
      {"ab\0"s, "cd", 4, "abc\0"s},
      {"ab\0"s, "cd", 3, "ab\0"s},
      {"ab\0"s, "cd", 2, "ab\0"s},
      {"ab\0"s, "cd", 0, "ab\0"s},
      {"ab\0"s, "cd", -9, "ab\0"s},
      {"ab\0"s, "", 9, "ab\0"s},
      {"\0"s, "cd", 1, "\0"s},
      {"\0"s, k200 + k100.substr(0, 55), 300, k200 + k100.substr(0, 55) + "\0"s},
  };
  for (const AppendRow& row : rows) {
    Destination to(row.before);
    const std::string source = pascal(row.source);
    EXPECT_EQ(pcstrcat(to.chars(), bytesOf(source), row.size), to.chars());
    EXPECT_EQ(to.written(), row.after) << row.before << " + " << row.source << ", " << row.size;
  }
}

}  // namespace
