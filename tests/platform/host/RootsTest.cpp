// Licence: MIT, see LICENSE.
#include "platform/host/Roots.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>

namespace tests {
namespace {

using platform::host::homePath;
using platform::host::rootPath;
using platform::host::systemNameSpacePath;
using platform::host::userNameSpacePath;

/// An environment variable with another value (null: none) for a while.
class Variable final {
 public:
  Variable(const char* itsName, const char* value) : name(itsName) {
    if (const char* old = std::getenv(name)) earlier = old;
    set(value);
  }
  ~Variable() { set(earlier ? earlier->c_str() : nullptr); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  void set(const char* value) const {
    if (value == nullptr) {
      unsetenv(name);
    } else {
      setenv(name, value, 1);
    }
  }

  const char* name;
  std::optional<std::string> earlier;
};

const std::string kUser = std::to_string(geteuid());

TEST(Roots, MoveTheNameSpaces) {
  const Variable root("QRL_ROOT", "/some/where");
  const Variable runtime("XDG_RUNTIME_DIR", "/run/user/1");
  EXPECT_EQ("/some/where", rootPath());
  EXPECT_EQ("/some/where/run/user/" + kUser + "/quorvant", userNameSpacePath());
  EXPECT_EQ("/some/where/run/quorvant", systemNameSpacePath());
}

TEST(Roots, AreReadAtEachCall) {
  const Variable root("QRL_ROOT", "/first");
  EXPECT_EQ("/first", rootPath());
  const Variable other("QRL_ROOT", "/second//");
  EXPECT_EQ("/second", rootPath());
}

TEST(Roots, AreTheHostsOwnWithoutTheVariable) {
  const Variable runtime("XDG_RUNTIME_DIR", "/run/user/1");
  for (const char* none : {static_cast<const char*>(nullptr), "", "/"}) {
    const Variable root("QRL_ROOT", none);
    EXPECT_EQ("", rootPath());
    EXPECT_EQ("/run/user/1/quorvant", userNameSpacePath());
    EXPECT_EQ("/run/quorvant", systemNameSpacePath());
  }
}

TEST(Roots, FallBackToAPrivateFolder) {
  const Variable root("QRL_ROOT", nullptr);
  const std::string expected = geteuid() == 0 ? "/run/quorvant" : "/tmp/quorvant-" + kUser;
  for (const char* none : {static_cast<const char*>(nullptr), "", "relative", "./relative"}) {
    const Variable runtime("XDG_RUNTIME_DIR", none);
    EXPECT_EQ(expected, userNameSpacePath());
  }
}

TEST(HomePath, IsTheUsersBelowTheRoot) {
  Variable home("HOME", "/home/somebody/");
  Variable root("QRL_ROOT", nullptr);
  EXPECT_EQ(homePath(), "/home/somebody");
  Variable moved("QRL_ROOT", "/moved/");
  EXPECT_EQ(homePath(), "/moved/home/somebody");
}

TEST(HomePath, ComesFromTheUserDatabaseWhereTheEnvironmentIsSilent) {
  Variable root("QRL_ROOT", "/moved");
  const passwd* entry = getpwuid(geteuid());
  std::string expected = entry == nullptr ? "" : entry->pw_dir;
  if (expected == "/") expected.clear();
  for (const char* silent : {static_cast<const char*>(nullptr), ""}) {
    Variable home("HOME", silent);
    EXPECT_EQ(homePath(), "/moved" + expected);
  }
}

TEST(HomePath, IsTheRootItselfWhenItCannotBeAPath) {
  Variable home("HOME", "relative");
  Variable root("QRL_ROOT", nullptr);
  EXPECT_EQ(homePath(), "/");
  Variable moved("QRL_ROOT", "/moved");
  EXPECT_EQ(homePath(), "/moved");
}

}  // namespace
}  // namespace tests
