// Licence: MIT, see LICENSE.
#include <quorvant/util/WithComponentResFile.h>

#include "tests/util/ResourceFiles.h"

namespace {

using namespace tests;

static_assert(sizeof(WithComponentResFile) == 12);
static_assert(offsetof(WithComponentResFile, saved) == 0);
static_assert(offsetof(WithComponentResFile, opened) == 2);
static_assert(offsetof(WithComponentResFile, status) == 4);
static_assert(offsetof(WithComponentResFile, changed) == 8);

/// A component whose file is closed.
class ComponentResFile : public ResourceFilesFixture {
 protected:
  ComponentResFile() {
    const SInt16 file = makeFile("component");
    std::string thing(44, '\0');
    thing.replace(0, 4, "vdig");
    add('thng', 128, thing);
    add('TEXT', 1, "text of the component");
    UpdateResFile(file);
    EXPECT_EQ(RegisterComponentResourceFile(file, 0), 1);
    CloseResFile(file);
    component = FindNextComponent(nullptr, nullptr);
  }
  ~ComponentResFile() override { UnregisterComponent(component); }

  SInt16 openByHand() const {
    const FSSpec spec = specOf("component");
    return FSpOpenResFile(&spec, fsRdPerm);
  }

  Component component = nullptr;
};

TEST_F(ComponentResFile, IsCurrentForItsScope) {
  const WithComponentResFile file(component);
  EXPECT_EQ(file.status, noErr);
  EXPECT_EQ(file.saved, bottom);
  EXPECT_EQ(file.changed, 1U);
  EXPECT_EQ(CurResFile(), file.opened);
  EXPECT_NE(Get1Resource('TEXT', 1), nullptr);
}

TEST_F(ComponentResFile, ThatBecameCurrentByBeingOpenedStaysOpen) {
  SInt16 opened = kResFileNotOpened;
  {
    const WithComponentResFile file(component);
    opened = file.opened;
  }
  EXPECT_TRUE(isOpen(opened));
  EXPECT_EQ(CurResFile(), opened);
}

TEST_F(ComponentResFile, ThatLeftTheCurrentFileIsClosed) {
  const SInt16 before = openByHand();
  const SInt16 other = makeFile("other");
  {
    const WithComponentResFile file(component);
    EXPECT_EQ(file.changed, 0U);
    EXPECT_EQ(file.saved, other);
    EXPECT_EQ(file.opened, before);
    EXPECT_EQ(CurResFile(), before);
  }
  EXPECT_FALSE(isOpen(before));
  EXPECT_EQ(CurResFile(), bottom);  // the one below the closed file, not the saved one
  UseResFile(other);
}

TEST_F(ComponentResFile, LeavesTheFileThatIsCurrentAtTheEnd) {
  const SInt16 before = openByHand();
  const SInt16 first = makeFile("first");
  const SInt16 second = makeFile("second");
  UseResFile(first);
  {
    const WithComponentResFile file(component);
    EXPECT_EQ(file.saved, first);
    UseResFile(second);
  }
  EXPECT_FALSE(isOpen(before));
  EXPECT_EQ(CurResFile(), second);
}

TEST_F(ComponentResFile, ThatWasChangedToLeavesTheFileOfTheEndToo) {
  const SInt16 first = makeFile("first");
  SInt16 opened = kResFileNotOpened;
  {
    const WithComponentResFile file(component);
    opened = file.opened;
    EXPECT_EQ(file.changed, 1U);
    UseResFile(first);
  }
  EXPECT_TRUE(isOpen(opened));
  EXPECT_EQ(CurResFile(), first);
  UseResFile(opened);
}

TEST_F(ComponentResFile, OfNoComponentDoesNothing) {
  const SInt16 other = makeFile("other");
  {
    const WithComponentResFile file(nullptr);
    EXPECT_EQ(file.status, invalidComponentID);
    EXPECT_EQ(file.opened, -1);
    EXPECT_EQ(file.saved, other);
    EXPECT_EQ(file.changed, 0U);
    EXPECT_EQ(CurResFile(), other);
  }
  EXPECT_EQ(CurResFile(), other);
}

TEST_F(ComponentResFile, ThatIsMissingSaysSo) {
  std::filesystem::remove(top / "component");
  const WithComponentResFile file(component);
  EXPECT_EQ(file.status, fnfErr);
  EXPECT_EQ(file.opened, -1);
  EXPECT_EQ(CurResFile(), bottom);
}

}  // namespace
