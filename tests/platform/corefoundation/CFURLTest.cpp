// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFURL.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/ObjectTesting.h"

namespace tests::urls {

namespace {

std::string takenText(CFStringRef string) { return textOf(Held<CFStringRef>(string).get()); }
std::string textOf(const Held<CFURLRef>& url) { return tests::textOf(CFURLGetString(url.get())); }
std::string absolute(CFURLRef url) { return textOf(Held<CFURLRef>(CFURLCopyAbsoluteURL(url))); }

}  // namespace

TEST(CFURL, KeepsItsText) {
  const auto url = urlOf("http://host:80/a%20b;p?q=1#f");
  ASSERT_TRUE(url);
  EXPECT_EQ(textOf(url), "http://host:80/a%20b;p?q=1#f");
  EXPECT_EQ(CFGetTypeID(url.get()), CFURLGetTypeID());
  EXPECT_EQ(CFURLGetBaseURL(url.get()), nullptr);
}

TEST(CFURL, IsMadeOfBytesInAnEncoding) {
  const UInt8 bytes[] = {0, 'x', 0, ':', 0, '/', 0, 'a'};
  const Held url(CFURLCreateWithBytes(nullptr, bytes, 8, kCFStringEncodingUTF16BE, nullptr));
  EXPECT_EQ(textOf(url), "x:/a");
}

TEST(CFURL, IsNotMadeOfWhatIsNotLegal) {
  for (const char* text : {"", "a b", "http://h/%", "http://h/%4", "http://h/%4g", "a#b#c", "a\"b",
                           "x:/\xc3\xa9", "<a>", "a\\b", "a^b", "`", "{a}", "a|b"}) {
    EXPECT_FALSE(urlOf(text)) << text;
  }
  EXPECT_EQ(CFURLCreateWithString(nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(CFURLCreateWithBytes(nullptr, nullptr, 1, kCFStringEncodingUTF8, nullptr), nullptr);
}

TEST(CFURL, RefusesABaseOfAnotherType) {
  const auto base = reinterpret_cast<CFURLRef>(CFSTR("x:/"));
  EXPECT_EQ(CFURLCreateWithString(nullptr, CFSTR("a"), base), nullptr);
}

TEST(CFURL, AnswersNothingForWhatIsNoURL) {
  const auto url = reinterpret_cast<CFURLRef>(CFSTR("x:/"));
  for (const CFURLRef none : {CFURLRef{}, url}) {
    EXPECT_EQ(CFURLGetString(none), nullptr);
    EXPECT_EQ(CFURLGetBaseURL(none), nullptr);
    EXPECT_EQ(CFURLCopyAbsoluteURL(none), nullptr);
    EXPECT_EQ(CFURLCopyScheme(none), nullptr);
    EXPECT_EQ(CFURLCopyNetLocation(none), nullptr);
    EXPECT_EQ(CFURLCopyPath(none), nullptr);
    EXPECT_EQ(CFURLCopyLastPathComponent(none), nullptr);
    EXPECT_EQ(CFURLCopyPathExtension(none), nullptr);
    EXPECT_FALSE(CFURLHasDirectoryPath(none));
    EXPECT_FALSE(CFURLCanBeDecomposed(none));
  }
}

TEST(CFURL, GivesItsComponents) {
  const auto url = urlOf("http://user@host:80/a/b%2fc.txt;p?q#f");
  EXPECT_EQ(takenText(CFURLCopyScheme(url.get())), "http");
  EXPECT_EQ(takenText(CFURLCopyNetLocation(url.get())), "user@host:80");
  EXPECT_EQ(takenText(CFURLCopyPath(url.get())), "/a/b%2fc.txt");
  EXPECT_EQ(takenText(CFURLCopyLastPathComponent(url.get())), "b/c.txt");
  EXPECT_EQ(takenText(CFURLCopyPathExtension(url.get())), "txt");
}

TEST(CFURL, HasTheSchemeOfItsBase) {
  const auto base = urlOf("http://host/");
  EXPECT_EQ(takenText(CFURLCopyScheme(urlOf("a", base.get()).get())), "http");
  EXPECT_EQ(CFURLCopyScheme(urlOf("a").get()), nullptr);
  EXPECT_EQ(CFURLCopyNetLocation(urlOf("a", base.get()).get()), nullptr);
}

TEST(CFURL, CannotAlwaysBeDecomposed) {
  const auto url = urlOf("mailto:somebody@host");
  EXPECT_FALSE(CFURLCanBeDecomposed(url.get()));
  EXPECT_EQ(CFURLCopyPath(url.get()), nullptr);
  EXPECT_EQ(CFURLCopyLastPathComponent(url.get()), nullptr);
  EXPECT_TRUE(CFURLCanBeDecomposed(urlOf("a/b").get()));
  EXPECT_TRUE(CFURLCanBeDecomposed(urlOf("x://h").get()));
}

struct NameCase {
  const char* text;
  const char* name;
  const char* extension;
  bool isDirectory;
};

TEST(CFURL, TellsTheLastNameItsExtensionAndWhetherItIsADirectory) {
  const NameCase cases[] = {
      {"x:/", "/", "<null>", true},         {"x://h", "", "<null>", false},
      {"x:/a", "a", "<null>", false},       {"x:/a.b/", "a.b", "b", true},
      {"x:/a.b.c", "a.b.c", "c", false},    {"x:/.hidden", ".hidden", "<null>", false},
      {"x:/a.", "a.", "<null>", false},     {"x:/a/.", ".", "<null>", true},
      {"x:/a/..", "..", "<null>", true},    {"a%2Eb", "a.b", "b", false},
      {"x:/d.e/f", "f", "<null>", false},   {"x:/%C3%A9.t", "é.t", "t", false},
      {"x:/%FF", "<null>", "<null>", false}};
  for (const NameCase& each : cases) {
    const auto url = urlOf(each.text);
    EXPECT_EQ(takenText(CFURLCopyLastPathComponent(url.get())), each.name) << each.text;
    EXPECT_EQ(takenText(CFURLCopyPathExtension(url.get())), each.extension) << each.text;
    EXPECT_EQ(CFURLHasDirectoryPath(url.get()) != 0, each.isDirectory) << each.text;
  }
}

TEST(CFURL, ResolvesRelativeTexts) {
  const auto base = urlOf("http://h/b/c/d;p?q#f");
  const struct {
    const char* relative;
    const char* absolute;
  } cases[] = {{"g", "http://h/b/c/g"},      {"./g", "http://h/b/c/g"},
               {"g/", "http://h/b/c/g/"},    {"/g", "http://h/g"},
               {"//g", "http://g"},          {"?y", "http://h/b/c/d?y"},
               {"g?y", "http://h/b/c/g?y"},  {"#s", "http://h/b/c/d;p?q#s"},
               {"g#s", "http://h/b/c/g#s"},  {"", "http://h/b/c/d;p?q"},
               {".", "http://h/b/c/"},       {"./", "http://h/b/c/"},
               {"..", "http://h/b/"},        {"../g", "http://h/b/g"},
               {"../..", "http://h/"},       {"../../g", "http://h/g"},
               {"../../../g", "http://h/g"}, {"/./g", "http://h/g"},
               {"/../g", "http://h/g"},      {"g.", "http://h/b/c/g."},
               {"..g", "http://h/b/c/..g"},  {"g/./h", "http://h/b/c/g/h"},
               {"g/../h", "http://h/b/c/h"}, {"x:y", "x:y"}};
  for (const auto& each : cases) {
    const auto url = urlOf(each.relative, base.get());
    ASSERT_TRUE(url) << each.relative;
    EXPECT_EQ(absolute(url.get()), each.absolute) << each.relative;
    EXPECT_EQ(textOf(url), each.relative);
  }
}

TEST(CFURL, ResolvesThroughBasesOfBases) {
  const auto root = urlOf("x://h/a/");
  const auto folder = urlOf("b/", root.get());
  EXPECT_EQ(absolute(urlOf("c", folder.get()).get()), "x://h/a/b/c");
}

TEST(CFURL, IsItsOwnAbsoluteURLWithoutABase) {
  const auto url = urlOf("x:/a");
  const Held same(CFURLCopyAbsoluteURL(url.get()));
  EXPECT_EQ(same.get(), url.get());
  EXPECT_EQ(CFGetRetainCount(url.get()), 2);
}

TEST(CFURL, NeedsNoBaseForATextWithAScheme) {
  const auto base = urlOf("x:/a");
  EXPECT_EQ(CFURLGetBaseURL(urlOf("y:/b", base.get()).get()), nullptr);
  EXPECT_EQ(CFGetRetainCount(base.get()), 1);
}

TEST(CFURL, IsEqualByTextAndBase) {
  const auto base = urlOf("x:/a/");
  const auto sameBase = urlOf("x:/a/");
  const auto one = urlOf("b", base.get());
  const auto same = urlOf("b", sameBase.get());
  EXPECT_TRUE(CFEqual(one.get(), same.get()));
  EXPECT_EQ(CFHash(one.get()), CFHash(same.get()));
  EXPECT_FALSE(CFEqual(one.get(), urlOf("b").get()));
  EXPECT_FALSE(CFEqual(one.get(), urlOf("c", base.get()).get()));
  EXPECT_FALSE(CFEqual(one.get(), urlOf("x:/a/b").get()));
}

TEST(CFURL, DescribesItself) {
  const auto base = urlOf("x:/a/");
  const auto url = urlOf("b", base.get());
  const std::string text = describe(url.get());
  EXPECT_EQ(text.find("<CFURL 0x"), 0U) << text;
  EXPECT_NE(text.find("{string = b, base = x:/a/}"), std::string::npos) << text;
  const Held formatted(CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%@"), url.get()));
  EXPECT_EQ(tests::textOf(formatted.get()), "b -- x:/a/");
}

TEST(CFURL, TakesAllItsMemoryFromItsAllocatorAndGivesItBack) {
  CountingAllocator allocator;
  for (int allowed = 0;; ++allowed) {
    allocator.failAfter(allowed);
    const Held url(CFURLCreateWithString(allocator.get(), CFSTR("x:/a"), nullptr));
    if (url) {
      EXPECT_EQ(allowed, 2);
      break;
    }
    EXPECT_EQ(allocator.blocks(), 0);
  }
  EXPECT_EQ(allocator.blocks(), 0);
}

}  // namespace tests::urls
