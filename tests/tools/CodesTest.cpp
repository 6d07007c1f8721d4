// Licence: MIT, see LICENSE.
#include "tools/qrl/Codes.h"

#include <gtest/gtest.h>

#include "tools/qrl/ExitStatus.h"

namespace {

using qrl::parseCode;
using qrl::UsageError;

TEST(Codes, AreFourCharacters) {
  EXPECT_EQ(parseCode("aevt"), OSType{0x61657674});
  EXPECT_EQ(parseCode("----"), OSType{0x2d2d2d2d});
  EXPECT_EQ(parseCode("psn "), OSType{0x70736e20});
}

TEST(Codes, MayBeGivenInHexadecimal) { EXPECT_EQ(parseCode("0x61657600"), OSType{0x61657600}); }

TEST(Codes, HoldMacRomanCharacters) {
  EXPECT_EQ(parseCode("caf\u00e9"), OSType{0x6361668e});
  EXPECT_EQ(qrl::formatCode(0x6361668e), "caf\u00e9");
}

class BadCode : public testing::TestWithParam<const char*> {};

TEST_P(BadCode, IsRefusedWithItsText) {
  try {
    parseCode(GetParam());
    FAIL() << "accepted";
  } catch (const UsageError& error) {
    EXPECT_EQ(error.what(), '"' + std::string(GetParam()) + "\" is not a four-character code");
  }
}

INSTANTIATE_TEST_SUITE_P(Table, BadCode,
                         testing::Values("", "abc", "abcde", "0x6165767", "0x6165767g",
                                         "0x616576744", "ab\u4e2d\u6587", "abc\xff"));

TEST(Codes, WithControlCharactersArePrintedInHexadecimal) {
  EXPECT_EQ(qrl::formatCode(0x61620a64), "0x61620a64");
  EXPECT_EQ(qrl::formatCode(0), "0x00000000");
}

TEST(Bytes, AreWrittenAndReadAsPairsOfDigits) {
  EXPECT_EQ(qrl::formatHexadecimal(std::string("\0\x7f\xff", 3)), "007fff");
  EXPECT_EQ(qrl::parseHexadecimal("007fFF"), std::string("\0\x7f\xff", 3));
  EXPECT_EQ(qrl::parseHexadecimal(""), "");
  EXPECT_THROW(qrl::parseHexadecimal("0"), UsageError);
  EXPECT_THROW(qrl::parseHexadecimal("0g"), UsageError);
  EXPECT_THROW(qrl::parseHexadecimal("-1"), UsageError);
}

}  // namespace
