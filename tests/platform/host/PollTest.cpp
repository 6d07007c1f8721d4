// Licence: MIT, see LICENSE.
#include "platform/host/Poll.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

#include "platform/host/SeqPacket.h"
#include "platform/host/WakeEvent.h"

namespace tests {
namespace {

using namespace platform::host;

constexpr Nanoseconds kMillisecond = 1'000'000;

Deadline soon() { return Deadline::after(60'000 * kMillisecond); }

class PollSet : public testing::Test {
 protected:
  Poll poll = std::move(*Poll::make());
  WakeEvent first = std::move(*WakeEvent::make());
  WakeEvent second = std::move(*WakeEvent::make());
  std::array<std::uint64_t, 8> keys{};
};

TEST_F(PollSet, TellsWhoIsReady) {
  ASSERT_TRUE(poll.add(first.descriptor(), 11));
  ASSERT_TRUE(poll.add(second.descriptor(), 0xffffffff00000001u));
  EXPECT_EQ(0u, poll.wait(keys, Deadline::immediate()));
  second.raise();
  ASSERT_EQ(1u, poll.wait(keys, soon()));
  EXPECT_EQ(0xffffffff00000001u, keys[0]);
  first.raise();
  EXPECT_EQ(2u, poll.wait(keys, soon()));
  EXPECT_EQ(1u, poll.wait(std::span(keys).first(1), soon()));
}

TEST_F(PollSet, ForgetsWhoWasRemoved) {
  ASSERT_TRUE(poll.add(first.descriptor(), 11));
  first.raise();
  poll.remove(first.descriptor());
  poll.remove(first.descriptor());
  EXPECT_EQ(0u, poll.wait(keys, Deadline::immediate()));
}

TEST_F(PollSet, RefusesTheSameMemberTwice) {
  ASSERT_TRUE(poll.add(first.descriptor(), 11));
  EXPECT_EQ(Error::kExists, poll.add(first.descriptor(), 12).error());
}

TEST_F(PollSet, KeepsSilentAboutAMemberOnDemand) {
  ASSERT_TRUE(poll.add(first.descriptor(), 11));
  first.raise();
  ASSERT_TRUE(poll.report(first.descriptor(), 11, Poll::Reporting::kHangUps));
  EXPECT_EQ(0u, poll.wait(keys, Deadline::immediate()));
  ASSERT_TRUE(poll.report(first.descriptor(), 11, Poll::Reporting::kInput));
  EXPECT_EQ(1u, poll.wait(keys, soon()));
}

TEST_F(PollSet, TellsOfRoomOnDemand) {
  const auto pair = makeConnectedPair();
  ASSERT_TRUE(poll.add(pair->first, 11));
  EXPECT_EQ(0u, poll.wait(keys, Deadline::immediate()));
  for (const auto reporting : {Poll::Reporting::kOutput, Poll::Reporting::kBoth}) {
    ASSERT_TRUE(poll.report(pair->first, 11, reporting));
    EXPECT_EQ(1u, poll.wait(keys, soon()));
  }
}

TEST_F(PollSet, WaitsUntilTheDeadlineAndNoLess) {
  for (const Nanoseconds span : {kMillisecond / 3, kMillisecond, 20 * kMillisecond}) {
    const Deadline deadline = Deadline::after(span);
    EXPECT_EQ(0u, poll.wait(keys, deadline));
    EXPECT_EQ(0, deadline.remaining());
  }
}

TEST_F(PollSet, TakesMembersWhileAThreadWaits) {
  std::thread adder([&] {
    ASSERT_TRUE(poll.add(first.descriptor(), 11));
    first.raise();
  });
  EXPECT_EQ(1u, poll.wait(keys, soon()));
  EXPECT_EQ(11u, keys[0]);
  adder.join();
}

class WaitForAny : public testing::Test {
 protected:
  ConnectedPair pair = std::move(*makeConnectedPair());
  WakeEvent event = std::move(*WakeEvent::make());
};

TEST_F(WaitForAny, MarksWhatIsReady) {
  std::array<Interest, 2> interests{{{&event.descriptor()}, {&pair.first}}};
  EXPECT_FALSE(waitForAny(interests, Deadline::immediate()));
  event.raise();
  EXPECT_TRUE(waitForAny(interests, soon()));
  EXPECT_TRUE(interests[0].readable);
  EXPECT_FALSE(interests[1].readable);
}

TEST_F(WaitForAny, TellsInputFromOutput) {
  Interest both{&pair.first, Interest::In::kBoth};
  EXPECT_TRUE(waitForAny({&both, 1}, soon()));
  EXPECT_FALSE(both.readable);
  EXPECT_TRUE(both.writable);
  Interest output{&pair.first, Interest::In::kOutput};
  EXPECT_TRUE(waitForAny({&output, 1}, soon()));
  EXPECT_TRUE(output.writable);
}

TEST_F(WaitForAny, ReportsAHangUp) {
  EXPECT_FALSE(hasHungUp(pair.first));
  pair.second.reset();
  Interest input{&pair.first};
  EXPECT_TRUE(waitForAny({&input, 1}, soon()));
  EXPECT_TRUE(input.readable);
  EXPECT_TRUE(hasHungUp(pair.first));
}

TEST_F(WaitForAny, WaitsForTheClockAlone) {
  const Deadline deadline = Deadline::after(kMillisecond);
  EXPECT_FALSE(waitForAny({}, deadline));
  EXPECT_EQ(0, deadline.remaining());
}

TEST_F(WaitForAny, DiscardsInput) {
  event.raise();
  discardInput(event.descriptor());
  Interest input{&event.descriptor()};
  EXPECT_FALSE(waitForAny({&input, 1}, Deadline::immediate()));
}

TEST(WakeEvent, StaysRaisedUntilItIsDrained) {
  const WakeEvent event = std::move(*WakeEvent::make());
  Interest input{&event.descriptor()};
  event.raise();
  event.raise();
  EXPECT_TRUE(waitForAny({&input, 1}, Deadline::immediate()));
  EXPECT_TRUE(waitForAny({&input, 1}, Deadline::immediate()));
  event.drain();
  EXPECT_FALSE(waitForAny({&input, 1}, Deadline::immediate()));
  event.drain();
}

}  // namespace
}  // namespace tests
