// Licence: MIT, see LICENSE.
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "platform/files/Items.h"
#include "tests/platform/files/FilesFixture.h"

namespace {

using namespace tests;
using platform::files::kVolume;

constexpr FSCatalogInfoBitmap kAll = kFSCatInfoNodeFlags | kFSCatInfoVolume |
                                     kFSCatInfoParentDirID | kFSCatInfoNodeID |
                                     kFSCatInfoPermissions | kFSCatInfoDataSizes;

class CatalogInfo : public FilesFixture {
 protected:
  static FSCatalogInfo infoOf(const std::string& itsPath) {
    const FSRef ref = refOf(itsPath);
    FSCatalogInfo info{};
    EXPECT_EQ(FSGetCatalogInfo(&ref, kAll, &info, nullptr, nullptr, nullptr), noErr);
    return info;
  }
};

TEST_F(CatalogInfo, TellsAboutAFile) {
  const std::string file = put("file", "12345");
  ASSERT_EQ(chmod(file.c_str(), 0640), 0);
  const FSCatalogInfo info = infoOf(file);
  EXPECT_EQ(info.nodeFlags, 0);
  EXPECT_EQ(info.volume, kVolume);
  EXPECT_EQ(info.parentDirID, static_cast<UInt32>(idOf(top)));
  EXPECT_EQ(info.permissions[0], geteuid());
  EXPECT_EQ(info.permissions[3], S_IFREG | 0640U);
  EXPECT_EQ(info.dataLogicalSize, 5U);
}

TEST_F(CatalogInfo, TellsAboutAFolder) {
  const std::string folder = makeFolder("folder");
  const FSCatalogInfo info = infoOf(folder);
  EXPECT_EQ(info.nodeFlags, kFSNodeIsDirectoryMask);
  EXPECT_EQ(info.parentDirID, static_cast<UInt32>(idOf(top)));
  EXPECT_EQ(info.dataLogicalSize, 0U);
  FSSpec spec{};
  EXPECT_EQ(FSMakeFSSpec(0, static_cast<SInt32>(info.nodeID), nullptr, &spec), noErr);
  EXPECT_EQ(pathOf(spec), folder);
}

TEST_F(CatalogInfo, NumbersFilesApartFromFolders) {
  const UInt32 one = infoOf(put("one")).nodeID;
  const UInt32 other = infoOf(put("other")).nodeID;
  EXPECT_NE(one, other);
  EXPECT_GE(one, 0x80000000U);
  EXPECT_GE(other, 0x80000000U);
}

TEST_F(CatalogInfo, LeavesFieldsThatWereNotAskedFor) {
  const FSRef ref = refOf(put("file", "12345"));
  FSCatalogInfo info;
  std::memset(&info, 0x55, sizeof info);
  EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoDataSizes, &info, nullptr, nullptr, nullptr), noErr);
  EXPECT_EQ(info.dataLogicalSize, 5U);
  EXPECT_EQ(info.nodeFlags, 0x5555);
  EXPECT_EQ(info.nodeID, 0x55555555U);
  EXPECT_EQ(info.permissions[3], 0x55555555U);
}

TEST_F(CatalogInfo, GivesNameSpecAndParent) {
  const FSRef ref = refOf(put("a/either:or"));
  HFSUniStr255 name{};
  FSSpec spec{};
  FSRef parent{};
  EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, &name, &spec, &parent), noErr);
  EXPECT_EQ(name.length, 9);
  EXPECT_EQ(name.unicode[6], '/');
  EXPECT_EQ(nameOf(spec), "either/or");
  EXPECT_EQ(+spec.parID, idOf(path("a")));
  EXPECT_EQ(pathOf(parent), path("a"));
}

TEST_F(CatalogInfo, OfTheRootHasNoParent) {
  const FSRef ref = refOf("/");
  HFSUniStr255 name{};
  EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, &name, nullptr, nullptr), noErr);
  EXPECT_EQ(name.length, 4);
  EXPECT_EQ(infoOf("/").nodeID, static_cast<UInt32>(fsRtDirID));
  EXPECT_EQ(infoOf("/").parentDirID, static_cast<UInt32>(fsRtParID));
  FSRef parent{};
  EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, nullptr, &parent),
            errFSBadFSRef);
}

TEST_F(CatalogInfo, RefusesWhatItCannotTell) {
  const FSRef ref = refOf(top);
  FSCatalogInfo info{};
  EXPECT_EQ(FSGetCatalogInfo(&ref, 0x0020, &info, nullptr, nullptr, nullptr), errFSBadInfoBitmap);
  EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNodeID, nullptr, nullptr, nullptr, nullptr), paramErr);
  EXPECT_EQ(FSGetCatalogInfo(nullptr, 0, nullptr, nullptr, nullptr, nullptr), paramErr);
}

TEST_F(CatalogInfo, OfWhatIsGoneLeavesTheOutputs) {
  const FSRef ref = refOf(put("file"));
  std::filesystem::remove(path("file"));
  FSSpec spec{};
  spec.vRefNum = 99;
  FSCatalogInfo info{};
  info.volume = 99;
  EXPECT_EQ(FSGetCatalogInfo(&ref, kAll, &info, nullptr, &spec, nullptr), fnfErr);
  EXPECT_EQ(spec.vRefNum, 99);
  EXPECT_EQ(info.volume, 99);
}

}  // namespace
