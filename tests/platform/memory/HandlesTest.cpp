// Licence: MIT, see LICENSE.
#include <CarbonCore/MacErrors.h>
#include <CarbonCore/MacMemory.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "platform/memory/HandleTable.h"

namespace {

using platform::memory::markAsResource;

/// A handle of a test's, disposed of when the test ends.
class OwnedHandle final {
 public:
  explicit OwnedHandle(Handle owned) : handle(owned) {}
  ~OwnedHandle() { DisposeHandle(handle); }
  OwnedHandle(const OwnedHandle&) = delete;
  OwnedHandle& operator=(const OwnedHandle&) = delete;
  operator Handle() const { return handle; }

 private:
  Handle handle;
};

TEST(Handles, KeepTheSizeThatWasAskedFor) {
  for (Size size : {0, 1, 17, 100000}) {
    OwnedHandle handle(NewHandle(size));
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(MemError(), noErr);
    EXPECT_NE(*handle, nullptr);
    EXPECT_EQ(GetHandleSize(handle), size);
    EXPECT_EQ(HGetState(handle), 0);
  }
}

TEST(Handles, AreZeroedWhenClearIsAskedFor) {
  constexpr Size kSize = 4096;
  OwnedHandle handle(NewHandleClear(kSize));
  ASSERT_NE(handle, nullptr);
  for (Size i = 0; i < kSize; ++i) ASSERT_EQ((*handle)[i], 0) << "byte " << i;
}

TEST(Handles, OfANegativeSizeAreRefused) {
  EXPECT_EQ(NewHandle(-1), nullptr);
  EXPECT_EQ(MemError(), memFullErr);
  EXPECT_EQ(NewHandleClear(-1), nullptr);
  EXPECT_EQ(MemError(), memFullErr);
}

TEST(Handles, KeepTheirContentsWhenTheSizeChanges) {
  OwnedHandle handle(NewHandle(4));
  std::memcpy(*handle, "abcd", 4);
  SetHandleSize(handle, 100000);
  EXPECT_EQ(MemError(), noErr);
  EXPECT_EQ(GetHandleSize(handle), 100000);
  EXPECT_EQ(std::memcmp(*handle, "abcd", 4), 0);
  SetHandleSize(handle, 2);
  EXPECT_EQ(GetHandleSize(handle), 2);
  EXPECT_EQ(std::memcmp(*handle, "ab", 2), 0);
}

TEST(Handles, ShrinkToNothingAndGrowAgain) {
  OwnedHandle handle(NewHandle(4));
  SetHandleSize(handle, 0);
  EXPECT_EQ(MemError(), noErr);
  EXPECT_EQ(GetHandleSize(handle), 0);
  EXPECT_NE(*handle, nullptr);
  SetHandleSize(handle, 8);
  EXPECT_EQ(MemError(), noErr);
  EXPECT_EQ(GetHandleSize(handle), 8);
}

TEST(Handles, RefuseANegativeSizeAndStayAsTheyAre) {
  OwnedHandle handle(NewHandle(4));
  SetHandleSize(handle, -1);
  EXPECT_EQ(MemError(), memFullErr);
  EXPECT_EQ(GetHandleSize(handle), 4);
}

TEST(Handles, ThatAreLockedDoNotMove) {
  OwnedHandle handle(NewHandle(16));
  HLock(handle);
  Ptr block = *handle;
  SetHandleSize(handle, 100000);
  EXPECT_EQ(MemError(), memFullErr);
  SetHandleSize(handle, 3);
  EXPECT_EQ(MemError(), noErr);
  EXPECT_EQ(GetHandleSize(handle), 3);
  SetHandleSize(handle, 16);  // there is still room for that
  EXPECT_EQ(MemError(), noErr);
  EXPECT_EQ(GetHandleSize(handle), 16);
  EXPECT_EQ(*handle, block);
}

TEST(Handles, TellTheirState) {
  OwnedHandle handle(NewHandle(1));
  HLock(handle);
  EXPECT_EQ(static_cast<UInt8>(HGetState(handle)), kHandleLockedMask);
  HPurge(handle);
  EXPECT_EQ(static_cast<UInt8>(HGetState(handle)), kHandleLockedMask | kHandlePurgeableMask);
  HUnlock(handle);
  EXPECT_EQ(HGetState(handle), kHandlePurgeableMask);
  HNoPurge(handle);
  EXPECT_EQ(HGetState(handle), 0);
}

TEST(Handles, TakeAStateBackButNotTheResourceBit) {
  OwnedHandle handle(NewHandle(1));
  HSetState(handle, static_cast<SInt8>(0xFF));
  EXPECT_EQ(static_cast<UInt8>(HGetState(handle)), kHandleLockedMask | kHandlePurgeableMask);
  markAsResource(handle, true);
  HSetState(handle, 0);
  EXPECT_EQ(HGetState(handle), kHandleIsResourceMask);
  markAsResource(handle, false);
  EXPECT_EQ(HGetState(handle), 0);
}

TEST(Handles, ThatAreEmptyHaveNoBlockToWorkOn) {
  OwnedHandle handle(NewEmptyHandle());
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(*handle, nullptr);
  EXPECT_EQ(GetHandleSize(handle), 0);
  EXPECT_EQ(MemError(), nilHandleErr);
  SetHandleSize(handle, 4);
  EXPECT_EQ(MemError(), nilHandleErr);
  HLock(handle);
  EXPECT_EQ(MemError(), nilHandleErr);
  EXPECT_EQ(HGetState(handle), 0);
  EXPECT_EQ(MemError(), nilHandleErr);
}

TEST(Handles, AreEmptiedUnlessTheyAreLocked) {
  OwnedHandle handle(NewHandle(4));
  HLock(handle);
  EmptyHandle(handle);
  EXPECT_EQ(MemError(), memPurErr);
  EXPECT_EQ(GetHandleSize(handle), 4);
  HUnlock(handle);
  EmptyHandle(handle);
  EXPECT_EQ(MemError(), noErr);
  EXPECT_EQ(*handle, nullptr);
  EmptyHandle(handle);  // empty already
  EXPECT_EQ(MemError(), noErr);
}

TEST(Handles, GetAFreshBlockWhenReallocated) {
  OwnedHandle handle(NewEmptyHandle());
  ReallocateHandle(handle, 12);
  EXPECT_EQ(MemError(), noErr);
  EXPECT_EQ(GetHandleSize(handle), 12);
  HPurge(handle);
  ReallocateHandle(handle, 5);
  EXPECT_EQ(GetHandleSize(handle), 5);
  EXPECT_EQ(HGetState(handle), 0);
}

TEST(Handles, AreNotReallocatedWhileLockedOrToANegativeSize) {
  OwnedHandle handle(NewHandle(4));
  ReallocateHandle(handle, -1);
  EXPECT_EQ(MemError(), memFullErr);
  HLock(handle);
  ReallocateHandle(handle, 8);
  EXPECT_EQ(MemError(), memLockedErr);
  EXPECT_EQ(GetHandleSize(handle), 4);
}

TEST(Handles, ThatAreGoneAreToldFromLiveOnes) {
  Handle gone = NewHandle(4);
  DisposeHandle(gone);
  const std::vector<std::pair<const char*, void (*)(Handle)>> calls = {
      {"DisposeHandle", DisposeHandle},
      {"GetHandleSize", [](Handle handle) { EXPECT_EQ(GetHandleSize(handle), 0); }},
      {"SetHandleSize", [](Handle handle) { SetHandleSize(handle, 1); }},
      {"ReallocateHandle", [](Handle handle) { ReallocateHandle(handle, 1); }},
      {"EmptyHandle", EmptyHandle},
      {"HLock", HLock},
      {"HUnlock", HUnlock},
      {"HPurge", HPurge},
      {"HNoPurge", HNoPurge},
      {"HGetState", [](Handle handle) { EXPECT_EQ(HGetState(handle), 0); }},
      {"HSetState", [](Handle handle) { HSetState(handle, 0); }},
  };
  for (Handle handle : {gone, Handle{nullptr}}) {
    for (const auto& [name, call] : calls) {
      call(handle);
      EXPECT_EQ(MemError(), memWZErr) << name;
    }
  }
}

TEST(Handles, AreFreedAlsoWhenLocked) {
  Handle handle = NewHandle(4);
  HLock(handle);
  DisposeHandle(handle);
  EXPECT_EQ(MemError(), noErr);
}

std::vector<Handle> noticed;

TEST(DisposalNotice, ComesForResourcesAlone) {
  noticed.clear();
  platform::memory::setDisposalNotice([](Handle handle) { noticed.push_back(handle); });
  Handle plain = NewHandle(1);
  Handle resource = NewHandle(1);
  markAsResource(resource, true);
  DisposeHandle(plain);
  DisposeHandle(resource);
  platform::memory::setDisposalNotice(nullptr);
  ASSERT_EQ(noticed.size(), 1u);
  EXPECT_EQ(noticed[0], resource);
}

TEST(Handles, MayBeMadeAndUsedOnManyThreads) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 500;
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < kRounds; ++round) {
        Handle handle = NewHandle(i + 1);
        SetHandleSize(handle, round + 1);
        if (GetHandleSize(handle) != round + 1 || MemError() != noErr) ++wrong;
        DisposeHandle(handle);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
