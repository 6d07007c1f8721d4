// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/aemessaging/CopyAEParams.h>

#include <array>
#include <cstdlib>
#include <string>

#include "tests/platform/appleevents/Descriptors.h"
#include "tests/support/AllocationFailures.h"

namespace {

using tests::Desc;

// An allocator that remembers what it was asked for.
SInt32 gAskedFor = -1;
char* rememberingMalloc(SInt32 size) {
  gAskedFor = size;
  return static_cast<char*>(std::malloc(static_cast<std::size_t>(size)));
}
char* noMemory(SInt32 size) {
  gAskedFor = size;
  return nullptr;
}

// -- CallAEPtrAllocator --

TEST(CallPtrAllocator, AsksForTheSizeButAtLeastOneByte) {
  const std::pair<SInt32, SInt32> cases[] = {
      {10, 10}, {1, 1}, {0, 1}, {-1, 1}, {-0x7FFFFFFF - 1, 1}};
  for (const auto& [size, asked] : cases) {
    void* block = nullptr;
    EXPECT_EQ(CallAEPtrAllocator(rememberingMalloc, block, size), noErr);
    EXPECT_EQ(gAskedFor, asked);
    EXPECT_NE(block, nullptr);
    std::free(block);
  }
}

TEST(CallPtrAllocator, TakesAPointerWithoutAnAllocator) {
  const std::pair<SInt32, Size> cases[] = {{10, 10}, {0, 1}, {-5, 1}};
  for (const auto& [size, expected] : cases) {
    void* block = nullptr;
    ASSERT_EQ(CallAEPtrAllocator(nullptr, block, size), noErr);
    EXPECT_EQ(GetPtrSize(static_cast<Ptr>(block)), expected);
    DisposePtr(static_cast<Ptr>(block));
  }
}

TEST(CallPtrAllocator, ReportsThatThereIsNoMemory) {
  void* block = &gAskedFor;
  EXPECT_EQ(CallAEPtrAllocator(noMemory, block, 7), memFullErr);
  EXPECT_EQ(gAskedFor, 7);
  EXPECT_EQ(block, nullptr);
  const tests::AllocationFailure failure(1);
  block = &gAskedFor;
  EXPECT_EQ(CallAEPtrAllocator(nullptr, block, 7), memFullErr);
  EXPECT_EQ(block, nullptr);
}

// -- AECopyParamData --

class CopyParam : public testing::Test {
 protected:
  CopyParam() {
    gAskedFor = -1;
    EXPECT_EQ(tests::putParameter<SInt16>(desc, 'shor', typeSInt16, -2), noErr);
    EXPECT_EQ(AEPutParamPtr(&desc, 'text', typeChar, "hello", 5), noErr);
    EXPECT_EQ(AEPutParamPtr(&desc, 'none', typeChar, "", 0), noErr);
  }
  ~CopyParam() override { std::free(data); }

  std::string copied(SInt32 count) const {
    return std::string(static_cast<const char*>(data), static_cast<std::size_t>(count));
  }

  Desc desc = tests::makeEvent();
  const AppleEvent& event = *&desc;
  void* data = &desc;  // which a copy must not leave
  SInt32 size = 99;
  DescType type = 'old ';
};

TEST_F(CopyParam, CopiesDataOfTheTypeAskedForOrAny) {
  for (const DescType desired : {DescType{typeChar}, DescType{typeWildCard}, DescType{typeBest}}) {
    ASSERT_EQ(AECopyParamData(event, 'text', desired, data, &size, &type, rememberingMalloc),
              noErr);
    EXPECT_EQ(gAskedFor, 5);
    EXPECT_EQ(size, 5);
    EXPECT_EQ(type, DescType{typeChar});
    EXPECT_EQ(copied(5), "hello");
    std::free(std::exchange(data, nullptr));
  }
}

TEST_F(CopyParam, NeedsNeitherSizeNorTypeForDataAsItIs) {
  ASSERT_EQ(AECopyParamData(event, 'text', typeChar, data, nullptr, nullptr, rememberingMalloc),
            noErr);
  EXPECT_EQ(copied(5), "hello");
}

TEST_F(CopyParam, AsksForOneByteForDataOfNone) {
  ASSERT_EQ(AECopyParamData(event, 'none', typeChar, data, &size, &type, rememberingMalloc), noErr);
  EXPECT_EQ(gAskedFor, 1);
  EXPECT_EQ(size, 0);
  EXPECT_EQ(type, DescType{typeChar});
}

TEST_F(CopyParam, TakesAPointerWithoutAnAllocator) {
  ASSERT_EQ(AECopyParamData(event, 'text', typeChar, data, &size, &type, nullptr), noErr);
  EXPECT_EQ(GetPtrSize(static_cast<Ptr>(data)), 5);
  EXPECT_EQ(copied(5), "hello");
  DisposePtr(static_cast<Ptr>(std::exchange(data, nullptr)));
}

TEST_F(CopyParam, CoercesForACallerWhoLearnsTheStoredType) {
  ASSERT_EQ(AECopyParamData(event, 'shor', typeSInt32, data, &size, &type, rememberingMalloc),
            noErr);
  EXPECT_EQ(size, 4);
  EXPECT_EQ(type, DescType{typeSInt16});
  SInt32 value;
  std::memcpy(&value, data, sizeof value);
  EXPECT_EQ(value, -2);
}

TEST_F(CopyParam, RefusesACoercionThatTheCallerWouldNotLearnOf) {
  EXPECT_EQ(AECopyParamData(event, 'shor', typeSInt32, data, &size, nullptr, rememberingMalloc),
            errAECoercionFail);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(size, 4);
  SInt32 value;
  std::memcpy(&value, data, sizeof value);
  EXPECT_EQ(value, -2);
}

TEST_F(CopyParam, TellsTheStoredTypeAndSizeOfWhatCannotBeCoerced) {
  EXPECT_EQ(AECopyParamData(event, 'text', typeSInt32, data, &size, &type, rememberingMalloc),
            errAECoercionFail);
  EXPECT_EQ(gAskedFor, -1);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 5);
  EXPECT_EQ(type, DescType{typeChar});
}

TEST_F(CopyParam, TellsNothingOfAMissingParameter) {
  EXPECT_EQ(AECopyParamData(event, 'miss', typeChar, data, &size, &type, rememberingMalloc),
            errAEDescNotFound);
  EXPECT_EQ(gAskedFor, -1);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 0);
  EXPECT_EQ(type, 0u);
}

TEST_F(CopyParam, ReportsThatTheAllocatorHasNoMemory) {
  EXPECT_EQ(AECopyParamData(event, 'text', typeChar, data, &size, &type, noMemory), memFullErr);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 5);
  EXPECT_EQ(type, DescType{typeChar});
  EXPECT_EQ(AECopyParamData(event, 'shor', typeSInt32, data, &size, &type, noMemory), memFullErr);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 4);
  EXPECT_EQ(type, DescType{typeSInt16});
}

TEST_F(CopyParam, LetsTheUnaskedForCoercionOverrideAnyOtherError) {
  EXPECT_EQ(AECopyParamData(event, 'shor', typeSInt32, data, &size, nullptr, noMemory),
            errAECoercionFail);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 4);
}

TEST_F(CopyParam, FailsWithEachAllocationAndLeaksNothing) {
  const UInt32 allocations = tests::failEachAllocation(
      [&] { return AECopyParamData(event, 'shor', typeChar, data, &size, &type, nullptr); },
      [&](OSErr status, bool failed) {
        EXPECT_EQ(status, failed ? OSErr{memFullErr} : OSErr{noErr});
        EXPECT_EQ(type, DescType{typeSInt16});
        if (!failed) {
          EXPECT_EQ(copied(size), "-2");
        }
        if (data != nullptr) DisposePtr(static_cast<Ptr>(std::exchange(data, nullptr)));
      });
  EXPECT_GE(allocations, 5u);
}

// -- AECopyParamDataToHandle --

class CopyParamToHandle : public CopyParam {
 protected:
  CopyParamToHandle() : handle(NewHandle(3)) {
    data = nullptr;
    std::memcpy(*handle, "old", 3);
  }
  ~CopyParamToHandle() override { DisposeHandle(handle); }

  std::string contents() const {
    return std::string(*handle, static_cast<std::size_t>(GetHandleSize(handle)));
  }

  Handle handle;
};

TEST_F(CopyParamToHandle, GivesTheHandleTheSizeOfTheData) {
  for (const DescType desired : {DescType{typeChar}, DescType{typeWildCard}, DescType{typeBest}}) {
    ASSERT_EQ(AECopyParamDataToHandle(event, 'text', desired, handle, &type), noErr);
    EXPECT_EQ(contents(), "hello");
    EXPECT_EQ(type, DescType{typeChar});
    EXPECT_EQ(HGetState(handle) & kHandleLockedMask, 0);
  }
  ASSERT_EQ(AECopyParamDataToHandle(event, 'none', typeChar, handle, nullptr), noErr);
  EXPECT_EQ(GetHandleSize(handle), 0);
}

TEST_F(CopyParamToHandle, CoercesForACallerWhoLearnsTheStoredType) {
  ASSERT_EQ(AECopyParamDataToHandle(event, 'shor', typeChar, handle, &type), noErr);
  EXPECT_EQ(contents(), "-2");
  EXPECT_EQ(type, DescType{typeSInt16});
}

TEST_F(CopyParamToHandle, UnlocksTheHandle) {
  HLock(handle);
  ASSERT_EQ(AECopyParamDataToHandle(event, 'text', typeChar, handle, &type), noErr);
  EXPECT_EQ(contents(), "hello");
  EXPECT_EQ(HGetState(handle) & kHandleLockedMask, 0);
}

TEST_F(CopyParamToHandle, EmptiesTheHandleOnAnyError) {
  const struct {
    AEKeyword keyword;
    DescType desired;
    DescType* actualType;
    OSErr status;
  } cases[] = {{'miss', typeChar, &type, errAEDescNotFound},
               {'text', typeSInt32, &type, errAECoercionFail},
               {'shor', typeSInt32, nullptr, errAECoercionFail}};
  for (const auto& [keyword, desired, actualType, status] : cases) {
    SetHandleSize(handle, 3);
    EXPECT_EQ(AECopyParamDataToHandle(event, keyword, desired, handle, actualType), status);
    EXPECT_EQ(GetHandleSize(handle), 0);
  }
}

TEST_F(CopyParamToHandle, RefusesANullHandle) {
  EXPECT_EQ(AECopyParamDataToHandle(event, 'text', typeChar, nullptr, &type), nilHandleErr);
  EXPECT_EQ(type, DescType{typeChar});
  EXPECT_EQ(AECopyParamDataToHandle(event, 'shor', typeChar, nullptr, &type), nilHandleErr);
  EXPECT_EQ(type, DescType{typeSInt16});
}

TEST_F(CopyParamToHandle, FailsWithEachAllocationAndEmptiesTheHandle) {
  SetHandleSize(handle, 0);
  const UInt32 allocations = tests::failEachAllocation(
      [&] { return AECopyParamDataToHandle(event, 'shor', typeChar, handle, &type); },
      [&](OSErr status, bool failed) {
        EXPECT_EQ(status, failed ? OSErr{memFullErr} : OSErr{noErr});
        EXPECT_EQ(contents(), failed ? "" : "-2");
      });
  EXPECT_GE(allocations, 5u);
}

}  // namespace
