// Licence: MIT, see LICENSE.
#include <CarbonCore/StringCompare.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "tests/platform/text/PascalText.h"

namespace {

using tests::PascalText;

struct Sensitivity {
  Boolean toCase;
  Boolean toMarks;
};
constexpr Sensitivity kNeither{0, 0}, kCase{1, 0}, kMarks{0, 1}, kBoth{1, 1};

SInt16 compared(std::string_view a, std::string_view b, Sensitivity sensitivity) {
  return RelString(PascalText(a), PascalText(b), sensitivity.toCase, sensitivity.toMarks);
}

struct CompareRow {
  const char* a;
  const char* b;
  int neither, toCase, toMarks, both;
};

// e with acute: 8E, its capital 83; a with two dots: 8A, capital 80; AE 82 lies behind them.
constexpr CompareRow kCompareRows[] = {
    {"", "", 0, 0, 0, 0},
    {"", "a", -1, -1, -1, -1},
    {"abc", "abc", 0, 0, 0, 0},
    {"abc", "abd", -1, -1, -1, -1},
    {"abc", "ab", 1, 1, 1, 1},
    {"abc", "ABC", 0, 1, 0, 1},
    {"ABC", "abc", 0, -1, 0, -1},
    {"caf\x8E", "cafe", 0, 0, 1, 1},
    {"caf\x8E", "CAF\x83", 0, 1, 0, 1},
    {"caf\x83", "cafe", 0, -1, 1, -1},
    {"caf\x8E", "caff", -1, -1, -1, -1},
    {"\x8A", "b", -1, -1, -1, -1},
    {"\x80", "Z", -1, -1, -1, -1},
    {"\xAE", "A\xFF", 1, 1, 1, 1},
    {"\xBE", "\xAE", 0, 1, 0, 1},
    {"a", "B", -1, 1, -1, 1},
    {"Z", "_", -1, -1, -1, -1},
    {"z", "_", -1, 1, -1, 1},
    {"\xFF", "z", 1, 1, 1, 1},
    {"a b",
     "a\xCA"
     "b",
     -1, -1, -1, -1},
};

TEST(RelString, ComparesByCaseAndMarksAsAsked) {
  for (const CompareRow& row : kCompareRows) {
    SCOPED_TRACE(testing::Message() << row.a << " : " << row.b);
    EXPECT_EQ(compared(row.a, row.b, kNeither), row.neither);
    EXPECT_EQ(compared(row.a, row.b, kCase), row.toCase);
    EXPECT_EQ(compared(row.a, row.b, kMarks), row.toMarks);
    EXPECT_EQ(compared(row.a, row.b, kBoth), row.both);
  }
}

TEST(RelString, IsTheOppositeTheOtherWayRound) {
  for (const CompareRow& row : kCompareRows) {
    SCOPED_TRACE(testing::Message() << row.b << " : " << row.a);
    EXPECT_EQ(compared(row.b, row.a, kNeither), -row.neither);
    EXPECT_EQ(compared(row.b, row.a, kCase), -row.toCase);
    EXPECT_EQ(compared(row.b, row.a, kMarks), -row.toMarks);
    EXPECT_EQ(compared(row.b, row.a, kBoth), -row.both);
  }
}

TEST(RelString, TakesAnySettingButZeroForTrue) {
  EXPECT_EQ(compared("a", "A", {2, 0}), 1);
  EXPECT_EQ(compared("\x8A", "a", {0, 0x80}), 1);
}

TEST(RelString, LooksAtAll255Characters) {
  const std::string same(254, 'x');
  EXPECT_EQ(compared(same + "a", same + "b", kBoth), -1);
  EXPECT_EQ(compared(same + "a", same + "a", kBoth), 0);
  EXPECT_EQ(compared(same, same + "a", kBoth), -1);
}

TEST(RelString, ComparesZeroBytesLikeOthers) {
  EXPECT_EQ(compared(std::string_view("a\0b", 3), std::string_view("a\0c", 3), kBoth), -1);
}

TEST(RelString, PutsRandomStringsIntoOneOrder) {
  std::mt19937 random(91);
  std::vector<std::string> texts(60);
  for (std::string& text : texts) {
    text.resize(random() % 4);
    for (char& character : text) character = static_cast<char>(random());
  }
  for (const Sensitivity sensitivity : {kNeither, kCase, kMarks, kBoth}) {
    const auto before = [=](const std::string& a, const std::string& b) {
      return compared(a, b, sensitivity) < 0;
    };
    std::ranges::sort(texts, before);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      for (std::size_t j = i; j < texts.size(); ++j) ASSERT_FALSE(before(texts[j], texts[i]));
    }
  }
}

}  // namespace
