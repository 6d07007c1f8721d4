// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/util/HandleUtils.h>

#include <limits>
#include <string>

#include "tests/support/AllocationFailures.h"
#include "tests/util/Destination.h"
#include "tests/util/OwnedHandle.h"

namespace {

using namespace std::string_literals;
using tests::AllocationFailure;
using tests::OwnedHandle;

constexpr SInt32 kLeast = std::numeric_limits<SInt32>::min();

struct CreationRow {
  const char* name;
  OSErr (*create)(char**& h, SInt32 size);
  bool isCleared;
};

constexpr CreationRow kCreations[] = {
    {"NFNewHandle", NFNewHandle, false},
    {"NFNewHandleClear", NFNewHandleClear, true},
    {"NFNewHandleSys", NFNewHandleSys, false},
    {"NFNewHandleSysClear", NFNewHandleSysClear, true},
    {"NFNewHandleTemp", NFNewHandleTemp, false},
    {"NFNewHandleTempClear", NFNewHandleTempClear, true},
    {"NFNewHandleSysTemp", NFNewHandleSysTemp, false},
    {"NFNewHandleSysTempClear", NFNewHandleSysTempClear, true},
    {"NFNewHandleFromPtr",
     [](char**& h, SInt32 size) {
       return NFNewHandleFromPtr(h, std::string(5000, '\0').data(), size);
     },
     true},
};

TEST(Creation, GivesAHandleOfTheSize) {
  for (const CreationRow& row : kCreations) {
    for (const SInt32 size : {0, 1, 17, 5000}) {
      OwnedHandle made;
      ASSERT_EQ(row.create(made.handle, size), noErr) << row.name;
      ASSERT_NE(made.handle, nullptr) << row.name;
      EXPECT_EQ(GetHandleSize(made.handle), size) << row.name;
      EXPECT_EQ(made.state(), 0) << row.name;
      if (row.isCleared) {
        EXPECT_EQ(made.contents(), std::string(static_cast<std::size_t>(size), '\0')) << row.name;
      }
    }
  }
}

TEST(Creation, OfANegativeSizeGivesNoHandle) {
  for (const CreationRow& row : kCreations) {
    for (const SInt32 size : {SInt32{-1}, kLeast}) {
      char* master = nullptr;
      char** h = &master;
      EXPECT_EQ(row.create(h, size), memFullErr) << row.name;
      EXPECT_EQ(h, nullptr) << row.name;
    }
  }
}

TEST(Creation, WithoutMemoryGivesNoHandle) {
  for (const CreationRow& row : kCreations) {
    const auto create = [&row] {
      char** h = nullptr;
      const OSErr err = row.create(h, 100);
      return std::pair(err, h);
    };
    const auto check = [&row](std::pair<OSErr, char**> made, bool failed) {
      // The source of NFNewHandleFromPtr is the test's own allocation.
      EXPECT_EQ(made.first, failed ? OSErr{memFullErr} : OSErr{noErr}) << row.name;
      EXPECT_EQ(made.second == nullptr, failed) << row.name;
      if (made.second != nullptr) DisposeHandle(made.second);
    };
    EXPECT_EQ(tests::failEachAllocation(create, check), 3u) << row.name;
  }
}

TEST(Creation, TempOfASizeThatCannotBeMetGivesANullHandleAndAStatus) {
  const AllocationFailure failure(1, platform::memory::FailureRun::kAllFollowing);
  char* master = nullptr;
  char** h = &master;
  const OSErr err = NFNewHandleTemp(h, 0x7FFFFFFF);
  EXPECT_EQ(h, nullptr);
  EXPECT_EQ(err, memFullErr);
}

TEST(Creation, FromAPointerCopiesTheData) {
  OwnedHandle made;
  EXPECT_EQ(NFNewHandleFromPtr(made.handle, "abc\0d", 5), noErr);
  EXPECT_EQ(made.contents(), "abc\0d"s);
  OwnedHandle none;
  EXPECT_EQ(NFNewHandleFromPtr(none.handle, nullptr, 0), noErr);
  EXPECT_EQ(none.contents(), "");
}

TEST(Creation, FromANullPointerIsRefused) {
  char* master = nullptr;
  char** h = &master;
  EXPECT_EQ(NFNewHandleFromPtr(h, nullptr, 1), paramErr);
  EXPECT_EQ(h, nullptr);
}

TEST(AllocFailureStatus, IsMemErrorOrMemFullErr) {
  NewPtr(-1);
  EXPECT_EQ(NFAllocFailureStatus(), memFullErr);
  DisposeHandle(nullptr);
  EXPECT_EQ(NFAllocFailureStatus(), memWZErr);
  DisposeHandle(NewHandle(1));
  EXPECT_EQ(MemError(), noErr);
  EXPECT_EQ(NFAllocFailureStatus(), memFullErr);
}

TEST(Size, IsTold) {
  const OwnedHandle h("abc");
  SInt32 size = -7;
  EXPECT_EQ(NFGetHandleSize(h.handle, size), noErr);
  EXPECT_EQ(size, 3);
}

TEST(Size, OfNoBlockIsZeroWithAStatus) {
  const OwnedHandle h("abc");
  EmptyHandle(h.handle);
  SInt32 size = -7;
  EXPECT_EQ(NFGetHandleSize(h.handle, size), nilHandleErr);
  EXPECT_EQ(size, 0);
  size = -7;
  EXPECT_EQ(NFGetHandleSize(nullptr, size), memWZErr);
  EXPECT_EQ(size, 0);
}

TEST(Disposal, ClearsTheVariable) {
  char** h = NewHandle(4);
  EXPECT_EQ(NFDisposeHandle(h), noErr);
  EXPECT_EQ(h, nullptr);
  EXPECT_EQ(NFDisposeHandle(h), noErr);
}

TEST(Disposal, OfWhatIsNoHandleHasAStatus) {
  char** gone = NewHandle(4);
  char** h = gone;
  DisposeHandle(gone);
  EXPECT_EQ(NFDisposeHandle(h), memWZErr);
  EXPECT_EQ(h, nullptr);
}

TEST(Resizing, KeepsTheContents) {
  const OwnedHandle h("abcdef");
  EXPECT_EQ(NFSetHandleSize(h.handle, 3), noErr);
  EXPECT_EQ(h.contents(), "abc");
  EXPECT_EQ(NFSetHandleSize(h.handle, 50000), noErr);
  EXPECT_EQ(h.contents().substr(0, 3), "abc");
  EXPECT_EQ(GetHandleSize(h.handle), 50000);
}

TEST(Resizing, UnlocksTheHandle) {
  const OwnedHandle h("abc");
  HLock(h.handle);
  EXPECT_EQ(NFSetHandleSize(h.handle, 50000), noErr);
  EXPECT_EQ(h.state(), 0);
  EXPECT_EQ(GetHandleSize(h.handle), 50000);
}

TEST(Resizing, WithClearZeroesTheWholeBlock) {
  const OwnedHandle h("abcdef");
  EXPECT_EQ(NFSetHandleSizeClear(h.handle, 4), noErr);
  EXPECT_EQ(h.contents(), "\0\0\0\0"s);
  EXPECT_EQ(NFSetHandleSizeClear(h.handle, 0), noErr);
  EXPECT_EQ(h.contents(), "");
}

TEST(Resizing, ReportsWhatKeepsItFromHappening) {
  for (const auto call : {NFSetHandleSize, NFSetHandleSizeClear}) {
    const OwnedHandle h("abc");
    EXPECT_EQ(call(nullptr, 3), nilHandleErr);
    EXPECT_EQ(call(h.handle, -1), memFullErr);
    {
      const AllocationFailure failure(1);
      EXPECT_EQ(call(h.handle, 50000), memFullErr);
    }
    EXPECT_EQ(h.contents(), "abc");
    EmptyHandle(h.handle);
    EXPECT_EQ(call(h.handle, 3), nilHandleErr);
  }
}

TEST(Emptying, FreesTheBlockUnlessItIsLocked) {
  const OwnedHandle h("abc");
  HLock(h.handle);
  EXPECT_EQ(NFEmptyHandle(h.handle), memPurErr);
  EXPECT_EQ(h.contents(), "abc");
  HUnlock(h.handle);
  EXPECT_EQ(NFEmptyHandle(h.handle), noErr);
  EXPECT_TRUE(h.isEmpty());
  EXPECT_EQ(NFEmptyHandle(nullptr), memWZErr);
}

}  // namespace
