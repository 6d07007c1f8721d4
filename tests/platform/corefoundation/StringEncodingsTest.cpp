// Licence: MIT, see LICENSE.
#include "platform/corefoundation/StringEncodings.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "platform/text/MacRoman.h"

using namespace platform::corefoundation;
using platform::text::fromMacRoman;
using platform::text::toMacRoman;

namespace {

// The upper half of MacRoman, sixteen characters a row from 0x80 on.
constexpr char16_t kMacRomanText[] =
    u"ÄÅÇÉÑÖÜáàâäãåçéè"
    u"êëíìîïñóòôöõúùûü"
    u"†°¢£§•¶ß®©™´¨≠ÆØ"
    u"∞±≤≥¥µ∂∑∏π∫ªºΩæø"
    u"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ"
    u"–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ"
    u"‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ"
    u"\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ";

Bytes bytesOf(const std::string& text) {
  return {reinterpret_cast<const UInt8*>(text.data()), text.size()};
}

std::optional<std::u16string> decoded(const std::string& text, CFStringEncoding encoding) {
  const std::optional<CFIndex> length = decodedLength(bytesOf(text), encoding);
  if (!length) return std::nullopt;
  std::vector<UniChar> units(static_cast<std::size_t>(*length));
  decode(bytesOf(text), encoding, units.data());
  return std::u16string(units.begin(), units.end());
}

// Of the first character; empty if the encoding lacks it.
std::string encoded(const std::u16string& text, CFStringEncoding encoding) {
  const std::vector<UniChar> units(text.begin(), text.end());
  const EncodedCharacter made = encodeFirst(units, encoding);
  return std::string(reinterpret_cast<const char*>(made.bytes),
                     static_cast<std::size_t>(made.size));
}

constexpr CFStringEncoding kAllEncodings[] = {kCFStringEncodingMacRoman,  kCFStringEncodingUnicode,
                                              kCFStringEncodingISOLatin1, kCFStringEncodingASCII,
                                              kCFStringEncodingUTF8,      kCFStringEncodingUTF16BE,
                                              kCFStringEncodingUTF16LE};

}  // namespace

TEST(StringEncodings, KnowsTheEncodingsThatAreOffered) {
  for (const CFStringEncoding encoding : kAllEncodings) EXPECT_TRUE(isKnownEncoding(encoding));
  EXPECT_FALSE(isKnownEncoding(0x0500));
  EXPECT_FALSE(isKnownEncoding(0xFFFFFFFF));
  EXPECT_FALSE(isByteEncoding(kCFStringEncodingUnicode));
  EXPECT_TRUE(isByteEncoding(kCFStringEncodingUTF8));
}

TEST(StringEncodings, AgreeOnASCIIButForTheWidth) {
  for (char letter = 1; letter > 0; ++letter) {
    const std::u16string text(1, static_cast<char16_t>(letter));
    for (const CFStringEncoding encoding : {kCFStringEncodingMacRoman, kCFStringEncodingISOLatin1,
                                            kCFStringEncodingASCII, kCFStringEncodingUTF8}) {
      EXPECT_EQ(decoded(std::string(1, letter), encoding), text);
      EXPECT_EQ(encoded(text, encoding), std::string(1, letter));
    }
    if (letter == 127) break;
  }
}

TEST(StringEncodings, MacRomanHasAllItsCharactersBothWays) {
  ASSERT_EQ(std::u16string(kMacRomanText).size(), 128U);
  for (std::size_t i = 0; i < 128; ++i) {
    const UInt8 byte = static_cast<UInt8>(0x80 + i);
    EXPECT_EQ(fromMacRoman(byte), kMacRomanText[i]) << "byte " << int{byte};
    EXPECT_EQ(toMacRoman(kMacRomanText[i]), byte) << "byte " << int{byte};
  }
}

TEST(StringEncodings, MacRomanLacksEveryOtherCharacter) {
  const std::u16string own(kMacRomanText);
  int found = 0;
  for (UInt32 unit = 0x80; unit <= 0xFFFF; ++unit) {
    const bool isOwn = own.find(static_cast<char16_t>(unit)) != std::u16string::npos;
    const bool isConverted = toMacRoman(static_cast<UniChar>(unit)).has_value();
    EXPECT_EQ(isConverted, isOwn) << "unit " << unit;
    found += isConverted;
  }
  EXPECT_EQ(found, 128);
}

TEST(StringEncodings, ISOLatin1IsTheFirst256Characters) {
  EXPECT_EQ(decoded("\x80\xE9\xFF", kCFStringEncodingISOLatin1), u"\u0080\u00E9\u00FF");
  EXPECT_EQ(encoded(u"\u00FF", kCFStringEncodingISOLatin1), "\xFF");
  EXPECT_EQ(encoded(u"\u0100", kCFStringEncodingISOLatin1), "");
}

TEST(StringEncodings, ASCIIEndsAt127) {
  EXPECT_EQ(decoded("\x7F", kCFStringEncodingASCII), u"\u007F");
  EXPECT_EQ(decoded("a\x80", kCFStringEncodingASCII), std::nullopt);
  EXPECT_EQ(encoded(u"\u0080", kCFStringEncodingASCII), "");
}

TEST(StringEncodings, UTF8GoesBothWaysAtItsBounds) {
  const struct {
    const char* bytes;
    const char16_t* units;
  } rows[] = {{"\x7F", u"\u007F"},
              {"\xC2\x80", u"\u0080"},
              {"\xDF\xBF", u"\u07FF"},
              {"\xE0\xA0\x80", u"\u0800"},
              {"\xED\x9F\xBF", u"\uD7FF"},
              {"\xEE\x80\x80", u"\uE000"},
              {"\xEF\xBF\xBF", u"\uFFFF"},
              {"\xF0\x90\x80\x80", u"\U00010000"},
              {"\xF0\x9D\x84\x9E", u"\U0001D11E"},
              {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"}};
  for (const auto& row : rows) {
    EXPECT_EQ(decoded(row.bytes, kCFStringEncodingUTF8), row.units);
    EXPECT_EQ(encoded(row.units, kCFStringEncodingUTF8), row.bytes);
  }
}

TEST(StringEncodings, IllFormedUTF8IsNotDecoded) {
  for (const char* bytes : {"\x80",
                            "\xBF",
                            "\xC0\x80",
                            "\xC1\xBF",
                            "\xC2",
                            "\xC2\x41",
                            "\xE0\x80\x80",
                            "\xE0\x9F\xBF",
                            "\xE2\x82",
                            "\xE2\x82\x41",
                            "\xED\xA0\x80",
                            "\xED\xBF\xBF",
                            "\xF0\x80\x80\x80",
                            "\xF0\x8F\xBF\xBF",
                            "\xF0\x9D\x84",
                            "\xF4\x90\x80\x80",
                            "\xF5\x80\x80\x80",
                            "\xF8\x88\x80\x80\x80",
                            "\xFE",
                            "\xFF",
                            "ok\xC3"}) {
    EXPECT_EQ(decoded(bytes, kCFStringEncodingUTF8), std::nullopt) << bytes;
  }
}

TEST(StringEncodings, LoneSurrogatesAreNotInUTF8) {
  EXPECT_EQ(encoded(u"\xD834", kCFStringEncodingUTF8), "");
  EXPECT_EQ(encoded(u"\xD834x", kCFStringEncodingUTF8), "");
  EXPECT_EQ(encoded(u"\xDD1E", kCFStringEncodingUTF8), "");
}

TEST(StringEncodings, UTF16HasTwoOrders) {
  const std::string big("\x00\x41\x20\xAC", 4);
  const std::string little("\x41\x00\xAC\x20", 4);
  EXPECT_EQ(decoded(big, kCFStringEncodingUTF16BE), u"A\u20AC");
  EXPECT_EQ(decoded(little, kCFStringEncodingUTF16LE), u"A\u20AC");
  EXPECT_EQ(encoded(u"\u20AC", kCFStringEncodingUTF16BE), "\x20\xAC");
  EXPECT_EQ(encoded(u"\u20AC", kCFStringEncodingUTF16LE), "\xAC\x20");
  EXPECT_EQ(encoded(u"\U0001D11E", kCFStringEncodingUTF16BE), "\xD8\x34\xDD\x1E");
}

TEST(StringEncodings, UnicodeIsUTF16InTheHostsOrder) {
  const UniChar units[] = {0x0041, 0x20AC};
  std::string bytes(sizeof units, '\0');
  std::memcpy(bytes.data(), units, sizeof units);
  EXPECT_EQ(decoded(bytes, kCFStringEncodingUnicode), u"A\u20AC");
  EXPECT_EQ(encoded(u"\u20AC", kCFStringEncodingUnicode), bytes.substr(2));
}

TEST(StringEncodings, HalfAUnitIsNotDecoded) {
  for (const CFStringEncoding encoding :
       {kCFStringEncodingUnicode, kCFStringEncodingUTF16BE, kCFStringEncodingUTF16LE}) {
    EXPECT_EQ(decoded("abc", encoding), std::nullopt);
  }
}

TEST(StringEncodings, UnknownEncodingsConvertNothing) {
  EXPECT_EQ(decoded("a", 0x0500), std::nullopt);
  EXPECT_EQ(encoded(u"\u0100", 0x0500), "");
  EXPECT_EQ(bytesPerUnit(0x0500), 0);
}

TEST(StringEncodings, APairIsOneCharacterOfTwoUnits) {
  const std::array<UniChar, 2> pair = {0xD834, 0xDD1E};
  EXPECT_EQ(encodeFirst(pair, kCFStringEncodingUTF8).units, 2);
  EXPECT_EQ(encodeFirst(pair, kCFStringEncodingMacRoman).units, 2);
  EXPECT_EQ(encodeFirst(pair, kCFStringEncodingMacRoman).size, 0);
  EXPECT_EQ(encodeFirst(Units(pair).first(1), kCFStringEncodingUTF16BE).units, 1);
}

TEST(StringEncodings, ByteOrderMarksAreTakenOffAndDecide) {
  const struct {
    const char* bytes;
    CFStringEncoding asked;
    CFStringEncoding found;
    std::size_t left;
  } rows[] = {{"\xFE\xFF\x41\x42", kCFStringEncodingUnicode, kCFStringEncodingUTF16BE, 2},
              {"\xFF\xFE\x41\x42", kCFStringEncodingUnicode, kCFStringEncodingUTF16LE, 2},
              {"\x41\x42\x43\x44", kCFStringEncodingUnicode, kCFStringEncodingUTF16BE, 4},
              {"\xFE\xFF\x41\x42", kCFStringEncodingUTF16BE, kCFStringEncodingUTF16BE, 2},
              {"\xFE\xFF\x41\x42", kCFStringEncodingUTF16LE, kCFStringEncodingUTF16LE, 4},
              {"\xFF\xFE\x41\x42", kCFStringEncodingUTF16LE, kCFStringEncodingUTF16LE, 2},
              {"\xEF\xBB\xBF\x41", kCFStringEncodingUTF8, kCFStringEncodingUTF8, 1},
              {"\xEF\xBB", kCFStringEncodingUTF8, kCFStringEncodingUTF8, 2},
              {"\xFE\xFF\x41", kCFStringEncodingMacRoman, kCFStringEncodingMacRoman, 3},
              {"\xFE", kCFStringEncodingUnicode, kCFStringEncodingUTF16BE, 1},
              {"", kCFStringEncodingUnicode, kCFStringEncodingUTF16BE, 0}};
  for (const auto& row : rows) {
    const std::string text(row.bytes);
    Bytes bytes = bytesOf(text);
    EXPECT_EQ(takeByteOrderMark(bytes, row.asked), row.found);
    EXPECT_EQ(bytes.size(), row.left);
  }
}
