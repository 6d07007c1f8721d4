// Licence: MIT, see LICENSE.
#include <sys/stat.h>
#include <unistd.h>

#include "platform/resources/AppleDouble.h"
#include "tests/platform/resources/OpenFilesFixture.h"

namespace {

using namespace tests;

class ResourceOpening : public OpenFilesFixture {};

TEST_F(ResourceOpening, MakesTheFileCurrent) {
  put("file", sample::file());
  const SInt16 file = open("file", fsRdPerm);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(CurResFile(), file);
  EXPECT_EQ(textOf(Get1Resource('TEXT', 128)), "abc");
}

TEST_F(ResourceOpening, WorksByReferenceToo) {
  const FSSpec spec = (put("file", sample::file()), specOf("file"));
  FSRef ref{};
  ASSERT_EQ(FSpMakeFSRef(&spec, &ref), noErr);
  const SInt16 file = FSOpenResFile(&ref, fsCurPerm);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(CurResFile(), file);
  CloseResFile(file);
  std::filesystem::remove(path("file"));
  EXPECT_EQ(FSOpenResFile(&ref, fsCurPerm), kResFileNotOpened);
  EXPECT_EQ(ResError(), fnfErr);
  EXPECT_EQ(FSOpenResFile(nullptr, fsCurPerm), kResFileNotOpened);
  EXPECT_EQ(ResError(), paramErr);
}

TEST_F(ResourceOpening, OfAnOpenFileGivesItsNumberAndLeavesTheCurrentFile) {
  put("file", sample::file());
  const SInt16 file = open("file");
  const SInt16 other = openNew("other", Contents{});
  EXPECT_EQ(open("file"), file);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(CurResFile(), other);
  std::filesystem::create_symlink("file", path("link"));
  EXPECT_EQ(open("link"), file);
}

TEST_F(ResourceOpening, TellsWhatIsOpen) {
  put("file", sample::file());
  const FSSpec spec = specOf("file");
  Boolean inChain = 9;
  SInt16 number = 77;
  EXPECT_FALSE(FSpResourceFileAlreadyOpen(&spec, &inChain, &number));
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(inChain, 0);
  EXPECT_EQ(number, kResFileNotOpened);
  const SInt16 file = open("file");
  EXPECT_TRUE(FSpResourceFileAlreadyOpen(&spec, &inChain, &number));
  EXPECT_EQ(inChain, 1);
  EXPECT_EQ(number, file);
  EXPECT_TRUE(FSpResourceFileAlreadyOpen(&spec, nullptr, nullptr));
}

TEST_F(ResourceOpening, TellsThatAFileIsOpenAfterItWasWritten) {
  const SInt16 file = openNew("file", {{'TEXT', 1, 0, "", bytesOf("old")}});
  change('TEXT', 1, "new");
  UpdateResFile(file);
  ASSERT_EQ(ResError(), noErr);
  const FSSpec spec = specOf("file");
  EXPECT_TRUE(FSpResourceFileAlreadyOpen(&spec, nullptr, nullptr));
  EXPECT_EQ(open("file"), file);
}

TEST_F(ResourceOpening, OfNothingIsNotOpen) {
  const FSSpec spec = specOf("missing");
  SInt16 number = 77;
  EXPECT_FALSE(FSpResourceFileAlreadyOpen(&spec, nullptr, &number));
  EXPECT_EQ(ResError(), fnfErr);
  EXPECT_EQ(number, kResFileNotOpened);
  EXPECT_FALSE(FSpResourceFileAlreadyOpen(nullptr, nullptr, &number));
  EXPECT_EQ(ResError(), paramErr);
}

struct BadFile {
  const char* what;
  ByteVector bytes;
  OSErr result;
};

class BadFiles : public OpenFilesFixture, public testing::WithParamInterface<BadFile> {};

TEST_P(BadFiles, AreNotOpened) {
  put("file", GetParam().bytes);
  EXPECT_EQ(open("file"), kResFileNotOpened);
  EXPECT_EQ(ResError(), GetParam().result);
  EXPECT_EQ(CurResFile(), bottom);
}

ByteVector cutOff() {
  ByteVector bytes = sample::file();
  bytes.pop_back();
  return bytes;
}

INSTANTIATE_TEST_SUITE_P(All, BadFiles,
                         testing::Values(BadFile{"Empty", {}, eofErr},
                                         BadFile{"OneByte", bytesOf("x"), mapReadErr},
                                         BadFile{"Text", bytesOf("This is only text."), mapReadErr},
                                         BadFile{"CutOff", cutOff(), mapReadErr},
                                         BadFile{"CompanionWithoutResources",
                                                 platform::resources::appleDoubleWith({}),
                                                 mapReadErr}),
                         [](const auto& row) { return row.param.what; });

TEST_F(ResourceOpening, OfWhatIsMissingSaysSo) {
  EXPECT_EQ(open("missing"), kResFileNotOpened);
  EXPECT_EQ(ResError(), fnfErr);
  FSSpec spec{0, 999999, "\4file"};
  EXPECT_EQ(FSpOpenResFile(&spec, fsCurPerm), kResFileNotOpened);
  EXPECT_EQ(ResError(), dirNFErr);
  spec.vRefNum = 5;
  EXPECT_EQ(FSpOpenResFile(&spec, fsCurPerm), kResFileNotOpened);
  EXPECT_EQ(ResError(), nsvErr);
  EXPECT_EQ(FSpOpenResFile(nullptr, fsCurPerm), kResFileNotOpened);
  EXPECT_EQ(ResError(), paramErr);
}

TEST_F(ResourceOpening, HasKnownPermissionsOnly) {
  put("file", sample::file());
  for (SInt8 permission : {-1, 4, 100}) {
    EXPECT_EQ(open("file", permission), kResFileNotOpened);
    EXPECT_EQ(ResError(), paramErr);
  }
}

TEST_F(ResourceOpening, ForReadingDoesNotServeForWriting) {
  put("file", sample::file());
  const SInt16 file = open("file", fsRdPerm);
  EXPECT_EQ(open("file", fsCurPerm), file);
  for (SInt8 permission : {fsWrPerm, fsRdWrPerm}) {
    EXPECT_EQ(open("file", permission), kResFileNotOpened);
    EXPECT_EQ(ResError(), permErr);
  }
}

TEST_F(ResourceOpening, OfAFileThatMayNotBeWrittenIsForReading) {
  if (geteuid() == 0) GTEST_SKIP() << "root may write anything";
  ASSERT_EQ(chmod(put("file", sample::file()).c_str(), 0400), 0);
  EXPECT_EQ(open("file", fsRdWrPerm), kResFileNotOpened);
  EXPECT_EQ(ResError(), permErr);
  const SInt16 file = open("file", fsCurPerm);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_NE(GetResFileAttrs(file) & mapReadOnly, 0);
}

TEST_F(ResourceOpening, OfAFileInAFolderThatMayNotBeWrittenIsForReading) {
  if (geteuid() == 0) GTEST_SKIP() << "root may write anything";
  put("folder/file", {{'TEXT', 1, 0, "", {}}});
  ASSERT_EQ(chmod(path("folder").c_str(), 0500), 0);
  EXPECT_EQ(open("folder/file", fsRdWrPerm), kResFileNotOpened);
  EXPECT_EQ(ResError(), permErr);
  EXPECT_NE(GetResFileAttrs(open("folder/file")) & mapReadOnly, 0);
  ASSERT_EQ(chmod(path("folder").c_str(), 0700), 0);
}

TEST_F(ResourceOpening, TakesTheCompanion) {
  put("text", bytesOf("This is only text."));
  put("._text", platform::resources::appleDoubleWith(sample::file()));
  open("text");
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(textOf(Get1Resource('TEXT', 128)), "abc");
}

class ResourceCreation : public OpenFilesFixture {
 protected:
  OSErr create(const std::string& name) const {
    const FSSpec spec = specOf(name);
    FSpCreateResFile(&spec, 'qrlT', 'rsrc', 0);
    return ResError();
  }
};

TEST_F(ResourceCreation, MakesAFileWithoutResources) {
  EXPECT_EQ(create("new"), noErr);
  EXPECT_EQ(onDisk("new"), std::vector<std::string>{});
  open("new");
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(Count1Types(), 0);
}

TEST_F(ResourceCreation, FillsAnEmptyFile) {
  put("empty", ByteVector{});
  EXPECT_EQ(create("empty"), noErr);
  EXPECT_EQ(onDisk("empty"), std::vector<std::string>{});
}

TEST_F(ResourceCreation, LeavesResourcesAlone) {
  put("file", sample::file());
  EXPECT_EQ(create("file"), dupFNErr);
  EXPECT_EQ(bytesIn("file"), sample::file());
  std::filesystem::create_directory(path("folder"));
  EXPECT_EQ(create("folder"), dupFNErr);
}

TEST_F(ResourceCreation, GivesAFileWithOtherDataACompanion) {
  put("text", bytesOf("This is only text."));
  EXPECT_EQ(create("text"), noErr);
  EXPECT_EQ(bytesIn("text"), bytesOf("This is only text."));
  open("text");
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(create("text"), dupFNErr);
}

TEST_F(ResourceCreation, DoesNotReplaceADamagedCompanion) {
  put("text", bytesOf("This is only text."));
  put("._text", bytesOf("damaged"));
  EXPECT_EQ(create("text"), mapReadErr);
  EXPECT_EQ(bytesIn("._text"), bytesOf("damaged"));
}

TEST_F(ResourceCreation, SaysWhyItFails) {
  FSSpec spec{0, 999999, "\4file"};
  FSpCreateResFile(&spec, 0, 0, 0);
  EXPECT_EQ(ResError(), dirNFErr);
  FSpCreateResFile(nullptr, 0, 0, 0);
  EXPECT_EQ(ResError(), paramErr);
}

}  // namespace
