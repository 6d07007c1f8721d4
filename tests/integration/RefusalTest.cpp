// Licence: MIT, see LICENSE.
// Name spaces that somebody may have tampered with: the agent and qrl say in one line what is wrong
// with which path, and end with an error.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <functional>

#include "platform/host/Roots.h"
#include "tests/integration/Programs.h"

namespace {

namespace fs = std::filesystem;
using tests::ChildProcess;
using tests::kAgentPort;
using tests::Outcome;
using tests::thisBuild;

constexpr int kNotPrivileged = 1100 & 0xff;  // what the host leaves of the agent's status
constexpr int kHostFailed = 70;
constexpr uid_t kStranger = 12345;

struct Fault {
  const char* name;
  std::function<void(const fs::path& folder)> make;
  const char* reason;  // after the folder's path; % is the folder above it
};

std::string nameOfFault(const testing::TestParamInfo<Fault>& info) { return info.param.name; }

void PrintTo(const Fault& fault, std::ostream* stream) { *stream << fault.name; }

void makeWithMode(const fs::path& folder, mode_t mode) {
  fs::create_directories(folder);
  ASSERT_EQ(0, chmod(folder.c_str(), mode));
}

class NameSpace : public tests::Integration {
 protected:
  fs::path folder = platform::host::userNameSpacePath();

  static std::string lineAbout(const fs::path& path, const std::string& reason) {
    return "quorvant: refusing the name space " + path.string() + ": " + reason + "\n";
  }

  void expectRefusalByTheAgent(const std::string& line) {
    ChildProcess agent({thisBuild().agent},
                       {.environment = {{"QRL_UI", "none"}}, .mergeErrors = true});
    EXPECT_EQ(line, agent.readAll());
    EXPECT_EQ(kNotPrivileged, agent.wait());
  }

  void expectRefusalByTheTool(const std::string& line) {
    for (const Words& words :
         {Words{"ports"}, Words{"send", kAgentPort, "QrlP", "Mcam"}, Words{"quit", kAgentPort},
          Words{"wait", kAgentPort, "--timeout", "10"}}) {
      SCOPED_TRACE(words.front());
      const Outcome outcome = qrl(words);
      EXPECT_EQ(kHostFailed, outcome.status);
      EXPECT_EQ("", outcome.output);
      EXPECT_EQ(line, outcome.errors);
    }
  }
};

class SpoiltNameSpace : public NameSpace, public testing::WithParamInterface<Fault> {
 protected:
  void expectRefusal() {
    GetParam().make(folder);
    std::string reason = GetParam().reason;
    if (const std::size_t at = reason.find('%'); at != std::string::npos) {
      reason.replace(at, 1, folder.parent_path().string());
    }
    expectRefusalByTheAgent(lineAbout(folder, reason));
    expectRefusalByTheTool(lineAbout(folder, reason));
  }
};

TEST_P(SpoiltNameSpace, IsRefusedInOneLine) { expectRefusal(); }

INSTANTIATE_TEST_SUITE_P(
    , SpoiltNameSpace,
    testing::Values(Fault{"Link",
                          [](const fs::path& folder) {
                            fs::create_directories(folder.parent_path() / "elsewhere");
                            fs::create_directory_symlink("elsewhere", folder);
                          },
                          "it is a symbolic link"},
                    Fault{"LinkToNowhere",
                          [](const fs::path& folder) {
                            fs::create_directories(folder.parent_path());
                            fs::create_directory_symlink("nowhere", folder);
                          },
                          "it is a symbolic link"},
                    Fault{"File",
                          [](const fs::path& folder) {
                            fs::create_directories(folder.parent_path());
                            std::ofstream(folder) << "a file";
                          },
                          "it is not a directory"},
                    Fault{"FileAboveIt",
                          [](const fs::path& folder) {
                            fs::create_directories(folder.parent_path().parent_path());
                            std::ofstream(folder.parent_path()) << "a file";
                          },
                          "% is not a directory"},
                    Fault{"WritableByTheGroup",
                          [](const fs::path& folder) { makeWithMode(folder, 0770); },
                          "others may write to it, mode 0770"},
                    Fault{"WritableByAll",
                          [](const fs::path& folder) { makeWithMode(folder, 01777); },
                          "others may write to it, mode 1777"}),
    nameOfFault);

class SpoiltNameSpaceAsRoot : public SpoiltNameSpace {};

TEST_P(SpoiltNameSpaceAsRoot, IsRefusedInOneLine) {
  ASSERT_EQ(0u, geteuid()) << "only root can give things away";
  expectRefusal();
}

INSTANTIATE_TEST_SUITE_P(
    , SpoiltNameSpaceAsRoot,
    testing::Values(Fault{"Foreign",
                          [](const fs::path& folder) {
                            fs::create_directories(folder);
                            ASSERT_EQ(0, chown(folder.c_str(), kStranger, kStranger));
                          },
                          "it belongs to user 12345"},
                    Fault{"BehindAForeignLink",
                          [](const fs::path& folder) {
                            const fs::path above = folder.parent_path();
                            fs::create_directories(above.parent_path() / "elsewhere");
                            fs::create_directory_symlink("elsewhere", above);
                            ASSERT_EQ(0, lchown(above.c_str(), kStranger, kStranger));
                          },
                          "% is a symbolic link of user 12345"}),
    nameOfFault);

/// One part of a name space in order is not.
class SpoiltPart : public NameSpace {
 protected:
  SpoiltPart() {
    makeWithMode(folder, 0700);
    makeWithMode(folder / "ports", 0700);
    makeWithMode(folder / "sockets", 0700);
  }
  fs::path name = folder / "ports" / kAgentPort;
};

TEST_F(SpoiltPart, ThatHoldsTheNamesIsRefused) {
  fs::remove(folder / "ports");
  fs::create_directory_symlink("sockets", folder / "ports");
  expectRefusalByTheAgent(lineAbout(folder / "ports", "it is a symbolic link"));
  expectRefusalByTheTool(lineAbout(folder / "ports", "it is a symbolic link"));
}

TEST_F(SpoiltPart, ThatHoldsTheSocketsIsRefused) {
  ASSERT_EQ(0, chmod((folder / "sockets").c_str(), 0777));
  expectRefusalByTheAgent(lineAbout(folder / "sockets", "others may write to it, mode 0777"));
}

// A name that leads to somebody's socket by a link is not that port's name.
TEST_F(SpoiltPart, ThatIsALinkToAnotherSocketIsRefused) {
  const auto server = startEchoServer("other");
  fs::create_symlink("other", name);
  expectRefusalByTheAgent(lineAbout(name, "it is a symbolic link"));
  const Outcome outcome = qrl({"send", kAgentPort, "aevt", "quit"});
  EXPECT_EQ(kHostFailed, outcome.status);
  EXPECT_EQ(lineAbout(name, "it is a symbolic link"), outcome.errors);
  const Outcome listing = qrl({"ports"});
  EXPECT_EQ(kHostFailed, listing.status);
  EXPECT_THAT(listing.output, testing::StartsWith("other  "));
}

TEST_F(SpoiltPart, ThatIsAFileWithTheAgentsNameIsRefused) {
  std::ofstream(name) << "a file";
  expectRefusalByTheAgent(lineAbout(name, "it is not a socket"));
}

class SpoiltPartAsRoot : public SpoiltPart {
 protected:
  SpoiltPartAsRoot() { EXPECT_EQ(0u, geteuid()) << "only root can give things away"; }
};

TEST_F(SpoiltPartAsRoot, ThatIsASocketOfAStrangerIsRefused) {
  const auto agent = startAgent();
  ASSERT_EQ(0, lchown(name.c_str(), kStranger, kStranger));
  const std::string line = lineAbout(name, "it belongs to user 12345");
  expectRefusalByTheAgent(line);
  const Outcome outcome = qrl({"send", kAgentPort, "QrlP", "Mcam"});
  EXPECT_EQ(kHostFailed, outcome.status);
  EXPECT_EQ(line, outcome.errors);
}

}  // namespace
