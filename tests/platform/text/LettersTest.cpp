// Licence: MIT, see LICENSE.
#include "platform/text/Letters.h"

#include <CarbonCore/MacTypes.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

namespace {

using platform::text::capital;
using platform::text::comparisonOrder;
using platform::text::withoutMark;

std::string mapped(std::string_view text, UInt8 (*map)(UInt8)) {
  std::string made;
  for (const char character : text) {
    made += static_cast<char>(map(static_cast<UInt8>(character)));
  }
  return made;
}

// Small letters with marks, in the order of their codes: aeinocuy and the marks of each.
constexpr std::string_view kSmall =
    "\x87\x88\x89\x8A\x8B\x8C\x8D\x8E\x8F\x90\x91\x92\x93\x94\x95\x96\x97\x98\x99\x9A\x9B\x9C\x9D"
    "\x9E\x9F\xD8";
constexpr std::string_view kTheirCapitals =
    "\xE7\xCB\xE5\x80\xCC\x81\x82\x83\xE9\xE6\xE8\xEA\xED\xEB\xEC\x84\xEE\xF1\xEF\x85\xCD\xF2\xF4"
    "\xF3\x86\xD9";

TEST(Capital, IsFoundForEveryLetter) {
  EXPECT_EQ(mapped("abcdefghijklmnopqrstuvwxyz", capital), "ABCDEFGHIJKLMNOPQRSTUVWXYZ");
  EXPECT_EQ(mapped(kSmall, capital), kTheirCapitals);
  EXPECT_EQ(mapped("\xBE\xBF\xCF", capital), "\xAE\xAF\xCE");  // ae, o with stroke, oe
}

TEST(Capital, LeavesEverythingElseAlone) {
  const std::string_view others = "ABZ019 @[`{~\x7F\xA0\xA7\xBB\xBC\xCA\xDE\xDF\xF0\xF5\xFF";
  EXPECT_EQ(mapped(others, capital), others);
  EXPECT_EQ(mapped(kTheirCapitals, capital), kTheirCapitals);
}

TEST(Mark, IsTakenOffEveryLetterThatHasOne) {
  EXPECT_EQ(mapped(kSmall, withoutMark), "aaaaaaceeeeiiiinooooouuuuy");
  EXPECT_EQ(mapped(kTheirCapitals, withoutMark), "AAAAAACEEEEIIIINOOOOOUUUUY");
}

TEST(Mark, IsNoneOnLigaturesBarredLettersAndOrdinals) {
  const std::string_view others = "aZ\xA7\xAE\xAF\xBB\xBC\xBE\xBF\xCE\xCF\xDE\xDF\xF5";
  EXPECT_EQ(mapped(others, withoutMark), others);
}

TEST(Mark, MakesNoDifferenceToTheCapital) {
  for (unsigned int code = 0; code < 256; ++code) {
    const auto character = static_cast<UInt8>(code);
    EXPECT_EQ(capital(withoutMark(character)), withoutMark(capital(character))) << code;
  }
}

TEST(ComparisonOrder, IsOneForEachCharacter) {
  std::set<UInt16> orders;
  for (unsigned int code = 0; code < 256; ++code) {
    orders.insert(comparisonOrder(static_cast<UInt8>(code)));
  }
  EXPECT_EQ(orders.size(), 256u);
}

TEST(ComparisonOrder, KeepsFormsOfALetterTogether) {
  // Bare letters, marked ones by their codes, ligatures and barred ones, then the next letter.
  const std::string_view rising =
      "\x01 /09:A\x80\x81\xCB\xCC\xE5\xE7\xAE"
      "BC\x82"
      "DE\x83\xE6\xE8\xE9"
      "FGHI\xEA\xEB\xEC\xED"
      "N\x84O\x85\xCD\xEE\xEF\xF1\xAF\xCE"
      "PU\x86\xF2\xF3\xF4VY\xD9Z[`a\x87\x8C\xBE"
      "bef\xDE\xDFgs\xA7t~\x7F\xA0\xF0\xF5\xFF";
  for (std::size_t i = 1; i < rising.size(); ++i) {
    EXPECT_LT(comparisonOrder(static_cast<UInt8>(rising[i - 1])),
              comparisonOrder(static_cast<UInt8>(rising[i])))
        << "character " << i;
  }
}

}  // namespace
