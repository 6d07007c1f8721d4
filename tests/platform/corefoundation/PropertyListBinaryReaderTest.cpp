// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tests/platform/corefoundation/PropertyListTesting.h"

namespace tests::binaryReading {

using namespace std::string_literals;

namespace {

std::string ofObject(const std::string& bytes) {
  return meaning(BinaryFile().object(bytes).bytes());
}

struct Case {
  std::string bytes;
  const char* meaning;
};

// What the trailer says, in a file of one object, true.
struct Trailer {
  std::uint64_t offsetSize = 1;
  std::uint64_t referenceSize = 1;
  std::uint64_t objects = 1;
  std::uint64_t top = 0;
  std::uint64_t table = 9;
};

std::string withTrailer(const Trailer& trailer) {
  std::string file = "bplist00\x09\x08"s + std::string(6, '\0');
  BinaryFile::append(file, trailer.offsetSize, 1);
  BinaryFile::append(file, trailer.referenceSize, 1);
  BinaryFile::append(file, trailer.objects, 8);
  BinaryFile::append(file, trailer.top, 8);
  BinaryFile::append(file, trailer.table, 8);
  return meaning(file);
}

}  // namespace

TEST(PropertyListBinary, ReadsEveryKindOfLeaf) {
  const Case cases[] = {
      {"\x08", "false"},
      {"\x09", "true"},
      {"\x10\xff", "255"},
      {"\x11\xff\xff", "65535"},
      {"\x12\xff\xff\xff\xff", "4294967295"},
      {"\x13\xff\xff\xff\xff\xff\xff\xff\xff", "-1"},
      {"\x13\x80\0\0\0\0\0\0\0"s, "-9223372036854775808"},
      {"\x14\0\0\0\0\0\0\0\0\x7f\xff\xff\xff\xff\xff\xff\xff"s, "9223372036854775807"},
      {"\x14" + std::string(16, '\xff'), "-1"},
      {"\x22\x3f\xc0\0\0"s, "f1.5"},
      {"\x23\xbf\xf8\0\0\0\0\0\0"s, "r-1.5"},
      {"\x23\x7f\xf8\0\0\0\0\0\0"s, "rnan"},
      {"\x23\x7f\xf0\0\0\0\0\0\0"s, "rinf"},
      {"\x33\x3f\xf0\0\0\0\0\0\0"s, "@1.000"},
      {"\x40", "<>"},
      {"\x42\x01\xff", "<01ff>"},
      {"\x50", "\"\""},
      {"\x52hi", "\"hi\""},
      {"\x5f\x10\x0f"s + "fifteen letters", "\"fifteen letters\""},
      {"\x62\0\xe9\0x"s, "\"éx\""},
      {"\x62\xd8\x3d\xdc\x08", "\"\xf0\x9f\x90\x88\""},
      {"\x80\x07", "{CF$UID=7}"},
      {"\x83\x01\0\0\0"s, "{CF$UID=16777216}"},
      {"\xa0", "()"},
      {"\xd0", "{}"}};
  for (const Case& each : cases) EXPECT_EQ(ofObject(each.bytes), each.meaning);
}

TEST(PropertyListBinary, ReadsContainers) {
  EXPECT_EQ(meaning(BinaryFile().object("\xa2\x01\x02").object("\x51x").object("\x09").bytes()),
            "(\"x\", true)");
  EXPECT_EQ(meaning(BinaryFile()
                        .object("\xd2\x01\x02\x03\x04")
                        .object("\x51x")
                        .object("\x61\0y"s)
                        .object("\x08")
                        .object("\xa1\x03")
                        .bytes()),
            "{x=false, y=(false)}");
}

TEST(PropertyListBinary, TakesTheTopObjectFromAnywhere) {
  EXPECT_EQ(meaning(BinaryFile().object("\x08").object("\x09").bytes(1)), "true");
}

TEST(PropertyListBinary, TakesTheLastOfEqualKeys) {
  EXPECT_EQ(meaning(BinaryFile()
                        .object("\xd2\x01\x01\x02\x03")
                        .object("\x51x")
                        .object("\x08")
                        .object("\x09")
                        .bytes()),
            "{x=true}");
}

TEST(PropertyListBinary, ReadsReferencesAndOffsetsOfEightBytes) {
  std::string file = "bplist00\xa1\0\0\0\0\0\0\0\x01\x09"s;
  BinaryFile::append(file, 8, 8);
  BinaryFile::append(file, 17, 8);
  file += "\0\0\0\0\0\0\x08\x08"s;
  for (const std::uint64_t value : {2, 0, 18}) BinaryFile::append(file, value, 8);
  EXPECT_EQ(meaning(file), "(true)");
}

TEST(PropertyListBinary, ReadsIntegersInTheNarrowestOfTwoWidths) {
  const auto type = [](const std::string& bytes) {
    const auto list = readList(BinaryFile().object(bytes).bytes());
    return CFNumberGetType(static_cast<CFNumberRef>(list.get()));
  };
  EXPECT_EQ(type("\x13\xff\xff\xff\xff\xff\xff\xff\xff"), kCFNumberSInt32Type);
  EXPECT_EQ(type("\x12\x80\0\0\0"s), kCFNumberSInt64Type);
}

TEST(PropertyListBinary, RefusesObjectsThatAreNotWhatTheyShouldBe) {
  const Case cases[] = {
      {"\x00"s, "the kind of object is not known"},
      {"\x0f", "the kind of object is not known"},
      {"\x70", "the kind of object is not known"},
      {"\xc0", "the kind of object is not known"},
      {"\xf0", "the kind of object is not known"},
      {"\x15", "the number has no possible width"},
      {"\x11\x01", "the number has no possible width"},
      {"\x1f", "the number has no possible width"},
      {"\x14\0\0\0\0\0\0\0\x01\0\0\0\0\0\0\0\0"s, "the number needs more than 64 bits"},
      {"\x14\0\0\0\0\0\0\0\0\x80\0\0\0\0\0\0\0"s, "the number needs more than 64 bits"},
      {"\x21\0\0"s, "the number has no possible width"},
      {"\x23\0\0"s, "the number has no possible width"},
      {"\x32\0\0\0\0"s, "the date has no possible width"},
      {"\x33\0\0\0\0"s, "the date has no possible width"},
      {"\x33\x7f\xf8\0\0\0\0\0\0"s, "this is no date"},
      {"\x33\x7f\xf0\0\0\0\0\0\0"s, "this is no date"},
      {"\x41", "the object is longer than the file"},
      {"\x51\xe9", "the text is not ASCII"},
      {"\x61x", "the object is longer than the file"},
      {"\x8f", "the unique ID has no possible width"},
      {"\x87\x80\0\0\0\0\0\0\0"s, "the number needs more than 64 bits"},
      {"\x4f", "the count is no number"},
      {"\x4f\x51", "the count is no number"},
      {"\x4f\x14"s + std::string(16, '\0'), "the count is no number"},
      {"\x4f\x11\x01", "the count is no number"},
      {"\x4f\x13\x80\0\0\0\0\0\0\0"s, "the object is longer than the file"},
      {"\xaf\x13\x7f\xff\xff\xff\xff\xff\xff\xff", "the object is longer than the file"},
      {"\xd1\x00"s, "the object is longer than the file"}};
  for (const Case& each : cases) {
    EXPECT_EQ(ofObject(each.bytes), "! offset 8: " + std::string(each.meaning))
        << testing::PrintToString(each.bytes);
  }
}

TEST(PropertyListBinary, RefusesReferencesThatLeadNowhere) {
  EXPECT_EQ(ofObject("\xa1\x01"), "! offset 10: there is no such object");
  EXPECT_EQ(meaning(BinaryFile().object("\xd1\x01\x00"s).object("\x09").bytes()),
            "! offset 8: the key is not text");
  EXPECT_EQ(ofObject("\xd1\x07\x00"s), "! offset 8: the key is not text");
}

TEST(PropertyListBinary, RefusesATrailerThatCannotBeTrue) {
  EXPECT_EQ(withTrailer({}), "true");
  const std::uint64_t huge = std::uint64_t{1} << 63;
  EXPECT_EQ(withTrailer({.offsetSize = 0}), "! offset 16: numbers have no possible width");
  EXPECT_EQ(withTrailer({.offsetSize = 9}), "! offset 16: numbers have no possible width");
  EXPECT_EQ(withTrailer({.referenceSize = 0}), "! offset 16: numbers have no possible width");
  EXPECT_EQ(withTrailer({.referenceSize = 9}), "! offset 16: numbers have no possible width");
  for (const std::uint64_t table : {std::uint64_t{0}, std::uint64_t{8}, std::uint64_t{10}, huge}) {
    EXPECT_EQ(withTrailer({.table = table}), "! offset 34: there is no table") << table;
  }
  for (const std::uint64_t objects :
       {std::uint64_t{0}, std::uint64_t{2}, huge, ~std::uint64_t{0}}) {
    EXPECT_EQ(withTrailer({.objects = objects}),
              "! offset 18: the table does not hold that many objects");
  }
  for (const std::uint64_t top : {std::uint64_t{1}, huge}) {
    EXPECT_EQ(withTrailer({.top = top}), "! offset 26: there is no top object");
  }
}

TEST(PropertyListBinary, RefusesOtherHeadersAndShortFiles) {
  std::string file = BinaryFile().object("\x09").bytes();
  EXPECT_EQ(meaning(file.substr(0, 41)), "! offset 0: the file is too short");
  EXPECT_EQ(meaning("bplist"), "! offset 0: the file is too short");
  file[7] = '1';
  EXPECT_EQ(meaning(file), "! offset 0: the version is not known");
}

TEST(PropertyListBinary, RefusesOffsetsOutsideTheObjects) {
  std::string file = BinaryFile().object("\x09").bytes();
  for (const int offset : {0, 7, 9, 255}) {
    file[9] = static_cast<char>(offset);
    EXPECT_EQ(meaning(file), "! offset 9: the offset leads nowhere") << offset;
  }
}

TEST(PropertyListBinary, RefusesCycles) {
  const std::string reason = "the object refers to itself";
  EXPECT_EQ(ofObject("\xa1\x00"s), "! offset 8: " + reason);
  EXPECT_EQ(meaning(BinaryFile().object("\xa2\x01\x01").object("\xa1\x00"s).bytes()),
            "! offset 8: " + reason);
  EXPECT_EQ(
      meaning(BinaryFile().object("\xd1\x01\x02").object("\x51x").object("\xa1\x00"s).bytes()),
      "! offset 8: " + reason);
}

TEST(PropertyListBinary, SharesWhatCannotBeChanged) {
  const std::string file =
      BinaryFile().object("\xa4\x01\x01\x02\x02").object("\xa0").object("\x51x").bytes();
  const auto list = readList(file);
  const auto array = static_cast<CFArrayRef>(list.get());
  EXPECT_EQ(CFArrayGetValueAtIndex(array, 0), CFArrayGetValueAtIndex(array, 1));
  EXPECT_EQ(CFArrayGetValueAtIndex(array, 2), CFArrayGetValueAtIndex(array, 3));
}

TEST(PropertyListBinary, DoesNotShareWhatCanBeChanged) {
  const std::string file = BinaryFile()
                               .object("\xa8\x01\x01\x02\x02\x03\x03\x04\x04")
                               .object("\xa0")
                               .object("\x51x")
                               .object("\x41y")
                               .object("\x80\x01")
                               .bytes();
  const auto list = readList(file, nullptr, kCFPropertyListMutableContainersAndLeaves);
  const auto array = static_cast<CFArrayRef>(list.get());
  ASSERT_EQ(CFArrayGetCount(array), 8);
  const auto at = [array](CFIndex index) {
    return const_cast<void*>(CFArrayGetValueAtIndex(array, index));
  };
  CFArrayAppendValue(static_cast<CFMutableArrayRef>(at(0)), kCFBooleanTrue);
  CFStringAppend(static_cast<CFMutableStringRef>(at(2)), CFSTR("1"));
  CFDataAppendBytes(static_cast<CFMutableDataRef>(at(4)), startOf("2"), 1);
  CFDictionaryRemoveAllValues(static_cast<CFMutableDictionaryRef>(at(6)));
  EXPECT_EQ(shown(array), "((true), (), \"x1\", \"x\", <7932>, <79>, {}, {CF$UID=1})");
}

// Each level refers twice to the one below: 2^n leaves in a file of 3n bytes.
TEST(PropertyListBinary, RefusesTreesThatSharingMakesHuge) {
  for (const CFOptionFlags mutability : {0, 1, 2}) {
    for (const bool isArray : {true, false}) {
      BinaryFile file;
      const int levels = 60;
      for (int i = 0; i < levels; ++i) {
        const char next = static_cast<char>(i + 1);
        if (isArray) {
          file.object("\xa2"s + next + next);
        } else {
          file.object("\xd2"s + static_cast<char>(levels) + static_cast<char>(levels + 1) + next +
                      next);
        }
      }
      file.object("\x51x").object("\x51y");
      std::string error;
      EXPECT_FALSE(readList(file.bytes(), &error, mutability));
      EXPECT_NE(error.find("too much is shared"), std::string::npos) << error;
    }
  }
}

TEST(PropertyListBinary, ReadsAsDeeplyAsItMay) {
  const auto nested = [](std::uint64_t depth) {
    std::string file = "bplist00";
    for (std::uint64_t i = 0; i < depth; ++i) {
      file += '\xa1';
      BinaryFile::append(file, i + 1, 4);
    }
    file += '\x09';
    const std::uint64_t table = file.size();
    for (std::uint64_t i = 0; i <= depth; ++i) BinaryFile::append(file, 8 + 5 * i, 4);
    file += "\0\0\0\0\0\0\x04\x04"s;
    for (const std::uint64_t value : {depth + 1, std::uint64_t{0}, table}) {
      BinaryFile::append(file, value, 8);
    }
    return file;
  };
  EXPECT_EQ(meaning(nested(512)), std::string(512, '(') + "true" + std::string(512, ')'));
  EXPECT_EQ(meaning(nested(513)), "! offset 2568: the nesting is too deep");
  EXPECT_EQ(meaning(nested(100000)), "! offset 2568: the nesting is too deep");
}

// A long text and very many references to it: memory for the references, not for as many texts.
TEST(PropertyListBinary, CostsLittleForManyReferencesToALongText) {
  constexpr std::uint64_t kReferences = 60000;
  std::string file = "bplist00\xaf\x12"s;
  BinaryFile::append(file, kReferences, 4);
  file.append(kReferences, '\x01');
  const std::uint64_t text = file.size();
  file += "\x5f\x12";
  BinaryFile::append(file, 1000000, 4);
  file.append(1000000, 'x');
  const std::uint64_t table = file.size();
  BinaryFile::append(file, 8, 4);
  BinaryFile::append(file, text, 4);
  file += "\0\0\0\0\0\0\x04\x01"s;
  for (const std::uint64_t value : {std::uint64_t{2}, std::uint64_t{0}, table}) {
    BinaryFile::append(file, value, 8);
  }
  const auto list = readList(file, nullptr, kCFPropertyListMutableContainersAndLeaves);
  const auto array = static_cast<CFArrayRef>(list.get());
  ASSERT_EQ(CFArrayGetCount(array), static_cast<CFIndex>(kReferences));
  const auto last = static_cast<CFStringRef>(CFArrayGetValueAtIndex(array, kReferences - 1));
  EXPECT_EQ(CFStringGetLength(last), 1000000);
}

}  // namespace tests::binaryReading
