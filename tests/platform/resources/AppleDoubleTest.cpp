// Licence: MIT, see LICENSE.
#include "platform/resources/AppleDouble.h"

#include <gtest/gtest.h>

#include "platform/resources/ByteBuffer.h"
#include "tests/platform/resources/SampleFile.h"

namespace {

using namespace platform::resources;
using namespace std::string_view_literals;
using tests::bytesOf;
using tests::ByteVector;

constexpr UInt32 kFinderInfo = 9;
constexpr UInt32 kFork = 2;

struct Part {
  UInt32 kind;
  std::string_view data;
};

/// A file with parts in the given order, each behind the one before.
ByteVector doubleOf(const std::vector<Part>& parts) {
  ByteBuffer file;
  file.append("\x00\x05\x16\x07\x00\x02\x00\x00Mac OS X        "sv);
  file.put(static_cast<UInt32>(parts.size()), 2);
  UInt32 offset = static_cast<UInt32>(26 + 12 * parts.size());
  for (const Part& each : parts) {
    file.put(each.kind, 4);
    file.put(offset, 4);
    file.put(static_cast<UInt32>(each.data.size()), 4);
    offset += static_cast<UInt32>(each.data.size());
  }
  for (const Part& each : parts) file.append(each.data);
  return file.take();
}

TEST(AppleDouble, WithAForkAloneIsWrittenByteByByte) {
  const ByteVector file = appleDoubleWith(bytesOf("fork"));
  EXPECT_EQ(file, bytesOf("\x00\x05\x16\x07\x00\x02\x00\x00"
                          "\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00"
                          "\x00\x01\x00\x00\x00\x02\x00\x00\x00\x26\x00\x00\x00\x04"
                          "fork"sv));
  const auto fork = resourceForkOfAppleDouble(file);
  ASSERT_TRUE(fork);
  EXPECT_EQ(ByteVector(fork->begin(), fork->end()), bytesOf("fork"));
}

TEST(AppleDouble, KeepsAllElseWhenItsForkIsReplaced) {
  const ByteVector file = doubleOf({{kFinderInfo, "finder info"}, {kFork, "old"}, {4, "comment"}});
  EXPECT_EQ(replaceForkOfAppleDouble(file, bytesOf("a longer fork")),
            doubleOf({{kFinderInfo, "finder info"}, {kFork, "a longer fork"}, {4, "comment"}}));
  EXPECT_EQ(replaceForkOfAppleDouble(file, {}),
            doubleOf({{kFinderInfo, "finder info"}, {kFork, ""}, {4, "comment"}}));
}

TEST(AppleDouble, GetsAForkWhereItHasNone) {
  const ByteVector file = doubleOf({{kFinderInfo, "finder info"}});
  EXPECT_EQ(replaceForkOfAppleDouble(file, bytesOf("fork")),
            doubleOf({{kFinderInfo, "finder info"}, {kFork, "fork"}}));
}

TEST(AppleDouble, ThatIsCutOffIsNone) {
  const ByteVector file = doubleOf({{kFinderInfo, "finder info"}, {kFork, "fork"}});
  for (std::size_t size = 0; size < file.size(); ++size) {
    EXPECT_FALSE(resourceForkOfAppleDouble(Bytes(file).first(size))) << size;
    EXPECT_FALSE(replaceForkOfAppleDouble(Bytes(file).first(size), {})) << size;
  }
  EXPECT_TRUE(replaceForkOfAppleDouble(file, {}));
}

TEST(AppleDouble, OfAnotherKindIsNone) {
  for (std::size_t at : {0U, 3U, 5U}) {
    ByteVector file = doubleOf({{kFork, "fork"}});
    file[at] ^= std::byte{1};
    EXPECT_FALSE(resourceForkOfAppleDouble(file)) << at;
    EXPECT_FALSE(replaceForkOfAppleDouble(file, {})) << at;
  }
}

TEST(AppleDouble, DoesNotGrowBySharedData) {
  // A thousand entries that all name the same bytes would become a thousand copies.
  ByteBuffer file;
  file.append("\x00\x05\x16\x07\x00\x02\x00\x00................\x03\xE8"sv);
  const std::string shared(5000, 's');
  for (int i = 0; i < 1000; ++i) {
    file.put(100, 4);
    file.put(26 + 12 * 1000, 4);
    file.put(5000, 4);
  }
  file.append(shared);
  EXPECT_FALSE(replaceForkOfAppleDouble(file.bytes(), {}));
}

}  // namespace
