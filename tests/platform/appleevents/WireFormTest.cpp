// Licence: MIT, see LICENSE.
// The bytes themselves: what is written here is what processes of every build exchange.
#include <gtest/gtest.h>

#include <array>

#include "tests/platform/appleevents/Descriptors.h"
#include "tests/platform/appleevents/Messages.h"

namespace {

using tests::block;
using tests::Desc;
using tests::eventBlock;
using tests::item;
using tests::word;

std::string wireOf(const Desc& desc) {
  const std::vector<std::byte> bytes = tests::bytesOf(desc);
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

TEST(WireForm, OfAListIsACountAndItsItems) {
  Desc list = tests::makeList();
  EXPECT_EQ(wireOf(list), word(0));
  const SInt32 number = -2;
  ASSERT_EQ(AEPutPtr(&list, 0, typeSInt32, &number, sizeof number), noErr);
  ASSERT_EQ(AEPutPtr(&list, 0, typeChar, "abcde", 5), noErr);
  EXPECT_EQ(wireOf(list),
            block({item("****", "long", word(0xFFFFFFFE)), item("****", "TEXT", "abcde")}));
}

TEST(WireForm, OfARecordHasKeywords) {
  Desc record = tests::makeRecord();
  const std::array<SInt16, 3> numbers = {1, 2, -1};
  ASSERT_EQ(AEPutKeyPtr(&record, 'nums', typeSInt16, numbers.data(), sizeof numbers), noErr);
  ASSERT_EQ(AEPutKeyPtr(&record, 'flag', typeTrue, nullptr, 0), noErr);
  EXPECT_EQ(wireOf(record), block({item("nums", "shor", std::string("\0\x01\0\x02\xFF\xFF", 6)),
                                   item("flag", "true", "")}));
}

TEST(WireForm, OfANestedListLiesInPlace) {
  Desc inner = tests::makeList();
  const Float64 real = -2;
  ASSERT_EQ(AEPutPtr(&inner, 0, typeIEEE64BitFloatingPoint, &real, sizeof real), noErr);
  Desc record = tests::makeRecord();
  ASSERT_EQ(AEPutKeyDesc(&record, 'list', &inner), noErr);
  const std::string bytes = block({item("****", "doub", std::string("\xC0\0\0\0\0\0\0\0", 8))});
  EXPECT_EQ(wireOf(record), block({item("list", "list", bytes)}));
}

TEST(WireForm, OfAnEventHasItsAttributesBeforeItsParameters) {
  const Desc target = tests::makeValue<ProcessSerialNumber>(typeProcessSerialNumber, {0, 5});
  Desc event;
  ASSERT_EQ(AECreateAppleEvent('QrlP', 'Mcam', &target, 7, 9, &event), noErr);
  ASSERT_EQ(AEPutParamPtr(&event, keyDirectObject, typeChar, "hi", 2), noErr);
  const std::vector<std::string> attributes = {item("evcl", "type", "QrlP"),
                                               item("evid", "type", "Mcam"),
                                               item("rtid", "shor", std::string("\0\x07", 2)),
                                               item("tran", "long", word(9)),
                                               item("repq", "bool", std::string(1, '\0')),
                                               item("timo", "long", word(0xFFFFFFFF)),
                                               item("inte", "long", word(0x20)),
                                               item("esrc", "shor", std::string(2, '\0')),
                                               item("from", "psn ", word(0) + word(0)),
                                               item("addr", "psn ", word(0) + word(5))};
  EXPECT_EQ(wireOf(event), eventBlock(attributes, {item("----", "TEXT", "hi")}));
}

TEST(WireForm, OfAReplacedItemIsThatOfANewOne) {
  Desc record = tests::makeRecord();
  ASSERT_EQ(AEPutKeyPtr(&record, 'one ', typeChar, "first", 5), noErr);
  ASSERT_EQ(AEPutKeyPtr(&record, 'two ', typeChar, "second", 6), noErr);
  ASSERT_EQ(AEPutKeyPtr(&record, 'one ', typeChar, "", 0), noErr);
  EXPECT_EQ(wireOf(record), block({item("one ", "TEXT", ""), item("two ", "TEXT", "second")}));
  ASSERT_EQ(AEDeleteKeyDesc(&record, 'two '), noErr);
  EXPECT_EQ(wireOf(record), block({item("one ", "TEXT", "")}));
}

TEST(WireForm, IsReadInTheHostsOrder) {
  Desc event;
  std::vector<std::string> parameters = {item("comp", "comp", word(0x01020304) + word(0x05060708)),
                                         item("long", "long", word(1) + word(2) + word(3)),
                                         item("psn ", "psn ", word(0x01020304) + word(5)),
                                         item("zzzz", "zzzz", "abcd")};
  ASSERT_EQ(tests::decode(eventBlock(tests::travellingAttributes(), parameters), &event), noErr);
  EXPECT_EQ(tests::parameter<SInt64>(event, 'comp', typeSInt64), 0x0102030405060708);
  EXPECT_EQ((tests::parameter<std::array<SInt32, 3>>(event, 'long', typeSInt32)),
            (std::array<SInt32, 3>{1, 2, 3}));
  const auto process =
      tests::parameter<ProcessSerialNumber>(event, 'psn ', typeProcessSerialNumber);
  ASSERT_TRUE(process);
  EXPECT_EQ(process->highLongOfPSN, 0x01020304u);
  EXPECT_EQ(process->lowLongOfPSN, 5u);
  Desc unknown;
  ASSERT_EQ(AEGetParamDesc(&event, 'zzzz', typeWildCard, &unknown), noErr);
  EXPECT_EQ(wireOf(unknown), "abcd");
}

}  // namespace
