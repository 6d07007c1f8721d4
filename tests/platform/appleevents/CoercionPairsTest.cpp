// Licence: MIT, see LICENSE.
// Every pair of types that coercion knows.
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "platform/appleevents/Coercion.h"
#include "tests/platform/appleevents/Printing.h"
#include "tests/support/StressCount.h"

namespace {

using tests::coerced;
using tests::Desc;

constexpr DescType kNumberTypes[] = {typeSInt16,
                                     typeUInt16,
                                     typeSInt32,
                                     typeUInt32,
                                     typeSInt64,
                                     typeUInt64,
                                     typeIEEE32BitFloatingPoint,
                                     typeIEEE64BitFloatingPoint};
constexpr DescType kTextTypes[] = {typeChar,
                                   typeCString,
                                   typePString,
                                   typeEncodedString,
                                   typeUnicodeText,
                                   typeStyledUnicodeText,
                                   typeUTF16ExternalRepresentation,
                                   typeUTF8Text};
constexpr DescType kCodeTypes[] = {typeType, typeEnumerated, typeKeyword, typeProperty,
                                   typeApplSignature};
constexpr DescType kTruthTypes[] = {typeBoolean, typeTrue, typeFalse};
// Types that nothing but themselves and lists can be had as.
constexpr DescType kStrangerTypes[] = {typeMachPort, typeQDPoint, typeQDRectangle, typeLongDateTime,
                                       'zzzz'};

const char kRefusal[] = "<-1700>";

bool isSigned(DescType type) {
  return type != typeUInt16 && type != typeUInt32 && type != typeUInt64;
}

Desc coercedTo(DescType type, const Desc& desc) {
  Desc result;
  EXPECT_EQ(AECoerceDesc(&desc, type, &result), noErr) << tests::codeText(type);
  return result;
}

Desc numberOf(SInt64 value, DescType type) {
  return coercedTo(type, tests::makeValue<SInt64>(typeSInt64, value));
}
Desc textOf(std::string_view bytes, DescType type) {
  return coercedTo(type, tests::makeText(bytes));
}
Desc codeOf(OSType value, DescType type) {
  return coercedTo(type, tests::makeValue<OSType>(typeType, value));
}

std::string typed(DescType type, const std::string& value) {
  return "'" + tests::codeText(type) + "'(" + value + ")";
}
std::string numberText(DescType type, const std::string& digits) {
  return type == typeSInt32 ? digits : typed(type, digits);
}
std::string textText(DescType type, const std::string& text) {
  const std::string quoted = "\"" + text + "\"";
  return type == typeChar ? quoted : typed(type, quoted);
}
std::string codeValueText(DescType type, const std::string& code) {
  const std::string quoted = "'" + code + "'";
  return type == typeEnumerated ? quoted : typed(type, quoted);
}
std::string truthText(DescType type, bool truth) {
  if (type == typeBoolean) return typed(type, truth ? "\"true\"" : "\"false\"");
  return (type == typeTrue) == truth ? typed(type, "") : kRefusal;
}

// What a value is to be in each family; nothing where it is refused.
struct Expected {
  std::optional<std::string> number = {};  // its digits
  std::optional<std::string> text = {};
  std::optional<bool> truth = {};
  std::optional<std::string> code = {};  // its characters
  std::vector<DescType> codeTypes = {std::begin(kCodeTypes), std::end(kCodeTypes)};
};

std::string expectedNumber(const Expected& expected, DescType type) {
  if (!expected.number) return kRefusal;
  if (expected.number->starts_with('-') && !isSigned(type)) return kRefusal;
  return numberText(type, *expected.number);
}

std::string expectedCode(const Expected& expected, DescType type) {
  if (!expected.code || std::ranges::find(expected.codeTypes, type) == expected.codeTypes.end()) {
    return kRefusal;
  }
  return codeValueText(type, *expected.code);
}

// Compares what a value and a list of it alone are as every other type with what they are to be.
void expectAsEveryType(const Desc& value, const Expected& expected) {
  const std::string self = tests::printed(value);
  Desc list;
  ASSERT_EQ(AECoerceDesc(&value, typeAEList, &list), noErr);
  EXPECT_EQ(tests::printed(list), "[" + self + "]");
  const auto expectAs = [&](DescType type, const std::string& wanted) {
    const std::string either = type == value.type() ? self : wanted;
    EXPECT_EQ(coerced(*&value, type), either) << self << " as " << tests::codeText(type);
    EXPECT_EQ(coerced(*&list, type), either) << "[" << self << "] as " << tests::codeText(type);
  };
  for (const DescType type : kNumberTypes) expectAs(type, expectedNumber(expected, type));
  for (const DescType type : kTextTypes) {
    expectAs(type, expected.text ? textText(type, *expected.text) : kRefusal);
  }
  for (const DescType type : kTruthTypes) {
    expectAs(type, expected.truth ? truthText(type, *expected.truth) : kRefusal);
  }
  for (const DescType type : kCodeTypes) expectAs(type, expectedCode(expected, type));
  for (const DescType type : kStrangerTypes) expectAs(type, kRefusal);
  for (const DescType type : {typeAERecord, typeAppleEvent, typeNull}) expectAs(type, kRefusal);
}

TEST(CoercionPairs, OfNumbers) {
  for (const DescType type : kNumberTypes) {
    expectAsEveryType(numberOf(0, type), {.number = "0", .text = "0", .truth = false});
    expectAsEveryType(numberOf(1, type), {.number = "1", .text = "1", .truth = true});
    expectAsEveryType(numberOf(2, type), {.number = "2", .text = "2"});
    expectAsEveryType(numberOf(32767, type), {.number = "32767", .text = "32767"});
    if (isSigned(type)) expectAsEveryType(numberOf(-1, type), {.number = "-1", .text = "-1"});
  }
}

TEST(CoercionPairs, OfTexts) {
  for (const DescType type : kTextTypes) {
    expectAsEveryType(textOf("", type), {.text = ""});
    expectAsEveryType(textOf("1", type), {.number = "1", .text = "1"});
    expectAsEveryType(textOf("-42", type), {.number = "-42", .text = "-42"});
    expectAsEveryType(textOf("true", type), {.text = "true", .truth = true, .code = "true"});
    expectAsEveryType(textOf("false", type), {.text = "false", .truth = false});
    expectAsEveryType(textOf("Mcam", type), {.text = "Mcam", .code = "Mcam"});
    expectAsEveryType(textOf("caf\x8E", type), {.text = "caf\x8E", .code = "caf\x8E"});
    expectAsEveryType(textOf("neither", type), {.text = "neither"});
  }
}

TEST(CoercionPairs, OfTruths) {
  for (const bool truth : {true, false}) {
    const Expected expected = {.number = truth ? "1" : "0",
                               .text = truth ? "true" : "false",
                               .truth = truth,
                               .code = truth ? "true" : "fals",
                               .codeTypes = {typeEnumerated}};
    expectAsEveryType(tests::makeValue<Boolean>(typeBoolean, truth), expected);
    Desc form;
    ASSERT_EQ(AECreateDesc(truth ? typeTrue : typeFalse, nullptr, 0, &form), noErr);
    expectAsEveryType(form, expected);
  }
}

TEST(CoercionPairs, OfCodes) {
  for (const DescType type : kCodeTypes) {
    expectAsEveryType(codeOf('Mcam', type), {.text = "Mcam", .code = "Mcam"});
    const bool isEnumeration = type == typeEnumerated;
    const std::pair<OSType, bool> truths[] = {
        {'true', true}, {'yes ', true}, {'fals', false}, {'no  ', false}};
    for (const auto& [value, truth] : truths) {
      Expected expected = {.text = tests::codeText(value), .code = tests::codeText(value)};
      if (isEnumeration) expected.truth = truth;
      expectAsEveryType(codeOf(value, type), expected);
    }
  }
}

TEST(CoercionPairs, OfStrangers) {
  for (const DescType type : kStrangerTypes) {
    expectAsEveryType(tests::makeValue<UInt32>(type, 1), {});
    expectAsEveryType(tests::makeValue<UInt64>(type, 1), {});
  }
}

// A list of one event becomes a record of its parameters, as the event itself does.
TEST(CoercionPairs, OfContainers) {
  Desc event = tests::makeEvent();
  ASSERT_EQ(tests::putParameter<SInt32>(event, 'one ', typeSInt32, 1), noErr);
  Desc list;
  ASSERT_EQ(AECoerceDesc(&event, typeAEList, &list), noErr);
  Desc record;
  ASSERT_EQ(AECoerceDesc(&event, typeAERecord, &record), noErr);
  for (const AEDesc* source : {event.get(), list.get(), record.get()}) {
    EXPECT_EQ(coerced(*source, typeAERecord), "{'one ':1}");
    for (const DescType type : kNumberTypes) EXPECT_EQ(coerced(*source, type), kRefusal);
    for (const DescType type : kTextTypes) EXPECT_EQ(coerced(*source, type), kRefusal);
    for (const DescType type : kCodeTypes) EXPECT_EQ(coerced(*source, type), kRefusal);
    for (const DescType type : kTruthTypes) EXPECT_EQ(coerced(*source, type), kRefusal);
  }
  EXPECT_EQ(coerced(*&record, typeAppleEvent), kRefusal);
  EXPECT_EQ(coerced(*&record, typeAEList), "[{'one ':1}]");
}

TEST(CoercionPairs, OfNothing) {
  const Desc nothing;
  EXPECT_EQ(coerced(*&nothing, typeAEList), "['null'()]");
  for (const DescType type : kNumberTypes) EXPECT_EQ(coerced(*&nothing, type), kRefusal);
  for (const DescType type : kTextTypes) EXPECT_EQ(coerced(*&nothing, type), kRefusal);
  for (const DescType type : kCodeTypes) EXPECT_EQ(coerced(*&nothing, type), kRefusal);
  for (const DescType type : kTruthTypes) EXPECT_EQ(coerced(*&nothing, type), kRefusal);
}

// -- The edges of the whole numbers, each pair of types --

template <typename T>
constexpr DescType kTypeOf = 0;
template <>
constexpr DescType kTypeOf<SInt16> = typeSInt16;
template <>
constexpr DescType kTypeOf<UInt16> = typeUInt16;
template <>
constexpr DescType kTypeOf<SInt32> = typeSInt32;
template <>
constexpr DescType kTypeOf<UInt32> = typeUInt32;
template <>
constexpr DescType kTypeOf<SInt64> = typeSInt64;
template <>
constexpr DescType kTypeOf<UInt64> = typeUInt64;

template <typename From, typename To>
void expectEdge(From value) {
  const Desc source = tests::makeValue<From>(kTypeOf<From>, value);
  Desc result;
  const OSErr status = AECoerceDesc(&source, kTypeOf<To>, &result);
  if (std::in_range<To>(value)) {
    EXPECT_EQ(status, noErr) << value;
    EXPECT_EQ(tests::valueOf<To>(result), static_cast<To>(value));
  } else {
    EXPECT_EQ(status, errAECoercionFail) << value;
    EXPECT_TRUE(result.isNull());
  }
}

template <typename From, typename To>
void expectEdges() {
  using Limits = std::numeric_limits<To>;
  constexpr From kOne = 1;
  for (const From value : {std::numeric_limits<From>::min(), std::numeric_limits<From>::max()}) {
    expectEdge<From, To>(value);
  }
  if (std::in_range<From>(Limits::min())) {
    const auto lowest = static_cast<From>(Limits::min());
    expectEdge<From, To>(lowest);
    if (lowest > std::numeric_limits<From>::min())
      expectEdge<From, To>(static_cast<From>(lowest - kOne));
  }
  if (std::in_range<From>(Limits::max())) {
    const auto highest = static_cast<From>(Limits::max());
    expectEdge<From, To>(highest);
    if (highest < std::numeric_limits<From>::max())
      expectEdge<From, To>(static_cast<From>(highest + kOne));
  }
}

template <typename From>
void expectEdgesOf() {
  expectEdges<From, SInt16>();
  expectEdges<From, UInt16>();
  expectEdges<From, SInt32>();
  expectEdges<From, UInt32>();
  expectEdges<From, SInt64>();
  expectEdges<From, UInt64>();
}

TEST(CoercionPairs, CheckTheRangeOfEachWidth) {
  expectEdgesOf<SInt16>();
  expectEdgesOf<UInt16>();
  expectEdgesOf<SInt32>();
  expectEdgesOf<UInt32>();
  expectEdgesOf<SInt64>();
  expectEdgesOf<UInt64>();
}

// -- There and back, wherever nothing can be lost --

void expectThereAndBack(const Desc& value, DescType through) {
  const Desc there = coercedTo(through, value);
  const Desc back = coercedTo(value.type(), there);
  ASSERT_EQ(tests::bytesOf(back), tests::bytesOf(value))
      << tests::printed(value) << " through " << tests::codeText(through);
}

template <typename T>
void expectNumbersThereAndBack(std::initializer_list<DescType> wider) {
  std::mt19937_64 numbers(30);
  for (int round = 0; round < tests::stressCount(2000); ++round) {
    const Desc value = tests::makeValue<T>(kTypeOf<T>, static_cast<T>(numbers()));
    for (const DescType type : wider) expectThereAndBack(value, type);
    for (const DescType type : kTextTypes) expectThereAndBack(value, type);
    expectThereAndBack(value, typeAEList);
  }
}

TEST(CoercionPairs, BringWholeNumbersBack) {
  expectNumbersThereAndBack<SInt16>(
      {typeSInt32, typeSInt64, typeIEEE32BitFloatingPoint, typeIEEE64BitFloatingPoint});
  expectNumbersThereAndBack<UInt16>({typeSInt32, typeUInt32, typeSInt64, typeUInt64,
                                     typeIEEE32BitFloatingPoint, typeIEEE64BitFloatingPoint});
  expectNumbersThereAndBack<SInt32>({typeSInt64, typeIEEE64BitFloatingPoint});
  expectNumbersThereAndBack<UInt32>({typeSInt64, typeUInt64, typeIEEE64BitFloatingPoint});
  expectNumbersThereAndBack<SInt64>({});
  expectNumbersThereAndBack<UInt64>({});
}

template <typename Real, typename Bits>
void expectRealsThereAndBack(DescType type, std::initializer_list<DescType> wider) {
  std::mt19937_64 numbers(31);
  for (int round = 0; round < tests::stressCount(2000); ++round) {
    const auto bits = static_cast<Bits>(numbers());
    Real real;
    std::memcpy(&real, &bits, sizeof real);
    if (!std::isfinite(real)) continue;
    const Desc value = tests::makeValue<Real>(type, real);
    for (const DescType through : wider) expectThereAndBack(value, through);
    for (const DescType through : kTextTypes) expectThereAndBack(value, through);
  }
}

TEST(CoercionPairs, BringRealsBack) {
  expectRealsThereAndBack<Float32, UInt32>(typeIEEE32BitFloatingPoint,
                                           {typeIEEE64BitFloatingPoint});
  expectRealsThereAndBack<Float64, UInt64>(typeIEEE64BitFloatingPoint, {});
}

TEST(CoercionPairs, BringCodesBack) {
  std::mt19937_64 numbers(32);
  for (int round = 0; round < tests::stressCount(2000); ++round) {
    // Without 0 bytes, which a C string cannot hold.
    const Desc value =
        tests::makeValue<OSType>(typeType, static_cast<OSType>(numbers()) | 0x01010101);
    for (const DescType type : kCodeTypes) expectThereAndBack(value, type);
    for (const DescType type : kTextTypes) expectThereAndBack(value, type);
  }
}

TEST(CoercionPairs, BringMacRomanTextBack) {
  std::mt19937_64 numbers(33);
  for (int round = 0; round < tests::stressCount(1000); ++round) {
    std::string bytes(numbers() % 256, '\0');
    for (char& character : bytes) character = static_cast<char>(numbers() % 255 + 1);
    const Desc value = tests::makeText(bytes);
    for (const DescType type : kTextTypes) expectThereAndBack(value, type);
  }
}

TEST(CoercionPairs, BringUnicodeTextBack) {
  constexpr DescType kUnicodeForms[] = {typeEncodedString, typeStyledUnicodeText, typeUTF8Text,
                                        typeUTF16ExternalRepresentation};
  std::mt19937_64 numbers(34);
  for (int round = 0; round < tests::stressCount(1000); ++round) {
    std::vector<UInt16> units;
    for (auto left = numbers() % 50; left > 0; --left) {
      const auto draw = static_cast<UInt16>(numbers() % 0xD800);
      if (numbers() % 4 == 0) {
        units.push_back(static_cast<UInt16>(0xD800 + draw % 0x400));
        units.push_back(static_cast<UInt16>(0xDC00 + numbers() % 0x400));
      } else {
        units.push_back(draw);
      }
    }
    Desc value;
    ASSERT_EQ(
        AECreateDesc(typeUnicodeText, units.data(), static_cast<Size>(2 * units.size()), &value),
        noErr);
    for (const DescType type : kUnicodeForms) expectThereAndBack(value, type);
  }
}

}  // namespace
