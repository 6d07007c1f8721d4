// Licence: MIT, see LICENSE.
// The copies and appends beside plain models of them, over random texts and sizes.
#include <gtest/gtest.h>
#include <quorvant/util/StringUtils.h>

#include <algorithm>
#include <random>
#include <string>

#include "tests/util/Destination.h"

namespace {

using tests::bytesOf;
using tests::Destination;
using tests::pascal;

constexpr int kRounds = 3000;
constexpr std::size_t kLongest = 0xED;  // 0xEE as a length byte would pass for an untouched one
const std::string kZero(1, '\0');

/// Short texts as often as long ones, without zero bytes and the byte that marks untouched ones.
std::string randomText(std::mt19937& random, std::size_t most) {
  std::string text(random() % 2 == 0 ? random() % 8 : random() % (most + 1), '\0');
  for (char& character : text) character = static_cast<char>('!' + random() % 90);
  return text;
}

int randomSize(std::mt19937& random) {
  return 1 + static_cast<int>(random() % 2 == 0 ? random() % 10 : random() % 300);
}

std::string cut(const std::string& text, int count) {
  return text.substr(0, static_cast<std::size_t>(std::max(count, 0)));
}

TEST(StringProperties, CopiesAreTheirModels) {
  std::mt19937 random(1);
  for (int round = 0; round < kRounds; ++round) {
    const std::string text = randomText(random, kLongest);
    const std::string pascalText = pascal(text);
    const int size = randomSize(random);
    const std::string fitting = cut(text, size - 1);
    Destination to[4];
    pstrcpy(to[0].pascalBytes(), bytesOf(pascalText), size);
    pcstrcpy(to[1].chars(), bytesOf(pascalText), size);
    cpstrcpy(to[2].pascalBytes(), text.c_str(), size);
    cstrcpy(to[3].chars(), text.c_str(), size);
    ASSERT_EQ(to[0].written(), pascalText[0] + fitting);
    ASSERT_EQ(to[1].written(), fitting + kZero);
    ASSERT_EQ(to[2].written(), pascal(cut(text, std::min(size, 256) - 1)));
    ASSERT_EQ(to[3].written(), fitting.empty() ? kZero : cut(text + kZero, size));
  }
}

TEST(StringProperties, AppendsAreTheirModels) {
  std::mt19937 random(2);
  for (int round = 0; round < kRounds; ++round) {
    const std::string before = randomText(random, kLongest / 2);
    const std::string text = randomText(random, kLongest / 2);
    const int size = randomSize(random);
    const int room = size - static_cast<int>(before.size());
    const bool hasRoom = room > 0;
    const std::string fitting = cut(text, room - 1);
    Destination to[4] = {Destination(pascal(before)), Destination(pascal(before)),
                         Destination(before + kZero), Destination(before + kZero)};
    pstrcat(to[0].pascalBytes(), bytesOf(pascal(text)), size);
    cpstrcat(to[1].pascalBytes(), text.c_str(), size);
    pcstrcat(to[2].chars(), bytesOf(pascal(text)), size);
    cstrcat(to[3].chars(), text.c_str(), size);
    ASSERT_EQ(to[0].written(), pascal(before + fitting));
    ASSERT_EQ(to[1].written(), pascal(before + fitting));
    ASSERT_EQ(to[2].written(), before + fitting + kZero);
    const bool isFilled = hasRoom && !fitting.empty();
    ASSERT_EQ(to[3].written(), before + (isFilled ? cut(text + kZero, room) : kZero));
  }
}

TEST(StringProperties, BothFormsComeBackToThemselves) {
  std::mt19937 random(3);
  for (int round = 0; round < kRounds; ++round) {
    const std::string text = randomText(random, 255);
    Destination pascalForm;
    Destination cForm;
    cpstrcpy(pascalForm.pascalBytes(), text.c_str(), 256);
    pcstrcpy(cForm.chars(), pascalForm.pascalBytes(), 256);
    ASSERT_EQ(cForm.chars(), text);
    const std::string compared = cut(text, 254);
    ASSERT_EQ(pcstricmp(pascalForm.pascalBytes(), text.c_str(), true, true),
              text.size() > compared.size() ? 1 : 0);
  }
}

TEST(StringProperties, BuffersLoseTheirLastByteAlone) {
  std::mt19937 random(4);
  for (int round = 0; round < kRounds; ++round) {
    const std::string text = randomText(random, 255);
    const int size = randomSize(random);
    const int length = static_cast<int>(text.size());
    Destination to;
    BufToCString(to.chars(), text.data(), length, size);
    ASSERT_EQ(to.written(), cut(text, std::min(length, size) - 1) + kZero);
  }
}

}  // namespace
