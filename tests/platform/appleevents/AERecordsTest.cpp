// Licence: MIT, see LICENSE.
#include <AE/AEDataModel.h>

#include <gtest/gtest.h>

#include <array>

#include "tests/platform/appleevents/Descriptors.h"

namespace {

using tests::countOf;
using tests::Desc;
using tests::parameter;
using tests::putParameter;

/// The calls of records serve a record and the parameters of an event alike.
class RecordCalls : public testing::TestWithParam<bool> {
 protected:
  Desc record = GetParam() ? tests::makeEvent() : tests::makeRecord();
};
INSTANTIATE_TEST_SUITE_P(On, RecordCalls, testing::Bool(),
                         [](const auto& subject) { return subject.param ? "AnEvent" : "ARecord"; });

TEST_P(RecordCalls, GiveBackWhatWasPut) {
  EXPECT_EQ(putParameter<SInt32>(record, 'numb', typeSInt32, -5), noErr);
  EXPECT_EQ(putParameter<Float64>(record, 'real', typeIEEE64BitFloatingPoint, 2.5), noErr);
  EXPECT_EQ(countOf(record), 2);
  EXPECT_EQ(parameter<SInt32>(record, 'numb', typeSInt32), -5);
  EXPECT_EQ(parameter<Float64>(record, 'real', typeIEEE64BitFloatingPoint), 2.5);
}

TEST_P(RecordCalls, KeepOneItemUnderAKeyword) {
  ASSERT_EQ(putParameter<SInt32>(record, 'one ', typeSInt32, 1), noErr);
  ASSERT_EQ(putParameter<SInt32>(record, 'two ', typeSInt32, 2), noErr);
  EXPECT_EQ(AEPutKeyPtr(&record, 'one ', typeChar, "eleven", 6), noErr);
  EXPECT_EQ(countOf(record), 2);
  Desc text;
  EXPECT_EQ(AEGetKeyDesc(&record, 'one ', typeWildCard, &text), noErr);
  EXPECT_EQ(tests::textOf(text), "eleven");
  EXPECT_EQ(parameter<SInt32>(record, 'two ', typeSInt32), 2);
}

TEST_P(RecordCalls, ReportAMissingKeyword) {
  SInt32 value = 99;
  EXPECT_EQ(AEGetKeyPtr(&record, 'none', typeSInt32, nullptr, &value, 4, nullptr),
            errAEDescNotFound);
  Desc item;
  EXPECT_EQ(AEGetKeyDesc(&record, 'none', typeSInt32, &item), errAEDescNotFound);
  EXPECT_TRUE(item.isNull());
  EXPECT_EQ(AESizeOfKeyDesc(&record, 'none', nullptr, nullptr), errAEDescNotFound);
  EXPECT_EQ(AEDeleteKeyDesc(&record, 'none'), errAEDescNotFound);
  EXPECT_EQ(value, 99);
}

TEST_P(RecordCalls, TellTypeAndSizeAsStored) {
  ASSERT_EQ(AEPutKeyPtr(&record, 'text', typeChar, "abc", 3), noErr);
  DescType type = 0;
  Size size = 0;
  EXPECT_EQ(AESizeOfKeyDesc(&record, 'text', &type, &size), noErr);
  EXPECT_EQ(type, DescType{typeChar});
  EXPECT_EQ(size, 3);
}

TEST_P(RecordCalls, DeleteAnItem) {
  ASSERT_EQ(putParameter<SInt32>(record, 'one ', typeSInt32, 1), noErr);
  ASSERT_EQ(putParameter<SInt32>(record, 'two ', typeSInt32, 2), noErr);
  EXPECT_EQ(AEDeleteKeyDesc(&record, 'one '), noErr);
  EXPECT_EQ(countOf(record), 1);
  EXPECT_EQ(AEDeleteKeyDesc(&record, 'one '), errAEDescNotFound);
  EXPECT_EQ(parameter<SInt32>(record, 'two ', typeSInt32), 2);
}

TEST_P(RecordCalls, CoerceOnTheWayOut) {
  ASSERT_EQ(AEPutKeyPtr(&record, 'text', typeChar, "1234", 4), noErr);
  DescType type = 0;
  Size size = 0;
  SInt64 value = 0;
  EXPECT_EQ(AEGetKeyPtr(&record, 'text', typeSInt64, &type, &value, sizeof value, &size), noErr);
  EXPECT_EQ(value, 1234);
  EXPECT_EQ(type, DescType{typeSInt64});
  EXPECT_EQ(size, 8);
  EXPECT_EQ(AEGetKeyPtr(&record, 'text', 'obj ', &type, &value, sizeof value, &size),
            errAECoercionFail);
}

TEST_P(RecordCalls, GiveTheWholeSizeOfWhatTheyCutShort) {
  ASSERT_EQ(AEPutKeyPtr(&record, 'text', typeChar, "abcdef", 6), noErr);
  std::string buffer(4, '.');
  Size size = 0;
  EXPECT_EQ(AEGetKeyPtr(&record, 'text', typeChar, nullptr, buffer.data(), 3, &size), noErr);
  EXPECT_EQ(buffer, "abc.");
  EXPECT_EQ(size, 6);
  EXPECT_EQ(AEGetKeyPtr(&record, 'text', typeChar, nullptr, nullptr, 0, &size), noErr);
}

TEST_P(RecordCalls, CutNumbersShortAsTheyLieInMemory) {
  const std::array<SInt32, 3> numbers = {0x01020304, 0x05060708, 0x090A0B0C};
  ASSERT_EQ(AEPutKeyPtr(&record, 'nums', typeSInt32, numbers.data(), sizeof numbers), noErr);
  for (Size size = 0; size <= 12; ++size) {
    std::array<std::byte, 16> expected{};
    std::array<std::byte, 16> copied{};
    std::memcpy(expected.data(), numbers.data(), static_cast<std::size_t>(size));
    EXPECT_EQ(AEGetKeyPtr(&record, 'nums', typeSInt32, nullptr, copied.data(), size, nullptr),
              noErr);
    EXPECT_EQ(copied, expected) << size;
  }
}

TEST_P(RecordCalls, RefuseBadBlocks) {
  EXPECT_EQ(AEPutKeyPtr(&record, 'text', typeChar, nullptr, 1), paramErr);
  EXPECT_EQ(AEPutKeyPtr(&record, 'text', typeChar, "a", -1), paramErr);
  EXPECT_EQ(AEPutKeyPtr(nullptr, 'text', typeChar, "a", 1), paramErr);
  EXPECT_EQ(AEPutKeyDesc(&record, 'text', nullptr), paramErr);
  EXPECT_EQ(countOf(record), 0);
  ASSERT_EQ(AEPutKeyPtr(&record, 'text', typeChar, "a", 1), noErr);
  char byte;
  EXPECT_EQ(AEGetKeyPtr(&record, 'text', typeChar, nullptr, nullptr, 1, nullptr), paramErr);
  EXPECT_EQ(AEGetKeyPtr(&record, 'text', typeChar, nullptr, &byte, -1, nullptr), paramErr);
  EXPECT_EQ(AEGetKeyDesc(&record, 'text', typeChar, nullptr), paramErr);
}

TEST_P(RecordCalls, NameItemsFoundByIndex) {
  ASSERT_EQ(putParameter<SInt32>(record, 'one ', typeSInt32, 1), noErr);
  ASSERT_EQ(putParameter<SInt32>(record, 'two ', typeSInt32, 2), noErr);
  AEKeyword keyword = 0;
  SInt32 value = 0;
  EXPECT_EQ(AEGetNthPtr(&record, 2, typeSInt32, &keyword, nullptr, &value, 4, nullptr), noErr);
  EXPECT_EQ(keyword, AEKeyword{'two '});
  EXPECT_EQ(value, 2);
  EXPECT_EQ(AEDeleteItem(&record, 1), noErr);
  EXPECT_EQ(countOf(record), 1);
}

TEST_P(RecordCalls, NestRecords) {
  Desc inner = tests::makeRecord();
  ASSERT_EQ(putParameter<SInt16>(inner, 'numb', typeSInt16, 300), noErr);
  ASSERT_EQ(AEPutKeyDesc(&record, 'reco', &inner), noErr);
  Desc found;
  ASSERT_EQ(AEGetKeyDesc(&record, 'reco', typeAERecord, &found), noErr);
  EXPECT_EQ(parameter<SInt16>(found, 'numb', typeSInt16), 300);
}

TEST(Record, IsRecognised) {
  EXPECT_TRUE(AECheckIsRecord(tests::makeRecord().get()));
  EXPECT_TRUE(AECheckIsRecord(tests::makeEvent().get()));
  EXPECT_FALSE(AECheckIsRecord(tests::makeList().get()));
  EXPECT_FALSE(AECheckIsRecord(Desc().get()));
  EXPECT_FALSE(AECheckIsRecord(nullptr));
}

TEST(Record, IsNoOtherDescriptor) {
  Desc null;
  Desc list = tests::makeList();
  const Desc text = tests::makeText("text");
  SInt32 value = 0;
  EXPECT_EQ(AEGetKeyPtr(&null, 'a   ', typeSInt32, nullptr, &value, 4, nullptr), errAENotAEDesc);
  EXPECT_EQ(AEGetParamPtr(&list, 'a   ', typeSInt32, nullptr, &value, 4, nullptr),
            errAEWrongDataType);
  EXPECT_EQ(AEGetParamPtr(&text, 'a   ', typeSInt32, nullptr, &value, 4, nullptr),
            errAEWrongDataType);
  EXPECT_EQ(AEPutParamPtr(&null, 'a   ', typeSInt32, &value, 4), errAENotAEDesc);
  EXPECT_EQ(AESizeOfParam(&list, 'a   ', nullptr, nullptr), errAEWrongDataType);
  EXPECT_EQ(AEDeleteParam(&list, 'a   '), errAEWrongDataType);
}

TEST(Parameter, IsReachedByTheCallsOfItsOwnName) {
  Desc event = tests::makeEvent();
  const Desc text = tests::makeText("12");
  EXPECT_EQ(AEPutParamDesc(&event, keyDirectObject, &text), noErr);
  DescType type = 0;
  Size size = 0;
  EXPECT_EQ(AESizeOfParam(&event, keyDirectObject, &type, &size), noErr);
  EXPECT_EQ(type, DescType{typeChar});
  EXPECT_EQ(size, 2);
  Desc number;
  EXPECT_EQ(AEGetParamDesc(&event, keyDirectObject, typeSInt32, &number), noErr);
  EXPECT_EQ(tests::valueOf<SInt32>(number), 12);
  EXPECT_EQ(AEDeleteParam(&event, keyDirectObject), noErr);
  EXPECT_EQ(AESizeOfParam(&event, keyDirectObject, &type, &size), errAEDescNotFound);
}

}  // namespace
