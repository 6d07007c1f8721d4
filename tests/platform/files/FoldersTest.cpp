// Licence: MIT, see LICENSE.
#include <CarbonCore/Folders.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/files/Items.h"
#include "tests/platform/files/FilesFixture.h"

namespace {

using namespace tests;
using platform::files::kVolume;
namespace fs = std::filesystem;

class WellKnownFolders : public FilesFixture {
 protected:
  WellKnownFolders() {
    if (const char* home = std::getenv("HOME")) earlier = home;
    setenv("HOME", "/home/somebody", 1);
  }
  ~WellKnownFolders() override { setenv("HOME", earlier.c_str(), 1); }

  std::string earlier = "/";
};

struct FolderRow {
  const char* what;
  SInt16 domain;
  OSType kind;
  const char* place;  // below the root
};

class FolderPlaces : public WellKnownFolders, public testing::WithParamInterface<FolderRow> {};

TEST_P(FolderPlaces, AreMadeAndFoundBelowTheRoot) {
  const auto& [what, domain, kind, place] = GetParam();
  FSRef ref{};
  if (*place != '\0') {
    EXPECT_EQ(FSFindFolder(domain, kind, kDontCreateFolder, &ref), fnfErr);
    EXPECT_FALSE(fs::exists(path(place)));
  }
  EXPECT_EQ(FSFindFolder(domain, kind, kCreateFolder, &ref), noErr);
  EXPECT_EQ(pathOf(ref), *place == '\0' ? top.string() : path(place));
  EXPECT_EQ(FSFindFolder(domain, kind, kDontCreateFolder, &ref), noErr);
  SInt16 volume = 0;
  SInt32 id = 0;
  EXPECT_EQ(FindFolder(domain, kind, kDontCreateFolder, &volume, &id), noErr);
  EXPECT_EQ(volume, kVolume);
  FSSpec spec{};
  EXPECT_EQ(FSMakeFSSpec(volume, id, nullptr, &spec), noErr);
  EXPECT_EQ(pathOf(spec), pathOf(ref));
}

INSTANTIATE_TEST_SUITE_P(
    All, FolderPlaces,
    testing::Values(
        FolderRow{"LocalTop", kLocalDomain, 'dtop', ""},
        FolderRow{"LocalLibrary", kLocalDomain, 'dlib', "Library"},
        FolderRow{"LocalApplications", kLocalDomain, 'apps', "Applications"},
        FolderRow{"LocalSupport", kLocalDomain, 'asup', "Library/Application Support"},
        FolderRow{"LocalLogs", kLocalDomain, 'logs', "Library/Logs"},
        FolderRow{"LocalPreferences", kLocalDomain, 'pref', "Library/Preferences"},
        FolderRow{"SystemLibrary", kSystemDomain, 'dlib', "System/Library"},
        FolderRow{"SystemFrameworks", kSystemDomain, 'fram', "System/Library/Frameworks"},
        FolderRow{"NetworkLibrary", kNetworkDomain, 'dlib', "Network/Library"},
        FolderRow{"UserLibrary", kUserDomain, 'dlib', "home/somebody/Library"},
        FolderRow{"UserApplications", kUserDomain, 'apps', "home/somebody/Applications"},
        FolderRow{"UserPreferences", kUserDomain, 'pref', "home/somebody/Library/Preferences"},
        FolderRow{"UserCaches", kUserDomain, 'cach', "home/somebody/Library/Caches"},
        FolderRow{"UserHome", kUserDomain, 'cusr', "home/somebody"},
        FolderRow{"DiskSupport", kOnSystemDisk, 'asup', "Library/Application Support"},
        FolderRow{"DiskPreferences", kOnSystemDisk, 'pref', "home/somebody/Library/Preferences"},
        FolderRow{"AppropriateDiskHome", kOnAppropriateDisk, 'cusr', "home/somebody"},
        FolderRow{"VolumeFrameworks", kVolume, 'fram', "System/Library/Frameworks"},
        FolderRow{"Temporary", kOnAppropriateDisk, 'temp', "tmp"}),
    [](const auto& row) { return row.param.what; });

TEST_F(WellKnownFolders, OfNoKindOrDomainAreNone) {
  FSRef ref{};
  EXPECT_EQ(FSFindFolder(kLocalDomain, 'none', kCreateFolder, &ref), fnfErr);
  EXPECT_EQ(FSFindFolder(kLocalDomain, kCurrentUserFolderType, kCreateFolder, &ref), fnfErr);
  EXPECT_EQ(FSFindFolder(5, kLogsFolderType, kCreateFolder, &ref), nsvErr);
  EXPECT_EQ(FSFindFolder(-32000, kLogsFolderType, kCreateFolder, &ref), nsvErr);
  EXPECT_TRUE(fs::is_empty(top));
}

TEST_F(WellKnownFolders, NeedSomewhereToBeTold) {
  SInt16 volume = 0;
  SInt32 id = 0;
  EXPECT_EQ(FSFindFolder(kLocalDomain, kLogsFolderType, kCreateFolder, nullptr), paramErr);
  EXPECT_EQ(FindFolder(kLocalDomain, kLogsFolderType, kCreateFolder, nullptr, &id), paramErr);
  EXPECT_EQ(FindFolder(kLocalDomain, kLogsFolderType, kCreateFolder, &volume, nullptr), paramErr);
}

TEST_F(WellKnownFolders, ThatAreFilesAreNotFound) {
  put("Library", "");
  SInt16 volume = 77;
  SInt32 id = 77;
  EXPECT_EQ(FindFolder(kLocalDomain, 'dlib', kDontCreateFolder, &volume, &id), fnfErr);
  EXPECT_EQ(FindFolder(kLocalDomain, 'dlib', kCreateFolder, &volume, &id), dupFNErr);
  EXPECT_EQ(volume, 77);
  EXPECT_EQ(id, 77);
}

TEST_F(WellKnownFolders, MayBeLinksToFolders) {
  makeFolder("elsewhere");
  fs::create_symlink("elsewhere", path("Library"));
  FSRef ref{};
  EXPECT_EQ(FSFindFolder(kLocalDomain, 'dlib', kCreateFolder, &ref), noErr);
  EXPECT_EQ(pathOf(ref), path("elsewhere"));
}

TEST_F(WellKnownFolders, AreNotMadeWhereThatIsForbidden) {
  if (geteuid() == 0) GTEST_SKIP() << "root may write anywhere";
  ASSERT_EQ(chmod(top.c_str(), 0500), 0);
  FSRef ref{};
  EXPECT_EQ(FSFindFolder(kLocalDomain, 'dlib', kCreateFolder, &ref), afpAccessDenied);
  ASSERT_EQ(chmod(top.c_str(), 0700), 0);
}

}  // namespace
