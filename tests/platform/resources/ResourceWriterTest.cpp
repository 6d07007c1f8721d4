// Licence: MIT, see LICENSE.
#include "platform/resources/ResourceWriter.h"

#include <gtest/gtest.h>

#include "platform/resources/ResourceFile.h"
#include "tests/platform/resources/SampleFile.h"

namespace {

using namespace platform::resources;
using tests::bytesOf;
using tests::ByteVector;

const std::vector<ResourceContents> kSeveral = {
    {'TEXT', 128, 0x20, "One", bytesOf("first")},
    {'ICN#', -5, 0, "", bytesOf("")},
    {'TEXT', 1, 0x04, "", bytesOf("second")},
};

TEST(ResourceWriter, WritesWhatTheReaderReadsBack) {
  auto file = writeResourceFile(kSeveral, 0x0080);
  ASSERT_TRUE(file);
  auto map = parseResourceFile(*file);
  ASSERT_TRUE(map);
  EXPECT_EQ(map->attributes, 0x80);
  ASSERT_EQ(map->entries.size(), 3u);
  const std::size_t order[] = {0, 2, 1};  // types stand together
  for (std::size_t i = 0; i < 3; ++i) {
    const ResourceContents& written = kSeveral[order[i]];
    const ResourceEntry& read = map->entries[i];
    EXPECT_EQ(read.type, written.type);
    EXPECT_EQ(read.id, written.id);
    EXPECT_EQ(read.attributes, written.attributes);
    EXPECT_EQ(read.name, written.name);
    const auto* data = file->data() + read.dataOffset;
    EXPECT_EQ(ByteVector(data, data + read.dataSize), written.data);
  }
}

TEST(ResourceWriter, LaysTheFileOutByteForByte) {
  using namespace std::string_view_literals;
  auto file = writeResourceFile({{'abcd', 2, 0x10, "N", bytesOf("xy")}});
  ASSERT_TRUE(file);
  const auto header = "\x00\x00\x01\x00\x00\x00\x01\x06\x00\x00\x00\x06\x00\x00\x00\x34"sv;
  ByteVector expected = bytesOf(header);
  expected.resize(256);
  const ByteVector rest = bytesOf(
      "\x00\x00\x00\x02xy"
      "\x00\x00\x01\x00\x00\x00\x01\x06\x00\x00\x00\x06\x00\x00\x00\x34"
      "\x00\x00\x00\x00\x00\x00\x00\x00\x00\x1C\x00\x32"
      "\x00\x00\x61\x62\x63\x64\x00\x00\x00\x0A"
      "\x00\x02\x00\x00\x10\x00\x00\x00\x00\x00\x00\x00"
      "\x01N"sv);
  expected.insert(expected.end(), rest.begin(), rest.end());
  EXPECT_EQ(*file, expected);
}

TEST(ResourceWriter, WritesAFileWithoutResources) {
  auto file = writeResourceFile({});
  ASSERT_TRUE(file);
  auto map = parseResourceFile(*file);
  ASSERT_TRUE(map);
  EXPECT_TRUE(map->entries.empty());
}

TEST(ResourceWriter, TakesNamesOfUpTo255Characters) {
  auto file = writeResourceFile({{'TEXT', 1, 0, std::string(255, 'n'), {}}});
  ASSERT_TRUE(file);
  EXPECT_EQ(parseResourceFile(*file)->entries[0].name, std::string(255, 'n'));
  EXPECT_FALSE(writeResourceFile({{'TEXT', 1, 0, std::string(256, 'n'), {}}}));
}

TEST(ResourceWriter, RefusesDataThatOffsetsDoNotReach) {
  const ByteVector big(0xFFFFFF - 4);
  EXPECT_TRUE(writeResourceFile({{'BIG ', 1, 0, "", big}, {'BIG ', 2, 0, "", {}}}));
  const ByteVector bigger(0xFFFFFF - 3);
  EXPECT_FALSE(writeResourceFile({{'BIG ', 1, 0, "", bigger}, {'BIG ', 2, 0, "", {}}}));
}

std::vector<ResourceContents> manyResources(int count) {
  std::vector<ResourceContents> resources;
  for (int i = 0; i < count; ++i) resources.push_back({'MANY', static_cast<ResID>(i), 0, "", {}});
  return resources;
}

TEST(ResourceWriter, RefusesMoreResourcesThanTheMapReaches) {
  // The names begin behind 28 bytes of header, 10 of the type and 12 for each resource.
  constexpr int kMost = (0xFFFF - 28 - 10) / 12;
  auto file = writeResourceFile(manyResources(kMost));
  ASSERT_TRUE(file);
  EXPECT_EQ(parseResourceFile(*file)->entries.size(), static_cast<std::size_t>(kMost));
  EXPECT_FALSE(writeResourceFile(manyResources(kMost + 1)));
}

}  // namespace
