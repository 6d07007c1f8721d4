// Licence: MIT, see LICENSE.
#include <CarbonCore/MacErrors.h>
#include <CarbonCore/MacMemory.h>
#include <CarbonCore/Resources.h>
#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "platform/resources/ResourceFiles.h"
#include "platform/resources/ResourceWriter.h"
#include "tests/platform/resources/SampleFile.h"
#include "tests/support/PrivateRoot.h"

namespace {

using namespace platform::resources;
using tests::bytesOf;
using tests::ByteVector;

std::string contentsOf(Handle handle) {
  return {*handle, static_cast<std::size_t>(GetHandleSize(handle))};
}

/// Two files: `lower` was opened first, so that `upper` is searched first.
class Resources : public testing::Test {
 protected:
  Resources() {
    bottom = CurResFile();
    lower = open("lower", {{'TEXT', 1, 0, "Shared", bytesOf("lower 1")},
                           {'TEXT', 2, resPurgeable, "Second", bytesOf("lower 2")},
                           {'ONLY', 5, resLocked, "", bytesOf("low")}});
    upper = open("upper", {{'TEXT', 1, 0, "shared", bytesOf("upper 1")},
                           {'PRE ', 7, resPreload, "", bytesOf("early")},
                           {'PRE ', 8, 0, "", {}}});
  }
  ~Resources() override {
    SetResLoad(true);
    CloseResFile(upper);
    CloseResFile(lower);
  }

  SInt16 open(const std::string& name, const std::vector<ResourceContents>& resources) {
    const std::string path = root.path() / name;
    tests::writeFile(path, *writeResourceFile(resources));
    SInt16 file = kResFileNotOpened;
    EXPECT_EQ(openResourceFile(path, file), noErr);
    return file;
  }

  tests::PrivateRoot root;
  SInt16 bottom, lower, upper;
};

TEST_F(Resources, OpenedFileIsTheCurrentOne) {
  EXPECT_EQ(CurResFile(), upper);
  EXPECT_NE(lower, upper);
  EXPECT_EQ(ResError(), noErr);
}

TEST_F(Resources, AreSearchedFromTheCurrentFileDown) {
  EXPECT_EQ(contentsOf(GetResource('TEXT', 1)), "upper 1");
  EXPECT_EQ(contentsOf(GetResource('TEXT', 2)), "lower 2");
  UseResFile(lower);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(contentsOf(GetResource('TEXT', 1)), "lower 1");
  EXPECT_EQ(GetResource('PRE ', 7), nullptr);
  EXPECT_EQ(ResError(), noErr);  // no such type from there on
}

TEST_F(Resources, OfOneFileAreSearchedThereOnly) {
  EXPECT_EQ(contentsOf(Get1Resource('TEXT', 1)), "upper 1");
  EXPECT_EQ(Get1Resource('TEXT', 2), nullptr);
  EXPECT_EQ(ResError(), resNotFound);
  EXPECT_EQ(Get1Resource('ONLY', 5), nullptr);
  EXPECT_EQ(ResError(), noErr);
}

TEST_F(Resources, ThatAreMissingAreToldFromMissingTypes) {
  EXPECT_EQ(GetResource('TEXT', 99), nullptr);
  EXPECT_EQ(ResError(), resNotFound);
  EXPECT_EQ(GetResource('NONE', 1), nullptr);
  EXPECT_EQ(ResError(), noErr);
}

TEST_F(Resources, AreOneHandleHoweverOftenTheyAreGot) {
  Handle first = GetResource('TEXT', 1);
  EXPECT_EQ(GetResource('TEXT', 1), first);
  EXPECT_EQ(Get1NamedResource('TEXT', reinterpret_cast<ConstStr255Param>("\6shared")), first);
}

TEST_F(Resources, AreFoundByNameWhateverTheCase) {
  auto named = [](const char* pascal) { return reinterpret_cast<ConstStr255Param>(pascal); };
  EXPECT_EQ(contentsOf(GetNamedResource('TEXT', named("\6SHARED"))), "upper 1");
  EXPECT_EQ(contentsOf(GetNamedResource('TEXT', named("\6second"))), "lower 2");
  EXPECT_EQ(Get1NamedResource('TEXT', named("\6second")), nullptr);
  EXPECT_EQ(ResError(), resNotFound);
  EXPECT_EQ(GetNamedResource('PRE ', named("\0")), nullptr);  // unnamed ones have no name
  EXPECT_EQ(ResError(), resNotFound);
  EXPECT_EQ(GetNamedResource('PRE ', nullptr), nullptr);
}

TEST_F(Resources, AreCountedInAllFilesWhicheverIsCurrent) {
  UseResFile(lower);
  EXPECT_EQ(CountResources('TEXT'), 3);
  EXPECT_EQ(Count1Resources('TEXT'), 2);
  EXPECT_EQ(CountResources('NONE'), 0);
  EXPECT_EQ(ResError(), noErr);
  UseResFile(upper);
  EXPECT_EQ(Count1Resources('TEXT'), 1);
}

TEST_F(Resources, AreNumberedFromTheLastOpenedFileDown) {
  UseResFile(lower);
  const char* const expected[] = {"upper 1", "lower 1", "lower 2"};
  for (SInt16 index = 1; index <= 3; ++index) {
    EXPECT_EQ(contentsOf(GetIndResource('TEXT', index)), expected[index - 1]);
  }
  EXPECT_EQ(contentsOf(Get1IndResource('TEXT', 2)), "lower 2");
}

TEST_F(Resources, HaveNoNumberOutOfTheirRange) {
  for (SInt16 index : {-1, 0, 4}) {
    EXPECT_EQ(GetIndResource('TEXT', index), nullptr);
    EXPECT_EQ(ResError(), resNotFound) << index;
  }
  EXPECT_EQ(GetIndResource('NONE', 1), nullptr);
  EXPECT_EQ(ResError(), resNotFound);
  EXPECT_EQ(Get1IndResource('TEXT', 2), nullptr);
  EXPECT_EQ(ResError(), resNotFound);
}

TEST_F(Resources, TellTheirTypes) {
  EXPECT_EQ(CountTypes(), 3);
  EXPECT_EQ(Count1Types(), 2);
  const ResType expected[] = {'TEXT', 'PRE ', 'ONLY', 0};
  for (SInt16 index = 1; index <= 4; ++index) {
    ResType type = 'junk';
    GetIndType(&type, index);
    EXPECT_EQ(type, expected[index - 1]);
    EXPECT_EQ(ResError(), noErr);
  }
  ResType type = 'junk';
  Get1IndType(&type, 2);
  EXPECT_EQ(type, ResType{'PRE '});
  Get1IndType(&type, 0);
  EXPECT_EQ(type, ResType{0});
}

TEST_F(Resources, TellTheirIDTypeAndName) {
  ResID id = 0;
  ResType type = 0;
  Str255 name;
  GetResInfo(GetResource('TEXT', 2), &id, &type, name);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(id, 2);
  EXPECT_EQ(type, ResType{'TEXT'});
  EXPECT_EQ(std::memcmp(name, "\6Second", 7), 0);
  GetResInfo(GetResource('PRE ', 7), nullptr, nullptr, name);
  EXPECT_EQ(name[0], 0);
}

TEST_F(Resources, TellAttributesSizeAndHome) {
  Handle resource = GetResource('TEXT', 2);
  EXPECT_EQ(GetResAttrs(resource), resPurgeable);
  EXPECT_EQ(GetResourceSizeOnDisk(resource), 7);
  EXPECT_EQ(HomeResFile(resource), lower);
  EXPECT_EQ(HomeResFile(GetResource('TEXT', 1)), upper);
}

TEST_F(Resources, HaveTheStateThatTheirAttributesSay) {
  EXPECT_EQ(static_cast<UInt8>(HGetState(GetResource('TEXT', 1))), kHandleIsResourceMask);
  EXPECT_EQ(static_cast<UInt8>(HGetState(GetResource('TEXT', 2))),
            kHandleIsResourceMask | kHandlePurgeableMask);
  EXPECT_EQ(static_cast<UInt8>(HGetState(GetResource('ONLY', 5))),
            kHandleIsResourceMask | kHandleLockedMask);
}

TEST_F(Resources, AreNotLoadedWhileThatIsOff) {
  SetResLoad(false);
  Handle early = GetResource('PRE ', 7);
  EXPECT_EQ(contentsOf(early), "early");  // was loaded with its file
  Handle resource = GetResource('TEXT', 1);
  ASSERT_NE(resource, nullptr);
  EXPECT_EQ(*resource, nullptr);
  EXPECT_EQ(GetResourceSizeOnDisk(resource), 7);
  LoadResource(resource);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(contentsOf(resource), "upper 1");
  EXPECT_EQ(GetResource('TEXT', 1), resource);
}

TEST_F(Resources, AreLoadedAgainWhenTheyWereEmptied) {
  Handle resource = GetResource('TEXT', 2);
  EmptyHandle(resource);
  EXPECT_EQ(*resource, nullptr);
  EXPECT_EQ(GetResource('TEXT', 2), resource);
  EXPECT_EQ(contentsOf(resource), "lower 2");
  (*resource)[0] = 'L';
  LoadResource(resource);  // it is in memory: as it is
  EXPECT_EQ(contentsOf(resource), "Lower 2");
}

TEST_F(Resources, MayBeEmpty) {
  Handle resource = GetResource('PRE ', 8);
  ASSERT_NE(resource, nullptr);
  EXPECT_NE(*resource, nullptr);
  EXPECT_EQ(GetHandleSize(resource), 0);
  EXPECT_EQ(GetResourceSizeOnDisk(resource), 0);
}

TEST_F(Resources, AreReleased) {
  Handle resource = GetResource('TEXT', 1);
  (*resource)[0] = 'U';
  ReleaseResource(resource);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(HomeResFile(resource), kResFileNotOpened);
  EXPECT_EQ(ResError(), resNotFound);
  EXPECT_EQ(contentsOf(GetResource('TEXT', 1)), "upper 1");
}

TEST_F(Resources, BecomeTheCallersWhenDetached) {
  Handle mine = GetResource('TEXT', 1);
  DetachResource(mine);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(HGetState(mine), 0);
  Handle another = GetResource('TEXT', 1);
  EXPECT_NE(another, mine);
  CloseResFile(upper);
  EXPECT_EQ(contentsOf(mine), "upper 1");
  DisposeHandle(mine);
}

TEST_F(Resources, ThatSomebodyDisposedOfAreLoadedAfresh) {
  Handle resource = GetResource('TEXT', 1);
  DisposeHandle(resource);
  EXPECT_EQ(contentsOf(GetResource('TEXT', 1)), "upper 1");
}

TEST_F(Resources, AreFreedWithTheirFile) {
  Handle resource = GetResource('TEXT', 1);
  CloseResFile(upper);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(GetHandleSize(resource), 0);
  EXPECT_EQ(MemError(), memWZErr);
  EXPECT_EQ(CurResFile(), lower);
  EXPECT_EQ(contentsOf(GetResource('TEXT', 1)), "lower 1");
}

TEST_F(Resources, OfAClosedFileBelowLeaveTheCurrentFileAlone) {
  CloseResFile(lower);
  EXPECT_EQ(CurResFile(), upper);
  EXPECT_EQ(CountResources('TEXT'), 1);
  CloseResFile(upper);
  EXPECT_EQ(CurResFile(), bottom);
}

TEST_F(Resources, OfTheSystemAreNoneAndStay) {
  CloseResFile(kSystemResFile);
  EXPECT_EQ(ResError(), noErr);
  UseResFile(kSystemResFile);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(CurResFile(), kSystemResFile);
  EXPECT_EQ(GetResource('TEXT', 1), nullptr);
  EXPECT_EQ(Count1Resources('TEXT'), 0);
  EXPECT_EQ(Count1Types(), 0);
  EXPECT_EQ(CountResources('TEXT'), 3);
}

TEST_F(Resources, OfFilesThatAreNotOpenAreRefused) {
  for (SInt16 file : {SInt16{kResFileNotOpened}, SInt16{9999}}) {
    UseResFile(file);
    EXPECT_EQ(ResError(), resFNotFound);
    CloseResFile(file);
    EXPECT_EQ(ResError(), resFNotFound);
  }
  EXPECT_EQ(CurResFile(), upper);
}

TEST_F(Resources, AreToldFromOtherHandles) {
  Handle plain = NewHandle(4);
  for (Handle handle : {plain, Handle{nullptr}}) {
    ResID id = 77;
    GetResInfo(handle, &id, nullptr, nullptr);
    EXPECT_EQ(ResError(), resNotFound);
    EXPECT_EQ(id, 77);
    EXPECT_EQ(GetResAttrs(handle), 0);
    EXPECT_EQ(ResError(), resNotFound);
    EXPECT_EQ(GetResourceSizeOnDisk(handle), -1);
    EXPECT_EQ(ResError(), resNotFound);
    for (auto call : {LoadResource, ReleaseResource, DetachResource}) {
      SetResLoad(true);  // sets noErr
      call(handle);
      EXPECT_EQ(ResError(), resNotFound);
    }
  }
  EXPECT_EQ(GetHandleSize(plain), 4);
  DisposeHandle(plain);
}

TEST_F(Resources, KeepTheirErrorForEachThread) {
  GetResource('TEXT', 99);
  std::thread([] { EXPECT_EQ(ResError(), noErr); }).join();
  EXPECT_EQ(ResError(), resNotFound);
}

TEST_F(Resources, ThatSayTheyWereChangedWereNot) {
  SInt16 file = open("changed", {{'CHNG', 1, resChanged | resPurgeable, "", {}}});
  EXPECT_EQ(GetResAttrs(GetResource('CHNG', 1)), resPurgeable);
  CloseResFile(file);
}

TEST_F(Resources, OfABadFileAreNotOpened) {
  SInt16 file = 99;
  tests::writeFile(root.path() / "bad", bytesOf("no resources here"));
  EXPECT_EQ(openResourceFile(root.path() / "bad", file), mapReadErr);
  EXPECT_EQ(openResourceFile(root.path() / "missing", file), fnfErr);
  EXPECT_EQ(file, 99);
  EXPECT_EQ(CurResFile(), upper);
}

TEST_F(Resources, MayBeGotOnManyThreads) {
  auto getAndRelease = [this] {
    for (int i = 0; i < 200; ++i) {
      SInt16 file = kResFileNotOpened;
      ASSERT_EQ(openResourceFile(root.path() / "upper", file), noErr);
      EXPECT_EQ(CountResources('TEXT') >= 4, true);
      CloseResFile(file);
    }
  };
  std::thread other(getAndRelease);
  getAndRelease();
  other.join();
  EXPECT_EQ(CountResources('TEXT'), 3);
}

}  // namespace
