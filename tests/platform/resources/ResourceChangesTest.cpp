// Licence: MIT, see LICENSE.
#include <limits>

#include "tests/platform/resources/OpenFilesFixture.h"

namespace {

using namespace tests;
using testing::Test;

/// The current file has TEXT 1 "First" and a protected TEXT 2.
class ResourceChanges : public OpenFilesFixture {
 protected:
  ResourceChanges()
      : file(openNew("file", {{'TEXT', 1, 0, "First", bytesOf("one")},
                              {'TEXT', 2, resProtected, "", bytesOf("two")},
                              {'DATA', 1, resPurgeable, "", bytesOf("data")}})) {}

  SInt16 file;
};

using Lines = std::vector<std::string>;

TEST_F(ResourceChanges, AreWrittenWithTheFile) {
  change('TEXT', 1, "changed");
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(onDisk("file").front(), "TEXT 1 First 0 one");
  UpdateResFile(file);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(onDisk("file"), (Lines{"TEXT 1 First 0 changed", "TEXT 2  8 two", "DATA 1  32 data"}));
  EXPECT_EQ(GetResAttrs(Get1Resource('TEXT', 1)), 0);
}

TEST_F(ResourceChanges, AreWrittenWhenTheFileIsClosed) {
  change('TEXT', 1, "changed");
  CloseResFile(file);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(onDisk("file").front(), "TEXT 1 First 0 changed");
}

TEST_F(ResourceChanges, ThatNobodyTellsOfAreNotWritten) {
  const ByteVector before = bytesIn("file");
  (*Get1Resource('TEXT', 1))[0] = 'X';
  UpdateResFile(file);
  EXPECT_EQ(ResError(), noErr);
  CloseResFile(file);
  EXPECT_EQ(bytesIn("file"), before);
}

TEST_F(ResourceChanges, OfOneResourceAreWrittenAlone) {
  Handle first = change('TEXT', 1, "changed");
  change('DATA', 1, "also changed");
  WriteResource(first);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(onDisk("file"), (Lines{"TEXT 1 First 0 changed", "TEXT 2  8 two", "DATA 1  32 data"}));
  EXPECT_EQ(GetResAttrs(first), 0);
  EXPECT_EQ(GetResAttrs(Get1Resource('DATA', 1)), resChanged | resPurgeable);
  UpdateResFile(file);
  EXPECT_EQ(onDisk("file").back(), "DATA 1  32 also changed");
}

TEST_F(ResourceChanges, ThatAreNoneAreNotWritten) {
  std::filesystem::remove(path("file"));
  WriteResource(Get1Resource('TEXT', 1));
  EXPECT_EQ(ResError(), noErr);
  UpdateResFile(file);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_FALSE(std::filesystem::exists(path("file")));
}

TEST_F(ResourceChanges, AreRefusedByProtectedResources) {
  Handle resource = Get1Resource('TEXT', 2);
  ChangedResource(resource);
  EXPECT_EQ(ResError(), resAttrErr);
  SetResInfo(resource, 77, pascalName("\4Name"));
  EXPECT_EQ(ResError(), resAttrErr);
  RemoveResource(resource);
  EXPECT_EQ(ResError(), rmvResFailed);
  EXPECT_EQ(GetResAttrs(resource), resProtected);
  SetResAttrs(resource, 0);
  ChangedResource(resource);
  EXPECT_EQ(ResError(), noErr);
}

TEST_F(ResourceChanges, OfAResourceProtectedSinceAreNotWrittenAlone) {
  Handle resource = change('TEXT', 1, "changed");
  SetResAttrs(resource, resProtected);
  WriteResource(resource);
  EXPECT_EQ(ResError(), resAttrErr);
  EXPECT_EQ(onDisk("file").front(), "TEXT 1 First 0 one");
}

TEST_F(ResourceChanges, OfIDNameAndAttributesLast) {
  Handle resource = Get1Resource('TEXT', 1);
  SetResInfo(resource, -5, pascalName("\7Renamed"));
  EXPECT_EQ(ResError(), noErr);
  SetResAttrs(resource, resPurgeable | resPreload | resChanged);
  EXPECT_EQ(GetResAttrs(resource), resPurgeable | resPreload) << "changed is not for the caller";
  ChangedResource(resource);
  EXPECT_EQ(GetResAttrs(resource), resPurgeable | resPreload | resChanged);
  EXPECT_EQ(Get1NamedResource('TEXT', pascalName("\7renamed")), resource);
  EXPECT_EQ(Get1Resource('TEXT', 1), nullptr);
  UpdateResFile(file);
  EXPECT_EQ(onDisk("file").front(), "TEXT -5 Renamed 36 one");
}

TEST_F(ResourceChanges, WithoutANameLeaveTheOldOne) {
  Handle resource = Get1Resource('TEXT', 1);
  for (ConstStr255Param none : {ConstStr255Param{nullptr}, pascalName("\0")}) {
    SetResInfo(resource, 9, none);
    EXPECT_EQ(ResError(), noErr);
    EXPECT_EQ(Get1NamedResource('TEXT', pascalName("\5First")), resource);
  }
}

TEST_F(ResourceChanges, KeepAResourceInMemory) {
  Handle resource = change('TEXT', 1, "changed");
  ReleaseResource(resource);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(Get1Resource('TEXT', 1), resource);
  EXPECT_EQ(textOf(resource), "changed");
  DetachResource(resource);
  EXPECT_EQ(ResError(), resAttrErr);
  EXPECT_EQ(HomeResFile(resource), file);
}

TEST_F(ResourceChanges, OfAPurgedResourceAreLostButNotTheData) {
  Handle resource = change('DATA', 1, "changed");
  EmptyHandle(resource);
  WriteResource(resource);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(onDisk("file").back(), "DATA 1  32 data");
  LoadResource(resource);
  EXPECT_EQ(textOf(resource), "data");
}

TEST_F(ResourceChanges, OfADisposedResourceAreLost) {
  DisposeHandle(change('TEXT', 1, "changed"));
  UpdateResFile(file);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(textOf(Get1Resource('TEXT', 1)), "one");
}

TEST_F(ResourceChanges, AreReadBackWhereTheyWereWritten) {
  Handle resource = change('TEXT', 1, "a much longer text than before");
  UpdateResFile(file);
  EXPECT_EQ(GetResourceSizeOnDisk(resource), 30);
  ReleaseResource(resource);
  EXPECT_EQ(textOf(Get1Resource('TEXT', 1)), "a much longer text than before");
  EXPECT_EQ(textOf(Get1Resource('TEXT', 2)), "two");
  EXPECT_EQ(textOf(Get1Resource('DATA', 1)), "data");
}

TEST_F(ResourceChanges, AddResources) {
  Handle block = blockOf("new");
  AddResource(block, 'TEXT', 9, pascalName("\3New"));
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(GetResAttrs(block), resChanged);
  EXPECT_EQ(HomeResFile(block), file);
  EXPECT_EQ(static_cast<UInt8>(HGetState(block)), kHandleIsResourceMask);
  EXPECT_EQ(Get1Resource('TEXT', 9), block);
  EXPECT_EQ(Get1IndResource('TEXT', 3), block);
  UpdateResFile(file);
  EXPECT_EQ(onDisk("file"),
            (Lines{"TEXT 1 First 0 one", "TEXT 2  8 two", "TEXT 9 New 0 new", "DATA 1  32 data"}));
}

TEST_F(ResourceChanges, AddResourcesOfNewTypesWithoutNames) {
  AddResource(blockOf("new"), 'NEW ', -32768, nullptr);
  EXPECT_EQ(ResError(), noErr);
  AddResource(blockOf(""), 'NEW ', 32767, pascalName("\0"));
  CloseResFile(file);
  const Lines lines = onDisk("file");
  ASSERT_EQ(lines.size(), 5U);
  EXPECT_EQ(lines[3], "NEW  -32768  0 new");
  EXPECT_EQ(lines[4], "NEW  32767  0 ");
}

TEST_F(ResourceChanges, AddOnlyWhatIsABlock) {
  Handle empty = NewEmptyHandle();
  Handle gone = NewHandle(1);
  DisposeHandle(gone);
  for (Handle bad : {Handle{nullptr}, empty, gone, Get1Resource('TEXT', 1)}) {
    AddResource(bad, 'TEXT', 9, nullptr);
    EXPECT_EQ(ResError(), addResFailed);
  }
  EXPECT_EQ(Count1Resources('TEXT'), 2);
  DisposeHandle(empty);
}

TEST_F(ResourceChanges, AddNothingToTheSystem) {
  UseResFile(kSystemResFile);
  Handle block = blockOf("new");
  AddResource(block, 'TEXT', 9, nullptr);
  EXPECT_EQ(ResError(), addResFailed);
  DisposeHandle(block);
  EXPECT_EQ(MemError(), noErr);
}

TEST_F(ResourceChanges, ThatAddAreWrittenOneByOne) {
  AddResource(blockOf("nine"), 'TEXT', 9, nullptr);
  Handle ten = blockOf("ten");
  AddResource(ten, 'TEXT', 10, nullptr);
  WriteResource(ten);
  EXPECT_EQ(onDisk("file"),
            (Lines{"TEXT 1 First 0 one", "TEXT 2  8 two", "TEXT 10  0 ten", "DATA 1  32 data"}));
  CloseResFile(file);
  EXPECT_EQ(onDisk("file").size(), 5U);
}

TEST_F(ResourceChanges, ThatAddAreUndoneByDisposingOfTheBlock) {
  Handle block = blockOf("new");
  AddResource(block, 'TEXT', 9, nullptr);
  DisposeHandle(block);
  EXPECT_EQ(Get1Resource('TEXT', 9), nullptr);
  EXPECT_EQ(Count1Resources('TEXT'), 2);
}

TEST_F(ResourceChanges, RemoveResources) {
  Handle resource = Get1Resource('TEXT', 1);
  RemoveResource(resource);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(HGetState(resource), 0);
  EXPECT_EQ(Get1Resource('TEXT', 1), nullptr);
  UpdateResFile(file);
  EXPECT_EQ(onDisk("file"), (Lines{"TEXT 2  8 two", "DATA 1  32 data"}));
  EXPECT_EQ(textOf(resource), "one");
  DisposeHandle(resource);
}

TEST_F(ResourceChanges, RemoveTheLastResource) {
  SetResAttrs(Get1Resource('TEXT', 2), 0);
  for (auto [type, id] : {std::pair{'TEXT', 1}, {'TEXT', 2}, {'DATA', 1}}) {
    Handle resource = Get1Resource(static_cast<ResType>(type), static_cast<ResID>(id));
    RemoveResource(resource);
    DisposeHandle(resource);
  }
  CloseResFile(file);
  EXPECT_EQ(onDisk("file"), Lines{});
}

TEST_F(ResourceChanges, RemoveFromTheCurrentFileOnly) {
  Handle resource = Get1Resource('TEXT', 1);
  openNew("other", Contents{});
  RemoveResource(resource);
  EXPECT_EQ(ResError(), rmvResFailed);
  Handle plain = NewHandle(1);
  for (Handle other : {plain, Handle{nullptr}}) {
    RemoveResource(other);
    EXPECT_EQ(ResError(), rmvResFailed);
  }
  DisposeHandle(plain);
}

TEST_F(ResourceChanges, OfOtherHandlesAreRefused) {
  Handle plain = NewHandle(1);
  for (Handle other : {plain, Handle{nullptr}}) {
    ChangedResource(other);
    EXPECT_EQ(ResError(), resNotFound);
    SetResInfo(other, 1, nullptr);
    EXPECT_EQ(ResError(), resNotFound);
    SetResAttrs(other, 0);
    EXPECT_EQ(ResError(), resNotFound);
    WriteResource(other);
    EXPECT_EQ(ResError(), resNotFound);
  }
  DisposeHandle(plain);
}

TEST_F(ResourceChanges, OfFilesThatAreNotOpenAreRefused) {
  UpdateResFile(999);
  EXPECT_EQ(ResError(), resFNotFound);
  EXPECT_EQ(GetResFileAttrs(999), 0);
  EXPECT_EQ(ResError(), resFNotFound);
  SetResFileAttrs(999, 0);
  EXPECT_EQ(ResError(), resFNotFound);
  UpdateResFile(kSystemResFile);
  EXPECT_EQ(ResError(), noErr);
}

TEST_F(ResourceChanges, HaveIDsThatNobodyUses) {
  EXPECT_EQ(UniqueID('TEXT'), 128);
  AddResource(blockOf("new"), 'TEXT', 128, nullptr);
  EXPECT_EQ(Unique1ID('TEXT'), 129);
  openNew("other", {{'TEXT', 129, 0, "", {}}});
  EXPECT_EQ(Unique1ID('TEXT'), 128);
  EXPECT_EQ(UniqueID('TEXT'), 130);
  EXPECT_EQ(UniqueID('NONE'), 128);
  EXPECT_EQ(ResError(), noErr);
}

TEST_F(ResourceChanges, RunOutOfIDs) {
  Contents all;
  for (int id = 128; id <= std::numeric_limits<ResID>::max(); ++id) {
    if (id == 20000) continue;
    all.push_back({'FULL', static_cast<ResID>(id), 0, "", {}});
  }
  // A file has no room for that many: two have.
  const auto half = static_cast<std::ptrdiff_t>(all.size() / 8);
  for (std::ptrdiff_t start = 0; start < static_cast<std::ptrdiff_t>(all.size()); start += half) {
    const auto stop = std::min(start + half, static_cast<std::ptrdiff_t>(all.size()));
    openNew("part" + std::to_string(start), {all.begin() + start, all.begin() + stop});
    ASSERT_EQ(ResError(), noErr);
  }
  EXPECT_EQ(UniqueID('FULL'), 20000);
  openNew("last", {{'FULL', 20000, 0, "", {}}});
  EXPECT_EQ(UniqueID('FULL'), 0);
  EXPECT_EQ(ResError(), resNotFound);
}

TEST_F(ResourceChanges, OfTheMapAreWrittenWhenAskedFor) {
  EXPECT_EQ(GetResFileAttrs(file), 0);
  const ByteVector before = bytesIn("file");
  SetResInfo(Get1Resource('TEXT', 1), 5, nullptr);
  UpdateResFile(file);
  EXPECT_EQ(bytesIn("file"), before);  // nobody said that it was changed
  SetResFileAttrs(file, mapChanged | mapCompact);
  UpdateResFile(file);
  EXPECT_EQ(onDisk("file").front(), "TEXT 5 First 0 one");
  EXPECT_EQ(GetResFileAttrs(file), mapCompact);
  CloseResFile(file);
  EXPECT_EQ(GetResFileAttrs(open("file")), mapCompact);
}

TEST_F(ResourceChanges, OfAReadOnlyFileStayInMemory) {
  CloseResFile(file);
  const ByteVector before = bytesIn("file");
  file = open("file", fsRdPerm);
  Handle resource = change('TEXT', 1, "changed");
  EXPECT_EQ(ResError(), noErr);
  WriteResource(resource);
  EXPECT_EQ(ResError(), wrPermErr);
  SetResFileAttrs(file, 0);
  EXPECT_EQ(GetResFileAttrs(file), mapReadOnly);
  UpdateResFile(file);
  EXPECT_EQ(ResError(), wrPermErr);
  EXPECT_EQ(textOf(Get1Resource('TEXT', 1)), "changed");
  CloseResFile(file);
  EXPECT_EQ(ResError(), wrPermErr);
  EXPECT_EQ(CurResFile(), bottom);
  EXPECT_EQ(bytesIn("file"), before);
}

TEST_F(ResourceChanges, OfAMapThatSaysReadOnlyAreNotWritten) {
  SetResFileAttrs(file, mapReadOnly);
  change('TEXT', 1, "changed");
  UpdateResFile(file);
  EXPECT_EQ(ResError(), wrPermErr);
  SetResFileAttrs(file, 0);
  UpdateResFile(file);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(onDisk("file").front(), "TEXT 1 First 0 changed");
}

}  // namespace
