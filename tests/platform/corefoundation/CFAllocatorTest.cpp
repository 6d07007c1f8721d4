// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFString.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/ObjectTesting.h"

using namespace tests;

namespace {

struct Calls {
  int retains = 0;
  int releases = 0;
  int allocations = 0;
  int reallocations = 0;
  int deallocations = 0;
  CFOptionFlags hint = 0;
};

const void* retainCalls(const void* info) {
  ++static_cast<Calls*>(const_cast<void*>(info))->retains;
  return info;
}
void releaseCalls(const void* info) { ++static_cast<Calls*>(const_cast<void*>(info))->releases; }
CFStringRef describeCalls(const void*) { return CFSTR("the calls"); }
void* allocateCounted(CFIndex size, CFOptionFlags hint, void* info) {
  ++static_cast<Calls*>(info)->allocations;
  static_cast<Calls*>(info)->hint = hint;
  return std::malloc(static_cast<std::size_t>(size));
}
void* reallocateCounted(void* block, CFIndex size, CFOptionFlags, void* info) {
  ++static_cast<Calls*>(info)->reallocations;
  return std::realloc(block, static_cast<std::size_t>(size));
}
void deallocateCounted(void* block, void* info) {
  ++static_cast<Calls*>(info)->deallocations;
  std::free(block);
}
CFIndex roundedUp(CFIndex size, CFOptionFlags, void*) { return (size + 15) / 16 * 16; }
CFIndex tooSmall(CFIndex, CFOptionFlags, void*) { return 1; }

CFAllocatorContext contextOf(Calls& calls) {
  return {0,
          &calls,
          retainCalls,
          releaseCalls,
          describeCalls,
          allocateCounted,
          reallocateCounted,
          deallocateCounted,
          roundedUp};
}

}  // namespace

TEST(CFAllocator, DefaultIsNullAndStandsForTheSystemDefault) {
  EXPECT_EQ(kCFAllocatorDefault, nullptr);
  EXPECT_EQ(CFAllocatorGetDefault(), kCFAllocatorSystemDefault);
  EXPECT_EQ(CFGetTypeID(kCFAllocatorMalloc), CFAllocatorGetTypeID());
}

TEST(CFAllocator, SystemAllocatorsGiveMemoryThatGrows) {
  for (const CFAllocatorRef allocator :
       {kCFAllocatorDefault, kCFAllocatorSystemDefault, kCFAllocatorMalloc}) {
    void* block = CFAllocatorAllocate(allocator, 8, 0);
    ASSERT_NE(block, nullptr);
    std::memcpy(block, "1234567", 8);
    block = CFAllocatorReallocate(allocator, block, 4000, 0);
    ASSERT_NE(block, nullptr);
    EXPECT_STREQ(static_cast<char*>(block), "1234567");
    CFAllocatorDeallocate(allocator, block);
  }
}

TEST(CFAllocator, NullAllocatorGivesNothingAndFreesNothing) {
  char mine[8] = "mine";
  EXPECT_EQ(CFAllocatorAllocate(kCFAllocatorNull, 8, 0), nullptr);
  EXPECT_EQ(CFAllocatorReallocate(kCFAllocatorNull, mine, 16, 0), nullptr);
  CFAllocatorDeallocate(kCFAllocatorNull, mine);
  EXPECT_STREQ(mine, "mine");
}

TEST(CFAllocator, SizesOfZeroAndLessGiveNothing) {
  EXPECT_EQ(CFAllocatorAllocate(nullptr, 0, 0), nullptr);
  EXPECT_EQ(CFAllocatorAllocate(nullptr, -1, 0), nullptr);
  EXPECT_EQ(CFAllocatorReallocate(nullptr, nullptr, 0, 0), nullptr);
  EXPECT_EQ(CFAllocatorReallocate(nullptr, nullptr, -1, 0), nullptr);
}

TEST(CFAllocator, CallsItsFunctionsWithHintAndInfo) {
  Calls calls;
  CFAllocatorContext context = contextOf(calls);
  const Held allocator(CFAllocatorCreate(nullptr, &context));
  void* block = CFAllocatorAllocate(allocator.get(), 8, 5);
  block = CFAllocatorReallocate(allocator.get(), block, 16, 0);
  CFAllocatorDeallocate(allocator.get(), block);
  EXPECT_EQ(calls.allocations, 1);
  EXPECT_EQ(calls.hint, 5U);
  EXPECT_EQ(calls.reallocations, 1);
  EXPECT_EQ(calls.deallocations, 1);
}

TEST(CFAllocator, ReallocatesNothingAsAnAllocationAndToNothingAsADeallocation) {
  Calls calls;
  CFAllocatorContext context = contextOf(calls);
  const Held allocator(CFAllocatorCreate(nullptr, &context));
  void* block = CFAllocatorReallocate(allocator.get(), nullptr, 8, 0);
  EXPECT_EQ(calls.allocations, 1);
  EXPECT_EQ(CFAllocatorReallocate(allocator.get(), block, 0, 0), nullptr);
  EXPECT_EQ(calls.deallocations, 1);
  EXPECT_EQ(calls.reallocations, 0);
}

TEST(CFAllocator, CannotReallocateWithoutTheFunction) {
  CountingAllocator allocator;
  void* block = CFAllocatorAllocate(allocator.get(), 8, 0);
  EXPECT_EQ(CFAllocatorReallocate(allocator.get(), block, 16, 0), nullptr);
  EXPECT_EQ(allocator.blocks(), 1);
  CFAllocatorDeallocate(allocator.get(), block);
  EXPECT_EQ(allocator.blocks(), 0);
}

TEST(CFAllocator, PrefersSizesOfAtLeastWhatIsAskedFor) {
  Calls calls;
  CFAllocatorContext context = contextOf(calls);
  const Held rounding(CFAllocatorCreate(nullptr, &context));
  context.preferredSize = tooSmall;
  const Held modest(CFAllocatorCreate(nullptr, &context));
  EXPECT_EQ(CFAllocatorGetPreferredSizeForSize(rounding.get(), 20, 0), 32);
  EXPECT_EQ(CFAllocatorGetPreferredSizeForSize(modest.get(), 20, 0), 20);
  EXPECT_EQ(CFAllocatorGetPreferredSizeForSize(nullptr, 20, 0), 20);
  EXPECT_EQ(CFAllocatorGetPreferredSizeForSize(rounding.get(), -1, 0), 0);
}

TEST(CFAllocator, GivesItsContextBack) {
  Calls calls;
  CFAllocatorContext context = contextOf(calls);
  const Held allocator(CFAllocatorCreate(nullptr, &context));
  CFAllocatorContext found = {};
  CFAllocatorGetContext(allocator.get(), &found);
  EXPECT_EQ(found.info, &calls);
  EXPECT_EQ(found.allocate, allocateCounted);
  EXPECT_EQ(found.preferredSize, roundedUp);
}

TEST(CFAllocator, RetainsItsInfoOnceAndReleasesItWithItself) {
  Calls calls;
  CFAllocatorContext context = contextOf(calls);
  const CFAllocatorRef allocator = CFAllocatorCreate(nullptr, &context);
  CFRetain(allocator);
  CFRelease(allocator);
  EXPECT_EQ(calls.retains, 1);
  EXPECT_EQ(calls.releases, 0);
  CFRelease(allocator);
  EXPECT_EQ(calls.releases, 1);
}

TEST(CFAllocator, LivesAsLongAsAnObjectInItsMemory) {
  Calls calls;
  CFAllocatorContext context = contextOf(calls);
  const CFAllocatorRef allocator = CFAllocatorCreate(nullptr, &context);
  const CFStringRef string = CFStringCreateWithCString(allocator, "kept", kCFStringEncodingASCII);
  EXPECT_EQ(CFGetAllocator(string), allocator);
  CFRelease(allocator);
  EXPECT_EQ(calls.releases, 0);
  CFRelease(string);
  EXPECT_EQ(calls.releases, 1);
  EXPECT_EQ(calls.deallocations, calls.allocations);
}

TEST(CFAllocator, AllocatesItselfByItsOwnFunctions) {
  Calls calls;
  CFAllocatorContext context = contextOf(calls);
  const CFAllocatorRef allocator = CFAllocatorCreate(kCFAllocatorUseContext, &context);
  EXPECT_EQ(calls.allocations, 1);
  EXPECT_EQ(CFGetAllocator(allocator), allocator);
  CFRelease(allocator);
  EXPECT_EQ(calls.deallocations, 1);
  EXPECT_EQ(calls.releases, 1);
}

TEST(CFAllocator, IsItselfInAnotherAllocatorsMemory) {
  CountingAllocator outer;
  Calls calls;
  CFAllocatorContext context = contextOf(calls);
  const CFAllocatorRef inner = CFAllocatorCreate(outer.get(), &context);
  EXPECT_EQ(CFGetAllocator(inner), outer.get());
  EXPECT_EQ(outer.blocks(), 1);
  CFRelease(inner);
  EXPECT_EQ(outer.blocks(), 0);
  EXPECT_EQ(calls.allocations, 0);
}

TEST(CFAllocator, ReleasesItsInfoWhenThereIsNoMemoryForIt) {
  CountingAllocator outer;
  outer.failAfter(0);
  Calls calls;
  CFAllocatorContext context = contextOf(calls);
  EXPECT_EQ(CFAllocatorCreate(outer.get(), &context), nullptr);
  EXPECT_EQ(calls.retains, 1);
  EXPECT_EQ(calls.releases, 1);
}

TEST(CFAllocator, NeedsAContextOfVersionZeroThatAllocates) {
  Calls calls;
  CFAllocatorContext context = contextOf(calls);
  context.version = 1;
  EXPECT_EQ(CFAllocatorCreate(nullptr, &context), nullptr);
  context = contextOf(calls);
  context.allocate = nullptr;
  EXPECT_EQ(CFAllocatorCreate(nullptr, &context), nullptr);
  EXPECT_EQ(CFAllocatorCreate(nullptr, nullptr), nullptr);
  EXPECT_EQ(calls.retains, 0);
}

TEST(CFAllocator, DescribesItsInfo) {
  Calls calls;
  CFAllocatorContext context = contextOf(calls);
  const Held allocator(CFAllocatorCreate(nullptr, &context));
  EXPECT_THAT(describe(allocator.get()), testing::HasSubstr("info = the calls"));
  EXPECT_THAT(describe(kCFAllocatorMalloc), testing::StartsWith("<CFAllocator 0x"));
}

TEST(CFAllocator, IsTheDefaultOfTheThreadThatSaysSo) {
  // A default stays for good, so this one does too.
  static CountingAllocator allocator;
  const CFIndex before = CFGetRetainCount(allocator.get());
  std::thread([] {
    CFAllocatorSetDefault(allocator.get());
    EXPECT_EQ(CFAllocatorGetDefault(), allocator.get());
    const Held string(CFStringCreateWithCString(nullptr, "here", kCFStringEncodingASCII));
    EXPECT_EQ(CFGetAllocator(string.get()), allocator.get());
    EXPECT_EQ(allocator.blocks(), 1);
  }).join();
  EXPECT_EQ(CFGetRetainCount(allocator.get()), before + 1);
  EXPECT_EQ(allocator.blocks(), 0);
  EXPECT_EQ(CFAllocatorGetDefault(), kCFAllocatorSystemDefault);
}

TEST(CFAllocator, TakesNothingElseForADefault) {
  CFAllocatorSetDefault(nullptr);
  CFAllocatorSetDefault(kCFAllocatorUseContext);
  CFAllocatorSetDefault(reinterpret_cast<CFAllocatorRef>(CFSTR("no allocator")));
  EXPECT_EQ(CFAllocatorGetDefault(), kCFAllocatorSystemDefault);
}
