// Licence: MIT, see LICENSE.
#include "platform/text/MacRoman.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using platform::text::Converted;
using platform::text::fromMacRoman;
using platform::text::macRomanFromUTF8;
using platform::text::macRomanToUTF8;
using platform::text::toMacRoman;
using platform::text::utf8FromMacRoman;

// The upper half of MacRoman, sixteen characters a row from 0x80 on.
constexpr const char* kUpperRows[] = {
    "ÄÅÇÉÑÖÜáàâäãåçéè",      "êëíìîïñóòôöõúùûü", "†°¢£§•¶ß®©™´¨≠ÆØ", "∞±≤≥¥µ∂∑∏π∫ªºΩæø",
    "¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ", "–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ", "‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ", "\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ",
};

std::string bytesFrom(unsigned int first, unsigned int count) {
  std::string bytes;
  for (unsigned int i = 0; i < count; ++i) bytes += static_cast<char>(first + i);
  return bytes;
}

/// A text of which so many characters in a hundred are beyond ASCII.
std::string randomText(std::mt19937& random, std::size_t size, unsigned int percent) {
  std::string text(size, '\0');
  for (char& character : text) {
    const bool isHigh = random() % 100 < percent;
    character = static_cast<char>(random() % 128 + (isHigh ? 128 : 0));
  }
  return text;
}

TEST(MacRoman, HasAllItsCharacters) {
  for (unsigned int row = 0; row < std::size(kUpperRows); ++row) {
    const std::string bytes = bytesFrom(0x80 + 16 * row, 16);
    EXPECT_EQ(utf8FromMacRoman(bytes), kUpperRows[row]);
    EXPECT_EQ(macRomanFromUTF8(kUpperRows[row]), bytes);
  }
  const std::string ascii = bytesFrom(0, 128);
  EXPECT_EQ(utf8FromMacRoman(ascii), ascii);
  EXPECT_EQ(macRomanFromUTF8(ascii), ascii);
}

TEST(MacRoman, ComesBackFromEveryUnit) {
  for (unsigned int byte = 0; byte < 256; ++byte) {
    EXPECT_EQ(toMacRoman(fromMacRoman(static_cast<UInt8>(byte))), static_cast<UInt8>(byte));
  }
}

TEST(MacRoman, HasNoOtherUnits) {
  int found = 0;
  for (UInt32 unit = 0; unit < 0x10000; ++unit) {
    const auto byte = toMacRoman(static_cast<UniChar>(unit));
    if (!byte) continue;
    ++found;
    EXPECT_EQ(fromMacRoman(*byte), unit);
  }
  EXPECT_EQ(found, 256);
}

TEST(MacRoman, RefusesWhatItLacksAndWhatIsNotWellFormed) {
  const std::string_view texts[] = {
      "\xC4\x80",          // A with macron
      "\xD7\x90",          // alef
      "\xE2\x80\x8B",      // zero-width space
      "\xED\xA0\x80",      // a surrogate
      "\xF0\x9F\x98\x80",  // a character outside the first plane
      "\xC3",
      "\xE2\x80",
      "\xE2",  // cut short
      "\xC3\x28",
      "\xE2\x28\xA0",
      "\xE2\x80\x28",  // no continuation
      "\x80",
      "\xBF",
      "\xFF",
      "\xFE",
      "\xF8\x88\x80\x80\x80",
      "\xC1\xA1",
      "\xE0\x81\xA1",  // a, longer than it need be
      "\xE0\x83\x84",  // A with two dots, likewise
      "\xC0\x80",
  };
  for (const std::string_view text : texts) {
    EXPECT_EQ(macRomanFromUTF8(text), std::nullopt);
    EXPECT_EQ(macRomanFromUTF8("plain text before " + std::string(text)), std::nullopt);
  }
}

TEST(MacRoman, StopsAtTheCharacterThatItLacks) {
  std::string buffer(100, '#');
  const Converted done = macRomanFromUTF8("0123456789é\xC4\x80xyz", buffer.data(), buffer.size());
  EXPECT_EQ(done.taken, 12u);
  EXPECT_EQ(done.made, 11u);
  EXPECT_EQ(buffer.substr(0, 12), "0123456789\x8E#");
}

TEST(MacRoman, WritesWholeCharactersIntoTheRoomThereIs) {
  const struct {
    std::size_t room, taken, made;
  } rows[] = {{0, 0, 0}, {1, 1, 1}, {2, 1, 1}, {3, 2, 3},
              {4, 2, 3}, {5, 2, 3}, {6, 3, 6}, {7, 4, 7}};
  for (const auto& row : rows) {
    std::string buffer(8, '#');
    const Converted done = macRomanToUTF8("a\x8E\xDB!", buffer.data(), row.room);  // aé€!
    EXPECT_EQ(done.taken, row.taken) << row.room;
    EXPECT_EQ(done.made, row.made) << row.room;
    EXPECT_EQ(buffer.substr(0, row.made), std::string("aé€!").substr(0, row.made));
    EXPECT_EQ(buffer.substr(row.made), std::string(8 - row.made, '#')) << row.room;
  }
}

TEST(MacRoman, NeverWritesBehindItsRoom) {
  std::mt19937 random(7);
  for (std::size_t size = 0; size < 70; ++size) {
    const std::string text = randomText(random, size, 30);
    const std::string whole = utf8FromMacRoman(text);
    for (std::size_t room = 0; room <= whole.size(); ++room) {
      std::string buffer(whole.size() + 8, '#');
      const Converted done = macRomanToUTF8(text, buffer.data(), room);
      ASSERT_LE(done.made, room);
      ASSERT_EQ(buffer.substr(0, done.made), whole.substr(0, done.made));
      ASSERT_EQ(utf8FromMacRoman(text.substr(0, done.taken)).size(), done.made);
      ASSERT_EQ(buffer.find_first_not_of('#', room), std::string::npos);
      std::string back(size + 8, '#');
      const Converted returned = macRomanFromUTF8(whole, back.data(), std::min(room, back.size()));
      ASSERT_EQ(returned.made, std::min(room, size));
      ASSERT_EQ(back.find_first_not_of('#', returned.made), std::string::npos);
    }
  }
}

TEST(MacRoman, SurvivesTheWayThereAndBack) {
  std::mt19937 random(64);
  for (const unsigned int percent : {0u, 2u, 30u, 100u}) {
    for (std::size_t size = 0; size < 300; ++size) {
      const std::string text = randomText(random, size, percent);
      ASSERT_EQ(macRomanFromUTF8(utf8FromMacRoman(text)), text);
    }
  }
}

TEST(MacRoman, OfAnyBytesIsReadWithinThem) {
  std::mt19937 random(65);
  for (int i = 0; i < 20000; ++i) {
    const std::string bytes = randomText(random, random() % 24, 60);
    const std::vector<char> exact(bytes.begin(), bytes.end());  // whose end a sanitizer watches
    const auto text = macRomanFromUTF8(std::string_view(exact.data(), exact.size()));
    ASSERT_EQ(text ? utf8FromMacRoman(*text) : bytes, bytes);
  }
}

}  // namespace
