// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFString.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/ObjectTesting.h"

using namespace tests;

namespace {

const std::vector<UniChar> kCafe = {'c', 'a', 'f', 0x00E9};

Held<CFStringRef> ofBytes(const std::string& bytes, CFStringEncoding encoding, Boolean external) {
  return Held<CFStringRef>(
      CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(bytes.data()),
                              static_cast<CFIndex>(bytes.size()), encoding, external));
}

}  // namespace

TEST(CFString, IsMadeOfACStringInEachByteEncoding) {
  EXPECT_EQ(textOf(stringOf("caf\x8e", kCFStringEncodingMacRoman).get()), "café");
  EXPECT_EQ(textOf(stringOf("caf\xe9", kCFStringEncodingISOLatin1).get()), "café");
  EXPECT_EQ(textOf(stringOf("caf\xc3\xa9", kCFStringEncodingUTF8).get()), "café");
  EXPECT_EQ(textOf(stringOf("cafe", kCFStringEncodingASCII).get()), "cafe");
}

TEST(CFString, IsEmptyForAnEmptyCString) {
  const Held<CFStringRef> empty = stringOf("", kCFStringEncodingMacRoman);
  ASSERT_TRUE(empty);
  EXPECT_EQ(CFStringGetLength(empty.get()), 0);
  EXPECT_TRUE(CFEqual(empty.get(), CFSTR("")));
}

TEST(CFString, IsNotMadeOfInvalidText) {
  EXPECT_FALSE(stringOf("\xC3(", kCFStringEncodingUTF8));
  EXPECT_FALSE(stringOf("caf\x8e", kCFStringEncodingASCII));
  EXPECT_FALSE(stringOf("a", 0x0500));
  EXPECT_FALSE(ofBytes("abc", kCFStringEncodingUTF16BE, false));
  EXPECT_FALSE(ofBytes("a", 0x0500, false));
}

TEST(CFString, IsNotMadeOfNothing) {
  EXPECT_EQ(CFStringCreateWithCString(nullptr, nullptr, kCFStringEncodingUTF8), nullptr);
  EXPECT_EQ(CFStringCreateWithPascalString(nullptr, nullptr, kCFStringEncodingMacRoman), nullptr);
  EXPECT_EQ(CFStringCreateWithBytes(nullptr, nullptr, 1, kCFStringEncodingUTF8, false), nullptr);
  EXPECT_EQ(CFStringCreateWithCharacters(nullptr, nullptr, 1), nullptr);
  EXPECT_EQ(CFStringCreateCopy(nullptr, nullptr), nullptr);
}

TEST(CFString, IsNotMadeOfNegativeLengths) {
  const UniChar unit = 'a';
  const UInt8 byte = 'a';
  EXPECT_EQ(CFStringCreateWithCharacters(nullptr, &unit, -1), nullptr);
  EXPECT_EQ(CFStringCreateWithBytes(nullptr, &byte, -1, kCFStringEncodingUTF8, false), nullptr);
  EXPECT_EQ(CFStringCreateWithCharacters(nullptr, &unit, std::numeric_limits<CFIndex>::max()),
            nullptr);
}

TEST(CFString, CStringsAndPascalStringsAreOfByteEncodings) {
  const UInt8 pascal[] = {2, 0, 'a'};
  EXPECT_FALSE(stringOf("ab", kCFStringEncodingUnicode));
  EXPECT_EQ(CFStringCreateWithPascalString(nullptr, pascal, kCFStringEncodingUTF16BE), nullptr);
}

TEST(CFString, IsMadeOfAPascalString) {
  const UInt8 pascal[] = {4, 'c', 'a', 'f', 0x8E, 'X'};
  const Held string(CFStringCreateWithPascalString(nullptr, pascal, kCFStringEncodingMacRoman));
  EXPECT_EQ(textOf(string.get()), "café");
  const UInt8 nothing[] = {0};
  const Held empty(CFStringCreateWithPascalString(nullptr, nothing, kCFStringEncodingMacRoman));
  ASSERT_TRUE(empty);
  EXPECT_EQ(CFStringGetLength(empty.get()), 0);
}

TEST(CFString, IsMadeOfCharacters) {
  EXPECT_EQ(textOf(stringOf(kCafe).get()), "café");
  EXPECT_EQ(textOf(stringOf(std::vector<UniChar>{0xD834, 0xDD1E}).get()), "\U0001D11E");
  const Held empty(CFStringCreateWithCharacters(nullptr, nullptr, 0));
  ASSERT_TRUE(empty);
  EXPECT_EQ(CFStringGetLength(empty.get()), 0);
}

TEST(CFString, KeepsZerosAndLoneSurrogatesInside) {
  const Held<CFStringRef> string = stringOf(std::vector<UniChar>{'a', 0, 0xD834});
  EXPECT_EQ(CFStringGetLength(string.get()), 3);
  EXPECT_EQ(CFStringGetCharacterAtIndex(string.get(), 1), 0);
  EXPECT_EQ(CFStringGetCharacterAtIndex(string.get(), 2), 0xD834);
  const Held<CFStringRef> bytes = ofBytes(std::string("a\0b", 3), kCFStringEncodingUTF8, false);
  EXPECT_EQ(CFStringGetLength(bytes.get()), 3);
}

TEST(CFString, TakesAByteOrderMarkOffAnExternalRepresentationAlone) {
  const std::string mark("\xEF\xBB\xBF");
  EXPECT_EQ(textOf(ofBytes(mark + "a", kCFStringEncodingUTF8, true).get()), "a");
  EXPECT_EQ(textOf(ofBytes(mark + "a", kCFStringEncodingUTF8, false).get()), mark + "a");
  EXPECT_EQ(textOf(ofBytes("\xFF\xFE\xE9\x01", kCFStringEncodingUnicode, true).get()), "\u01E9");
  EXPECT_EQ(textOf(ofBytes("\xFE\xFF\x01\xE9", kCFStringEncodingUnicode, true).get()), "\u01E9");
  EXPECT_EQ(textOf(ofBytes("\x01\xE9", kCFStringEncodingUnicode, true).get()), "\u01E9");
}

TEST(CFString, EqualsAndHashesByTextWhateverItsStorage) {
  const Held<CFStringRef> narrow = stringOf("caf\x8e", kCFStringEncodingMacRoman);
  const Held<CFStringRef> wide = stringOf(kCafe);
  const Held changing(CFStringCreateMutableCopy(nullptr, 0, wide.get()));
  const CFTypeRef all[] = {narrow.get(), wide.get(), changing.get()};
  for (const CFTypeRef a : all) {
    for (const CFTypeRef b : all) {
      EXPECT_TRUE(CFEqual(a, b));
      EXPECT_EQ(CFHash(a), CFHash(b));
    }
  }
}

TEST(CFString, DiffersByCaseLengthAndCharacters) {
  const Held<CFStringRef> wide = stringOf(kCafe);
  const Held<CFStringRef> narrow = stringOf("caf\x8f", kCFStringEncodingMacRoman);
  EXPECT_FALSE(CFEqual(CFSTR("abc"), CFSTR("abC")));
  EXPECT_FALSE(CFEqual(CFSTR("abc"), CFSTR("abcd")));
  EXPECT_FALSE(CFEqual(wide.get(), narrow.get()));
  EXPECT_NE(CFHash(CFSTR("abc")), CFHash(CFSTR("abd")));
}

TEST(CFString, GivesCharactersByIndex) {
  const Held<CFStringRef> string = stringOf("caf\x8e", kCFStringEncodingMacRoman);
  EXPECT_EQ(CFStringGetCharacterAtIndex(string.get(), 0), 'c');
  EXPECT_EQ(CFStringGetCharacterAtIndex(string.get(), 3), 0x00E9);
  EXPECT_EQ(CFStringGetCharacterAtIndex(string.get(), 4), 0);
  EXPECT_EQ(CFStringGetCharacterAtIndex(string.get(), -1), 0);
}

TEST(CFString, GivesTheCharactersOfARange) {
  for (const Held<CFStringRef>& string :
       {stringOf("caf\x8e", kCFStringEncodingMacRoman), stringOf(kCafe)}) {
    UniChar units[3] = {1, 2, 3};
    CFStringGetCharacters(string.get(), {2, 2}, units);
    EXPECT_EQ(units[0], 'f');
    EXPECT_EQ(units[1], 0x00E9);
    EXPECT_EQ(units[2], 3);
  }
}

TEST(CFString, GivesNoCharactersOfARangeOutsideItself) {
  UniChar unit = 7;
  for (const CFRange range :
       {CFRange{0, 4}, {3, 1}, {-1, 1}, {1, -1}, {1, std::numeric_limits<CFIndex>::max()}}) {
    CFStringGetCharacters(CFSTR("abc"), range, &unit);
    EXPECT_EQ(unit, 7);
  }
}

TEST(CFString, CopiesByRetainingWhatDoesNotChange) {
  const Held<CFStringRef> string = stringOf("text");
  const Held copy(CFStringCreateCopy(nullptr, string.get()));
  EXPECT_EQ(copy.get(), string.get());
  EXPECT_EQ(CFGetRetainCount(string.get()), 2);
}

TEST(CFString, CopiesMutableTextAsItIsNow) {
  const Held changing(CFStringCreateMutable(nullptr, 0));
  CFStringAppend(changing.get(), CFSTR("before"));
  const Held copy(CFStringCreateCopy(nullptr, changing.get()));
  CFStringAppend(changing.get(), CFSTR(" and after"));
  EXPECT_EQ(textOf(copy.get()), "before");
}

TEST(CFString, CopiesIntoAnotherAllocatorsMemory) {
  CountingAllocator allocator;
  const Held<CFStringRef> wide = stringOf(kCafe);
  const Held narrow(CFStringCreateCopy(allocator.get(), CFSTR("text")));
  const Held copy(CFStringCreateCopy(allocator.get(), wide.get()));
  EXPECT_EQ(CFGetAllocator(copy.get()), allocator.get());
  EXPECT_TRUE(CFEqual(copy.get(), wide.get()));
  EXPECT_EQ(textOf(narrow.get()), "text");
  EXPECT_EQ(allocator.blocks(), 2);
}

TEST(CFString, MakesSubstrings) {
  const Held<CFStringRef> wide = stringOf(kCafe);
  const Held end(CFStringCreateWithSubstring(nullptr, wide.get(), {2, 2}));
  const Held middle(CFStringCreateWithSubstring(nullptr, CFSTR("abcd"), {1, 2}));
  const Held nothing(CFStringCreateWithSubstring(nullptr, CFSTR("abcd"), {4, 0}));
  EXPECT_EQ(textOf(end.get()), "fé");
  EXPECT_EQ(textOf(middle.get()), "bc");
  EXPECT_EQ(textOf(nothing.get()), "");
  EXPECT_EQ(CFStringCreateWithSubstring(nullptr, CFSTR("abcd"), {3, 2}), nullptr);
  EXPECT_EQ(CFStringCreateWithSubstring(nullptr, nullptr, {0, 0}), nullptr);
}

TEST(CFString, IsOneBlockOfMemoryHoweverStored) {
  CountingAllocator allocator;
  const Held<CFStringRef> wide(CFStringCreateWithCharacters(allocator.get(), kCafe.data(), 4));
  EXPECT_EQ(allocator.blocks(), 1);
  const Held<CFStringRef> narrow(
      CFStringCreateWithCString(allocator.get(), "narrow", kCFStringEncodingUTF8));
  EXPECT_EQ(allocator.blocks(), 2);
}

TEST(CFString, IsNullWhenThereIsNoMemory) {
  CountingAllocator allocator;
  const Held<CFStringRef> wide = stringOf(kCafe);
  allocator.failAfter(0);
  EXPECT_EQ(CFStringCreateWithCString(allocator.get(), "a", kCFStringEncodingUTF8), nullptr);
  EXPECT_EQ(CFStringCreateWithCString(allocator.get(), "\xC3\xA9", kCFStringEncodingUTF8), nullptr);
  EXPECT_EQ(CFStringCreateCopy(allocator.get(), wide.get()), nullptr);
  EXPECT_EQ(CFStringCreateMutable(allocator.get(), 0), nullptr);
  EXPECT_EQ(CFStringCreateWithCString(kCFAllocatorNull, "a", kCFStringEncodingUTF8), nullptr);
}

TEST(CFString, TakesOtherObjectsForNoText) {
  const CFStringRef notText = reinterpret_cast<CFStringRef>(kCFBooleanTrue);
  EXPECT_EQ(CFStringGetLength(notText), 0);
  EXPECT_EQ(CFStringGetLength(nullptr), 0);
  EXPECT_EQ(CFStringGetCharacterAtIndex(notText, 0), 0);
  EXPECT_EQ(CFStringCreateCopy(nullptr, notText), nullptr);
}

TEST(CFString, DescribesItsText) {
  EXPECT_THAT(describe(CFSTR("some text")), testing::HasSubstr("{contents = \"some text\"}"));
}

TEST(CFString, IsReadByManyThreads) {
  const Held<CFStringRef> wide = stringOf(kCafe);
  const Held<CFStringRef> narrow = stringOf("caf\x8e", kCFStringEncodingMacRoman);
  std::vector<std::thread> threads;
  std::vector<CFHashCode> hashes(4);
  for (CFHashCode& hash : hashes) {
    threads.emplace_back([&] {
      EXPECT_TRUE(CFEqual(wide.get(), narrow.get()));
      hash = CFHash(wide.get());
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(hashes, testing::Each(CFHash(narrow.get())));
}
