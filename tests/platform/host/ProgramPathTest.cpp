// Licence: MIT, see LICENSE.
#include "platform/host/ProgramPath.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/support/PrivateRoot.h"

namespace {

using namespace platform::host;
namespace fs = std::filesystem;

TEST(ProgramPath, IsThisProgram) {
  EXPECT_EQ(fs::path(programPath()).filename(), "test_platform_host");
  EXPECT_TRUE(fs::path(programPath()).is_absolute());
}

class FindProgram : public testing::Test {
 protected:
  FindProgram() : earlier(std::getenv("PATH")) {
    for (const char* folder : {"a", "b"}) fs::create_directories(root.path() / folder);
    setPath(":" + (root.path() / "a").string() + "::" + (root.path() / "b").string());
  }
  ~FindProgram() override { setPath(earlier); }

  static void setPath(const std::string& path) { setenv("PATH", path.c_str(), 1); }
  std::string put(const std::string& name, fs::perms mode) {
    const fs::path path = root.path() / name;
    std::ofstream(path) << "#!/bin/sh\n";
    fs::permissions(path, mode);
    return path;
  }

  tests::PrivateRoot root;
  std::string earlier;
};

TEST_F(FindProgram, TakesTheFirstOfItsName) {
  const std::string second = put("b/tool", fs::perms::owner_all);
  EXPECT_EQ(findProgram("tool"), second);
  const std::string first = put("a/tool", fs::perms::owner_all);
  EXPECT_EQ(findProgram("tool"), first);
}

TEST_F(FindProgram, PassesOverWhatIsNoProgram) {
  put("a/tool", fs::perms::owner_read);
  fs::create_directories(root.path() / "b" / "tool");
  EXPECT_EQ(findProgram("tool"), std::nullopt);
}

TEST_F(FindProgram, DoesNotLookInTheWorkingFolder) {
  put("tool", fs::perms::owner_all);
  const fs::path working = fs::current_path();
  fs::current_path(root.path());
  EXPECT_EQ(findProgram("tool"), std::nullopt);
  fs::current_path(working);
}

TEST_F(FindProgram, FindsNothingWithoutAPath) {
  unsetenv("PATH");
  EXPECT_EQ(findProgram("sh"), std::nullopt);
}

}  // namespace
