// Licence: MIT, see LICENSE.
#include <AE/AEDataModel.h>

#include <gtest/gtest.h>

#include <array>

#include "tests/platform/appleevents/Descriptors.h"

namespace {

using tests::countOf;
using tests::Desc;

OSErr append(Desc& list, SInt32 value) {
  return AEPutPtr(&list, 0, typeSInt32, &value, sizeof value);
}

Desc makeNumbers(std::initializer_list<SInt32> values) {
  Desc list = tests::makeList();
  for (const SInt32 value : values) EXPECT_EQ(append(list, value), noErr);
  return list;
}

std::vector<SInt32> numbersOf(const Desc& list) {
  std::vector<SInt32> numbers;
  for (SInt32 index = 1; index <= countOf(list); ++index) {
    SInt32 value = 0;
    EXPECT_EQ(
        AEGetNthPtr(&list, index, typeSInt32, nullptr, nullptr, &value, sizeof value, nullptr),
        noErr);
    numbers.push_back(value);
  }
  return numbers;
}

using Numbers = std::vector<SInt32>;

TEST(DescList, StartsEmpty) {
  const Desc list = tests::makeList();
  EXPECT_EQ(list.type(), DescType{typeAEList});
  EXPECT_EQ(countOf(list), 0);
  const Desc record = tests::makeRecord();
  EXPECT_EQ(record.type(), DescType{typeAERecord});
  EXPECT_EQ(countOf(record), 0);
}

TEST(DescList, AcceptsFactoringAndKeepsItemsWhole) {
  Desc list;
  ASSERT_EQ(AECreateList("long", 4, false, &list), noErr);
  ASSERT_EQ(append(list, 5), noErr);
  EXPECT_EQ(numbersOf(list), Numbers{5});
  Desc none;
  EXPECT_EQ(AECreateList("long", -1, false, &none), paramErr);
  EXPECT_EQ(AECreateList(nullptr, 0, false, nullptr), paramErr);
}

TEST(DescList, AppendsAtIndexZeroAndBehindTheLast) {
  Desc list = makeNumbers({10, 20});
  const SInt32 value = 30;
  EXPECT_EQ(AEPutPtr(&list, 3, typeSInt32, &value, sizeof value), noErr);
  EXPECT_EQ(append(list, 40), noErr);
  EXPECT_EQ(numbersOf(list), (Numbers{10, 20, 30, 40}));
}

TEST(DescList, ReplacesTheItemAtAnIndex) {
  Desc list = makeNumbers({10, 20, 30});
  const SInt32 value = -2;
  EXPECT_EQ(AEPutPtr(&list, 2, typeSInt32, &value, sizeof value), noErr);
  EXPECT_EQ(numbersOf(list), (Numbers{10, -2, 30}));
}

TEST(DescList, ReplacesAnItemByOneOfAnotherSize) {
  Desc list = makeNumbers({10, 20, 30});
  EXPECT_EQ(AEPutPtr(&list, 2, typeChar, "1234567890", 10), noErr);
  EXPECT_EQ(numbersOf(list), (Numbers{10, 1234567890, 30}));
  EXPECT_EQ(AEPutPtr(&list, 2, typeChar, "7", 1), noErr);
  EXPECT_EQ(numbersOf(list), (Numbers{10, 7, 30}));
}

TEST(DescList, RefusesToPutAtAnIndexThatLeavesAGap) {
  Desc list = makeNumbers({10});
  const SInt32 value = 1;
  EXPECT_EQ(AEPutPtr(&list, 3, typeSInt32, &value, sizeof value), errAEIllegalIndex);
  EXPECT_EQ(AEPutPtr(&list, -1, typeSInt32, &value, sizeof value), errAEIllegalIndex);
  EXPECT_EQ(numbersOf(list), Numbers{10});
}

TEST(DescList, RefusesBadBlocks) {
  Desc list = makeNumbers({10});
  EXPECT_EQ(AEPutPtr(&list, 0, typeSInt32, nullptr, 4), paramErr);
  EXPECT_EQ(AEPutPtr(&list, 0, typeSInt32, "abcd", -4), paramErr);
  EXPECT_EQ(AEPutPtr(nullptr, 0, typeSInt32, "abcd", 4), paramErr);
  EXPECT_EQ(AEPutDesc(&list, 0, nullptr), paramErr);
  EXPECT_EQ(AEPutPtr(&list, 0, typeAEList, "abcd", 4), errAECorruptData);
  EXPECT_EQ(countOf(list), 1);
}

TEST(DescList, HoldsListsAndRecords) {
  Desc record = tests::makeRecord();
  ASSERT_EQ(AEPutKeyPtr(&record, 'name', typeChar, "inner", 5), noErr);
  Desc list = tests::makeList();
  ASSERT_EQ(AEPutDesc(&list, 0, &record), noErr);
  Desc inner;
  AEKeyword keyword = 0;
  ASSERT_EQ(AEGetNthDesc(&list, 1, typeWildCard, &keyword, &inner), noErr);
  EXPECT_EQ(keyword, AEKeyword{typeWildCard});
  EXPECT_EQ(inner.type(), DescType{typeAERecord});
  EXPECT_EQ(tests::bytesOf(inner), tests::bytesOf(record));
}

TEST(DescList, CanBePutIntoItself) {
  Desc list = makeNumbers({10});
  ASSERT_EQ(AEPutDesc(&list, 0, &list), noErr);
  EXPECT_EQ(countOf(list), 2);
  Desc inner;
  ASSERT_EQ(AEGetNthDesc(&list, 2, typeAEList, nullptr, &inner), noErr);
  EXPECT_EQ(numbersOf(inner), Numbers{10});
}

TEST(DescList, HoldsNullDescriptors) {
  Desc list = tests::makeList();
  ASSERT_EQ(AEPutDesc(&list, 0, Desc().get()), noErr);
  Desc item = tests::makeText("old");
  AEDisposeDesc(&item);
  EXPECT_EQ(AEGetNthDesc(&list, 1, typeWildCard, nullptr, &item), noErr);
  EXPECT_TRUE(item.isNull());
}

TEST(DescList, IsNestedAtMost64Deep) {
  Desc list = tests::makeList();
  for (int depth = 1; depth < 64; ++depth) {
    Desc outer = tests::makeList();
    ASSERT_EQ(AEPutDesc(&outer, 0, &list), noErr) << depth;
    std::swap(*&list, *&outer);
  }
  Desc outer = tests::makeList();
  EXPECT_EQ(AEPutDesc(&outer, 0, &list), errAECorruptData);
  EXPECT_EQ(countOf(outer), 0);
}

TEST(DescList, GivesAnItemWithTypeAndWholeSize) {
  Desc list = tests::makeList();
  ASSERT_EQ(AEPutPtr(&list, 0, typeChar, "abcdef", 6), noErr);
  std::array<char, 4> text;
  text.fill('.');
  DescType type = 0;
  Size size = 0;
  AEKeyword keyword = 0;
  EXPECT_EQ(AEGetNthPtr(&list, 1, typeWildCard, &keyword, &type, text.data(), 3, &size), noErr);
  EXPECT_EQ(std::string(text.data(), 4), "abc.");
  EXPECT_EQ(type, DescType{typeChar});
  EXPECT_EQ(size, 6);
  EXPECT_EQ(keyword, AEKeyword{typeWildCard});
}

TEST(DescList, CoercesAnItem) {
  const Desc list = makeNumbers({-7});
  SInt16 value = 0;
  DescType type = 0;
  Size size = 0;
  EXPECT_EQ(AEGetNthPtr(&list, 1, typeSInt16, nullptr, &type, &value, sizeof value, &size), noErr);
  EXPECT_EQ(value, -7);
  EXPECT_EQ(type, DescType{typeSInt16});
  EXPECT_EQ(size, 2);
  Desc text;
  EXPECT_EQ(AEGetNthDesc(&list, 1, typeChar, nullptr, &text), noErr);
  EXPECT_EQ(tests::textOf(text), "-7");
}

TEST(DescList, ReportsWhatCannotBeCoerced) {
  const Desc list = makeNumbers({-7});
  UInt32 value = 99;
  EXPECT_EQ(AEGetNthPtr(&list, 1, typeUInt32, nullptr, nullptr, &value, sizeof value, nullptr),
            errAECoercionFail);
  EXPECT_EQ(value, 99u);
  Desc item;
  EXPECT_EQ(AEGetNthDesc(&list, 1, typeUInt32, nullptr, &item), errAECoercionFail);
  EXPECT_TRUE(item.isNull());
}

TEST(DescList, HasNoItemOutsideItsCount) {
  const Desc list = makeNumbers({10});
  SInt32 value = 99;
  for (const SInt32 index : {-1, 0, 2}) {
    EXPECT_EQ(AEGetNthPtr(&list, index, typeSInt32, nullptr, nullptr, &value, 4, nullptr),
              errAEDescNotFound);
    Desc item;
    EXPECT_EQ(AEGetNthDesc(&list, index, typeSInt32, nullptr, &item), errAEDescNotFound);
    EXPECT_TRUE(item.isNull());
    EXPECT_EQ(AESizeOfNthItem(&list, index, nullptr, nullptr), errAEDescNotFound);
  }
  EXPECT_EQ(value, 99);
}

TEST(DescList, TellsTypeAndSizeOfAnItem) {
  Desc list = makeNumbers({10});
  ASSERT_EQ(AEPutPtr(&list, 0, typeChar, "abc", 3), noErr);
  DescType type = 0;
  Size size = 0;
  EXPECT_EQ(AESizeOfNthItem(&list, 2, &type, &size), noErr);
  EXPECT_EQ(type, DescType{typeChar});
  EXPECT_EQ(size, 3);
  EXPECT_EQ(AESizeOfNthItem(&list, 1, nullptr, nullptr), noErr);
}

TEST(DescList, ForgetsADeletedItem) {
  Desc list = makeNumbers({10, 20, 30});
  EXPECT_EQ(AEDeleteItem(&list, 2), noErr);
  EXPECT_EQ(numbersOf(list), (Numbers{10, 30}));
  EXPECT_EQ(AEDeleteItem(&list, 3), errAEIllegalIndex);
  EXPECT_EQ(AEDeleteItem(&list, 0), errAEIllegalIndex);
  EXPECT_EQ(AEDeleteItem(&list, 2), noErr);
  EXPECT_EQ(AEDeleteItem(&list, 1), noErr);
  EXPECT_EQ(countOf(list), 0);
}

TEST(DescList, IsReadInAnyOrder) {
  Desc list = tests::makeList();
  for (SInt32 value = 1; value <= 100; ++value) ASSERT_EQ(append(list, value * value), noErr);
  for (const SInt32 index : {100, 1, 50, 49, 51, 2, 99, 100}) {
    SInt32 value = 0;
    EXPECT_EQ(AEGetNthPtr(&list, index, typeSInt32, nullptr, nullptr, &value, 4, nullptr), noErr);
    EXPECT_EQ(value, index * index);
  }
}

TEST(DescList, IsReadRightAfterAChangeBeforeTheItemLastRead) {
  Desc list = makeNumbers({10, 20, 30});
  SInt32 value = 0;
  ASSERT_EQ(AEGetNthPtr(&list, 3, typeSInt32, nullptr, nullptr, &value, 4, nullptr), noErr);
  ASSERT_EQ(AEDeleteItem(&list, 1), noErr);
  EXPECT_EQ(numbersOf(list), (Numbers{20, 30}));
}

TEST(DescList, RefusesDescriptorsThatAreNone) {
  Desc null;
  Desc text = tests::makeText("text");
  SInt32 count = 0;
  EXPECT_EQ(AECountItems(&null, &count), errAENotAEDesc);
  EXPECT_EQ(AECountItems(&text, &count), errAEWrongDataType);
  EXPECT_EQ(AECountItems(nullptr, &count), paramErr);
  EXPECT_EQ(AEPutPtr(&null, 0, typeChar, "a", 1), errAENotAEDesc);
  EXPECT_EQ(AEPutPtr(&text, 0, typeChar, "a", 1), errAEWrongDataType);
  EXPECT_EQ(AEDeleteItem(&text, 1), errAEWrongDataType);
  const Desc list = tests::makeList();
  EXPECT_EQ(AECountItems(&list, nullptr), paramErr);
  EXPECT_EQ(AEGetNthDesc(&list, 1, typeWildCard, nullptr, nullptr), paramErr);
}

TEST(DescList, IsNotARecordToPutInto) {
  Desc record = tests::makeRecord();
  EXPECT_EQ(AEPutPtr(&record, 0, typeChar, "a", 1), errAEWrongDataType);
  Desc list = tests::makeList();
  EXPECT_EQ(AEPutKeyPtr(&list, 'name', typeChar, "a", 1), errAEWrongDataType);
}

}  // namespace
