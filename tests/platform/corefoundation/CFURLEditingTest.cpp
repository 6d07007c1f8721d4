// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFURL.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/platform/corefoundation/ObjectTesting.h"

namespace tests::urlEditing {

namespace {

std::string taken(CFURLRef url) { return textOf(CFURLGetString(Held<CFURLRef>(url).get())); }

std::string appended(const char* text, const char* name, Boolean isDirectory) {
  return taken(CFURLCreateCopyAppendingPathComponent(nullptr, urlOf(text).get(),
                                                     stringOf(name).get(), isDirectory));
}

std::string unescaped(const char* text, CFStringRef leave) {
  return textOf(Held<CFStringRef>(CFURLCreateStringByReplacingPercentEscapes(
                                      nullptr, stringOf(text).get(), leave))
                    .get());
}

std::string escaped(const char* text, CFStringRef leave = nullptr, CFStringRef more = nullptr,
                    CFStringEncoding encoding = kCFStringEncodingUTF8) {
  return textOf(Held<CFStringRef>(CFURLCreateStringByAddingPercentEscapes(
                                      nullptr, stringOf(text).get(), leave, more, encoding))
                    .get());
}

}  // namespace

TEST(CFURLEditing, AppendsAComponent) {
  EXPECT_EQ(appended("x:/a", "b", false), "x:/a/b");
  EXPECT_EQ(appended("x:/a/", "b c", true), "x:/a/b%20c/");
  EXPECT_EQ(appended("x:/", "b", false), "x:/b");
  EXPECT_EQ(appended("a", "b?", false), "a/b%3F");
  EXPECT_EQ(appended("x:/a?q", "b", false), "x:/a/b?q");
  EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, urlOf("x:/").get(), nullptr, false),
            nullptr);
  EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, nullptr, CFSTR("a"), false), nullptr);
  EXPECT_EQ(appended("mailto:a", "b", false), "<null>");
}

TEST(CFURLEditing, DeletesTheLastComponent) {
  const struct {
    const char* from;
    const char* to;
  } cases[] = {{"x:/a/b", "x:/a/"}, {"x:/a/b/", "x:/a/"}, {"x:/a", "x:/"},  {"x:/", "x:/../"},
               {"a", "./"},         {"a/b", "a/"},        {"..", "../../"}, {"x:/a?q", "x:/?q"}};
  for (const auto& each : cases) {
    EXPECT_EQ(taken(CFURLCreateCopyDeletingLastPathComponent(nullptr, urlOf(each.from).get())),
              each.to)
        << each.from;
  }
}

TEST(CFURLEditing, AppendsAnExtension) {
  const auto append = [](const char* text) {
    return taken(CFURLCreateCopyAppendingPathExtension(nullptr, urlOf(text).get(), CFSTR("t t")));
  };
  EXPECT_EQ(append("x:/a"), "x:/a.t%20t");
  EXPECT_EQ(append("x:/a/"), "x:/a.t%20t/");
  EXPECT_EQ(append("x:/a.b"), "x:/a.b.t%20t");
  EXPECT_EQ(append("x:/"), "<null>");
}

TEST(CFURLEditing, DeletesAnExtension) {
  const auto cut = [](const char* text) {
    return taken(CFURLCreateCopyDeletingPathExtension(nullptr, urlOf(text).get()));
  };
  EXPECT_EQ(cut("x:/a.b"), "x:/a");
  EXPECT_EQ(cut("x:/a.b/"), "x:/a/");
  EXPECT_EQ(cut("x:/a.b.c"), "x:/a.b");
  EXPECT_EQ(cut("x:/.b"), "x:/.b");
  EXPECT_EQ(cut("x:/"), "x:/");
}

TEST(CFURLEditing, KeepsTheBase) {
  const auto base = urlOf("x:/a/");
  const Held url(CFURLCreateWithString(nullptr, CFSTR("b"), base.get()));
  const Held longer(CFURLCreateCopyAppendingPathComponent(nullptr, url.get(), CFSTR("c"), false));
  EXPECT_EQ(textOf(CFURLGetString(longer.get())), "b/c");
  EXPECT_EQ(CFURLGetBaseURL(longer.get()), base.get());
}

TEST(CFURLEditing, ReplacesEscapes) {
  EXPECT_EQ(unescaped("a%20b%C3%A9%2f", CFSTR("")), "a bé/");
  EXPECT_EQ(unescaped("a%20b%C3%A9%2f", CFSTR("/ ")), "a%20bé%2f");
  EXPECT_EQ(unescaped("a%20b", nullptr), "a%20b");
  EXPECT_EQ(unescaped("100%", CFSTR("")), "100%");
  EXPECT_EQ(unescaped("%4", CFSTR("")), "%4");
  EXPECT_EQ(unescaped("%zz", CFSTR("")), "%zz");
  EXPECT_EQ(unescaped("%FF", CFSTR("")), "<null>");
  EXPECT_EQ(CFURLCreateStringByReplacingPercentEscapes(nullptr, nullptr, CFSTR("")), nullptr);
}

TEST(CFURLEditing, AddsEscapes) {
  EXPECT_EQ(escaped("a b%#/?é"), "a%20b%25%23/?%C3%A9");
  EXPECT_EQ(escaped("a b#", CFSTR("#"), CFSTR("a")), "%61%20b#");
  EXPECT_EQ(escaped("\xf0\x9f\x90\x88"), "%F0%9F%90%88");
  EXPECT_EQ(escaped("é", nullptr, nullptr, kCFStringEncodingISOLatin1), "%E9");
  EXPECT_EQ(escaped("é", nullptr, nullptr, kCFStringEncodingMacRoman), "%8E");
  EXPECT_EQ(escaped("é", nullptr, nullptr, kCFStringEncodingASCII), "<null>");
  EXPECT_EQ(escaped("a", nullptr, nullptr, kCFStringEncodingUTF16), "<null>");
}

}  // namespace tests::urlEditing
