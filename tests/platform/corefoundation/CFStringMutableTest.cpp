// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFString.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/ObjectTesting.h"

using namespace tests;

TEST(CFMutableString, StartsEmpty) {
  const Held text(CFStringCreateMutable(nullptr, 0));
  EXPECT_EQ(CFStringGetLength(text.get()), 0);
  EXPECT_TRUE(CFEqual(text.get(), CFSTR("")));
  EXPECT_EQ(CFHash(text.get()), CFHash(CFSTR("")));
  EXPECT_EQ(CFGetTypeID(text.get()), CFStringGetTypeID());
}

TEST(CFMutableString, AppendsTextOfEachKind) {
  const Held text(CFStringCreateMutable(nullptr, 0));
  const UniChar units[] = {0x20AC, 'u'};
  const UInt8 pascal[] = {1, 0x8E};
  CFStringAppend(text.get(), CFSTR("narrow "));
  CFStringAppend(text.get(), stringOf("wide\u0416 ").get());
  CFStringAppendCharacters(text.get(), units, 2);
  CFStringAppendCString(text.get(), " \xC3\xA9", kCFStringEncodingUTF8);
  CFStringAppendPascalString(text.get(), pascal, kCFStringEncodingMacRoman);
  EXPECT_EQ(textOf(text.get()), "narrow wide\u0416 \u20acu éé");
}

TEST(CFMutableString, AppendsItself) {
  const Held text(CFStringCreateMutable(nullptr, 0));
  CFStringAppend(text.get(), CFSTR("abc"));
  for (int i = 0; i < 4; ++i) CFStringAppend(text.get(), text.get());
  EXPECT_EQ(CFStringGetLength(text.get()), 48);
  EXPECT_EQ(textOf(text.get()).substr(0, 9), "abcabcabc");
  EXPECT_EQ(textOf(text.get()).substr(39), "abcabcabc");
}

TEST(CFMutableString, GrowsFarAndKeepsItsText) {
  CountingAllocator allocator;
  std::string expected;
  {
    const Held text(CFStringCreateMutable(allocator.get(), 0));
    for (int i = 0; i < 1000; ++i) {
      CFStringAppendFormat(text.get(), nullptr, CFSTR("%d,"), i);
      expected += std::to_string(i) + ",";
    }
    EXPECT_EQ(textOf(text.get()), expected);
    EXPECT_LT(allocator.allocations(), 20);
    EXPECT_EQ(allocator.blocks(), 2);
  }
  EXPECT_EQ(allocator.blocks(), 0);
}

TEST(CFMutableString, ChangesItsHashWithItsText) {
  const Held text(CFStringCreateMutable(nullptr, 0));
  CFStringAppend(text.get(), CFSTR("a"));
  EXPECT_EQ(CFHash(text.get()), CFHash(CFSTR("a")));
  CFStringAppend(text.get(), CFSTR("b"));
  EXPECT_EQ(CFHash(text.get()), CFHash(CFSTR("ab")));
}

TEST(CFMutableString, CopiesAndThenStandsAlone) {
  const Held original(CFStringCreateMutableCopy(nullptr, 0, CFSTR("text")));
  const Held copy(CFStringCreateMutableCopy(nullptr, 0, original.get()));
  CFStringAppend(original.get(), CFSTR("!"));
  EXPECT_EQ(textOf(copy.get()), "text");
  EXPECT_EQ(textOf(original.get()), "text!");
}

TEST(CFMutableString, AppendsNothingBeyondItsMaximumLength) {
  const Held text(CFStringCreateMutable(nullptr, 4));
  CFStringAppend(text.get(), CFSTR("abc"));
  CFStringAppend(text.get(), CFSTR("de"));
  EXPECT_EQ(textOf(text.get()), "abc");
  CFStringAppend(text.get(), CFSTR("d"));
  EXPECT_EQ(textOf(text.get()), "abcd");
  EXPECT_EQ(CFStringCreateMutableCopy(nullptr, 3, CFSTR("abcd")), nullptr);
  EXPECT_EQ(CFStringCreateMutable(nullptr, -1), nullptr);
}

TEST(CFMutableString, AppendsNothingInvalid) {
  const Held text(CFStringCreateMutable(nullptr, 0));
  const UniChar unit = 'x';
  CFStringAppendCString(text.get(), "\xC3(", kCFStringEncodingUTF8);
  CFStringAppendCString(text.get(), "x", kCFStringEncodingUnicode);
  CFStringAppendCString(text.get(), nullptr, kCFStringEncodingUTF8);
  CFStringAppendPascalString(text.get(), nullptr, kCFStringEncodingUTF8);
  CFStringAppendCharacters(text.get(), &unit, -1);
  CFStringAppendCharacters(text.get(), nullptr, 1);
  CFStringAppend(text.get(), nullptr);
  CFStringAppend(text.get(), reinterpret_cast<CFStringRef>(kCFBooleanTrue));
  EXPECT_EQ(CFStringGetLength(text.get()), 0);
}

TEST(CFMutableString, ImmutableTextDoesNotChange) {
  const Held<CFStringRef> text = stringOf("fixed");
  const CFMutableStringRef forced = const_cast<CFMutableStringRef>(text.get());
  CFStringAppend(forced, CFSTR("x"));
  CFStringAppendCString(forced, "x", kCFStringEncodingUTF8);
  CFStringAppendFormat(forced, nullptr, CFSTR("%d"), 1);
  EXPECT_EQ(textOf(text.get()), "fixed");
}

TEST(CFMutableString, StaysAsItIsWhenThereIsNoMemory) {
  CountingAllocator allocator;
  const Held text(CFStringCreateMutable(allocator.get(), 0));
  CFStringAppend(text.get(), CFSTR("kept"));
  allocator.failAfter(0);
  CFStringAppend(text.get(), CFSTR("much longer than what was reserved"));
  CFStringAppendCString(text.get(), "much longer than what was reserved", kCFStringEncodingUTF8);
  EXPECT_EQ(textOf(text.get()), "kept");
  allocator.recover();
  CFStringAppend(text.get(), CFSTR(" and grown again"));
  EXPECT_EQ(textOf(text.get()), "kept and grown again");
}

TEST(CFMutableString, CopiesToNullWhenThereIsNoMemoryForTheText) {
  CountingAllocator allocator;
  allocator.failAfter(1);
  EXPECT_EQ(CFStringCreateMutableCopy(allocator.get(), 0, CFSTR("text")), nullptr);
  EXPECT_EQ(allocator.blocks(), 0);
  EXPECT_EQ(CFStringCreateMutableCopy(nullptr, 0, nullptr), nullptr);
}
