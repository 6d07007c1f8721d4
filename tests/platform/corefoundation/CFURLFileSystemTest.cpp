// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFURL.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/platform/corefoundation/ObjectTesting.h"

namespace tests::urlPaths {

namespace {

Held<CFURLRef> urlOfPath(const char* path, Boolean isDirectory = false,
                         CFURLPathStyle style = kCFURLPOSIXPathStyle) {
  return Held<CFURLRef>(
      CFURLCreateWithFileSystemPath(nullptr, stringOf(path).get(), style, isDirectory));
}

Held<CFURLRef> urlOfText(const char* text) {
  return Held<CFURLRef>(CFURLCreateWithString(nullptr, stringOf(text).get(), nullptr));
}

std::string textOfUrl(const Held<CFURLRef>& url) { return textOf(CFURLGetString(url.get())); }

std::string pathOf(const Held<CFURLRef>& url, CFURLPathStyle style = kCFURLPOSIXPathStyle) {
  return textOf(Held<CFStringRef>(CFURLCopyFileSystemPath(url.get(), style)).get());
}

std::string representation(CFURLRef url, Boolean resolve = true, CFIndex room = 256) {
  UInt8 buffer[256];
  if (!CFURLGetFileSystemRepresentation(url, resolve, buffer, room)) return "<none>";
  return reinterpret_cast<const char*>(buffer);
}

}  // namespace

TEST(CFURLFileSystem, MakesURLsOfPaths) {
  const struct {
    const char* path;
    Boolean isDirectory;
    const char* text;
  } cases[] = {{"/a/b", false, "file://localhost/a/b"},
               {"/a/b", true, "file://localhost/a/b/"},
               {"/a/b/", false, "file://localhost/a/b"},
               {"/a/b//", true, "file://localhost/a/b/"},
               {"/", true, "file://localhost/"},
               {"/", false, "file://localhost/"},
               {"/a b%c", false, "file://localhost/a%20b%25c"},
               {"/a?b#c;d", false, "file://localhost/a%3Fb%23c%3Bd"},
               {"/a:b@c&d=e+f$g,h", false, "file://localhost/a:b@c&d=e+f$g,h"},
               {"/caf\xc3\xa9", false, "file://localhost/caf%C3%A9"},
               {"/<[\"{`^|\\}]>", false, "file://localhost/%3C%5B%22%7B%60%5E%7C%5C%7D%5D%3E"}};
  for (const auto& each : cases) {
    EXPECT_EQ(textOfUrl(urlOfPath(each.path, each.isDirectory)), each.text) << each.path;
  }
}

TEST(CFURLFileSystem, GivesThePathBack) {
  for (const char* path : {"/", "/a", "/a b/c%41", "/caf\xc3\xa9;?#", "/a:b/\xf0\x9f\x90\x88"}) {
    for (const Boolean isDirectory : {false, true}) {
      const auto url = urlOfPath(path, isDirectory);
      EXPECT_EQ(pathOf(url), path);
      EXPECT_EQ(representation(url.get()), path);
      EXPECT_EQ(CFURLGetBaseURL(url.get()), nullptr);
    }
  }
}

TEST(CFURLFileSystem, TakesARelativePathFromTheCurrentFolder) {
  const auto url = urlOfPath("a b/c");
  EXPECT_EQ(textOfUrl(url), "a%20b/c");
  EXPECT_EQ(pathOf(url), "a b/c");
  EXPECT_EQ(representation(url.get(), false), "a b/c");
  const std::string here = std::filesystem::canonical(".").string();
  EXPECT_EQ(representation(url.get()), here + "/a b/c");
}

TEST(CFURLFileSystem, TakesARelativePathFromABase) {
  const auto base = urlOfPath("/x/y", true);
  const Held url(CFURLCreateWithFileSystemPathRelativeToBase(
      nullptr, CFSTR("../z"), kCFURLPOSIXPathStyle, false, base.get()));
  EXPECT_EQ(representation(url.get()), "/x/z");
  EXPECT_EQ(CFURLGetBaseURL(url.get()), base.get());
}

TEST(CFURLFileSystem, NeedsNoBaseForAnAbsolutePath) {
  const auto base = urlOfPath("/x/y", true);
  const Held url(CFURLCreateWithFileSystemPathRelativeToBase(
      nullptr, CFSTR("/z"), kCFURLPOSIXPathStyle, false, base.get()));
  EXPECT_EQ(CFURLGetBaseURL(url.get()), nullptr);
}

TEST(CFURLFileSystem, DoesNotTakeAColonInANameForAScheme) {
  const auto base = urlOfPath("/x", true);
  const Held url(CFURLCreateWithFileSystemPathRelativeToBase(
      nullptr, CFSTR("a:b"), kCFURLPOSIXPathStyle, false, base.get()));
  EXPECT_EQ(textOf(CFURLGetString(url.get())), "./a:b");
  EXPECT_EQ(representation(url.get()), "/x/a:b");
}

TEST(CFURLFileSystem, RefusesWhatIsNoPath) {
  EXPECT_FALSE(urlOfPath(""));
  EXPECT_FALSE(urlOfPath("/a", false, static_cast<CFURLPathStyle>(2)));
  EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, nullptr, kCFURLPOSIXPathStyle, false), nullptr);
  const Held nul(stringOf({'/', 'a', 0, 'b'}));
  EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, nul.get(), kCFURLPOSIXPathStyle, false),
            nullptr);
  const Held half(stringOf({'/', 0xD800}));
  EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, half.get(), kCFURLPOSIXPathStyle, false),
            nullptr);
}

TEST(CFURLFileSystem, KeepsBytesThatAreNotText) {
  const UInt8 bytes[] = {'/', 'a', 0xFF, 'b'};
  const Held url(CFURLCreateFromFileSystemRepresentation(nullptr, bytes, 4, false));
  EXPECT_EQ(textOfUrl(url), "file://localhost/a%FFb");
  EXPECT_EQ(representation(url.get()),
            "/a\xff"
            "b");
  EXPECT_EQ(CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle), nullptr);
  EXPECT_EQ(CFURLCreateFromFileSystemRepresentation(nullptr, nullptr, 4, false), nullptr);
  EXPECT_EQ(CFURLCreateFromFileSystemRepresentation(nullptr, bytes, 0, false), nullptr);
}

TEST(CFURLFileSystem, NeedsRoomForThePathAndItsTerminator) {
  const auto url = urlOfPath("/abc");
  EXPECT_EQ(representation(url.get(), true, 5), "/abc");
  EXPECT_EQ(representation(url.get(), true, 4), "<none>");
  EXPECT_EQ(representation(url.get(), true, 0), "<none>");
  EXPECT_FALSE(CFURLGetFileSystemRepresentation(url.get(), true, nullptr, 256));
  EXPECT_EQ(representation(nullptr), "<none>");
  EXPECT_EQ(representation(nullptr, false), "<none>");
}

TEST(CFURLFileSystem, HasNoPathWhereNoneIsPossible) {
  for (const char* text : {"mailto:a", "file://localhost", "file:///a%00b"}) {
    const auto url = urlOfText(text);
    ASSERT_TRUE(url) << text;
    EXPECT_EQ(representation(url.get()), "<none>") << text;
    EXPECT_EQ(pathOf(url), "<null>") << text;
  }
  EXPECT_EQ(pathOf(urlOfPath("/a"), static_cast<CFURLPathStyle>(2)), "<null>");
}

struct StyleCase {
  const char* posix;
  const char* hfs;
};

const StyleCase kBothWays[] = {{"/a", "Macintosh HD:a"},
                               {"/a/b c", "Macintosh HD:a:b c"},
                               {"/", "Macintosh HD:"},
                               {"/Volumes/Disk/a", "Disk:a"},
                               {"/Volumes/Disk", "Disk:"},
                               {"/Volumes/Di:sk/a", "Di/sk:a"},
                               {"/a:b", "Macintosh HD:a/b"},
                               {"/a/../b", "Macintosh HD:a::b"},
                               {"/a/..", "Macintosh HD:a::"},
                               {"/..", "Macintosh HD::"},
                               {"/Volumes/Disk/..", "Disk::"},
                               {"a", ":a"},
                               {"a/b", ":a:b"},
                               {"..", "::"},
                               {"../a", "::a"},
                               {"../..", ":::"},
                               {".", ":"}};

TEST(CFURLFileSystem, WritesPathsInTheHFSStyle) {
  for (const StyleCase& each : kBothWays) {
    EXPECT_EQ(pathOf(urlOfPath(each.posix), kCFURLHFSPathStyle), each.hfs);
  }
  EXPECT_EQ(pathOf(urlOfPath("/a/b", true), kCFURLHFSPathStyle), "Macintosh HD:a:b");
}

TEST(CFURLFileSystem, ReadsPathsInTheHFSStyle) {
  for (const StyleCase& each : kBothWays) {
    EXPECT_EQ(pathOf(urlOfPath(each.hfs, false, kCFURLHFSPathStyle)), each.posix) << each.hfs;
  }
  EXPECT_EQ(pathOf(urlOfPath("a/b", false, kCFURLHFSPathStyle)), "./a:b");
  EXPECT_EQ(pathOf(urlOfPath("Macintosh HD:a:", true, kCFURLHFSPathStyle)), "/a");
}

}  // namespace tests::urlPaths
