// Licence: MIT, see LICENSE.
#include <CarbonCore/TextUtils.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "tests/platform/text/PascalText.h"

namespace {

TEST(CToPascal, CopiesTheCharacters) {
  Str255 text;
  std::fill_n(text, sizeof text, UInt8{0xEE});
  c2pstrcpy(text, "abc\x8E");
  EXPECT_EQ(tests::textOfPascal(text), "abc\x8E");
  EXPECT_EQ(text[5], 0xEE);
}

TEST(CToPascal, MakesAnEmptyStringOfNothing) {
  Str255 text = {9};
  c2pstrcpy(text, nullptr);
  EXPECT_EQ(text[0], 0);
  text[0] = 9;
  c2pstrcpy(text, "");
  EXPECT_EQ(text[0], 0);
}

TEST(CToPascal, CutsAt255Characters) {
  const std::string longest(255, 'x');
  Str255 text;
  c2pstrcpy(text, longest.c_str());
  EXPECT_EQ(tests::textOfPascal(text), longest);
  c2pstrcpy(text, (longest + "yz").c_str());
  EXPECT_EQ(tests::textOfPascal(text), longest);
}

TEST(CToPascal, WorksInPlace) {
  Str255 text = {'a', 'b', 'c', '\0'};
  c2pstrcpy(text, reinterpret_cast<const char*>(text));
  EXPECT_EQ(tests::textOfPascal(text), "abc");
}

TEST(PascalToC, CopiesAndTerminates) {
  std::array<char, 8> text;
  text.fill('#');
  p2cstrcpy(text.data(), tests::PascalText("abc"));
  EXPECT_STREQ(text.data(), "abc");
  EXPECT_EQ(text[4], '#');
}

TEST(PascalToC, MakesAnEmptyStringOfNothing) {
  char text[] = "full";
  p2cstrcpy(text, nullptr);
  EXPECT_STREQ(text, "");
  text[0] = 'f';
  p2cstrcpy(text, tests::PascalText(""));
  EXPECT_STREQ(text, "");
}

TEST(PascalToC, WorksInPlace) {
  Str255 text = {3, 'a', 'b', 'c'};
  auto* place = reinterpret_cast<char*>(text);
  p2cstrcpy(place, text);
  EXPECT_STREQ(place, "abc");
}

TEST(PascalToC, GivesBackWhatCToPascalTook) {
  Str255 pascal;
  std::array<char, 256> back{};
  for (std::size_t length = 0; length <= 255; ++length) {
    const std::string text(length, static_cast<char>('A' + length % 26));
    c2pstrcpy(pascal, text.c_str());
    p2cstrcpy(back.data(), pascal);
    ASSERT_EQ(back.data(), text);
  }
}

}  // namespace
