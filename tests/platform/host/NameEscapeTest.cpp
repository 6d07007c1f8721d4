// Licence: MIT, see LICENSE.
#include "platform/host/NameEscape.h"

#include <gtest/gtest.h>

#include <set>

namespace tests {
namespace {

using platform::host::fileNameOf;
using platform::host::nameOfFile;

TEST(NameEscape, WritesNamesAsFileNames) {
  EXPECT_EQ("com.quorvant.agent.1.1", fileNameOf("com.quorvant.agent.1.1"));
  EXPECT_EQ("a%sb", fileNameOf("a/b"));
  EXPECT_EQ("%s", fileNameOf("/"));
  EXPECT_EQ("100%p", fileNameOf("100%"));
  EXPECT_EQ("%d", fileNameOf("."));
  EXPECT_EQ("%d.", fileNameOf(".."));
  EXPECT_EQ("%d%sa.b", fileNameOf("./a.b"));
}

TEST(NameEscape, GivesEveryByteBack) {
  for (int first = 1; first < 256; ++first) {
    const std::string alone(1, static_cast<char>(first));
    const std::string name = alone + "x" + alone;
    EXPECT_EQ(name, nameOfFile(fileNameOf(name))) << first;
    EXPECT_EQ(alone, nameOfFile(fileNameOf(alone))) << first;
  }
}

TEST(NameEscape, NeverMakesASpecialFileName) {
  const std::string letters = "/.%spd";
  std::set<std::string> files;
  for (const char a : letters) {
    for (const char b : letters) {
      for (const char c : letters) {
        const std::string file = fileNameOf(std::string{a, b, c});
        EXPECT_EQ(std::string::npos, file.find('/'));
        EXPECT_NE('.', file.front());
        EXPECT_LE(file.size(), 6u);
        EXPECT_TRUE(files.insert(file).second) << file;
      }
    }
  }
}

TEST(NameEscape, FitsTheLongestNameIntoAFileName) {
  EXPECT_LE(fileNameOf(std::string(127, '/')).size(), 255u);
  EXPECT_LE(fileNameOf(std::string(127, '%')).size(), 255u);
  EXPECT_LE(fileNameOf(std::string(127, '.')).size(), 255u);
}

TEST(NameEscape, KnowsFileNamesThatNoNameBecomes) {
  for (const char* file : {"", ".", "..", ".a", "%", "a%", "%x", "a%d", "a/b", "%%"}) {
    EXPECT_FALSE(nameOfFile(file)) << file;
  }
}

}  // namespace
}  // namespace tests
