// Licence: MIT, see LICENSE.
#include <AE/AEDataModel.h>

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tests/platform/appleevents/Descriptors.h"

namespace {

using tests::Desc;

TEST(Descriptor, HoldsACopyOfItsData) {
  SInt32 value = 42;
  Desc desc;
  ASSERT_EQ(AECreateDesc(typeSInt32, &value, sizeof value, &desc), noErr);
  value = 0;
  EXPECT_EQ(desc.type(), DescType{typeSInt32});
  EXPECT_EQ(tests::valueOf<SInt32>(desc), 42);
}

TEST(Descriptor, IsTheNullDescriptorOnceInitialized) {
  AEDesc desc = {typeChar, reinterpret_cast<AEDataStorage>(&desc)};
  AEInitializeDesc(&desc);
  EXPECT_EQ(desc.descriptorType, DescType{typeNull});
  EXPECT_EQ(desc.dataHandle, nullptr);
  AEInitializeDesc(nullptr);
}

TEST(Descriptor, OfTypeNullHoldsNothing) {
  Desc desc;
  EXPECT_EQ(AECreateDesc(typeNull, "data", 4, &desc), noErr);
  EXPECT_TRUE(desc.isNull());
}

TEST(Descriptor, MayBeEmpty) {
  Desc desc;
  EXPECT_EQ(AECreateDesc(typeTrue, nullptr, 0, &desc), noErr);
  EXPECT_EQ(desc.type(), DescType{typeTrue});
  EXPECT_EQ(desc.size(), 0);
}

TEST(Descriptor, IsNotMadeOfABadBlock) {
  Desc desc = tests::makeText("old");
  const AEDesc before = *&desc;
  EXPECT_EQ(AECreateDesc(typeChar, nullptr, 3, &desc), paramErr);
  EXPECT_TRUE(desc.isNull());
  *&desc = before;
  EXPECT_EQ(AECreateDesc(typeChar, "abc", -1, &desc), paramErr);
  EXPECT_TRUE(desc.isNull());
  *&desc = before;
  EXPECT_EQ(AECreateDesc(typeChar, "abc", 3, nullptr), paramErr);
}

TEST(Descriptor, IsNullAfterItsDisposal) {
  Desc desc = tests::makeText("text");
  EXPECT_EQ(AEDisposeDesc(&desc), noErr);
  EXPECT_TRUE(desc.isNull());
  EXPECT_EQ(AEDisposeDesc(&desc), noErr);
  EXPECT_EQ(AEDisposeDesc(nullptr), paramErr);
}

TEST(Descriptor, IsDuplicatedWithItsData) {
  const Desc original = tests::makeText("text");
  Desc copy;
  ASSERT_EQ(AEDuplicateDesc(&original, &copy), noErr);
  EXPECT_NE((*&copy).dataHandle, (*&original).dataHandle);
  EXPECT_EQ(copy.type(), DescType{typeChar});
  EXPECT_EQ(tests::textOf(copy), "text");
}

TEST(Descriptor, OfTypeNullHasANullDuplicate) {
  const Desc original;
  Desc copy;
  EXPECT_EQ(AEDuplicateDesc(&original, &copy), noErr);
  EXPECT_TRUE(copy.isNull());
  EXPECT_EQ(AEDuplicateDesc(nullptr, &copy), paramErr);
  EXPECT_EQ(AEDuplicateDesc(&original, nullptr), paramErr);
}

TEST(Descriptor, GivesNoMoreDataThanIsAskedFor) {
  const Desc desc = tests::makeText("abcdef");
  std::array<char, 8> buffer;
  buffer.fill('.');
  EXPECT_EQ(AEGetDescData(&desc, buffer.data(), 4), noErr);
  EXPECT_EQ(std::string(buffer.data(), 8), "abcd....");
  EXPECT_EQ(AEGetDescData(&desc, buffer.data(), 8), noErr);
  EXPECT_EQ(std::string(buffer.data(), 8), "abcdef..");
  EXPECT_EQ(AEGetDescData(&desc, nullptr, 0), noErr);
}

TEST(Descriptor, GivesNoDataIntoABadBlock) {
  const Desc desc = tests::makeText("abcdef");
  char buffer[8];
  EXPECT_EQ(AEGetDescData(nullptr, buffer, 8), paramErr);
  EXPECT_EQ(AEGetDescData(&desc, nullptr, 1), paramErr);
  EXPECT_EQ(AEGetDescData(&desc, buffer, -1), paramErr);
}

TEST(Descriptor, TellsTheSizeOfItsData) {
  EXPECT_EQ(tests::makeText("abcdef").size(), 6);
  EXPECT_EQ(Desc().size(), 0);
  EXPECT_EQ(AEGetDescDataSize(nullptr), 0);
}

TEST(Descriptor, GivesARangeOfItsData) {
  const Desc desc = tests::makeText("abcdef");
  std::string buffer(3, '.');
  EXPECT_EQ(AEGetDescDataRange(&desc, buffer.data(), 2, 3), noErr);
  EXPECT_EQ(buffer, "cde");
  EXPECT_EQ(AEGetDescDataRange(&desc, buffer.data(), 3, 3), noErr);
  EXPECT_EQ(buffer, "def");
  EXPECT_EQ(AEGetDescDataRange(&desc, nullptr, 6, 0), noErr);
}

TEST(Descriptor, GivesNoRangeBeyondItsData) {
  const Desc desc = tests::makeText("abcdef");
  std::string buffer(3, '.');
  EXPECT_EQ(AEGetDescDataRange(&desc, buffer.data(), 4, 3), errAEBufferTooSmall);
  EXPECT_EQ(AEGetDescDataRange(&desc, buffer.data(), 7, 0), errAEBufferTooSmall);
  EXPECT_EQ(AEGetDescDataRange(&desc, buffer.data(), -1, 3), paramErr);
  EXPECT_EQ(AEGetDescDataRange(&desc, buffer.data(), 0, -1), paramErr);
  EXPECT_EQ(AEGetDescDataRange(nullptr, buffer.data(), 0, 1), paramErr);
  EXPECT_EQ(buffer, "...");
}

TEST(Descriptor, TakesOtherTypeAndData) {
  Desc desc = tests::makeText("abcdef");
  const SInt16 value = -5;
  EXPECT_EQ(AEReplaceDescData(typeSInt16, &value, sizeof value, &desc), noErr);
  EXPECT_EQ(desc.type(), DescType{typeSInt16});
  EXPECT_EQ(tests::valueOf<SInt16>(desc), -5);
}

TEST(Descriptor, KeepsItsDataWhenTheNewIsBad) {
  Desc desc = tests::makeText("abcdef");
  EXPECT_EQ(AEReplaceDescData(typeSInt16, nullptr, 2, &desc), paramErr);
  EXPECT_EQ(AEReplaceDescData(typeAEList, "abc", 3, &desc), errAECorruptData);
  EXPECT_EQ(AEReplaceDescData(typeSInt16, "ab", 2, nullptr), paramErr);
  EXPECT_EQ(desc.type(), DescType{typeChar});
  EXPECT_EQ(tests::textOf(desc), "abcdef");
}

TEST(Descriptor, OfAListIsMadeOfTheBytesOfAnother) {
  Desc list = tests::makeList();
  ASSERT_EQ(AEPutPtr(&list, 0, typeChar, "item", 4), noErr);
  const std::vector<std::byte> bytes = tests::bytesOf(list);
  Desc copy;
  ASSERT_EQ(AECreateDesc(typeAEList, bytes.data(), static_cast<Size>(bytes.size()), &copy), noErr);
  SInt32 count = 0;
  EXPECT_EQ(AECountItems(&copy, &count), noErr);
  EXPECT_EQ(count, 1);
}

TEST(Descriptor, OfAListIsNotMadeOfOtherBytes) {
  for (const DescType type : {typeAEList, typeAERecord, typeAppleEvent}) {
    Desc desc;
    EXPECT_EQ(AECreateDesc(type, "12345678", 8, &desc), errAECorruptData);
    EXPECT_TRUE(desc.isNull());
    EXPECT_EQ(AECreateDesc(type, nullptr, 0, &desc), errAECorruptData);
  }
}

}  // namespace
