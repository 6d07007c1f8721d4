// Licence: MIT, see LICENSE.
#include "tools/qrl/ResourceText.h"

#include <CarbonCore/Resources.h>
#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using Strings = std::vector<std::string>;

TEST(ResourceText, NamesAttributes) {
  EXPECT_EQ(qrl::attributeWords(0), Strings{});
  EXPECT_EQ(qrl::attributeWords(resPurgeable | resPreload), (Strings{"purgeable", "preload"}));
  EXPECT_EQ(qrl::attributeWords(0x7F),
            (Strings{"sysheap", "purgeable", "locked", "protected", "preload"}));
}

TEST(ResourceText, TellsTextFromBytes) {
  EXPECT_TRUE(qrl::isText(""));
  EXPECT_TRUE(qrl::isText("Text\twith\rlines\nand \x8E"));
  EXPECT_FALSE(qrl::isText("\5Pascal"));
  EXPECT_FALSE(qrl::isText("nul\0"s));
  EXPECT_FALSE(qrl::isText("delete\x7F"));
}

TEST(ResourceText, IsWrittenInLines) {
  EXPECT_EQ(qrl::textLines(""), "");
  EXPECT_EQ(qrl::textLines("one"), "one\n");
  EXPECT_EQ(qrl::textLines("one\rtwo\nthree\r\nfour\r"), "one\ntwo\nthree\nfour\n");
  EXPECT_EQ(qrl::textLines("\r\rx"), "\n\nx\n");
  EXPECT_EQ(qrl::textLines("caf\x8E"), "caf\u00e9\n");
  EXPECT_EQ(qrl::textLines("\x1b[2J\t!"), " [2J !\n");
}

TEST(ResourceText, IsDumpedSixteenBytesALine) {
  EXPECT_EQ(qrl::hexDump(""), "");
  EXPECT_EQ(qrl::hexDump("A\x8E\x1b~"),
            "00000000  41 8e 1b 7e                                      A..~\n");
  EXPECT_EQ(qrl::hexDump("0123456789abcdefg"),
            "00000000  30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66  0123456789abcdef\n"
            "00000010  67                                               g\n");
}

}  // namespace
