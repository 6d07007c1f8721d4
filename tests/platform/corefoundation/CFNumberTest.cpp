// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFNumber.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/ObjectTesting.h"

using namespace tests;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr CFNumberType kNativeLong = sizeof(long) == 8 ? kCFNumberSInt64Type : kCFNumberSInt32Type;

Held<CFNumberRef> integer(SInt64 value) {
  return Held<CFNumberRef>(CFNumberCreate(nullptr, kCFNumberSInt64Type, &value));
}
Held<CFNumberRef> real(double value) {
  return Held<CFNumberRef>(CFNumberCreate(nullptr, kCFNumberFloat64Type, &value));
}
Held<CFNumberRef> single(float value) {
  return Held<CFNumberRef>(CFNumberCreate(nullptr, kCFNumberFloat32Type, &value));
}

// What reading stores, and whether it was exact.
template <typename T>
void expectValue(const Held<CFNumberRef>& number, CFNumberType type, T value, Boolean isExact) {
  T found = T(77);
  EXPECT_EQ(CFNumberGetValue(number.get(), type, &found), isExact) << describe(number.get());
  if (std::isnan(static_cast<double>(value))) {
    EXPECT_TRUE(std::isnan(static_cast<double>(found)));
  } else {
    EXPECT_EQ(found, value) << describe(number.get());
  }
}

}  // namespace

TEST(CFNumber, TypesKeepTheirCodes) {
  EXPECT_EQ(kCFNumberSInt8Type, 1);
  EXPECT_EQ(kCFNumberFloat64Type, 6);
  EXPECT_EQ(kCFNumberCharType, 7);
  EXPECT_EQ(kCFNumberLongType, 10);
  EXPECT_EQ(kCFNumberDoubleType, 13);
  EXPECT_EQ(kCFNumberMaxType, 14);
}

TEST(CFNumber, IsStoredAsTheFixedWidthOfItsType) {
  const struct {
    CFNumberType made;
    CFNumberType stored;
    CFIndex size;
    Boolean isFloat;
  } rows[] = {{kCFNumberSInt8Type, kCFNumberSInt8Type, 1, false},
              {kCFNumberSInt16Type, kCFNumberSInt16Type, 2, false},
              {kCFNumberSInt32Type, kCFNumberSInt32Type, 4, false},
              {kCFNumberSInt64Type, kCFNumberSInt64Type, 8, false},
              {kCFNumberFloat32Type, kCFNumberFloat32Type, 4, true},
              {kCFNumberFloat64Type, kCFNumberFloat64Type, 8, true},
              {kCFNumberCharType, kCFNumberSInt8Type, 1, false},
              {kCFNumberShortType, kCFNumberSInt16Type, 2, false},
              {kCFNumberIntType, kCFNumberSInt32Type, 4, false},
              {kCFNumberLongType, kNativeLong, sizeof(long), false},
              {kCFNumberLongLongType, kCFNumberSInt64Type, 8, false},
              {kCFNumberFloatType, kCFNumberFloat32Type, 4, true},
              {kCFNumberDoubleType, kCFNumberFloat64Type, 8, true},
              {kCFNumberCFIndexType, kNativeLong, sizeof(CFIndex), false}};
  for (const auto& row : rows) {
    const UInt64 zero = 0;
    const Held number(CFNumberCreate(nullptr, row.made, &zero));
    EXPECT_EQ(CFNumberGetType(number.get()), row.stored) << row.made;
    EXPECT_EQ(CFNumberGetByteSize(number.get()), row.size) << row.made;
    EXPECT_EQ(CFNumberIsFloatType(number.get()), row.isFloat) << row.made;
  }
}

TEST(CFNumber, GivesItsValueBackInItsOwnType) {
  const long word = std::numeric_limits<long>::min();
  const Held ofLong(CFNumberCreate(nullptr, kCFNumberLongType, &word));
  expectValue<long>(ofLong, kCFNumberLongType, word, true);
  const short half = -12345;
  const Held ofShort(CFNumberCreate(nullptr, kCFNumberShortType, &half));
  expectValue<short>(ofShort, kCFNumberShortType, half, true);
  const SInt8 byte = -128;
  const Held ofChar(CFNumberCreate(nullptr, kCFNumberCharType, &byte));
  expectValue<SInt8>(ofChar, kCFNumberCharType, byte, true);
  const float fraction = 0.1F;
  const Held ofFloat(CFNumberCreate(nullptr, kCFNumberFloatType, &fraction));
  expectValue<float>(ofFloat, kCFNumberFloatType, fraction, true);
  const CFIndex index = std::numeric_limits<CFIndex>::max();
  const Held ofIndex(CFNumberCreate(nullptr, kCFNumberCFIndexType, &index));
  expectValue<CFIndex>(ofIndex, kCFNumberCFIndexType, index, true);
}

TEST(CFNumber, WidensIntegersExactly) {
  const SInt8 value = -5;
  const Held number(CFNumberCreate(nullptr, kCFNumberSInt8Type, &value));
  expectValue<SInt16>(number, kCFNumberSInt16Type, -5, true);
  expectValue<SInt32>(number, kCFNumberIntType, -5, true);
  expectValue<long>(number, kCFNumberLongType, -5, true);
  expectValue<SInt64>(number, kCFNumberLongLongType, -5, true);
  expectValue<float>(number, kCFNumberFloat32Type, -5, true);
  expectValue<double>(number, kCFNumberFloat64Type, -5, true);
}

TEST(CFNumber, NarrowsIntegersToTheBoundsOfTheType) {
  expectValue<SInt8>(integer(127), kCFNumberSInt8Type, 127, true);
  expectValue<SInt8>(integer(128), kCFNumberSInt8Type, 127, false);
  expectValue<SInt8>(integer(-128), kCFNumberSInt8Type, -128, true);
  expectValue<SInt8>(integer(-129), kCFNumberSInt8Type, -128, false);
  expectValue<SInt16>(integer(32767), kCFNumberSInt16Type, 32767, true);
  expectValue<SInt16>(integer(40000), kCFNumberSInt16Type, 32767, false);
  expectValue<SInt32>(integer(2147483647), kCFNumberSInt32Type, 2147483647, true);
  expectValue<SInt32>(integer(2147483648LL), kCFNumberSInt32Type, 2147483647, false);
  expectValue<SInt32>(integer(-2147483649LL), kCFNumberSInt32Type, -2147483647 - 1, false);
}

TEST(CFNumber, KeepsTheBitsOfAnUnsignedValueOfItsWidth) {
  const UInt16 vendor = 0x8501;
  const Held number(CFNumberCreate(nullptr, kCFNumberSInt16Type, &vendor));
  UInt16 found = 0;
  EXPECT_TRUE(CFNumberGetValue(number.get(), kCFNumberSInt16Type, &found));
  EXPECT_EQ(found, 0x8501);
}

TEST(CFNumber, TurnsIntegersIntoFloatsExactlyOrRounded) {
  constexpr SInt64 kMost = std::numeric_limits<SInt64>::max();
  expectValue<float>(integer(16777216), kCFNumberFloat32Type, 16777216.0F, true);
  expectValue<float>(integer(16777217), kCFNumberFloat32Type, 16777216.0F, false);
  expectValue<double>(integer(1LL << 53), kCFNumberFloat64Type, 9007199254740992.0, true);
  expectValue<double>(integer((1LL << 53) + 1), kCFNumberFloat64Type, 9007199254740992.0, false);
  expectValue<double>(integer(kMost), kCFNumberFloat64Type, 9223372036854775808.0, false);
  expectValue<float>(integer(kMost), kCFNumberFloat32Type, 9223372036854775808.0F, false);
  expectValue<double>(integer(-kMost - 1), kCFNumberFloat64Type, -9223372036854775808.0, true);
}

TEST(CFNumber, TurnsFloatsIntoIntegersWithoutTheFraction) {
  expectValue<SInt32>(real(3.0), kCFNumberSInt32Type, 3, true);
  expectValue<SInt32>(real(3.75), kCFNumberSInt32Type, 3, false);
  expectValue<SInt32>(real(-3.75), kCFNumberSInt32Type, -3, false);
  expectValue<SInt8>(real(127.5), kCFNumberSInt8Type, 127, false);
  expectValue<SInt8>(real(-128), kCFNumberSInt8Type, -128, true);
  expectValue<SInt16>(single(0.5F), kCFNumberSInt16Type, 0, false);
  expectValue<SInt32>(real(-0.0), kCFNumberSInt32Type, 0, true);
}

TEST(CFNumber, TurnsFloatsBeyondAnIntegerTypeIntoItsBounds) {
  constexpr SInt64 kMost = std::numeric_limits<SInt64>::max();
  expectValue<SInt8>(real(300), kCFNumberSInt8Type, 127, false);
  expectValue<SInt32>(real(1e300), kCFNumberSInt32Type, 2147483647, false);
  expectValue<SInt64>(real(9223372036854775808.0), kCFNumberSInt64Type, kMost, false);
  expectValue<SInt64>(real(-9223372036854775808.0), kCFNumberSInt64Type, -kMost - 1, true);
  expectValue<SInt64>(real(-kInfinity), kCFNumberSInt64Type, -kMost - 1, false);
  expectValue<SInt64>(real(kNotANumber), kCFNumberSInt64Type, 0, false);
}

TEST(CFNumber, TurnsDoublesIntoFloatsExactlyOrRounded) {
  expectValue<float>(real(0.5), kCFNumberFloat32Type, 0.5F, true);
  expectValue<float>(real(0.1), kCFNumberFloat32Type, 0.1F, false);
  expectValue<float>(real(1e300), kCFNumberFloat32Type, std::numeric_limits<float>::infinity(),
                     false);
  expectValue<float>(real(kInfinity), kCFNumberFloat32Type, std::numeric_limits<float>::infinity(),
                     true);
  expectValue<float>(real(kNotANumber), kCFNumberFloat32Type,
                     std::numeric_limits<float>::quiet_NaN(), true);
  expectValue<double>(single(0.1F), kCFNumberFloat64Type, static_cast<double>(0.1F), true);
}

TEST(CFNumber, WritesNothingPastTheTypeAskedFor) {
  UInt8 buffer[4] = {1, 2, 3, 4};
  const Held<CFNumberRef> number = integer(7);
  EXPECT_TRUE(CFNumberGetValue(number.get(), kCFNumberSInt8Type, buffer + 1));
  EXPECT_EQ(buffer[0], 1);
  EXPECT_EQ(buffer[1], 7);
  EXPECT_EQ(buffer[2], 3);
}

TEST(CFNumber, IsOrderedByExactValueAcrossTypes) {
  std::vector<Held<CFNumberRef>> ascending;
  ascending.push_back(real(kNotANumber));
  ascending.push_back(real(-kInfinity));
  ascending.push_back(real(-9223372036854777856.0));
  ascending.push_back(integer(std::numeric_limits<SInt64>::min()));
  ascending.push_back(real(-1.5));
  ascending.push_back(integer(-1));
  ascending.push_back(real(-0.5));
  ascending.push_back(integer(0));
  ascending.push_back(single(0.5F));
  ascending.push_back(integer(1LL << 53));
  ascending.push_back(integer((1LL << 53) + 1));
  ascending.push_back(integer(std::numeric_limits<SInt64>::max()));
  ascending.push_back(real(9223372036854775808.0));
  ascending.push_back(real(kInfinity));
  for (std::size_t a = 0; a < ascending.size(); ++a) {
    for (std::size_t b = 0; b < ascending.size(); ++b) {
      const CFComparisonResult expected = a == b  ? kCFCompareEqualTo
                                          : a < b ? kCFCompareLessThan
                                                  : kCFCompareGreaterThan;
      EXPECT_EQ(CFNumberCompare(ascending[a].get(), ascending[b].get(), nullptr), expected)
          << describe(ascending[a].get()) << " " << describe(ascending[b].get());
    }
  }
}

TEST(CFNumber, EqualsAndHashesByValueAcrossTypes) {
  const SInt8 small = 3;
  std::vector<Held<CFNumberRef>> threes;
  threes.emplace_back(CFNumberCreate(nullptr, kCFNumberSInt8Type, &small));
  threes.push_back(numberOf(3));
  threes.push_back(integer(3));
  threes.push_back(single(3.0F));
  threes.push_back(real(3.0));
  for (const Held<CFNumberRef>& a : threes) {
    for (const Held<CFNumberRef>& b : threes) {
      EXPECT_TRUE(CFEqual(a.get(), b.get()));
      EXPECT_EQ(CFHash(a.get()), CFHash(b.get()));
    }
  }
  EXPECT_FALSE(CFEqual(threes[0].get(), real(3.5).get()));
}

TEST(CFNumber, EqualValuesOfOneKindHashTheSame) {
  EXPECT_TRUE(CFEqual(real(0.0).get(), real(-0.0).get()));
  EXPECT_EQ(CFHash(real(0.0).get()), CFHash(real(-0.0).get()));
  EXPECT_TRUE(CFEqual(real(kNotANumber).get(), single(std::nanf("1")).get()));
  EXPECT_EQ(CFHash(real(kNotANumber).get()), CFHash(single(std::nanf("1")).get()));
  EXPECT_EQ(CFHash(real(0.5).get()), CFHash(single(0.5F).get()));
  EXPECT_NE(CFHash(real(0.5).get()), CFHash(real(0.25).get()));
  EXPECT_EQ(CFHash(integer(-1).get()), CFHash(numberOf(-1).get()));
}

TEST(CFNumber, IsNotMadeOfBadArguments) {
  const SInt32 value = 1;
  EXPECT_EQ(CFNumberCreate(nullptr, kCFNumberSInt32Type, nullptr), nullptr);
  EXPECT_EQ(CFNumberCreate(nullptr, 0, &value), nullptr);
  EXPECT_EQ(CFNumberCreate(nullptr, kCFNumberMaxType + 1, &value), nullptr);
  EXPECT_EQ(CFNumberCreate(nullptr, -1, &value), nullptr);
}

TEST(CFNumber, StoresNothingForBadArguments) {
  SInt32 value = 77;
  EXPECT_FALSE(CFNumberGetValue(nullptr, kCFNumberSInt32Type, &value));
  EXPECT_FALSE(
      CFNumberGetValue(reinterpret_cast<CFNumberRef>(CFSTR("1")), kCFNumberSInt32Type, &value));
  EXPECT_FALSE(CFNumberGetValue(numberOf(1).get(), 99, &value));
  EXPECT_FALSE(CFNumberGetValue(numberOf(1).get(), kCFNumberSInt32Type, nullptr));
  EXPECT_EQ(value, 77);
}

TEST(CFNumber, TakesOtherObjectsForNoNumber) {
  const CFNumberRef text = reinterpret_cast<CFNumberRef>(CFSTR("1"));
  EXPECT_EQ(CFNumberGetType(text), 0);
  EXPECT_EQ(CFNumberGetByteSize(text), 0);
  EXPECT_FALSE(CFNumberIsFloatType(text));
  EXPECT_EQ(CFNumberCompare(nullptr, numberOf(-5).get(), nullptr), kCFCompareLessThan);
  EXPECT_EQ(CFNumberCompare(numberOf(-5).get(), nullptr, nullptr), kCFCompareGreaterThan);
  EXPECT_EQ(CFNumberCompare(nullptr, nullptr, nullptr), kCFCompareEqualTo);
}

TEST(CFNumber, IsNullWhenThereIsNoMemory) {
  CountingAllocator allocator;
  const SInt32 value = 1;
  const Held number(CFNumberCreate(allocator.get(), kCFNumberSInt32Type, &value));
  EXPECT_EQ(allocator.blocks(), 1);
  allocator.failAfter(0);
  EXPECT_EQ(CFNumberCreate(allocator.get(), kCFNumberSInt32Type, &value), nullptr);
}

TEST(CFNumber, DescribesItsValueInTheFewestDigits) {
  EXPECT_THAT(describe(integer(-42).get()),
              testing::HasSubstr("{value = -42, type = kCFNumberSInt64Type}"));
  EXPECT_THAT(describe(real(0.1).get()), testing::HasSubstr("{value = 0.1, type"));
  EXPECT_THAT(describe(single(0.1F).get()),
              testing::HasSubstr("{value = 0.1, type = kCFNumberFloat32Type}"));
}

TEST(CFBoolean, IsTrueOrFalse) {
  EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
  EXPECT_FALSE(CFBooleanGetValue(kCFBooleanFalse));
  EXPECT_FALSE(CFEqual(kCFBooleanTrue, kCFBooleanFalse));
  EXPECT_EQ(CFGetTypeID(kCFBooleanFalse), CFBooleanGetTypeID());
}

TEST(CFBoolean, IsFalseForWhatIsNone) {
  EXPECT_FALSE(CFBooleanGetValue(nullptr));
  EXPECT_FALSE(CFBooleanGetValue(reinterpret_cast<CFBooleanRef>(CFSTR("true"))));
}

TEST(CFBoolean, DescribesItsValue) {
  EXPECT_THAT(describe(kCFBooleanTrue), testing::HasSubstr("{value = true}"));
  EXPECT_THAT(describe(kCFBooleanFalse), testing::HasSubstr("{value = false}"));
}
