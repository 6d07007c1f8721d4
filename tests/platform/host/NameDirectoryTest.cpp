// Licence: MIT, see LICENSE.
#include "platform/host/NameDirectory.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "platform/host/Poll.h"
#include "platform/host/SeqPacket.h"
#include "tests/support/PrivateRoot.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using namespace platform::host;
using Audience = NameDirectory::Audience;
using Make = NameDirectory::Make;

std::size_t entriesIn(const fs::path& folder) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

class Directories : public testing::Test {
 protected:
  using Opened = std::shared_ptr<NameDirectory>;

  Opened open(Audience audience = Audience::kOwner) const {
    Result<Opened> opened = NameDirectory::open(path.string(), audience, Make::kYes);
    EXPECT_TRUE(opened);
    return *opened;
  }
  Error refusal(Audience audience = Audience::kOwner) const {
    const Result<Opened> opened = NameDirectory::open(path.string(), audience, Make::kNo);
    return opened ? Error::kFailed : opened.error();
  }

  PrivateRoot root;
  fs::path path = root.path() / "a/b/names";
};

TEST_F(Directories, AreMadeOnDemandOnly) {
  EXPECT_EQ(Error::kNotFound, refusal());
  open();
  EXPECT_EQ(fs::perms::owner_all, fs::status(path).permissions());
}

TEST_F(Directories, AreOpenToAllWhenTheyAreTheSystems) {
  const mode_t before = umask(077);
  const Opened systems = open(Audience::kEveryone);
  umask(before);
  EXPECT_EQ(static_cast<fs::perms>(0755), fs::status(path).permissions());
  const auto bound = systems->bind();
  ASSERT_TRUE(bound);
  EXPECT_EQ(static_cast<fs::perms>(0755), fs::status(path / "sockets").permissions());
  EXPECT_EQ(static_cast<fs::perms>(0666), fs::status(path / "sockets" / bound->file).permissions());
}

TEST_F(Directories, AreRefusedWhenOthersMayWrite) {
  open();
  for (const fs::perms others : {fs::perms::group_write, fs::perms::others_write}) {
    fs::permissions(path, fs::perms::owner_all | others);
    EXPECT_EQ(Error::kPermission, refusal());
    EXPECT_EQ(Error::kPermission, refusal(Audience::kEveryone));
  }
}

class DirectoriesAsRoot : public Directories {};

TEST_F(DirectoriesAsRoot, AreRefusedWhenTheyAreSomebodyElses) {
  ASSERT_EQ(0u, geteuid()) << "only root can give a directory away";
  open();
  ASSERT_EQ(0, chown(path.c_str(), 12345, 12345));
  EXPECT_EQ(Error::kPermission, refusal());
  EXPECT_EQ(Error::kPermission, refusal(Audience::kEveryone));
}

TEST_F(Directories, AreRefusedWhenTheyAreNone) {
  fs::create_directories(path.parent_path());
  fs::create_directory_symlink(root.path(), path);
  EXPECT_EQ(Error::kPermission, refusal());
  fs::remove(path);
  std::ofstream(path) << "a file";
  EXPECT_EQ(Error::kPermission, refusal());
}

TEST_F(Directories, KnowThatTheyWereRemoved) {
  const Opened names = open();
  EXPECT_FALSE(names->isRemoved());
  fs::remove_all(path);
  EXPECT_TRUE(names->isRemoved());
  EXPECT_EQ(Error::kNotFound, names->bind().error());
}

class Names : public Directories {
 protected:
  Error claimError(const BoundSocket& claimant, const std::string& name) const {
    const Status status = names->claim(claimant, "ports", name);
    return status ? Error::kFailed : status.error();
  }
  Error connectError(const std::string& name) const {
    const auto connection = names->connect("ports", name);
    return connection ? Error::kFailed : connection.error();
  }

  Opened names = open();
  BoundSocket socket = std::move(*names->bind());
};

TEST_F(Names, AreLinksToOneSocket) {
  ASSERT_TRUE(names->claim(socket, "ports", "one"));
  ASSERT_TRUE(names->claim(socket, "ports", "t/wo"));
  EXPECT_EQ(socket.identity, *names->identify("ports", "one"));
  EXPECT_EQ(socket.identity, *names->identify("ports", "t/wo"));
  EXPECT_EQ(3u, fs::hard_link_count(path / "ports/one"));
  EXPECT_EQ(Error::kNotFound, names->identify("ports", "three").error());
}

TEST_F(Names, LeadToTheirSocket) {
  ASSERT_TRUE(names->claim(socket, "ports", "one"));
  const auto made = names->connect("ports", "one");
  ASSERT_TRUE(made);
  EXPECT_EQ(socket.identity, made->identity);
  const auto accepted = acceptConnection(socket.listener);
  ASSERT_TRUE(accepted);
  EXPECT_EQ(getpid(), peerOf(made->connection)->process);
  EXPECT_EQ(Error::kNotFound, connectError("two"));
}

TEST_F(Names, BelongToOneLiveSocket) {
  const BoundSocket rival = std::move(*names->bind());
  ASSERT_TRUE(names->claim(socket, "ports", "one"));
  EXPECT_NE(socket.identity, rival.identity);
  EXPECT_EQ(Error::kExists, claimError(rival, "one"));
  EXPECT_EQ(socket.identity, *names->identify("ports", "one"));
}

TEST_F(Names, OfTheDeadAreTakenOver) {
  const BoundSocket heir = std::move(*names->bind());
  ASSERT_TRUE(names->claim(socket, "ports", "one"));
  socket.listener.reset();
  EXPECT_EQ(Error::kNotFound, connectError("one"));
  EXPECT_TRUE(names->claim(heir, "ports", "one"));
  EXPECT_EQ(heir.identity, *names->identify("ports", "one"));
}

TEST_F(Names, AreReleasedByTheirOwnerOnly) {
  const BoundSocket other = std::move(*names->bind());
  ASSERT_TRUE(names->claim(socket, "ports", "one"));
  names->release(other.identity, "ports", "one");
  EXPECT_EQ(socket.identity, *names->identify("ports", "one"));
  names->release(socket.identity, "ports", "one");
  EXPECT_EQ(Error::kNotFound, names->identify("ports", "one").error());
}

TEST_F(Names, AreListedDeadOnesIncluded) {
  ASSERT_TRUE(names->claim(socket, "ports", ".one"));
  ASSERT_TRUE(names->claim(socket, "ports", "t/wo"));
  std::vector<std::string> found = *names->names("ports");
  std::sort(found.begin(), found.end());
  EXPECT_EQ((std::vector<std::string>{".one", "t/wo"}), found);
  EXPECT_EQ(Error::kNotFound, names->names("nowhere").error());
}

TEST_F(Names, AreNotLookedForBehindALink) {
  ASSERT_TRUE(names->claim(socket, "ports", "one"));
  fs::create_directory_symlink("ports", path / "link");
  EXPECT_EQ(Error::kPermission, names->names("link").error());
  EXPECT_EQ(Error::kPermission, names->connect("link", "one").error());
  EXPECT_EQ(Error::kPermission, names->identify("link", "two").error());
}

TEST_F(Names, AreReapedOnlyWhenTheyAreDead) {
  ASSERT_TRUE(names->claim(socket, "ports", "one"));
  names->reap("ports", "one");
  EXPECT_EQ(1u, entriesIn(path / "ports"));
  socket.listener.reset();
  names->reap("ports", "one");
  names->reap("ports", "two");
  EXPECT_EQ(0u, entriesIn(path / "ports"));
}

TEST_F(Names, MayNotBeAnythingButSockets) {
  ASSERT_TRUE(names->claim(socket, "ports", "real"));
  fs::create_symlink("real", path / "ports/link");
  std::ofstream(path / "ports/file") << "a file";
  fs::create_directory(path / "ports/folder");
  for (const char* name : {"link", "file", "folder"}) {
    EXPECT_EQ(Error::kPermission, connectError(name)) << name;
    EXPECT_EQ(Error::kPermission, claimError(socket, name)) << name;
  }
}

class NamesAsRoot : public Names {};

TEST_F(NamesAsRoot, TakeNoFileOfSomebodyElse) {
  ASSERT_EQ(0u, geteuid()) << "only root can give a file away";
  ASSERT_TRUE(names->claim(socket, "ports", "one"));
  ASSERT_EQ(0, lchown((path / "ports/one").c_str(), 12345, 12345));
  EXPECT_TRUE(names->connect("ports", "one").error() == Error::kPermission);
}

TEST_F(Names, WaitForTheLockOnlySoLong) {
  ASSERT_TRUE(names->claim(socket, "ports", "one"));
  socket.listener.reset();
  const Descriptor lock(::open((path / "lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_EQ(0, flock(lock.number(), LOCK_EX));
  const BoundSocket heir = std::move(*names->bind());
  EXPECT_EQ(Error::kTimedOut, claimError(heir, "one"));
  ASSERT_EQ(0, flock(lock.number(), LOCK_UN));
  EXPECT_TRUE(names->claim(heir, "ports", "one"));
}

TEST_F(Names, DisappearWithTheirSocketsFile) {
  names->unbind(socket);
  EXPECT_EQ(0u, entriesIn(path / "sockets"));
  EXPECT_EQ(Error::kNotFound, claimError(socket, "one"));
}

TEST_F(Names, TellWatchersThatTheyComeAndGo) {
  const auto watcher = names->watch("ports");
  ASSERT_TRUE(watcher);
  Interest change{&*watcher};
  EXPECT_FALSE(waitForAny({&change, 1}, Deadline::immediate()));
  ASSERT_TRUE(names->claim(socket, "ports", "one"));
  EXPECT_TRUE(waitForAny({&change, 1}, Deadline::immediate()));
  discardInput(*watcher);
  names->release(socket.identity, "ports", "one");
  EXPECT_TRUE(waitForAny({&change, 1}, Deadline::immediate()));
}

TEST_F(Names, CannotBeMadeWhereThereIsNoRoomForFiles) {
  // Locals only while the limit holds: the sanitizers open files to look at anything else.
  const NameDirectory& opened = *names;
  const BoundSocket& claimant = socket;
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  rlimit none = before;
  none.rlim_cur = 0;
  ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &none));
  const Error bindError = opened.bind().error();
  const Error claimed = opened.claim(claimant, "ports", "one").error();
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(Error::kNoResources, bindError);
  EXPECT_EQ(Error::kNoResources, claimed);
  EXPECT_TRUE(names->claim(socket, "ports", "one"));
}

}  // namespace
}  // namespace tests
