// Licence: MIT, see LICENSE.
#include "platform/host/FileSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/support/PrivateRoot.h"

namespace {

using namespace platform::host;
namespace fs = std::filesystem;
using Kind = FileStatus::Kind;

class FileSystem : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return root.path() / name; }
  std::string put(const std::string& name, std::string_view text) const {
    std::ofstream(path(name), std::ios::binary) << text;
    return path(name);
  }

  tests::PrivateRoot root;
};

TEST_F(FileSystem, TellsKindAndSize) {
  const std::string file = put("file", "12345");
  fs::create_directory(path("folder"));
  fs::create_symlink("file", path("link"));
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  ASSERT_EQ(chmod(file.c_str(), 0640), 0);
  auto status = fileStatus(file, Links::kThemselves);
  ASSERT_TRUE(status);
  EXPECT_EQ(status->kind, Kind::kFile);
  EXPECT_EQ(status->size, 5U);
  EXPECT_EQ(status->mode, S_IFREG | 0640U);
  EXPECT_EQ(status->user, geteuid());
  EXPECT_EQ(fileStatus(path("folder"), Links::kThemselves)->kind, Kind::kFolder);
  EXPECT_EQ(fileStatus(path("link"), Links::kThemselves)->kind, Kind::kLink);
  EXPECT_EQ(fileStatus(path("pipe"), Links::kThemselves)->kind, Kind::kOther);
}

TEST_F(FileSystem, FollowsLinksOnlyWhenTold) {
  const std::string file = put("file", "12345");
  fs::create_symlink("file", path("link"));
  fs::create_symlink("nowhere", path("dangling"));
  const auto identity = fileStatus(file, Links::kThemselves)->identity;
  EXPECT_EQ(fileStatus(path("link"), Links::kFollowed)->identity, identity);
  EXPECT_FALSE(fileStatus(path("link"), Links::kThemselves)->identity == identity);
  EXPECT_EQ(fileStatus(path("dangling"), Links::kFollowed).error(), Error::kNotFound);
  EXPECT_TRUE(fileStatus(path("dangling"), Links::kThemselves));
}

TEST_F(FileSystem, KnowsAnItemUnderItsNewName) {
  const std::string file = put("file", "");
  const auto identity = fileStatus(file, Links::kThemselves)->identity;
  fs::rename(file, path("renamed"));
  EXPECT_EQ(fileStatus(file, Links::kThemselves).error(), Error::kNotFound);
  EXPECT_EQ(fileStatus(path("renamed"), Links::kThemselves)->identity, identity);
}

TEST_F(FileSystem, MakesPathsCanonical) {
  fs::create_directories(path("a/b"));
  fs::create_symlink("a/b", path("link"));
  const std::string top = fs::canonical(root.path());
  EXPECT_EQ(*canonicalPath(path("a/./b//../b/")), top + "/a/b");
  EXPECT_EQ(*canonicalPath(path("link")), top + "/a/b");
  EXPECT_EQ(*canonicalPath("/"), "/");
  EXPECT_EQ(canonicalPath(path("a/missing")).error(), Error::kNotFound);
  EXPECT_EQ(canonicalPath("").error(), Error::kNotFound);
}

TEST_F(FileSystem, ListsNames) {
  const std::string folder = path("folder");
  fs::create_directory(folder);
  EXPECT_THAT(*folderNames(folder), testing::IsEmpty());
  put("folder/one", "");
  put("folder/.hidden", "");
  fs::create_directory(path("folder/two"));
  EXPECT_THAT(*folderNames(folder), testing::UnorderedElementsAre("one", ".hidden", "two"));
  EXPECT_EQ(folderNames(path("missing")).error(), Error::kNotFound);
}

TEST_F(FileSystem, MakesAFolderOnce) {
  EXPECT_TRUE(makeFolder(path("new")));
  EXPECT_TRUE(fs::is_directory(path("new")));
  EXPECT_EQ(makeFolder(path("new")).error(), Error::kExists);
  EXPECT_EQ(makeFolder(path("missing/new")).error(), Error::kNotFound);
}

TEST_F(FileSystem, MakesAllFoldersOfAPath) {
  EXPECT_TRUE(makeFolders(path("a/b/c")));
  EXPECT_TRUE(makeFolders(path("a/b/c")));
  EXPECT_TRUE(makeFolders(path("a/b/d")));
  EXPECT_TRUE(fs::is_directory(path("a/b/c")));
  EXPECT_TRUE(fs::is_directory(path("a/b/d")));
}

TEST_F(FileSystem, MakesNoFolderWhereAFileIs) {
  put("file", "");
  EXPECT_EQ(makeFolders(path("file")).error(), Error::kExists);
  EXPECT_FALSE(makeFolders(path("file/below")));
  fs::create_symlink("nowhere", path("dangling"));
  EXPECT_EQ(makeFolders(path("dangling")).error(), Error::kExists);
}

TEST_F(FileSystem, SaysWhoMayWrite) {
  const std::string file = put("file", "");
  EXPECT_TRUE(mayWrite(file));
  EXPECT_FALSE(mayWrite(path("missing")));
  if (geteuid() == 0) GTEST_SKIP() << "root may write to anything";
  ASSERT_EQ(chmod(file.c_str(), 0400), 0);
  EXPECT_FALSE(mayWrite(file));
}

}  // namespace
