// Licence: MIT, see LICENSE.
#include <CarbonCore/MacErrors.h>
#include <CarbonCore/MacMemory.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

#include "tests/support/AllocationFailures.h"

namespace {

using tests::AllocationFailure;
using tests::failEachAllocation;

/// A handle with a text, disposed of when the test ends.
class TextHandle final {
 public:
  explicit TextHandle(const std::string& text) : handle(NewHandle(static_cast<Size>(text.size()))) {
    std::memcpy(*handle, text.data(), text.size());
  }
  ~TextHandle() { DisposeHandle(handle); }
  TextHandle(const TextHandle&) = delete;
  TextHandle& operator=(const TextHandle&) = delete;
  operator Handle() const { return handle; }
  std::string text() const { return {*handle, static_cast<std::size_t>(GetHandleSize(handle))}; }

 private:
  Handle handle;
};

OSErr statusOf(bool failed) { return failed ? OSErr{memFullErr} : OSErr{noErr}; }

TEST(PtrAndHand, AppendsBytes) {
  const TextHandle handle("abc");
  EXPECT_EQ(PtrAndHand("defg", handle, 4), noErr);
  EXPECT_EQ(MemError(), noErr);
  EXPECT_EQ(handle.text(), "abcdefg");
}

TEST(PtrAndHand, AppendsToABlockWithoutBytes) {
  const TextHandle handle("");
  EXPECT_EQ(PtrAndHand("xy", handle, 2), noErr);
  EXPECT_EQ(handle.text(), "xy");
}

TEST(PtrAndHand, AppendsNothing) {
  const TextHandle handle("abc");
  EXPECT_EQ(PtrAndHand("defg", handle, 0), noErr);
  EXPECT_EQ(PtrAndHand(nullptr, handle, 0), noErr);
  EXPECT_EQ(handle.text(), "abc");
}

TEST(PtrAndHand, AppendsBytesOfTheBlockItself) {
  const TextHandle handle(std::string(1000, 'a') + "tail");
  EXPECT_EQ(PtrAndHand(*handle + 1000, handle, 4), noErr);
  EXPECT_EQ(handle.text(), std::string(1000, 'a') + "tailtail");
  EXPECT_EQ(PtrAndHand(*handle, handle, GetHandleSize(handle)), noErr);
  EXPECT_EQ(GetHandleSize(handle), 2016);
  EXPECT_EQ(handle.text().substr(1008), handle.text().substr(0, 1008));
}

TEST(PtrAndHand, RefusesSizesThatCannotBe) {
  const TextHandle handle("abc");
  EXPECT_EQ(PtrAndHand("d", handle, -1), memFullErr);
  EXPECT_EQ(PtrAndHand("d", handle, std::numeric_limits<Size>::max()), memFullErr);
  EXPECT_EQ(PtrAndHand(nullptr, handle, 1), paramErr);
  EXPECT_EQ(MemError(), paramErr);
  EXPECT_EQ(handle.text(), "abc");
}

TEST(PtrAndHand, NeedsAHandleWithABlock) {
  EXPECT_EQ(PtrAndHand("d", nullptr, 1), memWZErr);
  Handle empty = NewEmptyHandle();
  EXPECT_EQ(PtrAndHand("d", empty, 1), nilHandleErr);
  EXPECT_EQ(MemError(), nilHandleErr);
  DisposeHandle(empty);
}

TEST(PtrAndHand, DoesNotMoveALockedBlock) {
  const TextHandle handle("abc");
  HLock(handle);
  EXPECT_EQ(PtrAndHand("d", handle, 1), memFullErr);
  EXPECT_EQ(handle.text(), "abc");
}

TEST(TempNewHandle, GivesAHandleAndItsResult) {
  OSErr result = paramErr;
  Handle handle = TempNewHandle(12, &result);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(result, noErr);
  EXPECT_EQ(GetHandleSize(handle), 12);
  DisposeHandle(handle);
  EXPECT_EQ(TempNewHandle(-1, &result), nullptr);
  EXPECT_EQ(result, memFullErr);
  EXPECT_EQ(MemError(), memFullErr);
}

TEST(TempNewHandle, MayBeCalledWithoutAPlaceForItsResult) {
  EXPECT_EQ(TempNewHandle(-1, nullptr), nullptr);
  EXPECT_EQ(MemError(), memFullErr);
}

TEST(HandlesWithoutMemory, AreNotMade) {
  using Maker = Handle (*)();
  for (const Maker make :
       {Maker{[] { return NewHandle(100); }}, Maker{[] { return NewHandleClear(100); }},
        Maker{[] { return TempNewHandle(100, nullptr); }}}) {
    const auto check = [](Handle made, bool failed) {
      EXPECT_EQ(MemError(), statusOf(failed));
      EXPECT_EQ(made == nullptr, failed);
      if (made != nullptr) DisposeHandle(made);
    };
    EXPECT_GE(failEachAllocation(make, check), 3u);
  }
}

TEST(HandlesWithoutMemory, AreNotMadeEmptyEither) {
  const auto check = [](Handle made, bool failed) {
    EXPECT_EQ(MemError(), statusOf(failed));
    EXPECT_EQ(made == nullptr, failed);
    if (made != nullptr) DisposeHandle(made);
  };
  EXPECT_GE(failEachAllocation(NewEmptyHandle, check), 2u);
}

TEST(HandlesWithoutMemory, StayAsTheyAre) {
  const TextHandle handle("abcd");
  using Change = void (*)(Handle);
  for (const Change change : {Change{[](Handle h) { SetHandleSize(h, 100000); }},
                              Change{[](Handle h) { ReallocateHandle(h, 100000); }},
                              Change{[](Handle h) { PtrAndHand("efgh", h, 4); }}}) {
    const Ptr block = *handle;
    {
      const AllocationFailure failure(1);
      change(handle);
    }
    EXPECT_EQ(MemError(), memFullErr);
    EXPECT_EQ(*handle, block);
    EXPECT_EQ(handle.text(), "abcd");
  }
}

TEST(PointersWithoutMemory, AreNotMade) {
  using Maker = Ptr (*)();
  for (const Maker make :
       {Maker{[] { return NewPtr(100); }}, Maker{[] { return NewPtrClear(100); }}}) {
    const auto check = [](Ptr made, bool failed) {
      EXPECT_EQ(MemError(), statusOf(failed));
      EXPECT_EQ(made == nullptr, failed);
      if (made != nullptr) DisposePtr(made);
    };
    EXPECT_GE(failEachAllocation(make, check), 2u);
  }
}

}  // namespace
