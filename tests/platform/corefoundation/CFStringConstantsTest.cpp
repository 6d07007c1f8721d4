// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFString.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/corefoundation/ObjectTesting.h"

using namespace tests;

TEST(ConstantStrings, AreTheSameObjectForTheSameText) {
  const std::string text = "constant";
  EXPECT_EQ(CFSTR("constant"), CFSTR("constant"));
  EXPECT_EQ(__CFStringMakeConstantString(text.c_str()), CFSTR("constant"));
  EXPECT_NE(CFSTR("constant"), CFSTR("constants"));
}

TEST(ConstantStrings, HaveTheirText) {
  EXPECT_EQ(textOf(CFSTR("some text")), "some text");
  EXPECT_EQ(CFStringGetLength(CFSTR("")), 0);
}

TEST(ConstantStrings, TakeBytesBeyondASCIIAsMacRoman) {
  EXPECT_EQ(textOf(CFSTR("caf\x8e")), "caf\u00e9");
}

TEST(ConstantStrings, EqualStringsOfTheSameText) {
  const Held<CFStringRef> string = stringOf("shared text");
  EXPECT_TRUE(CFEqual(CFSTR("shared text"), string.get()));
  EXPECT_EQ(CFHash(CFSTR("shared text")), CFHash(string.get()));
}

TEST(ConstantStrings, AreNullForNull) { EXPECT_EQ(__CFStringMakeConstantString(nullptr), nullptr); }

// More texts than the table has buckets, all of them made by each of several threads.
TEST(ConstantStrings, AreUniqueWhateverThreadMakesThem) {
  constexpr int kTexts = 3000;
  constexpr int kThreads = 4;
  std::vector<std::vector<CFStringRef>> made(kThreads);
  std::vector<std::thread> threads;
  for (std::vector<CFStringRef>& mine : made) {
    threads.emplace_back([&mine] {
      for (int i = 0; i < kTexts; ++i) {
        mine.push_back(__CFStringMakeConstantString(("text " + std::to_string(i)).c_str()));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::vector<CFStringRef>& mine : made) EXPECT_EQ(mine, made[0]);
  EXPECT_EQ(std::set<CFStringRef>(made[0].begin(), made[0].end()).size(), std::size_t{kTexts});
  EXPECT_EQ(textOf(made[0][2999]), "text 2999");
}
