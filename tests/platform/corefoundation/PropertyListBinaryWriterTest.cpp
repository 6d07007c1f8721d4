// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/platform/corefoundation/PropertyListTesting.h"

namespace tests::binaryWriting {

using namespace std::string_literals;

namespace {

std::string rewritten(const std::string& xml) { return asBinary(readList(xml).get()); }

std::string objectOf(CFPropertyListRef list) {
  const std::string file = asBinary(list);
  EXPECT_EQ(file.substr(0, 8), "bplist00");
  return file.substr(8, file.size() - 8 - 1 - 32);
}

template <typename T>
std::string numberObject(CFNumberType type, T value) {
  return objectOf(Held(CFNumberCreate(nullptr, type, &value)).get());
}

std::string integer(SInt64 value) { return numberObject(kCFNumberSInt64Type, value); }

}  // namespace

TEST(PropertyListBinaryWriter, WritesTheWholeFile) {
  EXPECT_EQ(asBinary(kCFBooleanTrue),
            "bplist00\x09\x08\0\0\0\0\0\0\x01\x01\0\0\0\0\0\0\0\x01\0\0\0\0\0\0\0\0"
            "\0\0\0\0\0\0\0\x09"s);
}

TEST(PropertyListBinaryWriter, WritesIntegersAsNarrowAsTheyAre) {
  EXPECT_EQ(integer(0), "\x10\0"s);
  EXPECT_EQ(integer(255), "\x10\xff");
  EXPECT_EQ(integer(256), "\x11\x01\0"s);
  EXPECT_EQ(integer(65535), "\x11\xff\xff");
  EXPECT_EQ(integer(65536), "\x12\0\x01\0\0"s);
  EXPECT_EQ(integer(4294967296), "\x13\0\0\0\x01\0\0\0\0"s);
  EXPECT_EQ(integer(-1), "\x13\xff\xff\xff\xff\xff\xff\xff\xff");
  EXPECT_EQ(integer(std::numeric_limits<SInt64>::min()), "\x13\x80\0\0\0\0\0\0\0"s);
}

TEST(PropertyListBinaryWriter, WritesTheOtherLeaves) {
  EXPECT_EQ(objectOf(kCFBooleanFalse), "\x08");
  EXPECT_EQ(numberObject<Float32>(kCFNumberFloat32Type, 1.5F), "\x22\x3f\xc0\0\0"s);
  EXPECT_EQ(numberObject<Float64>(kCFNumberFloat64Type, -1.5), "\x23\xbf\xf8\0\0\0\0\0\0"s);
  EXPECT_EQ(objectOf(Held(CFDateCreate(nullptr, 0.5)).get()), "\x33\x3f\xe0\0\0\0\0\0\0"s);
  EXPECT_EQ(objectOf(dataHolding("\x01\xff").get()), "\x42\x01\xff");
  EXPECT_EQ(objectOf(dataHolding("").get()), "\x40");
  EXPECT_EQ(objectOf(CFSTR("")), "\x50");
  EXPECT_EQ(objectOf(CFSTR("fourteen chars")),
            "\x5e"
            "fourteen chars");
  EXPECT_EQ(objectOf(CFSTR("fifteen letters")),
            "\x5f\x10\x0f"
            "fifteen letters");
  EXPECT_EQ(objectOf(stringOf("é").get()), "\x61\0\xe9"s);
  EXPECT_EQ(objectOf(stringOf("a\x8e", kCFStringEncodingMacRoman).get()), "\x62\0a\0\xe9"s);
  EXPECT_EQ(objectOf(stringOf({0xD800}).get()), "\x61\xd8\0"s);
}

TEST(PropertyListBinaryWriter, NumbersKeysBeforeValues) {
  EXPECT_EQ(rewritten("<dict><key>b</key><array><true/></array><key>a</key><false/></dict>"),
            BinaryFile()
                .object("\xd2\x01\x02\x03\x04")
                .object("\x51"
                        "a")
                .object("\x51"
                        "b")
                .object("\x08")
                .object("\xa1\x05")
                .object("\x09")
                .bytes());
}

TEST(PropertyListBinaryWriter, WritesEqualLeavesOnce) {
  EXPECT_EQ(rewritten("<array><string>x</string><string>x</string><integer>1</integer>"
                      "<integer>1</integer><data>AA==</data><data>AA==</data>"
                      "<date>2001-01-01T00:00:00Z</date><date>2001-01-01T00:00:00Z</date></array>"),
            BinaryFile()
                .object("\xa8\x01\x01\x02\x02\x03\x03\x04\x04")
                .object("\x51x")
                .object("\x10\x01")
                .object("\x41\0"s)
                .object("\x33" + std::string(8, '\0'))
                .bytes());
}

TEST(PropertyListBinaryWriter, TellsNumbersOfOneValueApart) {
  const Float32 one = 1;
  const Held narrow(CFNumberCreate(nullptr, kCFNumberFloat32Type, &one));
  const auto others = readList(
      "<array><integer>1</integer><real>1</real><real>0.0</real><real>-0.0</real><true/></array>");
  const Held array(CFArrayCreateMutableCopy(nullptr, 0, static_cast<CFArrayRef>(others.get())));
  CFArrayAppendValue(array.get(), narrow.get());
  EXPECT_EQ(meaning(asBinary(array.get())), "(1, r1, r0, r-0, true, f1)");
}

TEST(PropertyListBinaryWriter, WritesAContainerAsOftenAsItIsThere) {
  const auto inner = readList("<array/>");
  const void* values[] = {inner.get(), inner.get()};
  const Held array(CFArrayCreate(nullptr, values, 2, &kCFTypeArrayCallBacks));
  EXPECT_EQ(asBinary(array.get()),
            BinaryFile().object("\xa2\x01\x02").object("\xa0").object("\xa0").bytes());
}

// As many as the reader would refuse if they were written once and shared.
TEST(PropertyListBinaryWriter, WritesManyOfOneContainerSoThatTheyCanBeRead) {
  const auto inner = readList("<array><true/><true/><true/><true/><true/><true/></array>");
  const Held array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
  for (int i = 0; i < 1000; ++i) CFArrayAppendValue(array.get(), inner.get());
  EXPECT_TRUE(CFEqual(readList(asBinary(array.get())).get(), array.get()));
}

TEST(PropertyListBinaryWriter, WidensReferencesAndOffsets) {
  const auto withNumbers = [](int count) {
    std::string xml = "<array>";
    for (int i = 0; i < count; ++i) xml += "<integer>" + std::to_string(i) + "</integer>";
    return rewritten(xml + "</array>");
  };
  const auto widths = [](const std::string& file) { return file.substr(file.size() - 26, 2); };
  EXPECT_EQ(widths(withNumbers(50)), "\x01\x01");
  EXPECT_EQ(widths(withNumbers(254)), "\x02\x01");
  EXPECT_EQ(widths(withNumbers(255)), "\x02\x02");
  EXPECT_EQ(widths(withNumbers(70000)), "\x04\x04");
  const auto list = readList(withNumbers(70000));
  EXPECT_EQ(CFArrayGetCount(static_cast<CFArrayRef>(list.get())), 70000);
}

TEST(PropertyListBinaryWriter, RefusesWhatIsNoPropertyList) {
  EXPECT_EQ(asBinary(nullptr), "<an object is none of a property list>");
  EXPECT_EQ(asBinary(kCFAllocatorSystemDefault), "<an object is none of a property list>");
}

TEST(PropertyListBinaryWriter, RefusesAContainerWithinItself) {
  const Held array(CFArrayCreateMutable(nullptr, 0, nullptr));
  CFArrayAppendValue(array.get(), array.get());
  const char* const reason = "<the nesting is too deep, or a container is within itself>";
  EXPECT_EQ(asBinary(array.get()), reason);
  EXPECT_EQ(asXML(array.get()), reason);
}

}  // namespace tests::binaryWriting
