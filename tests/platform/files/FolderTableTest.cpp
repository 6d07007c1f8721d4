// Licence: MIT, see LICENSE.
#include "platform/files/FolderTable.h"

#include <CarbonCore/Files.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <thread>
#include <vector>

#include "tests/support/PrivateRoot.h"

namespace {

using namespace platform::files;
namespace fs = std::filesystem;

class Folders : public testing::Test {
 protected:
  std::string make(const std::string& name) const {
    fs::create_directories(top / name);
    return top / name;
  }
  FolderID idOf(const std::string& name) { return table.idOfPath(top / name).value_or(0); }
  std::string pathOf(FolderID folder) { return table.pathOf(folder).value_or("[none]"); }

  tests::PrivateRoot root;
  fs::path top = fs::canonical(root.path());
  FolderTable table;
};

TEST_F(Folders, AreTheRootAndThoseBelow) {
  EXPECT_EQ(table.idOfPath("/"), fsRtDirID);
  EXPECT_EQ(table.idOfPath(""), fsRtDirID);
  EXPECT_EQ(pathOf(fsRtDirID), "/");
  const FolderID id = idOf(make("a/b").substr(top.string().size() + 1));
  EXPECT_GE(id, 16);
  EXPECT_EQ(pathOf(id), top / "a/b");
  EXPECT_EQ(table.placeOf(id)->name, "b");
  EXPECT_EQ(pathOf(table.placeOf(id)->parent), top / "a");
  EXPECT_EQ(table.placeOf(fsRtDirID)->parent, fsRtParID);
}

TEST_F(Folders, HaveOneIDHoweverOftenTheyAreMet) {
  make("a");
  make("b");
  const FolderID id = idOf("a");
  EXPECT_NE(idOf("b"), id);
  EXPECT_EQ(idOf("a"), id);
}

TEST_F(Folders, AreNotWhatIsMissingOrNoFolder) {
  fs::create_symlink(make("a"), top / "link");
  EXPECT_EQ(idOf("missing"), 0);
  EXPECT_EQ(idOf("link"), 0);  // a path that is not canonical
  EXPECT_EQ(table.pathOf(12345), std::nullopt);
  EXPECT_EQ(table.pathOf(fsRtParID), std::nullopt);
  EXPECT_EQ(table.pathOf(-1), std::nullopt);
}

TEST_F(Folders, KeepTheirIDWhenTheyAreRenamed) {
  make("a/inner");
  const FolderID outer = idOf("a");
  const FolderID inner = idOf("a/inner");
  fs::rename(top / "a", top / "z");
  EXPECT_EQ(pathOf(inner), top / "z/inner");
  EXPECT_EQ(pathOf(outer), top / "z");
  EXPECT_EQ(idOf("z"), outer);
  EXPECT_EQ(table.placeOf(outer)->name, "z");
}

TEST_F(Folders, KeepTheirIDWhenTheyAreMetAgainRenamed) {
  make("a");
  const FolderID id = idOf("a");
  fs::rename(top / "a", top / "z");
  EXPECT_EQ(idOf("z"), id);
  EXPECT_EQ(pathOf(id), top / "z");
}

TEST_F(Folders, ThatTookANameOverAreOthersThanTheFormerOwner) {
  make("a");
  const FolderID former = idOf("a");
  fs::rename(top / "a", top / "z");
  make("a");
  const FolderID later = idOf("a");
  EXPECT_NE(later, former);
  EXPECT_EQ(pathOf(former), top / "z");
  EXPECT_EQ(pathOf(later), top / "a");
}

TEST_F(Folders, ThatWereReplacedAreTheSame) {
  make("a");
  make("keeps the number of the first from being used again");
  const FolderID id = idOf("a");
  fs::rename(top / "a", top / "elsewhere");
  make("b");
  fs::remove(top / "elsewhere");
  fs::rename(top / "b", top / "a");
  EXPECT_EQ(pathOf(id), top / "a");
  EXPECT_EQ(idOf("a"), id);
}

TEST_F(Folders, ThatAreGoneHaveNoPath) {
  make("a/b");
  const FolderID outer = idOf("a");
  const FolderID inner = idOf("a/b");
  fs::remove_all(top / "a");
  EXPECT_EQ(table.pathOf(outer), std::nullopt);
  EXPECT_EQ(table.pathOf(inner), std::nullopt);
  EXPECT_EQ(table.placeOf(inner), std::nullopt);
  fs::create_directories(top / "a/b");
  EXPECT_EQ(pathOf(inner), top / "a/b");
}

TEST_F(Folders, ThatBecameFilesHaveNoPath) {
  make("a");
  make("b");
  const FolderID id = idOf("a");
  fs::remove(top / "a");
  fs::create_symlink("b", top / "a");
  EXPECT_EQ(table.pathOf(id), std::nullopt);
}

TEST_F(Folders, AreMetByManyThreadsAsTheSame) {
  for (int i = 0; i < 20; ++i) make("d" + std::to_string(i));
  std::vector<std::vector<FolderID>> met(4);
  std::vector<std::thread> threads;
  for (auto& ids : met) {
    threads.emplace_back([this, &ids] {
      for (int i = 0; i < 20; ++i) ids.push_back(idOf("d" + std::to_string(i)));
    });
  }
  for (auto& thread : threads) thread.join();
  for (const auto& ids : met) EXPECT_EQ(ids, met.front());
  EXPECT_EQ(std::set<FolderID>(met[0].begin(), met[0].end()).size(), 20U);
}

TEST_F(Folders, JoinNamesToPaths) {
  EXPECT_EQ(joined("/", "a"), "/a");
  EXPECT_EQ(joined("/a", "b"), "/a/b");
}

}  // namespace
