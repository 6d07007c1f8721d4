// Licence: MIT, see LICENSE.
#include "platform/userinterface/AlertResource.h"

#include <gtest/gtest.h>

#include "tests/platform/resources/SampleFile.h"

namespace {

using namespace platform::userinterface;
using namespace std::string_view_literals;
using tests::bytesOf;
using tests::ByteVector;

// Item list 258; the stages from the fourth to the first: E, 4, B, 0.
const ByteVector kAlert = bytesOf("\x00\x01\x00\x02\x00\x03\x00\x04\x01\x02\xE4\xB0\x30\x0A"sv);

const ByteVector kItems = bytesOf(
    "\x00\x02"
    "\x00\x00\x00\x00\x00\x01\x00\x02\x00\x03\x00\x04\x04\x02OK"
    "\x00\x00\x00\x00\x00\x01\x00\x02\x00\x03\x00\x04\x88\x03One\x00"
    "\x00\x00\x00\x00\x00\x01\x00\x02\x00\x03\x00\x04\x20\x02\x00\x80"sv);

TEST(AlertResource, TellsTheItemListAndTheStages) {
  auto alert = parseAlert(kAlert);
  ASSERT_TRUE(alert);
  EXPECT_EQ(alert->items, 258);
  const DialogItemIndex defaults[] = {1, 2, 1, 2};
  const bool drawn[] = {false, false, true, true};
  const int sounds[] = {0, 3, 0, 2};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(alert->stages[i].defaultItem, defaults[i]);
    EXPECT_EQ(alert->stages[i].isDrawn, drawn[i]);
    EXPECT_EQ(alert->stages[i].sounds, sounds[i]);
  }
}

TEST(AlertResource, MayLackThePosition) {
  for (std::size_t size = 0; size <= kAlert.size(); ++size) {
    EXPECT_EQ(parseAlert(Bytes(kAlert).first(size)).has_value(), size >= 12) << size << " bytes";
  }
}

TEST(ItemList, TellsTypesAndTexts) {
  auto items = parseItems(kItems);
  ASSERT_TRUE(items);
  ASSERT_EQ(items->size(), 3u);
  EXPECT_EQ((*items)[0].type, kButtonDialogItem);
  EXPECT_EQ((*items)[0].text, "OK");
  EXPECT_EQ((*items)[1].type, kStaticTextDialogItem);
  EXPECT_EQ((*items)[1].text, "One");
  EXPECT_EQ((*items)[2].type, 0x20);
  EXPECT_EQ((*items)[2].text, "\x00\x80"sv);
}

TEST(ItemList, MayBeEmptyOrLackTheLastPadding) {
  auto none = parseItems(bytesOf("\xFF\xFF"));
  ASSERT_TRUE(none);
  EXPECT_TRUE(none->empty());
  auto unpadded = parseItems(bytesOf("\x00\x00\x00\x00\x00\x00........\x04\x01X"sv));
  ASSERT_TRUE(unpadded);
  EXPECT_EQ(unpadded->at(0).text, "X");
}

TEST(ItemList, IsRefusedWhereverItIsCutOff) {
  for (std::size_t size = 0; size < kItems.size(); ++size) {
    EXPECT_FALSE(parseItems(Bytes(kItems).first(size))) << size << " bytes";
  }
}

TEST(ItemList, IsRefusedWhenItClaimsMoreThanItHolds) {
  ByteVector many = kItems;
  many[0] = std::byte{0xFF};
  many[1] = std::byte{0xFE};
  EXPECT_FALSE(parseItems(many));
  ByteVector longText = kItems;
  longText[2 + 13] = std::byte{255};
  EXPECT_FALSE(parseItems(longText));
}

}  // namespace
