// Licence: MIT, see LICENSE.
#include "platform/processes/ProcessRecords.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/support/PrivateRoot.h"

namespace {

using namespace platform::processes;
using platform::host::Descriptor;
using platform::host::RecordFolder;

class Records : public testing::Test {
 protected:
  Descriptor add(Serial serial, SInt32 pid) {
    ProcessRecord record;
    record.pid = pid;
    auto published = records.publish(serial, record);
    EXPECT_TRUE(published);
    return published ? std::move(*published) : Descriptor();
  }

  tests::PrivateRoot root;
  ProcessRecords records{RecordFolder(Descriptor(open(root.path().c_str(), O_RDONLY)))};
};

TEST_F(Records, BeginBehindTheNumbersWithAMeaningOfTheirOwn) {
  EXPECT_EQ(records.draw(), 3u);
  EXPECT_EQ(records.draw(), 4u);
}

TEST_F(Records, AreFoundWhileTheirWriterLives) {
  Descriptor first = add(3, 100);
  ASSERT_TRUE(records.find(3));
  EXPECT_EQ(records.find(3)->pid, 100);
  first.reset();
  EXPECT_FALSE(records.find(3));
}

TEST_F(Records, HaveNoneUnderTheReservedNumbers) {
  const Descriptor first = add(3, 100);
  for (const Serial serial : {0u, 1u, 2u, 4u, 0xFFFFFFFFu}) EXPECT_FALSE(records.find(serial));
}

TEST_F(Records, AreWalkedInTheOrderOfTheirNumbers) {
  const Descriptor tenth = add(10, 1), ninth = add(9, 2), hundredth = add(100, 3);
  EXPECT_EQ(records.next(0), 9u);
  EXPECT_EQ(records.next(9), 10u);
  EXPECT_EQ(records.next(10), 100u);
  EXPECT_EQ(records.next(100), 0u);
}

TEST_F(Records, AreWalkedOnFromOneThatHasEnded) {
  Descriptor third = add(3, 1), fourth = add(4, 2);
  const Descriptor fifth = add(5, 3);
  third.reset();
  fourth.reset();
  EXPECT_EQ(records.next(3), 5u);
  EXPECT_EQ(records.next(0), 5u);
}

TEST_F(Records, AreFoundByProcessID) {
  const Descriptor third = add(3, 100), fourth = add(4, 200);
  EXPECT_EQ(records.withProcessID(200), 4u);
  EXPECT_EQ(records.withProcessID(300), 0u);
}

TEST_F(Records, PassOverOneThatIsDamaged) {
  const RecordFolder raw(Descriptor(open(root.path().c_str(), O_RDONLY)));
  const std::byte nonsense[] = {std::byte{1}, std::byte{2}};
  const auto damaged = raw.publish(1, nonsense);
  const Descriptor fourth = add(4, 200);
  ASSERT_TRUE(damaged);
  EXPECT_FALSE(records.find(3));
  EXPECT_EQ(records.next(0), 4u);
}

TEST_F(Records, PassOverOneThatIsFarTooLong) {
  const RecordFolder raw(Descriptor(open(root.path().c_str(), O_RDONLY)));
  const auto endless = raw.publish(1, std::vector<std::byte>(kMaximumRecordSize + 1));
  ASSERT_TRUE(endless);
  EXPECT_FALSE(records.find(3));
}

TEST_F(Records, GiveNoNumberWhenTheCounterCannotBeUsed) {
  std::filesystem::create_directory(root.path() / "counter");
  EXPECT_EQ(records.draw(), 0u);
}

}  // namespace
