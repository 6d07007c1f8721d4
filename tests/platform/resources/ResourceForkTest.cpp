// Licence: MIT, see LICENSE.
#include "platform/resources/ResourceFork.h"

#include <CarbonCore/MacErrors.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/platform/resources/SampleFile.h"
#include "tests/support/PrivateRoot.h"

namespace {

using namespace platform::resources;
using tests::bytesOf;
using tests::ByteVector;

ByteVector appleDouble(const ByteVector& fork) {
  using namespace std::string_view_literals;
  ByteVector file = bytesOf(
      "\x00\x05\x16\x07\x00\x02\x00\x00................\x00\x01"
      "\x00\x00\x00\x02\x00\x00\x00\x26\x00\x00\x00"sv);
  file.push_back(static_cast<std::byte>(fork.size()));
  file.insert(file.end(), fork.begin(), fork.end());
  return file;
}

class ResourceForkReading : public testing::Test {
 protected:
  std::string put(const std::string& name, const ByteVector& contents) {
    tests::writeFile(root.path() / name, contents);
    return root.path() / name;
  }

  tests::PrivateRoot root;
  ResourceFork fork;
};

TEST_F(ResourceForkReading, TakesTheFileItself) {
  const std::string path = put("file", tests::sample::file());
  put("._file", bytesOf("not looked at"));
  EXPECT_EQ(readResourceFork(path, fork), noErr);
  EXPECT_EQ(fork.bytes, tests::sample::file());
  EXPECT_EQ(fork.map.entries.size(), 3u);
}

TEST_F(ResourceForkReading, TakesTheCompanionOfAFileThatIsNone) {
  const std::string path = put("text", bytesOf("This is text."));
  put("._text", appleDouble(tests::sample::file()));
  EXPECT_EQ(readResourceFork(path, fork), noErr);
  EXPECT_EQ(fork.bytes, tests::sample::file());
}

TEST_F(ResourceForkReading, TakesTheCompanionOfAnEmptyFile) {
  const std::string path = put("empty", {});
  put("._empty", appleDouble(tests::sample::file()));
  EXPECT_EQ(readResourceFork(path, fork), noErr);
  EXPECT_EQ(fork.bytes, tests::sample::file());
}

TEST_F(ResourceForkReading, RefusesADamagedCompanion) {
  const std::string path = put("text", bytesOf("This is text."));
  put("._text", bytesOf("neither is this"));
  EXPECT_EQ(readResourceFork(path, fork), mapReadErr);
  put("._text", appleDouble(bytesOf("no resources")));
  EXPECT_EQ(readResourceFork(path, fork), mapReadErr);
}

TEST_F(ResourceForkReading, TellsWhyThereIsNone) {
  EXPECT_EQ(readResourceFork(root.path() / "missing", fork), fnfErr);
  EXPECT_EQ(readResourceFork(put("empty", {}), fork), eofErr);
  EXPECT_EQ(readResourceFork(put("text", bytesOf("This is text.")), fork), mapReadErr);
  EXPECT_EQ(readResourceFork(root.path(), fork), mapReadErr);  // a folder
  EXPECT_TRUE(fork.bytes.empty());
}

TEST_F(ResourceForkReading, TellsThatTheFileMayNotBeRead) {
  if (geteuid() == 0) GTEST_SKIP() << "root may read everything";
  const std::string path = put("file", tests::sample::file());
  std::filesystem::permissions(path, std::filesystem::perms::none);
  EXPECT_EQ(readResourceFork(path, fork), permErr);
}

TEST_F(ResourceForkReading, RefusesAFileLargerThanAnyResourceFile) {
  const std::string path = put("large", tests::sample::file());
  std::filesystem::resize_file(path, 33 * 1024 * 1024);
  EXPECT_EQ(readResourceFork(path, fork), mapReadErr);
}

TEST(ApplicationResourcePath, IsInTheBundleOfTheProgram) {
  EXPECT_EQ(applicationResourcePath("/a/Name.app/Contents/MacOS/tool"),
            "/a/Name.app/Contents/Resources/tool.rsrc");
}

TEST(ApplicationResourcePath, IsTheCompanionOfAProgramWithoutABundle) {
  EXPECT_EQ(applicationResourcePath("/usr/bin/tool"), "/usr/bin/._tool");
  EXPECT_EQ(applicationResourcePath("tool"), "._tool");
}

}  // namespace
