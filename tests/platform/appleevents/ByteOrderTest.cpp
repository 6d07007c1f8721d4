// Licence: MIT, see LICENSE.
#include "platform/appleevents/ByteOrder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

namespace {

using namespace platform::appleevents;

std::string toWire(DescType type, const void* data, std::size_t size, std::size_t room) {
  std::string wire(room, '.');
  reorder(type, blockOf(data, static_cast<Size>(size)), std::as_writable_bytes(std::span(wire)));
  return wire;
}

template <typename T>
std::string toWire(DescType type, const T& value) {
  return toWire(type, &value, sizeof value, sizeof value);
}

TEST(ByteOrder, IsBigEndianOnTheWire) {
  EXPECT_EQ(toWire(typeSInt16, SInt16{0x0102}), "\x01\x02");
  EXPECT_EQ(toWire(typeUInt16, UInt16{0x0102}), "\x01\x02");
  EXPECT_EQ(toWire(typeSInt32, SInt32{0x01020304}), "\x01\x02\x03\x04");
  EXPECT_EQ(toWire(typeUInt32, UInt32{0x01020304}), "\x01\x02\x03\x04");
  EXPECT_EQ(toWire(typeSInt64, SInt64{0x0102030405060708}), "\x01\x02\x03\x04\x05\x06\x07\x08");
  EXPECT_EQ(toWire(typeUInt64, UInt64{0x0102030405060708}), "\x01\x02\x03\x04\x05\x06\x07\x08");
  EXPECT_EQ(toWire(typeIEEE32BitFloatingPoint, 1.0f), std::string("\x3F\x80\0\0", 4));
  EXPECT_EQ(toWire(typeIEEE64BitFloatingPoint, 1.0), std::string("\x3F\xF0\0\0\0\0\0\0", 8));
}

TEST(ByteOrder, WritesCodesAsTheirCharacters) {
  for (const DescType type :
       {typeType, typeEnumerated, typeKeyword, typeProperty, typeApplSignature}) {
    EXPECT_EQ(toWire(type, OSType{'Mcam'}), "Mcam");
  }
}

TEST(ByteOrder, TurnsASerialNumberAsTwoWords) {
  const ProcessSerialNumber process = {0x01020304, 0x05060708};
  EXPECT_EQ(toWire(typeProcessSerialNumber, process), "\x01\x02\x03\x04\x05\x06\x07\x08");
}

TEST(ByteOrder, TurnsEachElementOfAnArray) {
  const std::array<SInt16, 3> numbers = {0x0102, 0x0304, 0x0506};
  EXPECT_EQ(toWire(typeSInt16, numbers), "\x01\x02\x03\x04\x05\x06");
  const Rect area = {0x0102, 0x0304, 0x0506, 0x0708};
  EXPECT_EQ(toWire(typeQDRectangle, area), "\x01\x02\x03\x04\x05\x06\x07\x08");
}

TEST(ByteOrder, LeavesOtherBytesAlone) {
  for (const DescType type : {DescType{typeChar}, DescType{typeUTF8Text}, DescType{typeBoolean},
                              DescType{typeAEList}, DescType{'zzzz'}}) {
    EXPECT_EQ(toWire(type, "abcdefg", 7, 7), "abcdefg");
  }
}

TEST(ByteOrder, LeavesBytesBehindTheLastElementAlone) {
  UInt32 value = 0x01020304;
  char data[7];
  std::memcpy(data, &value, 4);
  std::memcpy(data + 4, "xyz", 3);
  EXPECT_EQ(toWire(typeUInt32, data, 7, 7), "\x01\x02\x03\x04xyz");
}

TEST(ByteOrder, FillsASmallerRoomWithTheBeginning) {
  const std::array<UInt32, 2> values = {0x01020304, 0x05060708};
  EXPECT_EQ(toWire(typeUInt32, &values, 8, 6), "\x01\x02\x03\x04\x05\x06");
  EXPECT_EQ(toWire(typeUInt32, &values, 8, 3), "\x01\x02\x03");
  EXPECT_EQ(toWire(typeUInt32, &values, 8, 0), "");
}

TEST(ByteOrder, TouchesNoMoreRoomThanNeeded) {
  const UInt32 value = 0x01020304;
  EXPECT_EQ(toWire(typeUInt32, &value, 4, 6), "\x01\x02\x03\x04..");
}

TEST(ByteOrder, StoresAndLoadsWords) {
  std::array<std::byte, 4> bytes;
  storeWord(bytes.data(), 0xFEDCBA98);
  EXPECT_EQ(bytes[0], std::byte{0xFE});
  EXPECT_EQ(bytes[3], std::byte{0x98});
  EXPECT_EQ(loadWord(bytes.data()), 0xFEDCBA98u);
}

}  // namespace
