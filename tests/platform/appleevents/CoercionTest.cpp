// Licence: MIT, see LICENSE.
#include "platform/appleevents/Coercion.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <variant>

#include "tests/platform/appleevents/Descriptors.h"

namespace {

using tests::Desc;

/// A value of a numeric type.
struct Value {
  DescType type;
  std::variant<SInt16, UInt16, SInt32, UInt32, SInt64, UInt64, Float32, Float64> number;
};

Value s16(SInt16 value) { return {typeSInt16, value}; }
Value u16(UInt16 value) { return {typeUInt16, value}; }
Value s32(SInt32 value) { return {typeSInt32, value}; }
Value u32(UInt32 value) { return {typeUInt32, value}; }
Value s64(SInt64 value) { return {typeSInt64, value}; }
Value u64(UInt64 value) { return {typeUInt64, value}; }
Value f32(Float32 value) { return {typeIEEE32BitFloatingPoint, value}; }
Value f64(Float64 value) { return {typeIEEE64BitFloatingPoint, value}; }

Desc makeDesc(const Value& value) {
  return std::visit([&](auto number) { return tests::makeValue(value.type, number); },
                    value.number);
}

struct NumberCase {
  Value from;
  Value to;
};

constexpr SInt64 kLowest = std::numeric_limits<SInt64>::min();
constexpr SInt64 kHighest = std::numeric_limits<SInt64>::max();
constexpr UInt64 kHighestUnsigned = std::numeric_limits<UInt64>::max();

const NumberCase kFitting[] = {
    {s16(-32768), s32(-32768)},
    {s32(-32768), s16(-32768)},
    {s32(32767), s16(32767)},
    {s32(65535), u16(65535)},
    {u16(65535), s32(65535)},
    {s16(5), u64(5)},
    {s64(-2147483648LL), s32(-2147483647 - 1)},
    {s64(2147483647), s32(2147483647)},
    {s64(4294967295LL), u32(4294967295u)},
    {u32(4294967295u), s64(4294967295LL)},
    {s64(kHighest), u64(static_cast<UInt64>(kHighest))},
    {u64(0), s16(0)},
    {s32(-7), f32(-7)},
    {s32(2147483647), f64(2147483647.0)},
    {u64(kHighestUnsigned), f64(0x1p64)},
    {s64(kLowest), f64(-0x1p63)},
    {f64(-0x1p63), s64(kLowest)},
    {f64(2.5), s32(2)},
    {f64(3.5), s32(4)},
    {f64(-2.5), s32(-2)},
    {f64(-0.4), u16(0)},
    {f32(1.5f), f64(1.5)},
    {f64(0.1), f32(0.1f)},
    {f64(32767.4), s16(32767)},
};

TEST(Coercion, KeepsTheValueOfANumberThatFits) {
  for (const NumberCase& number : kFitting) {
    const Desc source = makeDesc(number.from);
    Desc result;
    ASSERT_EQ(AECoerceDesc(&source, number.to.type, &result), noErr);
    EXPECT_EQ(result.type(), number.to.type);
    EXPECT_EQ(tests::bytesOf(result), tests::bytesOf(makeDesc(number.to)))
        << "case " << &number - kFitting;
  }
}

struct Misfit {
  Value from;
  DescType to;
};

const Misfit kMisfits[] = {
    {s32(32768), typeSInt16},
    {s32(-32769), typeSInt16},
    {s16(-1), typeUInt16},
    {s32(65536), typeUInt16},
    {s64(2147483648LL), typeSInt32},
    {s64(-2147483649LL), typeSInt32},
    {u32(2147483648u), typeSInt32},
    {s32(-1), typeUInt32},
    {s64(4294967296LL), typeUInt32},
    {s64(-1), typeUInt64},
    {u64(0x8000000000000000u), typeSInt64},
    {f64(0x1p63), typeSInt64},
    {f64(0x1p64), typeUInt64},
    {f64(-1), typeUInt16},
    {f64(32767.6), typeSInt16},
    {f64(std::numeric_limits<double>::quiet_NaN()), typeSInt32},
    {f64(std::numeric_limits<double>::infinity()), typeSInt64},
    {f64(1e39), typeIEEE32BitFloatingPoint},
    {s32(2), typeBoolean},
    {s32(-1), typeBoolean},
};

TEST(Coercion, RefusesANumberThatDoesNotFit) {
  for (const Misfit& misfit : kMisfits) {
    const Desc source = makeDesc(misfit.from);
    Desc result;
    EXPECT_EQ(AECoerceDesc(&source, misfit.to, &result), errAECoercionFail)
        << "case " << &misfit - kMisfits;
    EXPECT_TRUE(result.isNull());
  }
}

TEST(Coercion, KeepsInfinityAsAReal) {
  const Desc source = makeDesc(f64(std::numeric_limits<double>::infinity()));
  Desc result;
  ASSERT_EQ(AECoerceDesc(&source, typeIEEE32BitFloatingPoint, &result), noErr);
  EXPECT_EQ(tests::valueOf<Float32>(result), std::numeric_limits<float>::infinity());
}

TEST(Coercion, TakesExactlyOneNumber) {
  const SInt32 numbers[] = {1, 2, 3};
  Desc result;
  EXPECT_EQ(AECoercePtr(typeSInt32, numbers, sizeof numbers, typeSInt16, &result),
            errAECoercionFail);
  EXPECT_EQ(AECoercePtr(typeSInt32, numbers, 3, typeSInt16, &result), errAECoercionFail);
  EXPECT_EQ(AECoercePtr(typeSInt32, nullptr, 0, typeChar, &result), errAECoercionFail);
  EXPECT_EQ(AECoercePtr(typeSInt32, numbers, sizeof numbers, typeSInt32, &result), noErr);
  EXPECT_EQ(result.size(), 12);
}

struct TextCase {
  Value number;
  const char* text;
};

const TextCase kTexts[] = {
    {s16(-32768), "-32768"},
    {s64(kLowest), "-9223372036854775808"},
    {u64(kHighestUnsigned), "18446744073709551615"},
    {f64(0.1), "0.1"},
    {f32(0.1f), "0.1"},
    {f64(-2.5), "-2.5"},
    {f64(1e300), "1e+300"},
    {u16(0), "0"},
};

TEST(Coercion, WritesNumbersAsTextThatReadsBack) {
  for (const TextCase& number : kTexts) {
    const Desc source = makeDesc(number.number);
    Desc text;
    ASSERT_EQ(AECoerceDesc(&source, typeChar, &text), noErr);
    EXPECT_EQ(tests::textOf(text), number.text);
    Desc back;
    ASSERT_EQ(AECoerceDesc(&text, number.number.type, &back), noErr);
    EXPECT_EQ(tests::bytesOf(back), tests::bytesOf(source)) << number.text;
  }
}

TEST(Coercion, ReadsNumbersInAnyUsualForm) {
  const std::pair<const char*, SInt32> cases[] = {
      {"42", 42}, {"+42", 42}, {" -42\n", -42}, {"1e3", 1000}, {"2.5", 2}, {".75", 1}, {"007", 7}};
  for (const auto& [text, value] : cases) {
    const Desc source = tests::makeText(text);
    Desc number;
    EXPECT_EQ(AECoerceDesc(&source, typeSInt32, &number), noErr) << text;
    EXPECT_EQ(tests::valueOf<SInt32>(number), value) << text;
  }
}

TEST(Coercion, ReadsNoNumberFromOtherText) {
  for (const char* text : {"", " ", "x", "1x", "1 2", "--1", "+-1", "-", "+", "0x10", "inf", "nan",
                           "1e999", "99999999999999999999", "-1", "1,5"}) {
    const Desc source = tests::makeText(text);
    Desc number;
    EXPECT_EQ(AECoerceDesc(&source, typeUInt32, &number), errAECoercionFail) << text;
  }
}

TEST(Coercion, TreatsTruthInItsThreeForms) {
  for (const Boolean truth : {false, true}) {
    const Desc source = tests::makeValue<Boolean>(typeBoolean, truth);
    const DescType form = truth ? typeTrue : typeFalse;
    const DescType opposite = truth ? typeFalse : typeTrue;
    Desc result;
    ASSERT_EQ(AECoerceDesc(&source, form, &result), noErr);
    EXPECT_EQ(result.size(), 0);
    Desc back;
    ASSERT_EQ(AECoerceDesc(&result, typeBoolean, &back), noErr);
    EXPECT_EQ(tests::valueOf<Boolean>(back), truth);
    Desc none;
    EXPECT_EQ(AECoerceDesc(&source, opposite, &none), errAECoercionFail);
  }
}

TEST(Coercion, TurnsTruthIntoNumbersAndTextAndBack) {
  for (const Boolean truth : {false, true}) {
    const Desc source = tests::makeValue<Boolean>(typeBoolean, truth);
    Desc number;
    ASSERT_EQ(AECoerceDesc(&source, typeSInt64, &number), noErr);
    EXPECT_EQ(tests::valueOf<SInt64>(number), truth);
    Desc text;
    ASSERT_EQ(AECoerceDesc(&source, typeChar, &text), noErr);
    EXPECT_EQ(tests::textOf(text), truth ? "true" : "false");
    for (const AEDesc* form : {number.get(), text.get()}) {
      Desc back;
      ASSERT_EQ(AECoerceDesc(form, typeBoolean, &back), noErr);
      EXPECT_EQ(tests::valueOf<Boolean>(back), truth);
    }
  }
  const Desc other = tests::makeText("yes");
  Desc none;
  EXPECT_EQ(AECoerceDesc(&other, typeBoolean, &none), errAECoercionFail);
}

TEST(Coercion, TurnsCodesIntoEachOtherAndText) {
  const Desc source = tests::makeValue<OSType>(typeType, 'Mcam');
  for (const DescType type : {typeEnumerated, typeKeyword, typeProperty, typeApplSignature}) {
    Desc code;
    ASSERT_EQ(AECoerceDesc(&source, type, &code), noErr);
    EXPECT_EQ(code.type(), type);
    EXPECT_EQ(tests::valueOf<OSType>(code), OSType{'Mcam'});
  }
  Desc text;
  ASSERT_EQ(AECoerceDesc(&source, typeChar, &text), noErr);
  EXPECT_EQ(tests::textOf(text), "Mcam");
  Desc back;
  ASSERT_EQ(AECoerceDesc(&text, typeType, &back), noErr);
  EXPECT_EQ(tests::valueOf<OSType>(back), OSType{'Mcam'});
}

TEST(Coercion, MakesNoCodeOfTextThatHasNotFourCharacters) {
  for (const char* text : {"", "abc", "abcde"}) {
    const Desc source = tests::makeText(text);
    Desc code;
    EXPECT_EQ(AECoerceDesc(&source, typeType, &code), errAECoercionFail);
  }
}

TEST(Coercion, GivesEverythingAsItself) {
  Desc list = tests::makeList();
  ASSERT_EQ(AEPutPtr(&list, 0, typeChar, "a", 1), noErr);
  const Desc text = tests::makeText("text");
  const Desc process = tests::makeValue<ProcessSerialNumber>(typeProcessSerialNumber, {1, 2});
  const Desc event = tests::makeEvent();
  const Desc null;
  for (const AEDesc* source : {list.get(), text.get(), process.get(), event.get(), null.get()}) {
    for (const DescType type :
         {source->descriptorType, DescType{typeWildCard}, DescType{typeBest}}) {
      Desc result;
      EXPECT_EQ(AECoerceDesc(source, type, &result), noErr);
      EXPECT_EQ(result.type(), source->descriptorType);
      EXPECT_EQ(result.size(), AEGetDescDataSize(source));
    }
  }
}

TEST(Coercion, WrapsAValueInAListOfOne) {
  const Desc text = tests::makeText("text");
  Desc list;
  ASSERT_EQ(AECoerceDesc(&text, typeAEList, &list), noErr);
  SInt32 count = 0;
  ASSERT_EQ(AECountItems(&list, &count), noErr);
  EXPECT_EQ(count, 1);
  Desc item;
  ASSERT_EQ(AEGetNthDesc(&list, 1, typeWildCard, nullptr, &item), noErr);
  EXPECT_EQ(tests::textOf(item), "text");
}

TEST(Coercion, UnwrapsAListOfOne) {
  Desc list = tests::makeList();
  Desc result;
  EXPECT_EQ(AECoerceDesc(&list, typeSInt32, &result), errAECoercionFail);
  ASSERT_EQ(AEPutPtr(&list, 0, typeChar, "12", 2), noErr);
  ASSERT_EQ(AECoerceDesc(&list, typeSInt32, &result), noErr);
  EXPECT_EQ(tests::valueOf<SInt32>(result), 12);
  AEDisposeDesc(&result);
  ASSERT_EQ(AEPutPtr(&list, 0, typeChar, "13", 2), noErr);
  EXPECT_EQ(AECoerceDesc(&list, typeSInt32, &result), errAECoercionFail);
}

TEST(Coercion, MakesARecordOfAnEventsParameters) {
  Desc event = tests::makeEvent();
  ASSERT_EQ(tests::putParameter<SInt32>(event, 'one ', typeSInt32, 1), noErr);
  ASSERT_EQ(tests::putParameter<SInt32>(event, 'two ', typeSInt32, 2), noErr);
  Desc record;
  ASSERT_EQ(AECoerceDesc(&event, typeAERecord, &record), noErr);
  EXPECT_EQ(record.type(), DescType{typeAERecord});
  SInt32 count = 0;
  EXPECT_EQ(AECountItems(&record, &count), noErr);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(tests::parameter<SInt32>(record, 'two ', typeSInt32), 2);
}

TEST(Coercion, RefusesDamagedItems) {
  Desc event = tests::makeEvent();
  ASSERT_EQ(putParameter<SInt32>(event, 'numb', typeSInt32, 7), noErr);
  std::vector<std::byte> bytes = tests::bytesOf(event);
  bytes.pop_back();
  for (const DescType type : {typeAppleEvent, typeAERecord, typeAEList}) {
    Desc made;
    EXPECT_EQ(AECoercePtr(type, bytes.data(), static_cast<Size>(bytes.size()), typeAERecord, &made),
              errAECorruptData);
    EXPECT_TRUE(made.isNull());
  }
}

TEST(Coercion, FailsBetweenStrangers) {
  const std::pair<DescType, DescType> strangers[] = {
      {typeAERecord, typeAppleEvent},
      {typeChar, typeAERecord},
      {typeType, typeSInt32},
      {typeSInt32, typeType},
      {typeSInt32, typeNull},
      {typeNull, typeSInt32},
      {'zzzz', typeChar},
      {typeChar, 'zzzz'},
      {typeAERecord, typeChar},
      {typeSInt32, typeProcessSerialNumber},
      {typeBoolean, typeType},
  };
  for (const auto& [from, to] : strangers) {
    Desc source;
    if (from == typeAERecord) {
      AECreateList(nullptr, 0, true, &source);
    } else {
      AECreateDesc(from, "\0\0\0\1", 4, &source);
    }
    Desc result;
    EXPECT_EQ(AECoerceDesc(&source, to, &result), errAECoercionFail) << std::hex << from << to;
    EXPECT_TRUE(result.isNull());
  }
}

TEST(Coercion, RefusesBadArguments) {
  const Desc text = tests::makeText("1");
  Desc result;
  EXPECT_EQ(AECoerceDesc(nullptr, typeSInt32, &result), paramErr);
  EXPECT_EQ(AECoerceDesc(&text, typeSInt32, nullptr), paramErr);
  EXPECT_EQ(AECoercePtr(typeChar, nullptr, 1, typeSInt32, &result), paramErr);
  EXPECT_EQ(AECoercePtr(typeChar, "1", -1, typeSInt32, &result), paramErr);
  EXPECT_EQ(AECoercePtr(typeChar, "1", 1, typeSInt32, nullptr), paramErr);
  EXPECT_EQ(AECoercePtr(typeAEList, "abc", 3, typeChar, &result), errAECorruptData);
}

}  // namespace
