// Licence: MIT, see LICENSE.
#include "platform/resources/AppleDouble.h"
#include "platform/resources/ResourceFile.h"

#include <gtest/gtest.h>

#include "tests/platform/resources/SampleFile.h"

namespace {

using namespace platform::resources;
using tests::bytesOf;
using tests::ByteVector;
namespace sample = tests::sample;

std::string dataOf(const ByteVector& file, const ResourceEntry& entry) {
  return {reinterpret_cast<const char*>(file.data()) + entry.dataOffset, entry.dataSize};
}

void put16(ByteVector& file, std::size_t offset, unsigned value) {
  file[offset] = static_cast<std::byte>(value >> 8);
  file[offset + 1] = static_cast<std::byte>(value);
}

void put32(ByteVector& file, std::size_t offset, unsigned value) {
  put16(file, offset, value >> 16);
  put16(file, offset + 2, value & 0xFFFF);
}

TEST(ResourceFile, TellsTypesAndIDsInTheOrderOfTheMap) {
  auto map = parseResourceFile(sample::file());
  ASSERT_TRUE(map);
  EXPECT_EQ(map->attributes, 0x80);
  ASSERT_EQ(map->entries.size(), 3u);
  EXPECT_EQ(map->entries[0].type, ResType{'TEXT'});
  EXPECT_EQ(map->entries[0].id, 128);
  EXPECT_EQ(map->entries[1].type, ResType{'TEXT'});
  EXPECT_EQ(map->entries[1].id, 129);
  EXPECT_EQ(map->entries[2].type, ResType{'ICN#'});
  EXPECT_EQ(map->entries[2].id, -1);
}

TEST(ResourceFile, TellsNamesAttributesAndData) {
  const ByteVector file = sample::file();
  auto map = parseResourceFile(file);
  ASSERT_TRUE(map);
  ASSERT_EQ(map->entries.size(), 3u);
  const char* const names[] = {"Name", "", "Name"};
  const UInt8 attributes[] = {0x20, 0x04, 0x10};
  const char* const data[] = {"abc", "", "xyz"};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(map->entries[i].name, names[i]);
    EXPECT_EQ(map->entries[i].attributes, attributes[i]);
    EXPECT_EQ(dataOf(file, map->entries[i]), data[i]);
  }
}

TEST(ResourceFile, MayHaveNoResources) {
  ByteVector file = sample::file();
  put16(file, sample::kTypeList, 0xFFFF);
  auto map = parseResourceFile(file);
  ASSERT_TRUE(map);
  EXPECT_TRUE(map->entries.empty());
}

TEST(ResourceFile, MayListATypeWithoutResources) {
  ByteVector file = sample::file();
  put16(file, sample::kTypeList + 2 + 8 + 4, 0xFFFF);
  auto map = parseResourceFile(file);
  ASSERT_TRUE(map);
  EXPECT_EQ(map->entries.size(), 2u);
}

TEST(ResourceFile, MayHaveItsMapBeforeItsData) {
  const ByteVector file = sample::file();
  ByteVector turned(file.begin(), file.begin() + sample::kDataStart);
  turned.insert(turned.end(), file.begin() + sample::kMapStart, file.end());
  turned.insert(turned.end(), file.begin() + sample::kDataStart, file.begin() + sample::kMapStart);
  put32(turned, 0, 16 + 0x57);
  put32(turned, 4, 16);
  auto map = parseResourceFile(turned);
  ASSERT_TRUE(map);
  EXPECT_EQ(dataOf(turned, map->entries[2]), "xyz");
}

struct Damage {
  const char* name;
  std::size_t offset;
  std::size_t width;
  unsigned value;
};

class DamagedResourceFile : public testing::TestWithParam<Damage> {};

TEST_P(DamagedResourceFile, IsRefused) {
  ByteVector file = sample::file();
  const Damage& damage = GetParam();
  if (damage.width == 2) {
    put16(file, damage.offset, damage.value);
  } else {
    put32(file, damage.offset, damage.value);
  }
  EXPECT_FALSE(parseResourceFile(file));
}

INSTANTIATE_TEST_SUITE_P(
    Fields, DamagedResourceFile,
    testing::Values(Damage{"DataStartsBehindTheEnd", 0, 4, 0xFFFFFFF0},
                    Damage{"DataTooLong", 8, 4, 0x7FFFFFFF}, Damage{"DataTooShort", 8, 4, 17},
                    Damage{"MapStartsBehindTheEnd", 4, 4, 0xFFFFFFFF},
                    Damage{"MapTooLong", 12, 4, 0x58}, Damage{"MapWithoutAHeader", 12, 4, 27},
                    Damage{"MapWithoutTypes", 12, 4, 29},
                    Damage{"TypeListInTheHeader", sample::kMapStart + 24, 2, 27},
                    Damage{"TypeListBehindTheEnd", sample::kMapStart + 24, 2, 0x58},
                    Damage{"NamesBehindTheEnd", sample::kMapStart + 26, 2, 0x58},
                    Damage{"TooManyTypes", sample::kTypeList, 2, 0xFFFE},
                    Damage{"ATypeTwice", sample::kTypeList + 10, 4, 'TEXT'},
                    Damage{"TooManyResources", sample::kTypeList + 6, 2, 0xFFFE},
                    Damage{"ReferencesBehindTheEnd", sample::kTypeList + 8, 2, 0xFFFF},
                    Damage{"NameBehindTheEnd", sample::kReferences + 2, 2, 6},
                    Damage{"NameTooLong", sample::kNames, 2, 0x0561},
                    Damage{"ResourceBehindTheData", sample::kReferences + 4, 4, 0x20000013},
                    Damage{"ResourceSizeCutOff", sample::kReferences + 4, 4, 0x20000010},
                    Damage{"ResourceTooLong", sample::kDataStart, 4, 15}),
    [](const auto& instance) { return instance.param.name; });

TEST(ResourceFile, RefusesListsThatOverlapSoAsToPretendManyResources) {
  // 400 types that all claim the same 400 references.
  constexpr unsigned kMany = 400;
  ByteVector file(16 + 4, std::byte{0});
  ByteVector map(28 + 2 + kMany * 8 + kMany * 12, std::byte{0});
  put16(map, 24, 28);
  put16(map, 28, kMany - 1);
  for (unsigned i = 0; i < kMany; ++i) {
    put32(map, 30 + i * 8, i);
    put16(map, 34 + i * 8, kMany - 1);
    put16(map, 36 + i * 8, 2 + kMany * 8);
  }
  put32(file, 0, 16);
  put32(file, 4, 20);
  put32(file, 8, 4);
  put32(file, 12, static_cast<unsigned>(map.size()));
  file.insert(file.end(), map.begin(), map.end());
  EXPECT_FALSE(parseResourceFile(file));
}

TEST(ResourceFile, IsRefusedWhereverItIsCutOff) {
  const ByteVector file = sample::file();
  for (std::size_t size = 0; size < file.size(); ++size) {
    EXPECT_FALSE(parseResourceFile(Bytes(file).first(size))) << size << " bytes";
  }
}

/// Whether what a map says lies inside the file.
bool staysInside(const ResourceMap& map, std::size_t size) {
  for (const ResourceEntry& entry : map.entries) {
    if (entry.dataOffset > size || entry.dataSize > size - entry.dataOffset) return false;
  }
  return true;
}

TEST(ResourceFile, WithAnyOneByteChangedIsRefusedOrReadWithinItsBounds) {
  const ByteVector good = sample::file();
  int refused = 0;
  for (std::size_t position = 0; position < good.size(); ++position) {
    for (unsigned value = 0; value < 256; ++value) {
      ByteVector file = good;
      file[position] = static_cast<std::byte>(value);
      auto map = parseResourceFile(file);
      if (!map) {
        ++refused;
      } else {
        ASSERT_TRUE(staysInside(*map, file.size())) << "byte " << position << " = " << value;
      }
    }
  }
  EXPECT_GT(refused, 1000);
}

TEST(AppleDouble, GivesTheResourceForkInside) {
  using namespace std::string_view_literals;
  const ByteVector file = bytesOf(
      "\x00\x05\x16\x07\x00\x02\x00\x00"
      "................"
      "\x00\x02"
      "\x00\x00\x00\x09\x00\x00\x00\x32\x00\x00\x00\x02"
      "\x00\x00\x00\x02\x00\x00\x00\x34\x00\x00\x00\x04"
      "FIfork"sv);
  auto fork = resourceForkOfAppleDouble(file);
  ASSERT_TRUE(fork);
  EXPECT_EQ(ByteVector(fork->begin(), fork->end()), bytesOf("fork"));
  for (std::size_t size = 0; size < file.size(); ++size) {
    EXPECT_FALSE(resourceForkOfAppleDouble(Bytes(file).first(size))) << size << " bytes";
  }
}

TEST(AppleDouble, WithoutAForkOrOfAnotherKindGivesNothing) {
  using namespace std::string_view_literals;
  const ByteVector noFork = bytesOf(
      "\x00\x05\x16\x07\x00\x02\x00\x00................\x00\x01"
      "\x00\x00\x00\x09\x00\x00\x00\x26\x00\x00\x00\x00"sv);
  EXPECT_FALSE(resourceForkOfAppleDouble(noFork));
  EXPECT_FALSE(resourceForkOfAppleDouble(sample::file()));
  ByteVector otherVersion = noFork;
  otherVersion[5] = std::byte{1};
  EXPECT_FALSE(resourceForkOfAppleDouble(otherVersion));
}

}  // namespace
