// Licence: MIT, see LICENSE.
#include "platform/files/Names.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace {

using namespace platform::files;
using namespace std::string_literals;

std::u16string textOf(const HFSUniStr255& name) {
  return {reinterpret_cast<const char16_t*>(name.unicode), name.length};
}

struct Shown {
  std::string host;
  std::string mac;
};

class PlainNames : public testing::TestWithParam<Shown> {};

TEST_P(PlainNames, AreShownAsTheyAreAndComeBack) {
  const auto& [host, mac] = GetParam();
  EXPECT_EQ(macNameOf(host), mac);
  EXPECT_EQ(hostNameOf(mac), host);
  EXPECT_FALSE(looksShortened(mac));
}

INSTANTIATE_TEST_SUITE_P(All, PlainNames,
                         testing::Values(Shown{"a", "a"}, Shown{".hidden", ".hidden"},
                                         Shown{"...", "..."}, Shown{"Read me", "Read me"},
                                         Shown{"1:2:3", "1/2/3"},
                                         Shown{"\xC3\xA9t\xC3\xA9", "\x8Et\x8E"},  // e acute
                                         Shown{"\xE2\x82\xAC 5", "\xDB 5"},        // the euro sign
                                         Shown{"abc#1234", "abc#1234"}),
                         [](const auto& row) { return "Row" + std::to_string(row.index); });

struct Refused {
  const char* what;
  std::string name;
};

class NamesOfNoItem : public testing::TestWithParam<Refused> {};

TEST_P(NamesOfNoItem, AreRefused) { EXPECT_EQ(hostNameOf(GetParam().name), std::nullopt); }

INSTANTIATE_TEST_SUITE_P(All, NamesOfNoItem,
                         testing::Values(Refused{"Empty", ""}, Refused{"Colon", "a:b"},
                                         Refused{"Nul", "a\0b"s}, Refused{"Stop", "."},
                                         Refused{"TwoStops", ".."},
                                         Refused{"TooLongForTheHost", std::string(86, '\xDB')}),
                         [](const auto& row) { return row.param.what; });

TEST(Names, AreExchangedBothWays) {
  EXPECT_EQ(hostNameOf("either/or"), "either:or");
  EXPECT_EQ(macNameOf("either:or"), "either/or");
}

TEST(Names, OfThirtyOneCharactersFit) {
  const std::string fits(31, 'x');
  EXPECT_EQ(macNameOf(fits), fits);
  EXPECT_EQ(macNameOf(fits + "x").size(), 31U);
  // It is characters that count, not the host's bytes.
  std::string accented;
  for (int i = 0; i < 31; ++i) accented += "\xC3\xA9";
  EXPECT_EQ(macNameOf(accented), std::string(31, '\x8E'));
}

TEST(ShortenedNames, KeepTheirStartTheirSumAndTheirExtension) {
  EXPECT_EQ(sumOf(""), 0x811C9DC5U);
  EXPECT_EQ(sumOf("a"), 0xE40C292CU);
  EXPECT_EQ(sumOf("foobar"), 0xBF9CF968U);
  const std::string name = "A very long name that has an extension.text";
  const std::string shown = macNameOf(name);
  EXPECT_EQ(shown, "A very long name #6B1C4B41.text");
  EXPECT_EQ(shown.size(), 31U);
  EXPECT_TRUE(looksShortened(shown));
}

TEST(ShortenedNames, AreWrittenOutForOneName) {
  const std::string name(40, 'z');
  UInt32 sum = 2166136261U;
  for (char letter : name) sum = (sum ^ static_cast<unsigned char>(letter)) * 16777619U;
  char digits[9];
  std::snprintf(digits, sizeof digits, "%08X", static_cast<unsigned>(sum));
  EXPECT_EQ(macNameOf(name), std::string(22, 'z') + "#" + digits);
}

TEST(ShortenedNames, MarkWhatMacRomanLacks) {
  EXPECT_EQ(macNameOf("\xE6\x97\xA5\xE6\x9C\xAC.txt").substr(0, 3), "__#");  // two of Japanese
  EXPECT_EQ(macNameOf("a\xF0\x9F\x98\x80z").substr(0, 4), "a_z#");           // beyond 16 bits
  EXPECT_EQ(macNameOf("e\xCC\x81").substr(0, 3), "e_#");                     // accent of its own
  EXPECT_EQ(macNameOf("\xFF\xFE x").substr(0, 5), "__ x#");                  // no UTF-8 at all
  EXPECT_EQ(macNameOf("cut\xE6\x97").substr(0, 6), "cut__#");                // UTF-8 cut off
  EXPECT_EQ(macNameOf("a:b\xFF").substr(0, 5), "a/b_#");
}

TEST(ShortenedNames, HaveAnExtensionOnlyWhereItIsShort) {
  const std::string longName(40, 'n');
  EXPECT_TRUE(macNameOf(longName + ".jpeg").ends_with(".jpeg"));
  EXPECT_FALSE(macNameOf(longName + ".jpegs").ends_with(".jpegs"));
  EXPECT_FALSE(macNameOf(longName + ".").ends_with("."));
  EXPECT_FALSE(macNameOf(longName + ".\xE6\x97\xA5").ends_with("_"));
  EXPECT_EQ(macNameOf("." + longName).substr(0, 3), ".nn");
}

TEST(ShortenedNames, AreShortenedAgainWhenAHostNameLooksLikeOne) {
  const std::string looksLikeOne = "abc#1234ABCD.txt";
  EXPECT_TRUE(looksShortened(looksLikeOne));
  EXPECT_NE(macNameOf(looksLikeOne), looksLikeOne);
  EXPECT_TRUE(looksShortened(macNameOf(looksLikeOne)));
}

TEST(ShortenedNames, AreToldByTheirForm) {
  for (const char* name : {"#00000000", "a#FFFFFFFF", "a#0123ABCD.c", "a.b#0123ABCD.text"}) {
    EXPECT_TRUE(looksShortened(name)) << name;
  }
  for (const char* name : {"", "#0000000", "a#FFFFFFFG", "a#ffffffff", "a#0123ABCD.text5",
                           "a#0123ABCD.", "a-0123ABCD", "#0123ABCDE"}) {
    EXPECT_FALSE(looksShortened(name)) << name;
  }
}

TEST(Names, OfAnyBytesAreShownInBoundsAndApart) {
  std::mt19937 random(7);
  std::set<std::string> hosts;
  std::set<std::string> shown;
  for (int i = 0; i < 3000; ++i) {
    std::string host;
    const std::size_t length = 1 + random() % 60;
    while (host.size() < length) {
      const char byte = static_cast<char>(random());
      if (byte != '\0' && byte != '/') host += byte;
    }
    if (host == "." || host == "..") continue;
    const std::string mac = macNameOf(host);
    ASSERT_LE(mac.size(), kLongestName);
    ASSERT_EQ(mac.find(':'), std::string::npos);
    ASSERT_TRUE(looksShortened(mac) || hostNameOf(mac) == host);
    hosts.insert(host);
    shown.insert(mac);
  }
  EXPECT_EQ(shown.size(), hosts.size());
}

TEST(UnicodeNames, AreTheHostsInUTF16) {
  EXPECT_EQ(textOf(unicodeNameOf("abc")), u"abc");
  EXPECT_EQ(textOf(unicodeNameOf("a:b")), u"a/b");
  EXPECT_EQ(textOf(unicodeNameOf("\xC3\xA9\xE6\x97\xA5\xF0\x9F\x98\x80")),
            u"\u00E9\u65E5\U0001F600");
  EXPECT_EQ(textOf(unicodeNameOf("")), u"");
}

TEST(UnicodeNames, ShowBytesThatAreNoText) {
  EXPECT_EQ(textOf(unicodeNameOf("a\xFF"
                                 "b\xE6\x97")),
            u"a%FFb%E6%97");
}

TEST(UnicodeNames, EndWhereTheyMust) {
  EXPECT_EQ(unicodeNameOf(std::string(255, 'n')).length, 255);
  EXPECT_EQ(unicodeNameOf(std::string(255, '\xFF')).length, 255);
}

}  // namespace
