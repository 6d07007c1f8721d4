// Licence: MIT, see LICENSE.
#include <CarbonCore/Files.h>

#include <cstring>

#include "platform/files/Items.h"
#include "platform/files/Names.h"
#include "tests/platform/files/FilesFixture.h"

namespace {

using namespace tests;
using platform::files::kVolume;
namespace fs = std::filesystem;

class FileSpecs : public FilesFixture {};
class References : public FilesFixture {};

TEST_F(FileSpecs, HaveTheOriginalLayout) {
  EXPECT_EQ(sizeof(FSSpec), 70U);
  EXPECT_EQ(offsetof(FSSpec, parID), 2U);
  EXPECT_EQ(offsetof(FSSpec, name), 6U);
  EXPECT_EQ(sizeof(FSRef), 80U);
  EXPECT_EQ(sizeof(FSCatalogInfo), 144U);
}

TEST_F(FileSpecs, StandForAnItem) {
  put("file");
  FSSpec spec{};
  EXPECT_EQ(make("file", spec), noErr);
  EXPECT_EQ(spec.vRefNum, kVolume);
  EXPECT_EQ(+spec.parID, idOf(top));
  EXPECT_EQ(nameOf(spec), "file");
  EXPECT_EQ(pathOf(spec), path("file"));
}

TEST_F(FileSpecs, StandForAnItemThatIsYetToBe) {
  FSSpec spec{};
  EXPECT_EQ(make("new", spec), fnfErr);
  EXPECT_EQ(+spec.parID, idOf(top));
  EXPECT_EQ(nameOf(spec), "new");
  EXPECT_EQ(pathOf(spec), "error -43");
  put("new");
  EXPECT_EQ(pathOf(spec), path("new"));
}

TEST_F(FileSpecs, WithoutANameAreOfTheFolder) {
  makeFolder("folder");
  const Pascal empty("");
  for (ConstStr255Param none : {ConstStr255Param{nullptr}, ConstStr255Param{empty}}) {
    FSSpec spec{};
    EXPECT_EQ(FSMakeFSSpec(kVolume, idOf(path("folder")), none, &spec), noErr);
    EXPECT_EQ(+spec.parID, idOf(top));
    EXPECT_EQ(nameOf(spec), "folder");
  }
}

TEST_F(FileSpecs, OfTheRootHaveTheVolumesName) {
  for (SInt32 folder : {SInt32{0}, SInt32{fsRtDirID}}) {
    FSSpec spec{};
    EXPECT_EQ(FSMakeFSSpec(0, folder, nullptr, &spec), noErr);
    EXPECT_EQ(+spec.parID, fsRtParID);
    EXPECT_EQ(nameOf(spec), "Host");
    EXPECT_EQ(pathOf(spec), "/");
  }
  FSSpec spec{};
  EXPECT_EQ(FSMakeFSSpec(0, fsRtParID, Pascal("Host"), &spec), noErr);
  EXPECT_EQ(pathOf(spec), "/");
}

struct PathRow {
  const char* what;
  const char* name;
  OSErr result;
  const char* path;  // below the test's folder, of what the FSSpec stands for
};

class MacPaths : public FilesFixture, public testing::WithParamInterface<PathRow> {};

TEST_P(MacPaths, LeadFromAFolder) {
  put("a/b/file");
  fs::create_symlink("a", path("link"));
  FSSpec spec{};
  spec.name[0] = 99;
  EXPECT_EQ(make(GetParam().name, spec), GetParam().result);
  if (GetParam().path == nullptr) {
    EXPECT_EQ(spec.name[0], 99) << "untouched";
  } else {
    std::string expected;
    EXPECT_EQ(platform::files::pathOfSpec(spec, expected), GetParam().result);
    EXPECT_EQ(expected, fs::weakly_canonical(path(GetParam().path)));
  }
}

INSTANTIATE_TEST_SUITE_P(All, MacPaths,
                         testing::Values(PathRow{"Name", ":a", noErr, "a"},
                                         PathRow{"Inner", ":a:b:file", noErr, "a/b/file"},
                                         PathRow{"New", ":a:b:new", fnfErr, "a/b/new"},
                                         PathRow{"MissingFolder", ":a:x:new", dirNFErr, nullptr},
                                         PathRow{"FileAsFolder", ":a:b:file:x", dirNFErr, nullptr},
                                         PathRow{"Up", ":a::a", noErr, "a"},
                                         PathRow{"UpTwice", ":a:b:::a", noErr, "a"},
                                         PathRow{"Itself", ":", noErr, "."},
                                         PathRow{"ColonAtTheEnd", ":a:b:", noErr, "a/b"},
                                         PathRow{"ThroughALink", ":link:b", noErr, "a/b"},
                                         PathRow{"OtherVolume", "Other:a", nsvErr, nullptr},
                                         PathRow{"TheHostsDots", ":..", bdNamErr, nullptr}),
                         [](const auto& row) { return row.param.what; });

TEST_F(FileSpecs, AreMadeOfFullPaths) {
  put("a/file");
  std::string full = "Host" + path("a/file");
  std::replace(full.begin(), full.end(), '/', ':');
  FSSpec spec{};
  EXPECT_EQ(FSMakeFSSpec(0, 0, Pascal(full), &spec), noErr);
  EXPECT_EQ(pathOf(spec), path("a/file"));
  EXPECT_EQ(FSMakeFSSpec(0, 0, Pascal("Host:"), &spec), noErr);
  EXPECT_EQ(pathOf(spec), "/");
  EXPECT_EQ(FSMakeFSSpec(0, 0, Pascal("Host::"), &spec), dirNFErr);  // above the root
}

TEST_F(FileSpecs, AreRefusedWithTheReason) {
  FSSpec spec{};
  spec.name[0] = 99;
  EXPECT_EQ(FSMakeFSSpec(0, 0, nullptr, nullptr), paramErr);
  EXPECT_EQ(FSMakeFSSpec(7, 0, nullptr, &spec), nsvErr);
  EXPECT_EQ(FSMakeFSSpec(0, 999999, Pascal("file"), &spec), dirNFErr);
  EXPECT_EQ(FSMakeFSSpec(0, fsRtParID, Pascal("Other"), &spec), fnfErr);
  EXPECT_EQ(make(std::string_view("a\0b", 3), spec), bdNamErr);
  EXPECT_EQ(make(".", spec), bdNamErr);
  EXPECT_EQ(make(std::string(32, 'x'), spec), bdNamErr);  // nothing of that name would be found
  EXPECT_EQ(spec.name[0], 99);
}

TEST_F(FileSpecs, FindNamesThatAreShownShortened) {
  const std::string names[] = {std::string(200, 'n') + ".text", "\xE6\x97\xA5\xE6\x9C\xAC",
                               "bad\xFF", "looks#1234ABCD.txt"};
  for (const std::string& name : names) {
    put(name);
    const FSRef ref = refOf(path(name));
    FSSpec spec{};
    ASSERT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, &spec, nullptr), noErr);
    EXPECT_LE(spec.name[0], 31);
    EXPECT_EQ(pathOf(spec), path(name));
    FSSpec again{};
    EXPECT_EQ(make(nameOf(spec), again), noErr);
    EXPECT_EQ(pathOf(again), path(name));
  }
}

TEST_F(FileSpecs, OfALongNameAreMadeOfTheWholeOfItToo) {
  const std::string name(100, 'n');
  put(name);
  FSSpec spec{};
  EXPECT_EQ(make(name, spec), noErr);
  EXPECT_EQ(nameOf(spec), platform::files::macNameOf(name));
  EXPECT_EQ(pathOf(spec), path(name));
}

TEST_F(FileSpecs, TellNamesOfBothSystemsApart) {
  put("either:or");
  FSSpec spec{};
  EXPECT_EQ(make("either/or", spec), noErr);
  EXPECT_EQ(nameOf(spec), "either/or");
  EXPECT_EQ(pathOf(spec), path("either:or"));
}

TEST_F(FileSpecs, OfALinkAreOfTheLinkItself) {
  put("file");
  fs::create_symlink("file", path("link"));
  FSSpec spec{};
  EXPECT_EQ(make("link", spec), noErr);
  EXPECT_EQ(pathOf(spec), path("link"));
}

TEST_F(FileSpecs, OfAFolderThatIsGoneAreRefused) {
  makeFolder("folder");
  const SInt32 id = idOf(path("folder"));
  fs::remove(path("folder"));
  FSSpec spec{};
  EXPECT_EQ(FSMakeFSSpec(0, id, Pascal("file"), &spec), dirNFErr);
  spec = {kVolume, id, "\4file"};
  EXPECT_EQ(pathOf(spec), "error -120");
}

TEST_F(FileSpecs, ThatNobodyMadeAreReadWithCare) {
  FSRef ref;
  FSSpec spec{5, 2, "\1x"};
  EXPECT_EQ(FSpMakeFSRef(&spec, &ref), nsvErr);
  spec = {0, 2, ""};
  spec.name[0] = 64;
  EXPECT_EQ(FSpMakeFSRef(&spec, &ref), bdNamErr);
  EXPECT_EQ(FSpMakeFSRef(nullptr, &ref), paramErr);
  EXPECT_EQ(FSpMakeFSRef(&spec, nullptr), paramErr);
}

TEST_F(References, StandForPathsThereAndBack) {
  put("a/file");
  for (const std::string& each : {std::string("/"), top.string(), path("a"), path("a/file")}) {
    EXPECT_EQ(pathOf(refOf(each)), each);
  }
  EXPECT_EQ(pathOf(refOf(path("a/../a/./file"))), path("a/file"));
}

TEST_F(References, TellFoldersFromFiles) {
  put("a/file");
  FSRef ref;
  Boolean isFolder = 9;
  auto make = [&](const std::string& each) {
    return FSPathMakeRef(reinterpret_cast<const UInt8*>(each.c_str()), &ref, &isFolder);
  };
  EXPECT_EQ(make(path("a")), noErr);
  EXPECT_EQ(isFolder, 1);
  EXPECT_EQ(make(path("a/file")), noErr);
  EXPECT_EQ(isFolder, 0);
}

TEST_F(References, FollowTheLinksOfAPath) {
  put("a/file");
  fs::create_symlink("a", path("link"));
  fs::create_symlink("a/file", path("other"));
  EXPECT_EQ(pathOf(refOf(path("link/file"))), path("a/file"));
  EXPECT_EQ(pathOf(refOf(path("other"))), path("a/file"));
}

TEST_F(References, AreNotMadeOfWhatIsMissing) {
  put("a/file");
  fs::create_symlink("nowhere", path("dangling"));
  FSRef ref;
  std::memset(ref.hidden, 0x55, sizeof ref.hidden);
  const FSRef untouched = ref;
  Boolean isFolder = 9;
  auto make = [&](const std::string& each) {
    return FSPathMakeRef(reinterpret_cast<const UInt8*>(each.c_str()), &ref, &isFolder);
  };
  EXPECT_EQ(make(path("a/missing")), fnfErr);
  EXPECT_EQ(make(path("x/missing")), dirNFErr);
  EXPECT_EQ(make(path("dangling")), fnfErr);
  EXPECT_EQ(make(path("a/file/x")), fnfErr);
  EXPECT_EQ(make(""), fnfErr);
  EXPECT_EQ(make("/" + std::string(300, 'x')), bdNamErr);
  EXPECT_EQ(FSPathMakeRef(nullptr, &ref, nullptr), paramErr);
  EXPECT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>("/"), nullptr, nullptr), paramErr);
  EXPECT_EQ(isFolder, 9);
  EXPECT_EQ(std::memcmp(ref.hidden, untouched.hidden, sizeof ref.hidden), 0);
}

TEST_F(References, WritePathsThatFitOnly) {
  put("file");
  const FSRef ref = refOf(path("file"));
  const auto size = static_cast<UInt32>(path("file").size());
  std::vector<UInt8> text(size + 1, 0x55);
  EXPECT_EQ(FSRefMakePath(&ref, text.data(), size), pathTooLongErr);
  EXPECT_EQ(FSRefMakePath(&ref, text.data(), 0), pathTooLongErr);
  EXPECT_EQ(text, std::vector<UInt8>(size + 1, 0x55));
  EXPECT_EQ(FSRefMakePath(&ref, text.data(), size + 1), noErr);
  EXPECT_EQ(std::string(text.begin(), text.end() - 1), path("file"));
  EXPECT_EQ(text.back(), 0);
  EXPECT_EQ(FSRefMakePath(nullptr, text.data(), size), paramErr);
  EXPECT_EQ(FSRefMakePath(&ref, nullptr, size), paramErr);
}

TEST_F(References, FollowAnItemThatIsRenamed) {
  for (const std::string& name : {std::string("short"), std::string(120, 'l')}) {
    put(name);
    const FSRef ref = refOf(path(name));
    fs::rename(path(name), path("renamed" + name));
    EXPECT_EQ(pathOf(ref), path("renamed" + name));
  }
}

TEST_F(References, StayWithAFileThatIsReplaced) {
  for (const std::string& name : {std::string("short"), std::string(120, 'l')}) {
    put(name, "old");
    const FSRef ref = refOf(path(name));
    put("new", "new");
    fs::rename(path("new"), path(name));
    EXPECT_EQ(pathOf(ref), path(name));
  }
}

TEST_F(References, AreOfNothingWhenTheItemIsGone) {
  put("a/file");
  put("a/" + std::string(120, 'l'));
  const FSRef ref = refOf(path("a/file"));
  const FSRef longRef = refOf(path("a/" + std::string(120, 'l')));
  fs::remove(path("a/file"));
  fs::remove(path("a/" + std::string(120, 'l')));
  EXPECT_EQ(pathOf(ref), "error -43");
  EXPECT_EQ(pathOf(longRef), "error -43");
  fs::remove_all(path("a"));
  EXPECT_EQ(pathOf(ref), "error -120");
}

TEST_F(References, AreKnownFromOtherBytes) {
  FSRef zeros{};
  EXPECT_EQ(pathOf(zeros), "error -1401");
  FSRef ref = refOf(put("file"));
  ref.hidden[0] ^= 1;
  ref.hidden[3] ^= 1;
  EXPECT_EQ(pathOf(ref), "error -1401");
}

TEST_F(References, AreComparedByTheirItems) {
  put("one");
  put("other");
  fs::create_hard_link(path("one"), path("linked"));
  const FSRef one = refOf(path("one"));
  const FSRef other = refOf(path("other"));
  const FSRef linked = refOf(path("linked"));
  EXPECT_EQ(FSCompareFSRefs(&one, &one), noErr);
  EXPECT_EQ(FSCompareFSRefs(&one, &linked), noErr);
  EXPECT_EQ(FSCompareFSRefs(&one, &other), errFSRefsDifferent);
  EXPECT_EQ(FSCompareFSRefs(nullptr, &other), paramErr);
  fs::remove(path("other"));
  EXPECT_EQ(FSCompareFSRefs(&one, &other), fnfErr);
}

TEST_F(FileSpecs, MakeFolders) {
  FSSpec spec{};
  ASSERT_EQ(make("new/folder", spec), fnfErr);
  SInt32 id = 0;
  EXPECT_EQ(FSpDirCreate(&spec, 0, &id), noErr);
  EXPECT_TRUE(fs::is_directory(path("new:folder")));
  EXPECT_EQ(id, idOf(path("new:folder")));
  id = 77;
  EXPECT_EQ(FSpDirCreate(&spec, 0, &id), dupFNErr);
  EXPECT_EQ(FSpDirCreate(&spec, 0, nullptr), paramErr);
  spec = {kVolume, 999999, "\1x"};
  EXPECT_EQ(FSpDirCreate(&spec, 0, &id), dirNFErr);
  spec = {kVolume, fsRtParID, "\1x"};
  EXPECT_EQ(FSpDirCreate(&spec, 0, &id), fnfErr);
  EXPECT_EQ(id, 77);
}

}  // namespace
