// Licence: MIT, see LICENSE.
#include <CarbonCore/NumberFormatting.h>
#include <gtest/gtest.h>

#include <random>

#include "tests/platform/text/PascalText.h"

namespace {

std::string numberText(SInt32 number) {
  Str255 text;
  NumToString(number, text);
  return tests::textOfPascal(text);
}

TEST(NumToString, WritesDecimalNumbers) {
  const struct {
    SInt32 number;
    const char* text;
  } rows[] = {{0, "0"},
              {7, "7"},
              {-1, "-1"},
              {10, "10"},
              {-32768, "-32768"},
              {65536, "65536"},
              {2147483647, "2147483647"},
              {-2147483647 - 1, "-2147483648"}};
  for (const auto& row : rows) EXPECT_EQ(numberText(row.number), row.text);
}

TEST(NumToString, TouchesNothingBehindTheNumber) {
  Str255 text;
  std::fill_n(text, sizeof text, UInt8{0xEE});
  NumToString(-15, text);
  EXPECT_EQ(tests::textOfPascal(text), "-15");
  for (std::size_t i = 4; i < sizeof text; ++i) ASSERT_EQ(text[i], 0xEE) << i;
}

TEST(NumToString, WritesWhatTheLibraryReadsBack) {
  std::mt19937 random(20);
  for (int i = 0; i < 20000; ++i) {
    const auto number = static_cast<SInt32>(random());
    ASSERT_EQ(std::stol(numberText(number)), number);
  }
}

}  // namespace
