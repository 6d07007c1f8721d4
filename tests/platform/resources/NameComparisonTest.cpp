// Licence: MIT, see LICENSE.
#include "platform/resources/NameComparison.h"

#include <gtest/gtest.h>

namespace {

using platform::resources::namesAreEqual;

TEST(ResourceNames, AreEqualWhateverTheCaseOfTheirLetters) {
  EXPECT_TRUE(namesAreEqual("Camera request", "cAMERA REQUEST"));
  EXPECT_TRUE(namesAreEqual("\x8A\x9A\x9F", "\x80\x85\x86"));  // a, o and u with two dots
  EXPECT_TRUE(namesAreEqual("\xCF\x9D", "\xCE\xF4"));  // the oe ligature, u with a grave accent
  EXPECT_TRUE(namesAreEqual("", ""));
}

TEST(ResourceNames, DifferByAccentsLengthAndOtherCharacters) {
  EXPECT_FALSE(namesAreEqual("a", "\x8A"));
  EXPECT_FALSE(namesAreEqual("a", "ab"));
  EXPECT_FALSE(namesAreEqual("a", ""));
  EXPECT_FALSE(namesAreEqual("[", "{"));  // one bit apart, as the cases of letters are
  EXPECT_FALSE(namesAreEqual("@", "`"));
  EXPECT_FALSE(namesAreEqual("\xA7", "\x87"));
}

}  // namespace
