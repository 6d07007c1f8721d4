// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/aemessaging/GetAEParams.h>

#include <array>
#include <functional>
#include <string>

#include "tests/platform/appleevents/Descriptors.h"

namespace {

using tests::Desc;

class GetParams : public testing::Test {
 protected:
  template <typename T>
  void put(DescType type, const T& value) {
    ASSERT_EQ(AEPutParamPtr(&desc, 'parm', type, &value, sizeof value), noErr);
  }
  void putText(std::string_view text) {
    ASSERT_EQ(AEPutParamPtr(&desc, 'parm', typeChar, text.data(), static_cast<Size>(text.size())),
              noErr);
  }

  Desc desc = tests::makeEvent();
  const AppleEvent& event = *&desc;
};

// A function of the family that reads one value, with what it finds and what it makes of it.
struct ValueCase {
  const char* name;
  DescType stored;
  std::string bytes;
  std::function<OSErr(const AppleEvent&, void*)> get;
  std::string expected;
};

template <typename T>
std::string bytesOf(T value) {
  return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

template <typename T>
auto getter(OSErr (*get)(const AppleEvent&, AEKeyword, T*)) {
  return [get](const AppleEvent& event, void* value) {
    return get(event, 'parm', static_cast<T*>(value));
  };
}

OSErr getBool(const AppleEvent& event, AEKeyword keyword, bool* value) {
  return GetAEBoolean(event, keyword, value);
}
OSErr getByte(const AppleEvent& event, AEKeyword keyword, unsigned char* value) {
  return GetAEBoolean(event, keyword, value);
}

const ValueCase kValues[] = {
    {"bool true", typeBoolean, "\1", getter(getBool), bytesOf(true)},
    {"bool other byte", typeBoolean, "\x80", getter(getBool), bytesOf(true)},
    {"bool false", typeBoolean, std::string(1, '\0'), getter(getBool), bytesOf(false)},
    {"byte true", typeBoolean, "\1", getter(getByte), "\1"},
    {"raw byte", typeBoolean, "\x80", getter(getByte), "\x80"},
    {"short", typeSInt16, bytesOf<SInt16>(-2), getter(GetAEShort), bytesOf<SInt16>(-2)},
    {"short of long", typeSInt32, bytesOf<SInt32>(-3), getter(GetAEShort), bytesOf<SInt16>(-3)},
    {"long", typeSInt32, bytesOf<SInt32>(-70000), getter(GetAELong), bytesOf<SInt32>(-70000)},
    {"long of short", typeSInt16, bytesOf<SInt16>(-2), getter(GetAELong), bytesOf<SInt32>(-2)},
    {"long of text", typeChar, "12", getter(GetAELong), bytesOf<SInt32>(12)},
    {"long long", typeSInt64, bytesOf<SInt64>(-5000000000), getter(GetAELongLong),
     bytesOf<SInt64>(-5000000000)},
    {"long long of long", typeSInt32, bytesOf<SInt32>(-1), getter(GetAELongLong),
     bytesOf<SInt64>(-1)},
    {"unsigned", typeSInt64, bytesOf<UInt64>(0xFFFFFFFFFFFFFFFE), getter(GetAEUInt64),
     bytesOf<UInt64>(0xFFFFFFFFFFFFFFFE)},
    {"code", typeType, bytesOf<OSType>('Mcam'), getter(GetAEOSType), bytesOf<OSType>('Mcam')},
    {"code of enumeration", typeEnumerated, bytesOf<OSType>('yes '), getter(GetAEOSType),
     bytesOf<OSType>('yes ')},
    {"code of text", typeChar, "Mcam", getter(GetAEOSType), bytesOf<OSType>('Mcam')},
};

TEST_F(GetParams, ReadValuesOfTheirTypesAndCoerceOthers) {
  for (const ValueCase& value : kValues) {
    SCOPED_TRACE(value.name);
    ASSERT_EQ(AEPutParamPtr(&desc, 'parm', value.stored, value.bytes.data(),
                            static_cast<Size>(value.bytes.size())),
              noErr);
    alignas(8) std::array<char, 16> room;
    room.fill('\x55');
    EXPECT_EQ(value.get(event, room.data()), noErr);
    EXPECT_EQ(std::string(room.data(), value.expected.size()), value.expected);
    EXPECT_EQ(std::string(room.data() + value.expected.size(), room.end()),
              std::string(room.size() - value.expected.size(), '\x55'));
  }
}

TEST_F(GetParams, LeaveTheValueAloneWhenThereIsNone) {
  for (const ValueCase& value : kValues) {
    SCOPED_TRACE(value.name);
    alignas(8) std::array<char, 16> room;
    room.fill('\1');
    EXPECT_EQ(value.get(event, room.data()), errAEDescNotFound);
    EXPECT_EQ(std::string(room.begin(), room.end()), std::string(room.size(), '\1'));
  }
}

TEST_F(GetParams, LeaveTheValueAloneWhenItCannotBeCoerced) {
  putText("neither number nor code");
  for (const ValueCase& value : kValues) {
    SCOPED_TRACE(value.name);
    alignas(8) std::array<char, 16> room;
    room.fill('\1');
    EXPECT_EQ(value.get(event, room.data()), errAECoercionFail);
    EXPECT_EQ(std::string(room.begin(), room.end()), std::string(room.size(), '\1'));
  }
}

TEST_F(GetParams, RefuseANumberThatDoesNotFit) {
  put<SInt32>(typeSInt32, 40000);
  SInt16 value = 5;
  EXPECT_EQ(GetAEShort(event, 'parm', &value), errAECoercionFail);
  EXPECT_EQ(value, 5);
}

TEST_F(GetParams, ReadFieldsOfRecordsToo) {
  Desc record = tests::makeRecord();
  ASSERT_EQ(tests::putParameter<SInt32>(record, 'parm', typeSInt32, 77), noErr);
  SInt32 value = 0;
  EXPECT_EQ(GetAELong(*&record, 'parm', &value), noErr);
  EXPECT_EQ(value, 77);
}

TEST_F(GetParams, PassOnThatThereIsNoEvent) {
  const Desc nothing;
  SInt32 value = 5;
  EXPECT_EQ(GetAELong(*&nothing, 'parm', &value), errAENotAEDesc);
  EXPECT_EQ(value, 5);
}

// -- Whether there is one --

TEST_F(GetParams, TellWhetherAParameterExistsByTheirResultAlone) {
  putText("");
  for (const bool before : {false, true}) {
    bool exists = before;
    EXPECT_EQ(GetAEParamExists(event, 'parm', exists), 1);
    EXPECT_EQ(exists, before);
    EXPECT_EQ(GetAEParamExists(event, 'none', exists), 0);
    EXPECT_EQ(exists, before);
  }
}

TEST_F(GetParams, FindNothingInWhatIsNoEvent) {
  bool exists = true;
  const Desc nothing;
  const Desc text = tests::makeText("parm");
  EXPECT_EQ(GetAEParamExists(*&nothing, 'parm', exists), 0);
  EXPECT_EQ(GetAEParamExists(*&text, 'parm', exists), 0);
}

// -- C strings --

constexpr char kFill = 'z';

TEST_F(GetParams, EndACStringBehindTheText) {
  putText("hello");
  std::array<char, 8> buffer;
  buffer.fill(kFill);
  EXPECT_EQ(GetAECString(event, 'parm', buffer.data(), 8), noErr);
  EXPECT_EQ(std::string(buffer.data(), 8), std::string("hello\0zz", 8));
}

TEST_F(GetParams, CoerceToText) {
  put<SInt32>(typeSInt32, -42);
  std::array<char, 8> buffer;
  EXPECT_EQ(GetAECString(event, 'parm', buffer.data(), 8), noErr);
  EXPECT_STREQ(buffer.data(), "-42");
}

TEST_F(GetParams, EndACStringThatIsTooLongAtItsFullLength) {
  putText("0123456789");
  std::array<char, 12> buffer;
  buffer.fill(kFill);
  EXPECT_EQ(GetAECString(event, 'parm', buffer.data(), 4), noErr);
  EXPECT_EQ(std::string(buffer.data(), 12), std::string("012zzzzzzz\0z", 12));
}

TEST_F(GetParams, ReadNothingIntoABufferOfOneByteButEndIt) {
  putText("hello");
  std::array<char, 8> buffer;
  buffer.fill(kFill);
  EXPECT_EQ(GetAECString(event, 'parm', buffer.data(), 1), noErr);
  EXPECT_EQ(std::string(buffer.data(), 8), std::string("\0zzzz\0zz", 8));
}

TEST_F(GetParams, MakeACStringEmptyWhenThereIsNoText) {
  std::array<char, 4> buffer;
  buffer.fill(kFill);
  EXPECT_EQ(GetAECString(event, 'none', buffer.data(), 4), errAEDescNotFound);
  EXPECT_EQ(std::string(buffer.data(), 4), std::string("\0zzz", 4));
  buffer.fill(kFill);
  put<ProcessSerialNumber>(typeProcessSerialNumber, {0, 5});
  EXPECT_EQ(GetAECString(event, 'parm', buffer.data(), 4), errAECoercionFail);
  EXPECT_EQ(std::string(buffer.data(), 4), std::string("\0zzz", 4));
}

TEST_F(GetParams, RefuseACStringWithoutRoom) {
  putText("hello");
  char character = kFill;
  EXPECT_EQ(GetAECString(event, 'parm', nullptr, 8), paramErr);
  EXPECT_EQ(GetAECString(event, 'parm', &character, 0), paramErr);
  EXPECT_EQ(GetAECString(event, 'parm', &character, -1), paramErr);
  EXPECT_EQ(character, kFill);
}

// -- Pascal strings --

TEST_F(GetParams, PutALengthByteBeforeAPascalString) {
  putText("hello");
  std::array<unsigned char, 8> buffer;
  buffer.fill(kFill);
  EXPECT_EQ(GetAEPString(event, 'parm', buffer.data(), 8), noErr);
  EXPECT_EQ(std::string(buffer.begin(), buffer.end()), "\5hellozz");
}

TEST_F(GetParams, GiveAPascalStringTheFullLengthOfATextThatIsTooLong) {
  putText("0123456789");
  std::array<unsigned char, 6> buffer;
  buffer.fill(kFill);
  EXPECT_EQ(GetAEPString(event, 'parm', buffer.data(), 4), noErr);
  EXPECT_EQ(std::string(buffer.begin(), buffer.end()), "\n012zz");
}

TEST_F(GetParams, ClampThePascalLengthTo255) {
  putText(std::string(300, 'x'));
  std::array<unsigned char, 257> buffer;
  buffer.fill(kFill);
  EXPECT_EQ(GetAEPString(event, 'parm', buffer.data(), 256), noErr);
  EXPECT_EQ(buffer[0], 255);
  EXPECT_EQ(std::string(buffer.begin() + 1, buffer.end()), std::string(255, 'x') + kFill);
}

TEST_F(GetParams, MakeAPascalStringEmptyWhenThereIsNoText) {
  std::array<unsigned char, 3> buffer;
  buffer.fill(kFill);
  EXPECT_EQ(GetAEPString(event, 'none', buffer.data(), 3), errAEDescNotFound);
  EXPECT_EQ(std::string(buffer.begin(), buffer.end()), std::string("\0zz", 3));
}

TEST_F(GetParams, StoreTheLengthAloneInAPascalStringOfOneByte) {
  putText("hello");
  std::array<unsigned char, 2> buffer = {kFill, kFill};
  EXPECT_EQ(GetAEPString(event, 'parm', buffer.data(), 1), noErr);
  EXPECT_EQ(buffer[0], 5);
  EXPECT_EQ(buffer[1], kFill);
}

TEST_F(GetParams, RefuseAPascalStringWithoutRoom) {
  putText("hello");
  unsigned char character = kFill;
  EXPECT_EQ(GetAEPString(event, 'parm', nullptr, 8), paramErr);
  EXPECT_EQ(GetAEPString(event, 'parm', &character, 0), paramErr);
  EXPECT_EQ(GetAEPString(event, 'parm', &character, -5), paramErr);
  EXPECT_EQ(character, kFill);
}

// -- Text and arrays --

TEST_F(GetParams, CopyTextWithoutATerminatorAndTellItsFullSize) {
  putText("hello");
  const std::pair<SInt32, std::string> cases[] = {
      {8, "hellozzz"}, {5, "hellozzz"}, {3, "helzzzzz"}, {0, "zzzzzzzz"}};
  for (const auto& [room, expected] : cases) {
    std::array<unsigned char, 8> buffer;
    buffer.fill(kFill);
    SInt32 size = room;
    EXPECT_EQ(GetAEText(event, 'parm', buffer.data(), size), noErr);
    EXPECT_EQ(size, 5);
    EXPECT_EQ(std::string(buffer.begin(), buffer.end()), expected);
  }
}

TEST_F(GetParams, KeepTheSizeOfATextThatCannotBeRead) {
  unsigned char buffer = kFill;
  SInt32 size = 1;
  EXPECT_EQ(GetAEText(event, 'none', &buffer, size), errAEDescNotFound);
  EXPECT_EQ(size, 1);
  putText("hello");
  size = -1;
  EXPECT_EQ(GetAEText(event, 'parm', &buffer, size), paramErr);
  EXPECT_EQ(size, -1);
  EXPECT_EQ(buffer, kFill);
}

TEST_F(GetParams, CountAllNumbersOfAnArrayThatIsTooLong) {
  put(typeSInt32, std::array<SInt32, 6>{1, -2, 3, 4, 5, 6});
  std::array<SInt32, 6> array;
  array.fill(99);
  SInt32 count = 4;
  EXPECT_EQ(GetAELongArray(event, 'parm', array.data(), count), noErr);
  EXPECT_EQ(count, 6);
  EXPECT_EQ(array, (std::array<SInt32, 6>{1, -2, 3, 4, 99, 99}));
}

TEST_F(GetParams, ReadAnArrayOfShorts) {
  put(typeSInt16, std::array<SInt16, 3>{-1, 2, 3});
  std::array<SInt16, 4> array;
  array.fill(99);
  SInt32 count = 4;
  EXPECT_EQ(GetAEShortArray(event, 'parm', array.data(), count), noErr);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(array, (std::array<SInt16, 4>{-1, 2, 3, 99}));
}

TEST_F(GetParams, LeaveOddBytesOfAnArrayOutOfTheCount) {
  ASSERT_EQ(AEPutParamPtr(&desc, 'parm', typeSInt32, "123456789AB", 11), noErr);
  SInt32 count = 0;
  EXPECT_EQ(GetAELongArray(event, 'parm', nullptr, count), noErr);
  EXPECT_EQ(count, 2);
}

TEST_F(GetParams, KeepTheCountOfAnArrayThatCannotBeRead) {
  put(typeSInt16, std::array<SInt16, 2>{1, 2});
  std::array<SInt32, 2> array = {99, 99};
  SInt32 count = 2;
  EXPECT_EQ(GetAELongArray(event, 'none', array.data(), count), errAEDescNotFound);
  EXPECT_EQ(GetAELongArray(event, 'parm', array.data(), count), errAECoercionFail);
  EXPECT_EQ(count, 2);
  count = -1;
  EXPECT_EQ(GetAELongArray(event, 'parm', array.data(), count), paramErr);
  EXPECT_EQ(count, -1);
  EXPECT_EQ(array, (std::array<SInt32, 2>{99, 99}));
}

TEST_F(GetParams, ReadOneNumberOfAnotherTypeIntoAnArray) {
  put<SInt16>(typeSInt16, -7);
  std::array<SInt32, 2> array = {99, 99};
  SInt32 count = 2;
  EXPECT_EQ(GetAELongArray(event, 'parm', array.data(), count), noErr);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(array, (std::array<SInt32, 2>{-7, 99}));
}

TEST_F(GetParams, TakeACountThatNoMemoryHasForAllOfIt) {
  put(typeSInt32, std::array<SInt32, 2>{1, 2});
  std::array<SInt32, 2> array = {99, 99};
  SInt32 count = 0x7FFFFFFF;
  EXPECT_EQ(GetAELongArray(event, 'parm', array.data(), count), noErr);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(array, (std::array<SInt32, 2>{1, 2}));
  count = -0x7FFFFFFF - 1;
  EXPECT_EQ(GetAELongArray(event, 'parm', array.data(), count), paramErr);
}

}  // namespace
