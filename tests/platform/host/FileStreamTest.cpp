// Licence: MIT, see LICENSE.
#include "platform/host/FileStream.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <limits>
#include <string>

#include "tests/support/PrivateRoot.h"

using namespace platform::host;

namespace {

class FileStreamTest : public ::testing::Test {
 protected:
  std::string path(const char* name) const { return (root.path() / name).string(); }

  static std::size_t put(FileStream& file, const std::string& text) {
    const auto count = file.write(std::as_bytes(std::span(text)));
    return count ? *count : 0;
  }
  static std::string take(FileStream& file, std::size_t most) {
    std::string text(most, '\0');
    const auto count = file.read(std::as_writable_bytes(std::span(text)));
    text.resize(count ? *count : 0);
    return count ? text : "failed";
  }
  std::string contents(const char* name) const {
    FileStream file;
    return file.open(path(name), FilePurpose::kRead) ? take(file, 100) : "none";
  }

  tests::PrivateRoot root;
};

TEST_F(FileStreamTest, WritesAndReadsBitByBit) {
  FileStream file;
  ASSERT_TRUE(file.open(path("a"), FilePurpose::kReplace));
  EXPECT_EQ(put(file, "abc"), 3U);
  EXPECT_EQ(put(file, "de"), 2U);
  EXPECT_EQ(*file.offset(), 5U);
  file.close();
  ASSERT_TRUE(file.open(path("a"), FilePurpose::kRead));
  EXPECT_EQ(take(file, 4), "abcd");
  EXPECT_EQ(take(file, 4), "e");
  EXPECT_EQ(take(file, 4), "");
  EXPECT_EQ(file.failure(), 0);
}

TEST_F(FileStreamTest, ReplacesOrAdds) {
  for (const char* text : {"first", "new"}) {
    FileStream file;
    ASSERT_TRUE(file.open(path("a"), FilePurpose::kReplace));
    put(file, text);
  }
  FileStream file;
  ASSERT_TRUE(file.open(path("a"), FilePurpose::kAdd));
  put(file, "er");
  EXPECT_EQ(contents("a"), "newer");
}

TEST_F(FileStreamTest, MovesToAnOffset) {
  FileStream file;
  ASSERT_TRUE(file.open(path("a"), FilePurpose::kReplace));
  put(file, "abcdef");
  ASSERT_TRUE(file.moveTo(2));
  put(file, "X");
  EXPECT_EQ(*file.offset(), 3U);
  EXPECT_EQ(contents("a"), "abXdef");
  EXPECT_FALSE(file.moveTo(std::numeric_limits<std::uint64_t>::max()));
  EXPECT_EQ(file.failure(), EINVAL);
}

TEST_F(FileStreamTest, SaysWhyItFails) {
  FileStream file;
  EXPECT_EQ(file.open(path("none"), FilePurpose::kRead).error(), Error::kNotFound);
  EXPECT_EQ(file.failure(), ENOENT);
  EXPECT_EQ(file.open(root.path().string(), FilePurpose::kReplace).error(), Error::kInvalid);
  EXPECT_EQ(file.failure(), EISDIR);
  ASSERT_TRUE(file.open(root.path().string(), FilePurpose::kRead));
  EXPECT_EQ(take(file, 1), "failed");
  EXPECT_EQ(file.failure(), EISDIR);
  ASSERT_TRUE(file.open("/dev/full", FilePurpose::kAdd));
  EXPECT_EQ(put(file, "a"), 0U);
  EXPECT_EQ(file.failure(), ENOSPC);
}

TEST_F(FileStreamTest, FailsWhileNothingIsOpen) {
  FileStream file;
  EXPECT_EQ(take(file, 1), "failed");
  EXPECT_FALSE(file.offset());
  EXPECT_FALSE(file.moveTo(0));
  EXPECT_EQ(file.failure(), EBADF);
}

}  // namespace
