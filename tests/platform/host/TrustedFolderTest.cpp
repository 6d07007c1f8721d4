// Licence: MIT, see LICENSE.
#include "platform/host/TrustedFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "tests/support/LogListener.h"
#include "tests/support/PrivateRoot.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using namespace platform::host;

constexpr uid_t kStranger = 12345;

class TrustedFolders : public testing::Test {
 protected:
  static Error errorOf(const Result<Descriptor>& opened) {
    return opened ? Error::kFailed : opened.error();
  }

  Error open(const fs::path& path, Make make = Make::kNo, const FolderRule& rule = {}) const {
    return errorOf(openTrusted(path.string(), rule, make));
  }

  /// That it is refused, with one line that says why.
  void expectRefusal(const std::string& reason, Make make = Make::kNo) {
    EXPECT_EQ(Error::kPermission, open(folder, make));
    const std::string line = log.readLine().value_or("nothing was logged");
    EXPECT_EQ("refusing the name space " + folder.string() + ": " + reason, line);
    EXPECT_TRUE(log.isQuiet());
  }

  PrivateRoot root;
  fs::path parent = root.path() / "a";
  fs::path folder = parent / "names";
  LogListener log{root.path()};
};

constexpr Error kOpened = Error::kFailed;

TEST_F(TrustedFolders, AreMadeOnDemandWithWhatIsAboveThem) {
  const mode_t before = umask(0);
  EXPECT_EQ(Error::kNotFound, open(folder));
  EXPECT_FALSE(fs::exists(parent));
  EXPECT_EQ(kOpened, open(folder, Make::kYes));
  EXPECT_EQ(kOpened, open(folder));
  umask(before);
  EXPECT_EQ(static_cast<fs::perms>(0755), fs::status(parent).permissions());
  EXPECT_EQ(fs::perms::owner_all, fs::status(folder).permissions());
}

TEST_F(TrustedFolders, HaveThePermissionsOfTheRuleWhateverTheMask) {
  const mode_t before = umask(077);
  EXPECT_EQ(kOpened, open(folder, Make::kYes, {.mayBeRoots = true, .permissions = 0755}));
  umask(before);
  EXPECT_EQ(static_cast<fs::perms>(0755), fs::status(folder).permissions());
}

TEST_F(TrustedFolders, AreFoundByPathsOfAnyForm) {
  fs::create_directories(folder);
  const fs::path before = fs::current_path();
  fs::current_path(parent);
  for (const std::string& path : {std::string("names"), std::string("names/"),
                                  std::string("../a//./names//"), "/" + folder.string()}) {
    EXPECT_EQ(kOpened, open(path)) << path;
  }
  fs::current_path(before);
  EXPECT_EQ(Error::kNotFound, open(""));
}

TEST_F(TrustedFolders, AreNotLinks) {
  fs::create_directories(parent / "elsewhere");
  fs::create_directory_symlink("elsewhere", folder);
  expectRefusal("it is a symbolic link");
}

TEST_F(TrustedFolders, AreNotMadeThroughLinks) {
  fs::create_directories(parent);
  fs::create_directory_symlink("elsewhere", folder);
  expectRefusal("it is a symbolic link", Make::kYes);
  EXPECT_FALSE(fs::exists(parent / "elsewhere"));
}

TEST_F(TrustedFolders, AreNotFiles) {
  fs::create_directories(parent);
  std::ofstream(folder) << "a file";
  expectRefusal("it is not a directory");
}

TEST_F(TrustedFolders, AreNotOpenToOthersWriting) {
  fs::create_directories(folder);
  chmod(folder.c_str(), 0720);
  expectRefusal("others may write to it, mode 0720");
  chmod(folder.c_str(), 01702);
  expectRefusal("others may write to it, mode 1702", Make::kYes);
}

TEST_F(TrustedFolders, LieBelowDirectories) {
  std::ofstream(parent) << "a file";
  expectRefusal(parent.string() + " is not a directory", Make::kYes);
}

TEST_F(TrustedFolders, MayLieBehindALinkOfOurs) {
  fs::create_directories(root.path() / "real");
  fs::create_directory_symlink("real", parent);
  EXPECT_EQ(kOpened, open(folder, Make::kYes));
  EXPECT_TRUE(fs::is_directory(root.path() / "real/names"));
}

TEST_F(TrustedFolders, DoNotLieBehindALinkThatLeadsNowhere) {
  fs::create_directory_symlink("nowhere", parent);
  expectRefusal(parent.string() + " does not lead to a directory", Make::kYes);
}

TEST_F(TrustedFolders, InOnesThatAreOpenFollowTheSameRule) {
  const auto opened = openTrusted(folder.string(), {}, Make::kYes);
  ASSERT_TRUE(opened);
  const auto openIn = [&](const char* name, Make make) {
    return errorOf(openTrustedIn(*opened, folder.string(), name, {}, make));
  };
  EXPECT_EQ(Error::kNotFound, openIn("ports", Make::kNo));
  EXPECT_EQ(kOpened, openIn("ports", Make::kYes));
  EXPECT_EQ(kOpened, openIn("ports", Make::kNo));
  fs::create_directory_symlink("ports", folder / "link");
  EXPECT_EQ(Error::kPermission, openIn("link", Make::kYes));
  EXPECT_EQ("refusing the name space " + folder.string() + "/link: it is a symbolic link",
            log.readLine());
}

/// What strangers own, which only root can give them.
class TrustedFoldersAsRoot : public TrustedFolders {
 protected:
  TrustedFoldersAsRoot() { EXPECT_EQ(0u, geteuid()) << "only root can give things away"; }
};

TEST_F(TrustedFoldersAsRoot, AreNotAStrangers) {
  fs::create_directories(folder);
  ASSERT_EQ(0, chown(folder.c_str(), kStranger, kStranger));
  expectRefusal("it belongs to user 12345");
}

TEST_F(TrustedFoldersAsRoot, DoNotLieBehindAStrangersLink) {
  fs::create_directories(root.path() / "real/names");
  fs::create_directory_symlink("real", parent);
  ASSERT_EQ(0, lchown(parent.c_str(), kStranger, kStranger));
  expectRefusal(parent.string() + " is a symbolic link of user 12345");
}

TEST_F(TrustedFoldersAsRoot, MayBeRootsOnlyWhereTheRuleSaysSo) {
  fs::create_directories(folder);
  chmod(root.path().c_str(), 0755);
  ASSERT_EQ(0, seteuid(kStranger));
  const Error owners = open(folder);
  const Error everybodys = open(folder, Make::kNo, {.mayBeRoots = true, .permissions = 0755});
  ASSERT_EQ(0, seteuid(0));
  EXPECT_EQ(Error::kPermission, owners);
  EXPECT_EQ(kOpened, everybodys);
}

TEST_F(TrustedFoldersAsRoot, SayWhenTheHostDeniesThem) {
  fs::create_directories(folder);
  chmod(parent.c_str(), 0700);
  chmod(root.path().c_str(), 0755);
  chmod((root.path() / "dev/log").c_str(), 0666);
  ASSERT_EQ(0, seteuid(kStranger));
  const Error error = open(folder);
  ASSERT_EQ(0, seteuid(0));
  EXPECT_EQ(Error::kPermission, error);
  EXPECT_EQ(
      "refusing the name space " + folder.string() + ": it cannot be opened, permission denied",
      log.readLine());
}

}  // namespace
}  // namespace tests
