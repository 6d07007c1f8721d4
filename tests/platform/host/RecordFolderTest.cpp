// Licence: MIT, see LICENSE.
#include "platform/host/RecordFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <thread>

#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRoot.h"

namespace {

using platform::host::Descriptor;
using platform::host::Error;
using platform::host::RecordFolder;
using Number = RecordFolder::Number;

std::span<const std::byte> bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::byte*>(text.data()), text.size()};
}

std::string textOf(const std::vector<std::byte>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

class Records : public testing::Test {
 protected:
  Descriptor openFolder() const { return Descriptor(open(root.path().c_str(), O_RDONLY)); }
  std::filesystem::path file(const std::string& name) const { return root.path() / name; }
  void write(const std::string& name, const std::string& text) const {
    std::ofstream(file(name)) << text;
  }

  tests::PrivateRoot root;
  RecordFolder folder{openFolder()};
};

TEST_F(Records, GivesNumbersFromOneOn) {
  EXPECT_EQ(*folder.drawNumber(), 1u);
  EXPECT_EQ(*folder.drawNumber(), 2u);
  EXPECT_EQ(*RecordFolder(openFolder()).drawNumber(), 3u);
}

TEST_F(Records, GivesNoNumberTwiceToManyThreads) {
  constexpr int kThreads = 8, kDraws = 50;
  std::vector<std::vector<Number>> drawn(kThreads);
  std::vector<std::thread> threads;
  for (auto& own : drawn) {
    threads.emplace_back([&] {
      for (int i = 0; i < kDraws; ++i) own.push_back(*folder.drawNumber());
    });
  }
  for (auto& thread : threads) thread.join();
  std::set<Number> all;
  for (const auto& own : drawn) all.insert(own.begin(), own.end());
  EXPECT_EQ(all.size(), std::size_t{kThreads * kDraws});
  EXPECT_EQ(*all.rbegin(), Number{kThreads * kDraws});
}

TEST_F(Records, GivesNumbersInOrderToProcessesAtTheSameTime) {
  constexpr int kProcesses = 4, kDraws = 25;
  std::vector<pid_t> children;
  for (int i = 0; i < kProcesses; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      const RecordFolder own(openFolder());
      Number last = 0;
      for (int draw = 0; draw < kDraws; ++draw) {
        const auto number = own.drawNumber();
        if (!number || *number <= last) _exit(1);
        last = *number;
      }
      _exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(*folder.drawNumber(), Number{kProcesses * kDraws + 1});
}

TEST_F(Records, ShowsARecordForAsLongAsItIsOpen) {
  auto record = folder.publish(7, bytesOf("seven"));
  ASSERT_TRUE(record);
  EXPECT_EQ(textOf(*folder.read(7, 100)), "seven");
  record->reset();
  EXPECT_EQ(folder.read(7, 100).error(), Error::kNotFound);
}

TEST_F(Records, RefusesANumberThatHasARecord) {
  const auto record = folder.publish(7, bytesOf("first"));
  EXPECT_EQ(folder.publish(7, bytesOf("second")).error(), Error::kExists);
  EXPECT_EQ(textOf(*folder.read(7, 100)), "first");
}

TEST_F(Records, LeavesNoDraftBehind) {
  const auto first = folder.publish(7, bytesOf("first"));
  EXPECT_FALSE(folder.publish(7, bytesOf("second")));
  EXPECT_FALSE(std::filesystem::exists(file("draft.7")));
}

TEST_F(Records, RemovesTheFileOfADeadOneWhenItIsRead) {
  write("record.9", "left behind");
  EXPECT_EQ(folder.read(9, 100).error(), Error::kNotFound);
  EXPECT_FALSE(std::filesystem::exists(file("record.9")));
}

TEST_F(Records, SeesTheDeathOfAKilledProcessAtOnce) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    const auto record = RecordFolder(openFolder()).publish(5, bytesOf("child"));
    if (::write(ready[1], record ? "y" : "n", 1) != 1) _exit(1);
    for (;;) pause();
  }
  char answer = 0;
  ASSERT_EQ(::read(ready[0], &answer, 1), 1);
  EXPECT_EQ(answer, 'y');
  EXPECT_EQ(textOf(*folder.read(5, 100)), "child");
  kill(child, SIGKILL);
  ASSERT_EQ(waitpid(child, nullptr, 0), child);
  EXPECT_EQ(folder.read(5, 100).error(), Error::kNotFound);
  close(ready[0]);
  close(ready[1]);
}

TEST_F(Records, AreNotKeptAliveByAProgramThatTheWriterHasStarted) {
  auto record = folder.publish(7, bytesOf("seven"));
  tests::ChildOptions options;
  options.runner = tests::Runner::kNone;
  tests::ChildProcess child({"/bin/cat"}, options);
  // An emulator lets the starting process go on before the new program runs.
  ASSERT_TRUE(child.writeLine("runs"));
  ASSERT_EQ(child.readLine(), "runs");
  record->reset();
  EXPECT_EQ(folder.read(7, 100).error(), Error::kNotFound);
}

TEST_F(Records, ReadsNoMoreThanAskedFor) {
  const auto record = folder.publish(7, bytesOf("0123456789"));
  EXPECT_EQ(folder.read(7, 9).error(), Error::kTooLarge);
  EXPECT_EQ(textOf(*folder.read(7, 10)), "0123456789");
}

TEST_F(Records, ReadsAnEmptyRecord) {
  const auto record = folder.publish(7, {});
  ASSERT_TRUE(folder.read(7, 0));
  EXPECT_TRUE(folder.read(7, 0)->empty());
}

TEST_F(Records, ListsNumbersInOrderAndNothingElse) {
  for (const char* name : {"record.10", "record.9", "record.0", "record.01", "record.x", "record.",
                           "record.99999999999", "record.3x", "draft.4", "port.5.6", "counter"}) {
    write(name, "");
  }
  EXPECT_EQ(folder.numbers(), (std::vector<Number>{9, 10}));
}

TEST_F(Records, ReapsDeadRecordsAndDraftsButNoLiveOne) {
  const auto live = folder.publish(7, bytesOf("live"));
  write("record.8", "dead");
  write("draft.9", "half");
  write("port.8.1", "not ours");
  folder.reap();
  EXPECT_TRUE(std::filesystem::exists(file("record.7")));
  EXPECT_FALSE(std::filesystem::exists(file("record.8")));
  EXPECT_FALSE(std::filesystem::exists(file("draft.9")));
  EXPECT_TRUE(std::filesystem::exists(file("port.8.1")));
}

TEST_F(Records, PublishesWhileOthersReap) {
  std::thread reaper([&] {
    for (int i = 0; i < 200; ++i) RecordFolder(openFolder()).reap();
  });
  for (Number number = 1; number <= 100; ++number) {
    const auto record = folder.publish(number, bytesOf("live"));
    EXPECT_TRUE(record) << number;
    EXPECT_TRUE(folder.read(number, 10)) << number;
  }
  reaper.join();
}

TEST_F(Records, FollowsNoLink) {
  write("target", "somebody else's");
  std::filesystem::create_symlink("target", file("record.3"));
  std::filesystem::create_symlink("target", file("counter"));
  EXPECT_EQ(folder.read(3, 100).error(), Error::kPermission);
  EXPECT_EQ(folder.drawNumber().error(), Error::kPermission);
  EXPECT_EQ(std::filesystem::file_size(file("target")), 15u);
}

TEST_F(Records, DoesNotWaitForAPipeInTheGuiseOfARecord) {
  ASSERT_EQ(mkfifo(file("record.3").c_str(), 0600), 0);
  EXPECT_EQ(folder.read(3, 100).error(), Error::kInvalid);
}

TEST_F(Records, HasNothingInAFolderThatIsGone) {
  const RecordFolder none{Descriptor()};
  EXPECT_TRUE(none.numbers().empty());
  EXPECT_EQ(none.drawNumber().error(), Error::kInvalid);
  EXPECT_EQ(none.publish(1, {}).error(), Error::kInvalid);
  EXPECT_EQ(none.read(1, 1).error(), Error::kInvalid);
}

}  // namespace
