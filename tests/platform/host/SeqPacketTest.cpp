// Licence: MIT, see LICENSE.
#include "platform/host/SeqPacket.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <thread>
#include <vector>

#include "platform/host/Poll.h"
#include "platform/host/SharedMemory.h"

namespace tests {
namespace {

using namespace platform::host;

std::vector<std::byte> text(const char* characters) {
  const auto* bytes = reinterpret_cast<const std::byte*>(characters);
  return {bytes, bytes + std::char_traits<char>::length(characters)};
}

class Packets : public testing::Test {
 protected:
  std::vector<std::byte> taken(std::size_t size) const {
    return {buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(size)};
  }

  ConnectedPair pair = std::move(*makeConnectedPair());
  std::vector<std::byte> buffer = std::vector<std::byte>(1024);
  const std::array<std::span<std::byte>, 1> whole = {buffer};
};

TEST_F(Packets, KeepTheirBoundsAndTheirOrder) {
  ASSERT_TRUE(sendPacket(pair.first, text("head"), text("body"), nullptr));
  ASSERT_TRUE(sendPacket(pair.first, text("next"), {}, nullptr));
  const auto first = receivePacket(pair.second, buffer);
  ASSERT_TRUE(first);
  EXPECT_EQ(text("headbody"), taken(first->size));
  EXPECT_FALSE(first->passed);
  const auto second = receivePacket(pair.second, buffer);
  ASSERT_TRUE(second);
  EXPECT_EQ(text("next"), taken(second->size));
  EXPECT_EQ(Error::kWouldBlock, receivePacket(pair.second, buffer).error());
}

TEST_F(Packets, CarryADescriptor) {
  const auto memory = makeSealedMemory(text("shared"));
  ASSERT_TRUE(memory);
  ASSERT_TRUE(sendPacket(pair.first, text("take this"), {}, &*memory));
  const auto packet = receivePacket(pair.second, buffer);
  ASSERT_TRUE(packet);
  ASSERT_TRUE(packet->passed);
  EXPECT_FALSE(packet->surplus);
  EXPECT_NE(memory->number(), packet->passed.number());
  EXPECT_EQ(FD_CLOEXEC, fcntl(packet->passed.number(), F_GETFD) & FD_CLOEXEC);
  EXPECT_EQ(6u, *sealedSize(packet->passed));
}

TEST_F(Packets, DoNotWaitForRoom) {
  const std::vector<std::byte> body(10'000);
  int sent = 0;
  while (sendPacket(pair.first, text("head"), body, nullptr)) ASSERT_LT(++sent, 10'000);
  EXPECT_EQ(Error::kWouldBlock, sendPacket(pair.first, text("head"), body, nullptr).error());
  EXPECT_GT(sent, 0);
}

TEST_F(Packets, CountUntilTheyAreTaken) {
  EXPECT_EQ(0u, untakenBytes(pair.first));
  ASSERT_TRUE(sendPacket(pair.first, text("head"), {}, nullptr));
  EXPECT_GE(untakenBytes(pair.first), 4u);
  std::vector<std::byte> room(10);
  ASSERT_TRUE(receivePacket(pair.second, room));
  EXPECT_EQ(0u, untakenBytes(pair.first));
}

TEST_F(Packets, HaveALimitThatCanBeReached) {
  const std::size_t limit = packetLimit(pair.first);
  EXPECT_GT(limit, 4096u);
  const std::vector<std::byte> most(limit - 4);
  EXPECT_TRUE(sendPacket(pair.first, text("head"), most, nullptr));
  const std::vector<std::byte> tooMuch(limit + 1024);
  EXPECT_EQ(Error::kTooLarge, sendPacket(pair.second, text("head"), tooMuch, nullptr).error());
}

TEST_F(Packets, ThatDoNotFitAreReported) {
  ASSERT_TRUE(sendPacket(pair.first, text("0123456789"), {}, nullptr));
  ASSERT_TRUE(sendPacket(pair.first, text("next"), {}, nullptr));
  EXPECT_EQ(Error::kTooLarge, receivePacket(pair.second, std::span(buffer).first(9)).error());
  EXPECT_EQ(4u, receivePacket(pair.second, buffer)->size);
}

TEST_F(Packets, FillOneRoomAfterTheOther) {
  std::array<std::byte, 4> head;
  std::array<std::byte, 2> near;
  const std::span<std::byte> rooms[] = {head, near, buffer};
  ASSERT_TRUE(sendPacket(pair.first, text("head"), text("body"), nullptr));
  ASSERT_EQ(8u, receivePacket(pair.second, rooms)->size);
  EXPECT_TRUE(std::ranges::equal(text("head"), head));
  EXPECT_TRUE(std::ranges::equal(text("bo"), near));
  EXPECT_EQ(text("dy"), taken(2));
  ASSERT_TRUE(sendPacket(pair.first, text("tool"), text("ong"), nullptr));
  EXPECT_EQ(Error::kTooLarge, receivePacket(pair.second, std::span(rooms).first(2)).error());
}

TEST_F(Packets, EndWithTheConnection) {
  ASSERT_TRUE(sendPacket(pair.first, text("last"), {}, nullptr));
  pair.first.reset();
  EXPECT_EQ(4u, receivePacket(pair.second, buffer)->size);
  EXPECT_EQ(Error::kDisconnected, receivePacket(pair.second, buffer).error());
  EXPECT_EQ(Error::kDisconnected, sendPacket(pair.second, text("late"), {}, nullptr).error());
}

TEST_F(Packets, ComeThroughThoughThePeerLeftOursUnread) {
  ASSERT_TRUE(sendPacket(pair.first, text("unread"), {}, nullptr));
  ASSERT_TRUE(sendPacket(pair.second, text("answer"), {}, nullptr));
  pair.second.reset();
  const auto packet = receivePacket(pair.first, buffer);
  ASSERT_TRUE(packet);
  EXPECT_EQ(text("answer"), taken(packet->size));
  EXPECT_EQ(Error::kDisconnected, receivePacket(pair.first, buffer).error());
}

TEST_F(Packets, StopWhenAnEndIsShutDown) {
  shutDown(pair.first);
  EXPECT_TRUE(hasHungUp(pair.first));
  EXPECT_TRUE(hasHungUp(pair.second));
  EXPECT_EQ(Error::kDisconnected, receivePacket(pair.first, buffer).error());
  EXPECT_EQ(Error::kDisconnected, receivePacket(pair.second, buffer).error());
  EXPECT_EQ(Error::kDisconnected, sendPacket(pair.second, text("late"), {}, nullptr).error());
}

TEST_F(Packets, ComeFromAPeerThatTheHostVouchesFor) {
  const auto peer = peerOf(pair.first);
  ASSERT_TRUE(peer);
  EXPECT_EQ(getpid(), peer->process);
  EXPECT_EQ(geteuid(), peer->user);
  EXPECT_EQ(getpid(), currentProcess());
  EXPECT_EQ(geteuid(), effectiveUser());
}

TEST_F(Packets, HaveNoPeerWithoutAConnection) {
  const Descriptor none(open("/dev/null", O_RDONLY | O_CLOEXEC));
  EXPECT_FALSE(peerOf(none));
  EXPECT_EQ(Error::kInvalid, receivePacket(none, buffer).error());
  EXPECT_EQ(Error::kInvalid, acceptConnection(none).error());
}

TEST_F(Packets, AreWholeOnEitherSideOfWhatCountsAsSmall) {
  buffer.resize(8192);
  for (const std::size_t size : {2043u, 2044u, 2045u, 4096u}) {
    const std::vector<std::byte> body(size, std::byte{7});
    ASSERT_TRUE(sendPacket(pair.first, text("head"), body, nullptr));
    const auto packet = receivePacket(pair.second, buffer);
    ASSERT_TRUE(packet);
    EXPECT_EQ(size + 4, packet->size);
    EXPECT_EQ(body, std::vector<std::byte>(buffer.begin() + 4, buffer.begin() + 4 + size));
  }
}

constexpr Nanoseconds kSecond = 1'000'000'000;

TEST_F(Packets, AreAwaitedUntilTheyCome) {
  std::thread sender([&] { EXPECT_TRUE(sendPacket(pair.first, text("late"), {}, nullptr)); });
  ReceivePatience patience;
  const auto packet = awaitPacket(pair.second, whole, Deadline::after(60 * kSecond), patience);
  sender.join();
  ASSERT_TRUE(packet);
  EXPECT_EQ(text("late"), taken(packet->size));
}

TEST_F(Packets, AreAwaitedNoLongerThanTheDeadline) {
  ReceivePatience patience;
  const Nanoseconds begun = monotonicNow();
  const auto packet = awaitPacket(pair.second, whole, Deadline::after(kSecond / 50), patience);
  EXPECT_EQ(Error::kWouldBlock, packet.error());
  EXPECT_GE(monotonicNow() - begun, kSecond / 50);
  EXPECT_EQ(ReceivePatience::kUntold, patience.seconds);
}

TEST_F(Packets, AreAwaitedUntilTheOtherEndCloses) {
  std::thread other([&] { pair.first = Descriptor(); });
  ReceivePatience patience;
  const auto packet = awaitPacket(pair.second, whole, Deadline::never(), patience);
  other.join();
  EXPECT_EQ(Error::kDisconnected, packet.error());
}

TEST_F(Packets, AreAwaitedWithFewChangesOfTheHostsLimit) {
  ReceivePatience patience;
  const auto limitAfter = [&](Deadline deadline) {
    EXPECT_TRUE(sendPacket(pair.first, text("x"), {}, nullptr));
    EXPECT_TRUE(awaitPacket(pair.second, whole, deadline, patience));
    return patience.seconds;
  };
  EXPECT_EQ(32, limitAfter(Deadline::after(60 * kSecond)));
  EXPECT_EQ(32, limitAfter(Deadline::after(50 * kSecond)));
  EXPECT_EQ(1, limitAfter(Deadline::after(3 * kSecond - 1)));
  EXPECT_EQ(ReceivePatience::kForEver, limitAfter(Deadline::never()));
}

}  // namespace
}  // namespace tests
