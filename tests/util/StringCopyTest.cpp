// Licence: MIT, see LICENSE.
// Every row: the source, the size of the destination, and all the bytes that are written.
#include <gtest/gtest.h>
#include <quorvant/util/StringUtils.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/util/Destination.h"

namespace {

using namespace std::string_literals;
using tests::bytesOf;
using tests::Destination;
using tests::pascal;

const std::string k255(255, 'x');
const std::string k300(300, 'x');

struct CopyRow {
  std::string source;
  int size;
  std::string written;
};

TEST(PascalCopies, TakeWhatTheSizeAllows) {
  const std::vector<CopyRow> rows = {
      {"", 1, "\0"s},
      {"", 5, "\0"s},
      {"abc", 1, "\3"},
      {"abc", 2, "\3a"},
      {"abc", 3, "\3ab"},
      {"abc", 4, "\3abc"},
      {"abc", 5, "\3abc"},
      {"a\0b"s, 9, "\3a\0b"s},
      {k255, 256, "\xFF" + k255},
      {k255, 1000, "\xFF" + k255},
      {k255, 100, "\xFF" + k255.substr(0, 99)},
  };
  for (const CopyRow& row : rows) {
    Destination to;
    const std::string source = pascal(row.source);
    EXPECT_EQ(pstrcpy(to.pascalBytes(), bytesOf(source), row.size), to.pascalBytes());
    EXPECT_EQ(to.written(), row.written) << row.source << " into " << row.size;
  }
}

TEST(PascalCopies, KeepTheUntruncatedLengthByte) {
  Destination to;
  const std::string source = pascal("abcdefghij");
  pstrcpy(to.pascalBytes(), bytesOf(source), 5);
  EXPECT_EQ(to.written(),
            "\x0A"
            "abcd");
}

TEST(PascalToCCopies, TakeWhatTheSizeAllowsAndTerminate) {
  const std::vector<CopyRow> rows = {
      {"", 1, "\0"s},
      {"", 5, "\0"s},
      {"abc", 1, "\0"s},
      {"abc", 2, "a\0"s},
      {"abc", 3, "ab\0"s},
      {"abc", 4, "abc\0"s},
      {"abc", 5, "abc\0"s},
      {"a\0b"s, 9, "a\0b\0"s},
      {k255, 256, k255 + "\0"s},
      {k255, 255, k255.substr(1) + "\0"s},
  };
  for (const CopyRow& row : rows) {
    Destination to;
    const std::string source = pascal(row.source);
    EXPECT_EQ(pcstrcpy(to.chars(), bytesOf(source), row.size), to.chars());
    EXPECT_EQ(to.written(), row.written) << row.source << " into " << row.size;
  }
}

TEST(CToPascalCopies, TakeWhatTheSizeAllowsUpTo255Characters) {
  const std::vector<CopyRow> rows = {
      {"", 1, "\0"s},
      {"", 5, "\0"s},
      {"abc", 1, "\0"s},
      {"abc", 2, "\1a"},
      {"abc", 3, "\2ab"},
      {"abc", 4, "\3abc"},
      {"abc", 5, "\3abc"},
      {k255, 256, "\xFF" + k255},
      {k300, 256, "\xFF" + k255},
      {k300, 255, "\xFE" + k255.substr(1)},
      {k300, 257, "\xFF" + k255},
  };
  for (const CopyRow& row : rows) {
    Destination to;
    EXPECT_EQ(cpstrcpy(to.pascalBytes(), row.source.c_str(), row.size), to.pascalBytes());
    EXPECT_EQ(to.written(), row.written) << row.source << " into " << row.size;
  }
}

TEST(CToPascalCopies, OfA300CharacterStringHave255Characters) {
  Destination to;
  cpstrcpy(to.pascalBytes(), k300.c_str(), 1000);
  EXPECT_EQ(to.written(), "\xFF" + k255);
}

TEST(CCopies, FillADestinationThatIsTooShort) {
  const std::vector<CopyRow> rows = {
      {"", 1, "\0"s},       {"", 5, "\0"s},    {"abc", 1, "\0"s},
      {"abc", 2, "ab"},     {"abc", 3, "abc"}, {"abc", 4, "abc\0"s},
      {"abc", 5, "abc\0"s}, {k300, 300, k300}, {k300, 301, k300 + "\0"s},
  };
  for (const CopyRow& row : rows) {
    Destination to;
    EXPECT_EQ(cstrcpy(to.chars(), row.source.c_str(), row.size), to.chars());
    EXPECT_EQ(to.written(), row.written) << row.source << " into " << row.size;
  }
}

TEST(CCopies, LeaveASourceThatIsTooLongUnterminated) {
  Destination to;
  cstrcpy(to.chars(), "abcdef", 4);
  EXPECT_EQ(to.written(), "abcd");
}

TEST(Copies, DoNothingForASizeBelowOne) {
  for (const int size : {0, -1, -2147483647 - 1}) {
    Destination to;
    const std::string source = pascal("abc");
    EXPECT_EQ(pstrcpy(to.pascalBytes(), bytesOf(source), size), to.pascalBytes());
    EXPECT_EQ(pcstrcpy(to.chars(), bytesOf(source), size), to.chars());
    EXPECT_EQ(cpstrcpy(to.pascalBytes(), "abc", size), to.pascalBytes());
    EXPECT_EQ(cstrcpy(to.chars(), "abc", size), to.chars());
    EXPECT_EQ(to.written(), "") << size;
  }
}

TEST(Copies, DoNothingForANullDestination) {
  const std::string source = pascal("abc");
  EXPECT_EQ(pstrcpy(nullptr, bytesOf(source), 9), nullptr);
  EXPECT_EQ(pcstrcpy(nullptr, bytesOf(source), 9), nullptr);
  EXPECT_EQ(cpstrcpy(nullptr, "abc", 9), nullptr);
  EXPECT_EQ(cstrcpy(nullptr, "abc", 9), nullptr);
}

TEST(Copies, TakeANullSourceForAnEmptyString) {
  Destination to[4];
  pstrcpy(to[0].pascalBytes(), nullptr, 9);
  pcstrcpy(to[1].chars(), nullptr, 9);
  cpstrcpy(to[2].pascalBytes(), nullptr, 9);
  cstrcpy(to[3].chars(), nullptr, 9);
  for (const Destination& made : to) EXPECT_EQ(made.written(), "\0"s);
}

TEST(Copies, WorkInPlace) {
  Destination pascalString("\3abc");
  pcstrcpy(pascalString.chars(), pascalString.pascalBytes(), 9);
  EXPECT_EQ(pascalString.written(), "abc\0"s);
  cpstrcpy(pascalString.pascalBytes(), pascalString.chars(), 9);
  EXPECT_EQ(pascalString.written(), "\3abc");
}

TEST(Copies, OfEverySizeKeepToIt) {
  const std::string source = pascal(k255);
  for (int size = 1; size <= 300; ++size) {
    const auto room = static_cast<std::size_t>(size);
    Destination to[4];
    pstrcpy(to[0].pascalBytes(), bytesOf(source), size);
    pcstrcpy(to[1].chars(), bytesOf(source), size);
    cpstrcpy(to[2].pascalBytes(), k300.c_str(), size);
    cstrcpy(to[3].chars(), k300.c_str(), size);
    for (const Destination& made : to) ASSERT_LE(made.written().size(), room);
    ASSERT_EQ(to[3].written().size(), room);
  }
}

}  // namespace
