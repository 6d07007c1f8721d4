// Licence: MIT, see LICENSE.
#include "platform/mach/Packet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "tests/platform/mach/MachTesting.h"

namespace tests {
namespace {

using platform::mach::Assembler;
using platform::mach::Buffer;
using platform::mach::decodeHeader;
using platform::mach::encodeHeader;
using platform::mach::kPacketHeaderSize;
using platform::mach::makeBuffer;
using platform::mach::PacketHeader;
using Kind = PacketHeader::Kind;
using Assembled = Assembler::Outcome;

std::vector<std::byte> packet(const PacketHeader& header, Bytes body = {}) {
  const auto head = encodeHeader(header);
  std::vector<std::byte> bytes(head.begin(), head.end());
  bytes.insert(bytes.end(), body.begin(), body.end());
  return bytes;
}

TEST(PacketHeaderCoding, IsBigEndianOnEveryHost) {
  const auto bytes = encodeHeader({.kind = Kind::kFirst,
                                   .inMemoryFile = true,
                                   .destination = 0x01020304,
                                   .reply = 0x05060708,
                                   .id = -2,
                                   .total = 0x090a0b0c});
  const unsigned char expected[kPacketHeaderSize] = {'Q', 'r', 'M', '1', 1,    1,    0,    0,
                                                     1,   2,   3,   4,   5,    6,    7,    8,
                                                     255, 255, 255, 254, 0x09, 0x0a, 0x0b, 0x0c};
  EXPECT_EQ(0, std::memcmp(expected, bytes.data(), sizeof expected));
}

TEST(PacketHeaderCoding, GivesBackWhatWasPutIn) {
  const PacketHeader header{.kind = Kind::kContinuation,
                            .destination = 0xfffffffe,
                            .reply = 1,
                            .id = 0x61657674,
                            .total = 0x7fffffff};
  const auto decoded = decodeHeader(encodeHeader(header));
  ASSERT_TRUE(decoded);
  EXPECT_EQ(Kind::kContinuation, decoded->kind);
  EXPECT_FALSE(decoded->inMemoryFile);
  EXPECT_EQ(0xfffffffeu, decoded->destination);
  EXPECT_EQ(1u, decoded->reply);
  EXPECT_EQ(0x61657674, decoded->id);
  EXPECT_EQ(0x7fffffffu, decoded->total);
}

TEST(PacketHeaderCoding, RefusesWhatIsNotAsItShouldBe) {
  struct {
    std::size_t at;
    unsigned char value;
  } const faults[] = {{0, 'q'}, {3, '2'}, {4, 0}, {4, 4}, {5, 2}, {6, 1}, {7, 1}, {20, 0x80}};
  for (const auto& fault : faults) {
    auto bytes = encodeHeader({.id = 1});
    bytes[fault.at] = std::byte{fault.value};
    EXPECT_FALSE(decodeHeader(bytes)) << fault.at;
  }
  const auto whole = encodeHeader({.id = 1});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(decodeHeader(Bytes(whole).first(size))) << size;
  }
}

TEST(PacketAssembler, TakesAMessageOfOnePacket) {
  Assembler assembler;
  EXPECT_EQ(Assembled::kComplete, assembler.feed(packet({.id = 3})));
  EXPECT_EQ(0u, assembler.takeBody().size);
  EXPECT_EQ(Assembled::kComplete, assembler.feed(packet({.id = 4, .total = 10}, pattern(10))));
  EXPECT_EQ(4, assembler.header().id);
  const Buffer body = assembler.takeBody();
  EXPECT_EQ(pattern(10), std::vector<std::byte>(body.bytes().begin(), body.bytes().end()));
}

TEST(PacketAssembler, JoinsTheParts) {
  const std::vector<std::byte> whole = pattern(25);
  const Bytes bytes(whole);
  Assembler assembler;
  PacketHeader header{.reply = 9, .id = 3, .total = 25};
  EXPECT_EQ(Assembled::kPartial, assembler.feed(packet(header, bytes.first(10))));
  header.kind = Kind::kContinuation;
  EXPECT_EQ(Assembled::kPartial, assembler.feed(packet(header, bytes.subspan(10, 14))));
  EXPECT_EQ(Assembled::kComplete, assembler.feed(packet(header, bytes.subspan(24))));
  EXPECT_EQ(9u, assembler.header().reply);
  const Buffer body = assembler.takeBody();
  EXPECT_EQ(whole, std::vector<std::byte>(body.bytes().begin(), body.bytes().end()));
}

TEST(PacketAssembler, AbandonsAnUnfinishedBodyForTheNextMessage) {
  Assembler assembler;
  EXPECT_EQ(Assembled::kPartial, assembler.feed(packet({.id = 1, .total = 100}, pattern(50))));
  EXPECT_EQ(Assembled::kComplete, assembler.feed(packet({.id = 2, .total = 3}, pattern(3))));
  EXPECT_EQ(2, assembler.header().id);
  EXPECT_EQ(3u, assembler.takeBody().size);
}

TEST(PacketAssembler, RefusesAContinuationThatContinuesNothing) {
  const auto rest = packet({.kind = Kind::kContinuation, .total = 10}, pattern(5));
  Assembler fresh;
  EXPECT_EQ(Assembled::kMalformed, fresh.feed(rest));
  Assembler complete;
  EXPECT_EQ(Assembled::kComplete, complete.feed(packet({.total = 10}, pattern(10))));
  EXPECT_EQ(Assembled::kMalformed, complete.feed(rest));
  Assembler inFile;
  EXPECT_EQ(Assembled::kMemoryFile, inFile.feed(packet({.inMemoryFile = true, .total = 10})));
  EXPECT_EQ(Assembled::kMalformed, inFile.feed(rest));
}

TEST(PacketAssembler, RefusesABodyThatDoesNotFitItsClaim) {
  const PacketHeader ten{.total = 10};
  const PacketHeader rest{.kind = Kind::kContinuation, .total = 10};
  EXPECT_EQ(Assembled::kMalformed, Assembler().feed(packet(ten, pattern(11))));
  EXPECT_EQ(Assembled::kMalformed, Assembler().feed(packet(ten)));
  EXPECT_EQ(Assembled::kMalformed, Assembler().feed(packet({.total = 0}, pattern(1))));
  Assembler partial;
  EXPECT_EQ(Assembled::kPartial, partial.feed(packet(ten, pattern(5))));
  EXPECT_EQ(Assembled::kMalformed, partial.feed(packet(rest, pattern(6))));
  Assembler starved;
  EXPECT_EQ(Assembled::kPartial, starved.feed(packet(ten, pattern(5))));
  EXPECT_EQ(Assembled::kMalformed, starved.feed(packet(rest)));
}

TEST(PacketAssembler, ExpectsAFileWhereItIsAnnounced) {
  Assembler assembler;
  EXPECT_EQ(Assembled::kMemoryFile,
            assembler.feed(packet({.inMemoryFile = true, .total = 1 << 30})));
  EXPECT_EQ(1u << 30, assembler.header().total);
  EXPECT_EQ(Assembled::kMalformed,
            Assembler().feed(packet({.inMemoryFile = true, .total = 10}, pattern(10))));
}

TEST(PacketAssembler, TakesAnAbandonmentOnlyOfSomething) {
  Assembler assembler;
  EXPECT_EQ(Assembled::kComplete,
            assembler.feed(packet({.kind = Kind::kAbandoned, .destination = 7})));
  EXPECT_EQ(7u, assembler.header().destination);
  EXPECT_EQ(Assembled::kMalformed, assembler.feed(packet({.kind = Kind::kAbandoned})));
  EXPECT_EQ(Assembled::kMalformed,
            assembler.feed(packet({.kind = Kind::kAbandoned, .destination = 7, .total = 1})));
}

/// Reads parts of a large message as a connection does: the first into a block of its own.
class LargeMessage : public testing::Test {
 protected:
  LargeMessage() { forgetBlocks(); }
  ~LargeMessage() override { forgetBlocks(); }

  static void forgetBlocks() {
    while (platform::mach::withdrawKept(0)) continue;
  }

  Assembled begin(std::size_t size, std::uint32_t total) {
    std::memcpy(block.memory.get(), whole.data(), size);
    memory = block.memory.get();
    const auto head = encodeHeader({.id = 3, .total = total});
    return assembler.feed(head, {.rest = Bytes(memory, size), .block = &block});
  }

  /// Fills the assembler's room, and hands the rest over apart.
  Assembled goOn(Bytes bytes, Kind kind = Kind::kContinuation) {
    const std::span<std::byte> room = assembler.room();
    const std::size_t placed = std::min(room.size(), bytes.size());
    std::memcpy(room.data(), bytes.data(), placed);
    const auto total = static_cast<std::uint32_t>(bytes.size());
    const auto head = encodeHeader({.kind = kind, .id = 4, .total = total});
    return assembler.feed(head, {.placed = room.first(placed), .rest = bytes.subspan(placed)});
  }

  void expectBody(Bytes expected) {
    const Buffer body = assembler.takeBody();
    EXPECT_TRUE(std::ranges::equal(expected, body.bytes()));
  }

  static constexpr std::uint32_t kSize = 100'000;
  std::vector<std::byte> whole = pattern(kSize);
  platform::mach::Block block = platform::mach::freshBlock(kSize);
  std::byte* memory = nullptr;
  Assembler assembler;
};

TEST_F(LargeMessage, StaysWhereItWasRead) {
  EXPECT_EQ(Assembled::kComplete, begin(kSize, kSize));
  EXPECT_FALSE(block);
  const Buffer body = assembler.takeBody();
  EXPECT_EQ(memory, body.memory.get());
  EXPECT_TRUE(std::ranges::equal(whole, body.bytes()));
}

TEST_F(LargeMessage, IsJoinedInItsPlace) {
  EXPECT_EQ(Assembled::kPartial, begin(60'000, kSize));
  EXPECT_EQ(memory + 60'000, assembler.room().data());
  EXPECT_EQ(40'000u, assembler.room().size());
  EXPECT_EQ(Assembled::kPartial, goOn(Bytes(whole).subspan(60'000, 30'000)));
  EXPECT_EQ(90'000u, assembler.unfinished());
  EXPECT_EQ(Assembled::kComplete, goOn(Bytes(whole).subspan(90'000)));
  EXPECT_TRUE(assembler.room().empty());
  expectBody(whole);
}

TEST_F(LargeMessage, IsRefusedWhereItGoesOnForTooLong) {
  EXPECT_EQ(Assembled::kPartial, begin(60'000, kSize));
  EXPECT_EQ(Assembled::kMalformed, goOn(Bytes(whole).first(40'001)));
}

TEST_F(LargeMessage, IsAbandonedForOneThatWasReadOverIt) {
  for (const std::size_t size : {10u, 40'000u, 40'001u, 99'999u}) {
    SCOPED_TRACE(size);
    if (!block) block = platform::mach::freshBlock(kSize);
    EXPECT_EQ(Assembled::kPartial, begin(60'000, kSize));
    EXPECT_EQ(Assembled::kComplete, goOn(Bytes(whole).first(size), Kind::kFirst));
    EXPECT_EQ(4, assembler.header().id);
    expectBody(Bytes(whole).first(size));
  }
}

TEST_F(LargeMessage, IsCopiedWhereTheBlockHasNoRoomForIt) {
  EXPECT_EQ(Assembled::kPartial, begin(60'000, kSize + 1));
  EXPECT_TRUE(block);
  EXPECT_TRUE(assembler.room().empty());
  const auto head = encodeHeader({.kind = Kind::kContinuation});
  EXPECT_EQ(Assembled::kComplete, assembler.feed(head, {.rest = Bytes(whole).first(40'001)}));
  EXPECT_EQ(kSize + 1, assembler.takeBody().size);
  EXPECT_EQ(kSize + 1, platform::mach::withdrawKept(0).capacity);
}

TEST_F(LargeMessage, GoesToAKeptBlockThatHasRoomForIt) {
  platform::mach::Block kept = platform::mach::freshBlock(2 * kSize);
  ASSERT_TRUE(platform::mach::keepOnceFree(kept.memory.get(), kept.capacity));
  kept = {};
  EXPECT_EQ(Assembled::kPartial, begin(60'000, kSize + 1));
  EXPECT_TRUE(block);
  EXPECT_EQ(40'001u, assembler.room().size());
  EXPECT_EQ(Assembled::kComplete, goOn(Bytes(whole).first(40'001)));
  EXPECT_EQ(kSize + 1, assembler.takeBody().size);
}

// Or a stranger could have a block for each of many messages that it only begins.
TEST_F(LargeMessage, GetsABlockOnlyForBytesThatAreManyAndOnlyAFewTimes) {
  EXPECT_EQ(Assembled::kPartial, begin(platform::mach::kSmallestKept - 1, kSize));
  EXPECT_TRUE(block);
  std::vector<Assembler> others(platform::mach::kMostKept);
  for (Assembler& other : others) {
    std::swap(assembler, other);
    if (!block) block = platform::mach::freshBlock(kSize);
    EXPECT_EQ(Assembled::kPartial, begin(platform::mach::kSmallestKept, kSize));
    EXPECT_FALSE(block);
  }
  Assembler late;
  std::swap(assembler, late);
  block = platform::mach::freshBlock(kSize);
  EXPECT_EQ(Assembled::kPartial, begin(platform::mach::kSmallestKept, kSize));
  EXPECT_TRUE(block);
  EXPECT_TRUE(assembler.room().empty());
}

TEST(MessageBuffers, HaveNoMemoryWhenTheyAreEmpty) {
  const auto empty = makeBuffer(0);
  ASSERT_TRUE(empty);
  EXPECT_EQ(nullptr, empty->memory);
  EXPECT_EQ(0u, empty->bytes().size());
  const auto full = makeBuffer(5);
  ASSERT_TRUE(full);
  EXPECT_NE(nullptr, full->memory);
  EXPECT_EQ(5u, full->bytes().size());
}

}  // namespace
}  // namespace tests
