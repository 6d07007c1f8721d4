// Licence: MIT, see LICENSE.
#include "platform/host/FileContents.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string_view>

#include "tests/support/PrivateRoot.h"

namespace {

using namespace platform::host;
namespace fs = std::filesystem;

std::span<const std::byte> bytes(std::string_view text) { return std::as_bytes(std::span(text)); }

class FileContents : public testing::Test {
 protected:
  std::string put(const std::string& name, std::string_view text) {
    std::ofstream(root.path() / name, std::ios::binary) << text;
    return root.path() / name;
  }
  static std::string textOf(const std::string& path) {
    auto contents = readFile(path, 1000);
    if (!contents) return "[none]";
    return {reinterpret_cast<const char*>(contents->data()), contents->size()};
  }
  static Error errorOf(const std::string& path, std::size_t limit = 1000) {
    auto contents = readFile(path, limit);
    EXPECT_FALSE(contents);
    return contents ? Error::kFailed : contents.error();
  }
  std::size_t countFiles() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(root.path()), {}));
  }

  tests::PrivateRoot root;
};

TEST_F(FileContents, AreReadWhole) {
  EXPECT_EQ(textOf(put("file", "some text")), "some text");
  EXPECT_EQ(textOf(put("empty", "")), "");
  // A file of the kernel's, whose size is not told before it is read.
  auto status = readFile("/proc/self/status", 1000000);
  ASSERT_TRUE(status);
  EXPECT_GT(status->size(), 100u);
}

TEST_F(FileContents, AreReadUpToTheLimitOnly) {
  const std::string path = put("file", "12345");
  EXPECT_TRUE(readFile(path, 5));
  EXPECT_EQ(errorOf(path, 4), Error::kTooLarge);
  EXPECT_EQ(errorOf("/proc/self/status", 10), Error::kTooLarge);
}

TEST_F(FileContents, AreThoseOfFilesOnly) {
  EXPECT_EQ(errorOf(root.path() / "missing"), Error::kNotFound);
  EXPECT_EQ(errorOf(root.path()), Error::kInvalid);
  const std::string pipe = root.path() / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(errorOf(pipe), Error::kInvalid);  // at once, though nobody writes to it
}

TEST_F(FileContents, AreReplacedWithoutATrace) {
  const std::string path = put("file", "old and long");
  ASSERT_TRUE(replaceFile(path, bytes("new")));
  EXPECT_EQ(textOf(path), "new");
  EXPECT_EQ(countFiles(), 1u);
}

TEST_F(FileContents, AreWrittenToANewFile) {
  const std::string path = root.path() / "file";
  ASSERT_TRUE(replaceFile(path, bytes("new")));
  EXPECT_EQ(textOf(path), "new");
}

TEST_F(FileContents, KeepTheModeOfTheFileTheyReplace) {
  const std::string path = put("file", "old");
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  ASSERT_TRUE(replaceFile(path, bytes("new")));
  EXPECT_EQ(fs::status(path).permissions(), static_cast<fs::perms>(0640));
}

TEST_F(FileContents, LeaveTheOldFileWhenTheyCannotBeWritten) {
  fs::create_directories(root.path() / "folder" / "full");
  EXPECT_FALSE(replaceFile(root.path() / "folder", bytes("new")));
  EXPECT_TRUE(fs::is_directory(root.path() / "folder" / "full"));
  EXPECT_FALSE(replaceFile(root.path() / "no" / "such", bytes("new")));
  EXPECT_EQ(countFiles(), 1u);
}

}  // namespace
