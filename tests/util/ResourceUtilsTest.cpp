// Licence: MIT, see LICENSE.
#include <quorvant/util/ResourceUtils.h>

#include <array>

#include "tests/support/AllocationFailures.h"
#include "tests/util/ResourceFiles.h"

namespace {

using namespace tests;
using namespace std::string_literals;

/// The current file has a text and strings, the one below it another text.
class ResourceReading : public ResourceFilesFixture {
 protected:
  ResourceReading() {
    makeFile("lower");
    add('TEXT', 2, "lower");
    const SInt16 file = makeFile("upper");
    add('TEXT', 1, "twelve bytes");
    add('TEXT', 3, "");
    add('STR ', 1, "\5Hello");
    add('STR ', 2, "\0"s);
    add('STR ', 3, "\x0Ashort");  // says ten, has five
    add('STR ', 4, "");
    add('STR ', 5, "\xFF" + std::string(255, 's'));
    UpdateResFile(file);
    EXPECT_EQ(ResError(), noErr);
  }
};

TEST_F(ResourceReading, FindsAResourceOrSaysThatThereIsNone) {
  Handle h = nullptr;
  EXPECT_EQ(NFGetResource('TEXT', 2, h), noErr);
  EXPECT_EQ(std::string(*h, 5), "lower");
  EXPECT_EQ(NFGet1Resource('TEXT', 1, h), noErr);
  EXPECT_EQ(GetHandleSize(h), 12);
  EXPECT_EQ(NFGet1Resource('TEXT', 2, h), resNotFound);
  EXPECT_EQ(h, nullptr);
}

TEST_F(ResourceReading, SaysNotFoundWhereTheManagerSaysNothing) {
  Handle h = NewHandle(1);
  Handle kept = h;
  EXPECT_EQ(NFGetResource('NONE', 1, h), resNotFound);
  EXPECT_EQ(ResError(), noErr);
  EXPECT_EQ(h, nullptr);
  EXPECT_EQ(NFGet1Resource('NONE', 1, h), resNotFound);
  DisposeHandle(kept);
}

TEST_F(ResourceReading, LoadsWhatWasPurged) {
  Handle h = nullptr;
  ASSERT_EQ(NFGet1Resource('TEXT', 1, h), noErr);
  EmptyHandle(h);
  SetResLoad(false);
  Handle again = nullptr;
  EXPECT_EQ(NFGet1Resource('TEXT', 1, again), noErr);
  SetResLoad(true);
  EXPECT_EQ(again, h);
  ASSERT_NE(*h, nullptr);
  EXPECT_EQ(std::string(*h, 12), "twelve bytes");
}

TEST_F(ResourceReading, SaysWhenThereIsNoMemoryToLoadIt) {
  Handle h = nullptr;
  ASSERT_EQ(NFGet1Resource('TEXT', 1, h), noErr);
  for (auto read : {NFGetResource, NFGet1Resource}) {
    EmptyHandle(h);
    const AllocationFailure failure(1, platform::memory::FailureRun::kAllFollowing);
    EXPECT_EQ(read('TEXT', 1, h), memFullErr);
  }
}

struct ResourceCopyRow {
  const char* what;
  ResID id;
  SInt32 size;
  OSErr result;
  SInt32 reported;
  std::string buffer;  // of 16 bytes that were "################"
};

class ResourceCopies : public ResourceReading,
                       public testing::WithParamInterface<ResourceCopyRow> {};

TEST_P(ResourceCopies, FillTheBuffer) {
  const ResourceCopyRow& row = GetParam();
  std::string buffer(16, '#');
  SInt32 size = 77;
  EXPECT_EQ(NFCopy1Resource('TEXT', row.id, buffer.data(), row.size, &size), row.result);
  EXPECT_EQ(size, row.reported);
  EXPECT_EQ(buffer, row.buffer);
  EXPECT_EQ(NFCopy1Resource('TEXT', row.id, buffer.data(), row.size, nullptr), row.result);
}

INSTANTIATE_TEST_SUITE_P(
    All, ResourceCopies,
    testing::Values(ResourceCopyRow{"Exact", 1, 12, noErr, 12, "twelve bytes####"},
                    ResourceCopyRow{"Larger", 1, 15, noErr, 12, "twelve bytes\0\0\0#"s},
                    ResourceCopyRow{"Smaller", 1, 6, noErr, 12, "twelve##########"},
                    ResourceCopyRow{"One", 1, 1, noErr, 12, "t###############"},
                    ResourceCopyRow{"NoRoom", 1, 0, noErr, 12, "################"},
                    ResourceCopyRow{"NegativeRoom", 1, -5, noErr, 12, "################"},
                    ResourceCopyRow{"Empty", 3, 3, noErr, 0, "\0\0\0#############"s},
                    ResourceCopyRow{"OfAnotherFile", 2, 4, resNotFound, 0, "\0\0\0\0############"s},
                    ResourceCopyRow{"Missing", 99, 16, resNotFound, 0, std::string(16, '\0')}),
    [](const auto& row) { return row.param.what; });

TEST_F(ResourceReading, TellsTheSizeAlone) {
  SInt32 size = 77;
  EXPECT_EQ(NFCopy1Resource('TEXT', 1, nullptr, 100, &size), noErr);
  EXPECT_EQ(size, 12);
  EXPECT_EQ(NFCopy1Resource('NONE', 1, nullptr, 100, &size), resNotFound);
  EXPECT_EQ(size, 0);
}

struct StringRow {
  const char* what;
  ResID id;
  SInt32 size;
  const char* fallback;  // a Pascal string or null
  OSErr result;
  std::string buffer;  // of 16 bytes that were "################"
};

class StringCopies : public ResourceReading, public testing::WithParamInterface<StringRow> {};

TEST_P(StringCopies, FillTheBuffer) {
  const StringRow& row = GetParam();
  std::string buffer(16, '#');
  EXPECT_EQ(NFCopy1StringResource('STR ', row.id, reinterpret_cast<unsigned char*>(buffer.data()),
                                  row.size, reinterpret_cast<const unsigned char*>(row.fallback)),
            row.result);
  EXPECT_EQ(buffer, row.buffer);
}

INSTANTIATE_TEST_SUITE_P(
    All, StringCopies,
    testing::Values(
        StringRow{"Whole", 1, 16, nullptr, noErr, "\5Hello##########"},
        StringRow{"Exact", 1, 6, "\2no", noErr, "\5Hello##########"},
        StringRow{"Cut", 1, 5, "\2no", writingPastEnd, "\4Hell###########"},
        StringRow{"LengthOnly", 1, 1, nullptr, writingPastEnd, "\0###############"s},
        StringRow{"NoRoom", 1, 0, "\2no", noErr, "################"},
        StringRow{"NegativeRoom", 1, -1, nullptr, noErr, "################"},
        StringRow{"Empty", 2, 16, "\2no", noErr, "\0###############"s},
        StringRow{"ShorterThanItSays", 3, 16, nullptr, noErr, "\x0Ashort##########"},
        StringRow{"ShorterThanItSaysAndCut", 3, 4, nullptr, writingPastEnd, "\3sho############"},
        StringRow{"NothingAtAll", 4, 16, "\2no", noErr, "\0###############"s},
        StringRow{"Longest", 5, 16, nullptr, writingPastEnd, "\x0F" + std::string(15, 's')},
        StringRow{"Missing", 99, 16, nullptr, resNotFound, "\0###############"s},
        StringRow{"MissingWithFallback", 99, 16, "\2no", noErr, "\2no#############"},
        StringRow{"MissingWithLongFallback", 99, 3, "\6longer", noErr, "\6lo#############"},
        StringRow{"MissingWithoutRoom", 99, 0, "\2no", resNotFound, "################"}),
    [](const auto& row) { return row.param.what; });

TEST_F(ResourceReading, CopiesNoStringToNowhere) {
  const auto* fallback = reinterpret_cast<const unsigned char*>("\2no");
  EXPECT_EQ(NFCopy1StringResource('STR ', 1, nullptr, 16, fallback), noErr);
  EXPECT_EQ(NFCopy1StringResource('STR ', 99, nullptr, 16, fallback), resNotFound);
}

TEST_F(ResourceReading, FallsBackForMissingResourcesOnly) {
  Handle h = nullptr;
  ASSERT_EQ(NFGet1Resource('STR ', 1, h), noErr);
  EmptyHandle(h);
  std::array<unsigned char, 16> buffer{9, 9};
  const AllocationFailure failure(1, platform::memory::FailureRun::kAllFollowing);
  EXPECT_EQ(NFCopy1StringResource('STR ', 1, buffer.data(), 16,
                                  reinterpret_cast<const unsigned char*>("\2no")),
            memFullErr);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(buffer[1], 9);
}

}  // namespace
