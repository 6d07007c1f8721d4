// Licence: MIT, see LICENSE.
#include <quorvant/util/WithTempResFile.h>

#include "tests/util/ResourceFiles.h"

namespace {

using namespace tests;

class TempResFile : public ResourceFilesFixture {
 protected:
  static void expectNothingOpen(const WithTempResFile& file, OSErr status) {
    EXPECT_EQ(file.opened, -1);
    EXPECT_EQ(file.status, status);
    EXPECT_EQ(file.isAlreadyOpen, 0U);
  }
};

static_assert(sizeof(WithTempResFile) == 12);
static_assert(offsetof(WithTempResFile, opened) == 0);
static_assert(offsetof(WithTempResFile, saved) == 2);
static_assert(offsetof(WithTempResFile, status) == 4);
static_assert(offsetof(WithTempResFile, isAlreadyOpen) == 8);

TEST_F(TempResFile, StartsWithNothingOpen) {
  const WithTempResFile file;
  expectNothingOpen(file, fnfErr);
  EXPECT_EQ(file.saved, -1);
}

TEST_F(TempResFile, IsCurrentForItsScope) {
  const FSSpec spec = makeTextFile("file", "text");
  SInt16 opened = 0;
  {
    const WithTempResFile file(&spec, fsRdPerm);
    opened = file.opened;
    EXPECT_EQ(file.status, noErr);
    EXPECT_EQ(file.saved, bottom);
    EXPECT_EQ(file.isAlreadyOpen, 0U);
    EXPECT_EQ(CurResFile(), opened);
    EXPECT_NE(Get1Resource('TEXT', 1), nullptr);
  }
  EXPECT_EQ(CurResFile(), bottom);
  EXPECT_FALSE(isOpen(opened));
}

TEST_F(TempResFile, ThatWasOpenStaysOpen) {
  const FSSpec spec = makeTextFile("file", "text");
  const SInt16 before = FSpOpenResFile(&spec, fsRdPerm);
  const SInt16 other = makeFile("other");
  {
    const WithTempResFile file(&spec, fsRdPerm);
    EXPECT_EQ(file.opened, before);
    EXPECT_EQ(file.saved, other);
    EXPECT_EQ(file.isAlreadyOpen, 1U);
    EXPECT_EQ(CurResFile(), before);
  }
  EXPECT_TRUE(isOpen(before));
  EXPECT_EQ(CurResFile(), other);
}

TEST_F(TempResFile, NestsWithItself) {
  const FSSpec spec = makeTextFile("file", "text");
  const WithTempResFile outer(&spec, fsRdPerm);
  {
    const WithTempResFile inner(&spec, fsRdPerm);
    EXPECT_EQ(inner.isAlreadyOpen, 1U);
    EXPECT_EQ(inner.saved, outer.opened);
  }
  EXPECT_TRUE(isOpen(outer.opened));
  EXPECT_EQ(CurResFile(), outer.opened);
}

TEST_F(TempResFile, OfNothingIsNotFound) {
  WithTempResFile file;
  EXPECT_EQ(file._OpenFile(nullptr, fsRdPerm), fnfErr);
  expectNothingOpen(file, fnfErr);
  EXPECT_EQ(file.saved, -1);
}

TEST_F(TempResFile, ThatCannotBeOpenedLeavesTheCurrentFile) {
  const FSSpec missing = specOf("missing");
  std::ofstream(top / "bad") << "no resources here";
  const FSSpec bad = specOf("bad");
  WithTempResFile file;
  EXPECT_EQ(file._OpenFile(&missing, fsRdPerm), fnfErr);
  expectNothingOpen(file, fnfErr);
  EXPECT_EQ(file.saved, bottom);
  EXPECT_EQ(file._OpenFile(&bad, fsRdPerm), mapReadErr);
  expectNothingOpen(file, mapReadErr);
  EXPECT_EQ(CurResFile(), bottom);
}

TEST_F(TempResFile, ClosesOnce) {
  const FSSpec spec = makeTextFile("file", "text");
  WithTempResFile file(&spec, fsRdPerm);
  const SInt16 opened = file.opened;
  file._CloseFile();
  expectNothingOpen(file, fnfErr);
  EXPECT_EQ(file.saved, -1);
  EXPECT_FALSE(isOpen(opened));
  const SInt16 other = makeFile("other");
  file._CloseFile();
  EXPECT_EQ(CurResFile(), other);
}

TEST_F(TempResFile, GoesBackToTheFileOfTheBeginning) {
  const FSSpec spec = makeTextFile("file", "text");
  const SInt16 first = makeFile("first");
  SInt16 later = kResFileNotOpened;
  {
    const WithTempResFile file(&spec, fsRdPerm);
    later = makeFile("later");
  }
  EXPECT_EQ(CurResFile(), first);
  UseResFile(bottom);
  CloseResFile(later);
  CloseResFile(first);
}

TEST_F(TempResFile, ForgetsWhatItHadOpenWhenItOpensAnother) {
  const FSSpec first = makeTextFile("first", "1");
  const FSSpec second = makeTextFile("second", "2");
  WithTempResFile file(&first, fsRdPerm);
  const SInt16 forgotten = file.opened;
  EXPECT_EQ(file._OpenFile(&second, fsRdPerm), noErr);
  EXPECT_EQ(file.saved, forgotten);
  file._CloseFile();
  EXPECT_TRUE(isOpen(forgotten));
  EXPECT_EQ(CurResFile(), forgotten);
}

TEST_F(TempResFile, WritesWhatWasChanged) {
  const FSSpec spec = makeTextFile("file", "text");
  {
    const WithTempResFile file(&spec, fsRdWrPerm);
    add('TEXT', 2, "more");
  }
  const WithTempResFile file(&spec, fsRdPerm);
  EXPECT_NE(Get1Resource('TEXT', 2), nullptr);
}

}  // namespace
