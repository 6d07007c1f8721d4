// Licence: MIT, see LICENSE.
#include <CarbonCore/Components.h>
#include <CarbonCore/MacErrors.h>
#include <gtest/gtest.h>

#include "platform/components/ComponentRegistry.h"
#include "platform/resources/ByteBuffer.h"
#include "platform/resources/ResourceFiles.h"
#include "platform/resources/ResourceWriter.h"
#include "tests/platform/resources/SampleFile.h"
#include "tests/support/PrivateRoot.h"

namespace {

using namespace platform::components;
using platform::resources::ByteBuffer;
using platform::resources::ResourceContents;

tests::ByteVector thing(const ComponentDescription& description) {
  ByteBuffer data;
  data.put(description.componentType, 4);
  data.put(description.componentSubType, 4);
  data.put(description.componentManufacturer, 4);
  data.put(description.componentFlags, 4);
  data.put(description.componentFlagsMask, 4);
  data.zeros(24);
  return data.take();
}

constexpr ComponentDescription kDigitizer = {'vdig', 'Web1', 'Qrlp', 0x00000005, 0};
constexpr ComponentDescription kSecond = {'vdig', 'Web2', 'Qrlp', 0x00000004, 0};

/// A file with two digitizers and something too short to be one.
class Components : public testing::Test {
 protected:
  Components() {
    bottom = CurResFile();
    path = root.path() / "component";
    tests::writeFile(path, *platform::resources::writeResourceFile(
                               {{'thng', 128, 0, "", thing(kDigitizer)},
                                {'thng', 129, 0, "", tests::bytesOf("short")},
                                {'thng', 130, 0, "", thing(kSecond)},
                                {'TEXT', 1, 0, "", tests::bytesOf("text of the component")}}));
    EXPECT_EQ(platform::resources::openResourceFile(path, file), noErr);
    EXPECT_EQ(RegisterComponentResourceFile(file, 0), 2);
    first = FindNextComponent(nullptr, nullptr);
    second = FindNextComponent(first, nullptr);
    CloseResFile(file);
  }
  ~Components() override {
    while (Component left = FindNextComponent(nullptr, nullptr)) UnregisterComponent(left);
    EXPECT_EQ(CurResFile(), bottom);
  }

  tests::PrivateRoot root;
  std::string path;
  SInt16 file = kResFileNotOpened;
  SInt16 bottom = 0;
  Component first = nullptr;
  Component second = nullptr;
};

TEST_F(Components, AreRegisteredInTheOrderOfTheirFile) {
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(first, second);
  EXPECT_EQ(FindNextComponent(second, nullptr), nullptr);
  EXPECT_EQ(CountComponents(nullptr), 2);
}

TEST_F(Components, AreLookedForByWhatTheyAre) {
  ComponentDescription looking = {'vdig', 0, 0, 0, 0};
  EXPECT_EQ(CountComponents(&looking), 2);
  EXPECT_EQ(FindNextComponent(nullptr, &looking), first);
  EXPECT_EQ(FindNextComponent(first, &looking), second);
  looking.componentSubType = 'Web2';
  EXPECT_EQ(FindNextComponent(nullptr, &looking), second);
  looking.componentManufacturer = 'othr';
  EXPECT_EQ(FindNextComponent(nullptr, &looking), nullptr);
  EXPECT_EQ(CountComponents(&looking), 0);
}

TEST_F(Components, AreLookedForByTheFlagsThatMatter) {
  ComponentDescription looking = {0, 0, 0, 0x00000001, 0x00000001};
  EXPECT_EQ(FindNextComponent(nullptr, &looking), first);
  EXPECT_EQ(FindNextComponent(first, &looking), nullptr);
  looking.componentFlags = 0;
  EXPECT_EQ(FindNextComponent(nullptr, &looking), second);
  looking.componentFlagsMask = 0;
  EXPECT_EQ(CountComponents(&looking), 2);
}

TEST_F(Components, MayBeUnregisteredOnce) {
  EXPECT_EQ(UnregisterComponent(first), noErr);
  EXPECT_EQ(UnregisterComponent(first), invalidComponentID);
  EXPECT_EQ(UnregisterComponent(nullptr), invalidComponentID);
  EXPECT_EQ(FindNextComponent(first, nullptr), second);  // the search starts anew
  EXPECT_EQ(CountComponents(nullptr), 1);
}

TEST_F(Components, AreNotRegisteredFromAFileThatIsNotOpen) {
  EXPECT_EQ(RegisterComponentResourceFile(999, 0), resFNotFound);
  EXPECT_EQ(RegisterComponentResourceFile(kSystemResFile, 0), resFNotFound);
  EXPECT_EQ(CountComponents(nullptr), 2);
}

TEST_F(Components, GiveTheirResourceFile) {
  SInt16 opened = 77;
  EXPECT_EQ(OpenAComponentResFile(first, &opened), noErr);
  EXPECT_EQ(CurResFile(), opened);
  EXPECT_NE(Get1Resource('TEXT', 1), nullptr);
  EXPECT_EQ(CloseComponentResFile(opened), noErr);
  EXPECT_EQ(CurResFile(), bottom);
  EXPECT_EQ(CloseComponentResFile(opened), resFNotFound);
}

TEST_F(Components, ShareAFileThatIsOpenAlready) {
  SInt16 opened = kResFileNotOpened;
  SInt16 again = kResFileNotOpened;
  ASSERT_EQ(OpenAComponentResFile(first, &opened), noErr);
  UseResFile(bottom);
  EXPECT_EQ(OpenAComponentResFile(second, &again), noErr);
  EXPECT_EQ(again, opened);
  EXPECT_EQ(CurResFile(), bottom);
  EXPECT_EQ(CloseComponentResFile(opened), noErr);  // opened twice, closed once
  EXPECT_EQ(CloseComponentResFile(again), resFNotFound);
}

TEST_F(Components, WhoseFileCannotBeOpenedSayWhy) {
  SInt16 opened = 77;
  EXPECT_EQ(OpenAComponentResFile(nullptr, &opened), invalidComponentID);
  EXPECT_EQ(opened, kResFileNotOpened);
  EXPECT_EQ(OpenAComponentResFile(first, nullptr), paramErr);
  tests::writeFile(path, tests::bytesOf("damaged"));
  EXPECT_EQ(OpenAComponentResFile(first, &opened), mapReadErr);
  std::filesystem::remove(path);
  EXPECT_EQ(OpenAComponentResFile(first, &opened), fnfErr);
  EXPECT_EQ(opened, kResFileNotOpened);
}

TEST_F(Components, OfTheSystemsFileCannotBeClosed) {
  EXPECT_EQ(CloseComponentResFile(kSystemResFile), resFNotFound);
  EXPECT_EQ(CloseComponentResFile(kResFileNotOpened), resFNotFound);
}

TEST(ComponentResource, IsReadWholeOrNotAtAll) {
  const auto data = thing(kDigitizer);
  const auto description = parseComponent(data);
  ASSERT_TRUE(description);
  EXPECT_EQ(description->componentType, OSType{'vdig'});
  EXPECT_EQ(description->componentSubType, OSType{'Web1'});
  EXPECT_EQ(description->componentManufacturer, OSType{'Qrlp'});
  EXPECT_EQ(description->componentFlags, 5U);
  for (std::size_t size = 0; size < data.size(); ++size) {
    EXPECT_FALSE(parseComponent(std::span(data).first(size))) << size;
  }
}

}  // namespace
