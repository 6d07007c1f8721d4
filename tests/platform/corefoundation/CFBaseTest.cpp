// Licence: MIT, see LICENSE.
#include <CoreFoundation/CoreFoundation.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <thread>
#include <vector>

#include "tests/platform/corefoundation/ConstantStringInC.h"
#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/ObjectTesting.h"

using namespace tests;

TEST(CFBase, CountsReferences) {
  const CFStringRef string = CFStringCreateWithCString(nullptr, "a", kCFStringEncodingASCII);
  EXPECT_EQ(CFGetRetainCount(string), 1);
  EXPECT_EQ(CFRetain(string), string);
  EXPECT_EQ(CFGetRetainCount(string), 2);
  CFRelease(string);
  EXPECT_EQ(CFGetRetainCount(string), 1);
  CFRelease(string);
}

TEST(CFBase, GivesMemoryBackWithTheLastReference) {
  CountingAllocator allocator;
  const CFStringRef string =
      CFStringCreateWithCString(allocator.get(), "a", kCFStringEncodingASCII);
  EXPECT_EQ(allocator.blocks(), 1);
  CFRetain(string);
  CFRelease(string);
  EXPECT_EQ(allocator.blocks(), 1);
  CFRelease(string);
  EXPECT_EQ(allocator.blocks(), 0);
}

TEST(CFBase, ConstantsAreImmortal) {
  for (const CFTypeRef object :
       {static_cast<CFTypeRef>(kCFBooleanTrue), static_cast<CFTypeRef>(kCFAllocatorMalloc),
        static_cast<CFTypeRef>(CFSTR("immortal"))}) {
    const CFIndex count = CFGetRetainCount(object);
    EXPECT_EQ(count, std::numeric_limits<CFIndex>::max());
    for (int i = 0; i < 3; ++i) CFRelease(object);
    CFRetain(object);
    EXPECT_EQ(CFGetRetainCount(object), count);
  }
}

TEST(CFBase, CountsReferencesOfManyThreads) {
  CountingAllocator allocator;
  const CFStringRef string =
      CFStringCreateWithCString(allocator.get(), "a", kCFStringEncodingASCII);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([string] {
      for (int i = 0; i < 1000; ++i) CFRetain(string);
      for (int i = 0; i < 1000; ++i) CFRelease(string);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(CFGetRetainCount(string), 1);
  CFRelease(string);
  EXPECT_EQ(allocator.blocks(), 0);
}

TEST(CFBase, NullHasNoEffect) {
  EXPECT_EQ(CFRetain(nullptr), nullptr);
  CFRelease(nullptr);
  EXPECT_EQ(CFGetRetainCount(nullptr), 0);
  EXPECT_EQ(CFGetTypeID(nullptr), 0U);
  EXPECT_EQ(CFHash(nullptr), 0U);
  EXPECT_EQ(CFCopyDescription(nullptr), nullptr);
  EXPECT_EQ(CFGetAllocator(nullptr), nullptr);
}

TEST(CFBase, NullEqualsNullAlone) {
  EXPECT_TRUE(CFEqual(nullptr, nullptr));
  EXPECT_FALSE(CFEqual(nullptr, kCFBooleanTrue));
  EXPECT_FALSE(CFEqual(kCFBooleanTrue, nullptr));
}

TEST(CFBase, ObjectsOfDifferentTypesDiffer) {
  const Held<CFNumberRef> one = numberOf(1);
  EXPECT_FALSE(CFEqual(one.get(), kCFBooleanTrue));
  EXPECT_FALSE(CFEqual(CFSTR("1"), one.get()));
}

TEST(CFBase, ObjectsWithoutAnOrderOfTheirOwnEqualThemselvesAlone) {
  EXPECT_TRUE(CFEqual(kCFAllocatorMalloc, kCFAllocatorMalloc));
  EXPECT_FALSE(CFEqual(kCFAllocatorMalloc, kCFAllocatorSystemDefault));
  EXPECT_EQ(CFHash(kCFAllocatorMalloc), CFHash(kCFAllocatorMalloc));
  EXPECT_NE(CFHash(kCFAllocatorMalloc), CFHash(kCFAllocatorSystemDefault));
}

TEST(CFBase, EveryTypeHasAnIDAndAName) {
  const struct {
    CFTypeID type;
    const char* name;
  } types[] = {{CFAllocatorGetTypeID(), "CFAllocator"},
               {CFArrayGetTypeID(), "CFArray"},
               {CFBooleanGetTypeID(), "CFBoolean"},
               {CFDataGetTypeID(), "CFData"},
               {CFDateGetTypeID(), "CFDate"},
               {CFNumberGetTypeID(), "CFNumber"},
               {CFDictionaryGetTypeID(), "CFDictionary"},
               {CFStringGetTypeID(), "CFString"}};
  for (const auto& type : types) {
    const Held name(CFCopyTypeIDDescription(type.type));
    EXPECT_EQ(textOf(name.get()), type.name);
    for (const auto& other : types) {
      EXPECT_EQ(type.type == other.type, type.name == other.name);
    }
  }
}

TEST(CFBase, UnknownTypeIDsHaveNoName) {
  EXPECT_EQ(CFCopyTypeIDDescription(0), nullptr);
  EXPECT_EQ(CFCopyTypeIDDescription(200), nullptr);
  EXPECT_EQ(CFCopyTypeIDDescription(~CFTypeID{0}), nullptr);
}

TEST(CFBase, ConstantsBelongToTheSystemsAllocator) {
  EXPECT_EQ(CFGetAllocator(kCFBooleanTrue), kCFAllocatorSystemDefault);
  EXPECT_EQ(CFGetAllocator(CFSTR("constant")), kCFAllocatorSystemDefault);
}

namespace {

// Read by the constructor of a global, before main.
struct Early {
  CFTypeRef boolean = CFRetain(kCFBooleanTrue);
  CFTypeRef allocator = CFRetain(kCFAllocatorSystemDefault);
  CFStringRef string = CFSTR("early");
  CFArrayRetainCallBack retain = kCFTypeArrayCallBacks.retain;
};
const Early gEarly;

}  // namespace

TEST(CFBase, ConstantsAreThereBeforeMain) {
  EXPECT_EQ(gEarly.boolean, kCFBooleanTrue);
  EXPECT_NE(gEarly.boolean, nullptr);
  EXPECT_EQ(gEarly.allocator, kCFAllocatorSystemDefault);
  EXPECT_EQ(gEarly.string, CFSTR("early"));
  EXPECT_NE(gEarly.retain, nullptr);
}

TEST(CFBase, ConstantStringsAreTheSameInCAndCPlusPlus) {
  EXPECT_EQ(constantStringMadeInC(), CFSTR("made in C"));
}
