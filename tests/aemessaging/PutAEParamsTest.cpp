// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/aemessaging/GetAEParams.h>
#include <quorvant/aemessaging/PutAEParams.h>

#include <array>
#include <functional>
#include <random>
#include <string>

#include "tests/platform/appleevents/Descriptors.h"
#include "tests/support/StressCount.h"

namespace {

using tests::Desc;

template <typename T>
std::string rawBytes(T value) {
  return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

template <typename T>
T drawn(std::mt19937& numbers) {
  return static_cast<T>(numbers() * UInt64{0x100000001} ^ numbers());
}

// A function of the family with what it is given, and the type and bytes that it is to write.
struct PutCase {
  const char* name;
  std::function<OSErr(AppleEvent&)> put;
  DescType type;
  std::string bytes;
};

template <typename T>
PutCase valueCase(const char* name, OSErr (*put)(AppleEvent&, AEKeyword, T*), T value,
                  DescType type) {
  return {name, [=](AppleEvent& event) mutable { return put(event, 'parm', &value); }, type,
          rawBytes(value)};
}

OSErr putBool(AppleEvent& event, AEKeyword keyword, bool* value) {
  return PutAEBoolean(event, keyword, value);
}
OSErr putByte(AppleEvent& event, AEKeyword keyword, unsigned char* value) {
  return PutAEBoolean(event, keyword, value);
}

const unsigned char* pascal(const char* text) {
  return reinterpret_cast<const unsigned char*>(text);
}

OSErr putLongs(AppleEvent& event, SInt32 count) {
  std::array<SInt32, 3> array = {-1, 2, 70000};
  return PutAELongArray(event, 'parm', array.data(), count);
}
OSErr putShorts(AppleEvent& event, SInt32 count) {
  std::array<SInt16, 3> array = {-1, 2, 7000};
  return PutAEShortArray(event, 'parm', array.data(), count);
}

const PutCase kPuts[] = {
    valueCase<SInt32>("long", PutAELong, -70000, typeSInt32),
    valueCase<int>("integer", PutAEInteger, -70001, typeSInt32),
    valueCase<SInt16>("short", PutAEShort, -2, typeSInt16),
    valueCase<float>("float", PutAEFloat, 1.5F, typeIEEE32BitFloatingPoint),
    valueCase<double>("double", PutAEDouble, -0.1, typeIEEE64BitFloatingPoint),
    valueCase<UInt64>("unsigned", PutAEUInt64, 0xFFFFFFFFFFFFFFFE, typeSInt64),
    valueCase<SInt64>("long long", PutAELongLong, -5000000000, typeSInt64),
    valueCase<bool>("true", putBool, true, typeBoolean),
    valueCase<bool>("false", putBool, false, typeBoolean),
    valueCase<unsigned char>("byte", putByte, 0x80, typeBoolean),
    valueCase<OSType>("code", PutAEOSType, 'Mcam', typeType),
    {"C string", [](AppleEvent& event) { return PutAECString(event, 'parm', "hello"); }, typeChar,
     "hello"},
    {"empty C string", [](AppleEvent& event) { return PutAECString(event, 'parm', ""); }, typeChar,
     ""},
    {"Pascal string",
     [](AppleEvent& event) { return PutAEPString(event, 'parm', pascal("\5hello world")); },
     typeChar, "hello"},
    {"empty Pascal string",
     [](AppleEvent& event) { return PutAEPString(event, 'parm', pascal("\0x")); }, typeChar, ""},
    {"text", [](AppleEvent& event) { return PutAEText(event, 'parm', pascal("a\0b!"), 3); },
     typeChar, std::string("a\0b", 3)},
    {"shorts", [](AppleEvent& event) { return putShorts(event, 2); }, typeSInt16,
     rawBytes(std::array<SInt16, 2>{-1, 2})},
    {"no shorts", [](AppleEvent& event) { return putShorts(event, 0); }, typeSInt16, ""},
    {"longs", [](AppleEvent& event) { return putLongs(event, 3); }, typeSInt32,
     rawBytes(std::array<SInt32, 3>{-1, 2, 70000})},
    {"no longs", [](AppleEvent& event) { return putLongs(event, 0); }, typeSInt32, ""},
};

TEST(PutParams, WriteTheirTypesAndBytes) {
  for (const PutCase& put : kPuts) {
    SCOPED_TRACE(put.name);
    Desc event = tests::makeEvent();
    ASSERT_EQ(put.put(*&event), noErr);
    Desc parameter;
    ASSERT_EQ(AEGetParamDesc(&event, 'parm', typeWildCard, &parameter), noErr);
    EXPECT_EQ(parameter.type(), put.type);
    EXPECT_EQ(tests::textOf(parameter), put.bytes);
  }
}

TEST(PutParams, ReplaceWhatWasThere) {
  for (const PutCase& put : kPuts) {
    SCOPED_TRACE(put.name);
    Desc event = tests::makeEvent();
    ASSERT_EQ(PutAECString(*&event, 'parm', "what was there before"), noErr);
    ASSERT_EQ(put.put(*&event), noErr);
    SInt32 count = 0;
    ASSERT_EQ(AECountItems(&event, &count), noErr);
    EXPECT_EQ(count, 1);
    Size size = 0;
    ASSERT_EQ(AESizeOfParam(&event, 'parm', nullptr, &size), noErr);
    EXPECT_EQ(size, static_cast<Size>(put.bytes.size()));
  }
}

TEST(PutParams, PassOnThatThereIsNoEvent) {
  for (const PutCase& put : kPuts) {
    Desc nothing;
    EXPECT_EQ(put.put(*&nothing), errAENotAEDesc) << put.name;
    EXPECT_TRUE(nothing.isNull());
  }
}

TEST(PutParams, RefuseSizesThatAreNone) {
  Desc event = tests::makeEvent();
  EXPECT_EQ(PutAEText(*&event, 'parm', pascal("text"), -1), paramErr);
  EXPECT_EQ(PutAEText(*&event, 'parm', nullptr, 1), paramErr);
  for (const SInt32 count : {-1, -0x7FFFFFFF - 1, 0x40000000, 0x7FFFFFFF}) {
    EXPECT_EQ(putLongs(*&event, count), paramErr);
    EXPECT_EQ(putShorts(*&event, count), paramErr);
  }
  EXPECT_EQ(AESizeOfParam(&event, 'parm', nullptr, nullptr), errAEDescNotFound);
}

// All three forms of text travel alike: whichever was put, each can be read.
TEST(PutParams, LetTheReceiverPickTheFormOfText) {
  for (const PutCase& put : kPuts) {
    if (put.type != typeChar) continue;
    SCOPED_TRACE(put.name);
    Desc event = tests::makeEvent();
    ASSERT_EQ(put.put(*&event), noErr);
    std::array<char, 16> string;
    ASSERT_EQ(GetAECString(*&event, 'parm', string.data(), 16), noErr);
    EXPECT_EQ(std::string(string.data(), put.bytes.size()), put.bytes);
    std::array<unsigned char, 16> pstring;
    ASSERT_EQ(GetAEPString(*&event, 'parm', pstring.data(), 16), noErr);
    EXPECT_EQ(pstring[0], put.bytes.size());
    std::array<unsigned char, 16> text;
    SInt32 size = 16;
    ASSERT_EQ(GetAEText(*&event, 'parm', text.data(), size), noErr);
    EXPECT_EQ(std::string(text.begin(), text.begin() + size), put.bytes);
  }
}

// -- There and back --

template <typename T>
void roundTrip(OSErr (*put)(AppleEvent&, AEKeyword, T*),
               OSErr (*get)(const AppleEvent&, AEKeyword, T*)) {
  std::mt19937 numbers(20);
  Desc event = tests::makeEvent();
  const int rounds = tests::stressCount(20000);
  for (int round = 0; round < rounds; ++round) {
    T value = drawn<T>(numbers);
    ASSERT_EQ(put(*&event, 'parm', &value), noErr);
    T read = 0;
    ASSERT_EQ(get(*&event, 'parm', &read), noErr);
    ASSERT_EQ(read, value);
  }
}

OSErr readByte(const AppleEvent& event, AEKeyword keyword, unsigned char* value) {
  return GetAEBoolean(event, keyword, value);
}

TEST(PutParams, ReadBackAnyNumber) {
  roundTrip<SInt16>(PutAEShort, GetAEShort);
  roundTrip<SInt32>(PutAELong, GetAELong);
  roundTrip<SInt64>(PutAELongLong, GetAELongLong);
  roundTrip<UInt64>(PutAEUInt64, GetAEUInt64);
  roundTrip<OSType>(PutAEOSType, GetAEOSType);
  roundTrip<unsigned char>(putByte, readByte);
}

TEST(PutParams, ReadBackAnyRealBitForBit) {
  std::mt19937 numbers(21);
  Desc event = tests::makeEvent();
  for (int round = 0; round < tests::stressCount(20000); ++round) {
    const auto bits = drawn<UInt64>(numbers);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    ASSERT_EQ(PutAEDouble(*&event, 'doub', &value), noErr);
    UInt64 read = 0;
    ASSERT_EQ(AEGetParamPtr(&event, 'doub', typeIEEE64BitFloatingPoint, nullptr, &read, 8, nullptr),
              noErr);
    ASSERT_EQ(read, bits);
  }
}

TEST(PutParams, ReadBackTextOfAnyBytes) {
  std::mt19937 numbers(22);
  Desc event = tests::makeEvent();
  for (int round = 0; round < tests::stressCount(2000); ++round) {
    std::string text(numbers() % 600, '\0');
    for (char& character : text) character = static_cast<char>(numbers());
    const auto size = static_cast<SInt32>(text.size());
    ASSERT_EQ(PutAEText(*&event, 'parm', pascal(text.data()), size), noErr);
    std::array<unsigned char, 600> read;
    SInt32 readSize = 600;
    ASSERT_EQ(GetAEText(*&event, 'parm', read.data(), readSize), noErr);
    ASSERT_EQ(std::string(read.begin(), read.begin() + readSize), text);
  }
}

template <typename T>
void roundTripArrays(OSErr (*put)(AppleEvent&, AEKeyword, T*, SInt32),
                     OSErr (*get)(const AppleEvent&, AEKeyword, T*, SInt32&)) {
  std::mt19937 numbers(23);
  Desc event = tests::makeEvent();
  for (int round = 0; round < tests::stressCount(1000); ++round) {
    std::vector<T> values(numbers() % 100);
    for (T& value : values) value = drawn<T>(numbers);
    const auto count = static_cast<SInt32>(values.size());
    ASSERT_EQ(put(*&event, 'parm', values.data(), count), noErr);
    std::vector<T> read(100, 99);
    SInt32 readCount = 100;
    ASSERT_EQ(get(*&event, 'parm', read.data(), readCount), noErr);
    ASSERT_EQ(readCount, count);
    read.resize(values.size());
    ASSERT_EQ(read, values);
  }
}

TEST(PutParams, ReadBackAnyArray) {
  roundTripArrays<SInt16>(PutAEShortArray, GetAEShortArray);
  roundTripArrays<SInt32>(PutAELongArray, GetAELongArray);
}

}  // namespace
