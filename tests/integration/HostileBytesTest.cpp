// Licence: MIT, see LICENSE.
// A live agent and clients that send it whatever they like.
#include <gmock/gmock.h>

#include "tests/integration/Hostile.h"
#include "tests/platform/appleevents/Messages.h"
#include "tests/support/StressCount.h"

namespace {

using tests::item;
using tests::kAbandonment;
using tests::kContinuingPacket;
using tests::kInMemoryFile;
using tests::kToken;
using tests::RawAnswer;
using tests::RawPacket;
using tests::Stranger;
using tests::wholePacket;
using tests::word;

class HostileBytes : public tests::Hostile {};

struct WrongPacket {
  const char* what;
  RawPacket packet;
};

// The body of each has ten bytes unless it says otherwise.
const std::string kBody(10, 'b');
const WrongPacket kWrongPackets[] = {
    {"no magic", {.magic = 0, .total = 10, .body = kBody}},
    {"another magic", {.magic = 0x51724d32, .total = 10, .body = kBody}},
    {"the magic reversed", {.magic = 0x314d7251, .total = 10, .body = kBody}},
    {"no kind", {.kind = 0, .total = 10, .body = kBody}},
    {"a kind too many", {.kind = 4, .total = 10, .body = kBody}},
    {"the last kind", {.kind = 255, .total = 10, .body = kBody}},
    {"a flag too many", {.flags = 2, .total = 10, .body = kBody}},
    {"all flags", {.flags = 255, .total = 10, .body = kBody}},
    {"a file that does not come", {.flags = kInMemoryFile, .total = 10}},
    {"a file and a body", {.flags = kInMemoryFile, .total = 10, .body = kBody}},
    {"reserved bits, low", {.reserved = 1, .total = 10, .body = kBody}},
    {"reserved bits, high", {.reserved = 0x8000, .total = 10, .body = kBody}},
    {"nothing claimed", {.total = 0, .body = kBody}},
    {"too little claimed", {.total = 9, .body = kBody}},
    {"a negative size", {.total = 0x80000000, .body = kBody}},
    {"minus one", {.total = 0xffffffff, .body = kBody}},
    {"much claimed, nothing sent", {.total = 0x7fffffff}},
    {"a part of nothing", {.kind = kContinuingPacket, .total = 10, .body = kBody}},
    {"an abandonment of nothing", {.kind = kAbandonment}},
    {"an abandonment with a reply", {.kind = kAbandonment, .destination = 1, .reply = 1}},
    {"an abandonment with a size", {.kind = kAbandonment, .destination = 1, .total = 1}},
    {"an abandonment with a body", {.kind = kAbandonment, .destination = 1, .body = kBody}},
    {"an abandonment in a file", {.kind = kAbandonment, .flags = kInMemoryFile, .destination = 1}},
};

TEST_F(HostileBytes, OfAWrongPacketCostTheirConnection) {
  for (const WrongPacket& wrong : kWrongPackets) {
    SCOPED_TRACE(wrong.what);
    Stranger stranger = connect();
    EXPECT_TRUE(send(stranger, wrong.packet.bytes()));
    EXPECT_TRUE(stranger.isCutOff());
  }
}

TEST_F(HostileBytes, OfAPacketCutShortCostTheirConnectionOrWaitForTheRest) {
  const std::string whole = wholePacket(event(), kToken).bytes();
  constexpr std::size_t kHeader = 24;
  for (std::size_t size = 1; size < whole.size(); ++size) {
    Stranger stranger = connect();
    ASSERT_TRUE(send(stranger, whole.substr(0, size))) << size;
    if (size > kHeader) continue;
    EXPECT_TRUE(stranger.isCutOff()) << size;
  }
}

TEST_F(HostileBytes, ThatComeOneByOneAreAMessage) {
  Stranger stranger = connect();
  RawPacket packet = wholePacket(event(), kToken);
  for (const char byte : event()) {
    packet.body = byte;
    ASSERT_TRUE(send(stranger, packet.bytes()));
    packet.kind = kContinuingPacket;
  }
  EXPECT_TRUE(isNotHandled(stranger.receive().value_or(RawAnswer{})));
}

// Whatever the words of an event are: it is dispatched or it is given up, and its sender hears
// which.
TEST_F(HostileBytes, OfAnEventAreAnsweredWhateverTheyAre) {
  const std::string good = event({item("list", "list", word(1) + item("****", "long", word(7)))});
  const std::size_t wanted = good.find("repqbool") + 12;
  Stranger stranger = connect();
  std::uint32_t token = 1;
  int handled = 0;
  for (std::size_t at = 0; at + 4 <= good.size(); at += 4) {
    for (const std::uint32_t wrong : {0u, 1u, 2u, 0x7fffffffu, 0x80000000u, 0xfffffff0u, ~0u}) {
      std::string bad = good;
      bad.replace(at, 4, word(wrong));
      ASSERT_TRUE(send(stranger, wholePacket(bad, ++token).bytes()));
      if (at == wanted && wrong >> 24 == 0) continue;  // it says that it wants no answer
      const std::optional<RawAnswer> answer = stranger.receive();
      ASSERT_TRUE(answer) << "word at " << at << " is " << wrong;
      EXPECT_EQ(token, answer->destination);
      handled += isNotHandled(*answer) ? 1 : 0;
    }
  }
  EXPECT_GT(handled, 0);
  EXPECT_LT(handled, static_cast<int>(token) / 2);
}

TEST_F(HostileBytes, OfAnEventCutShortAreGivenUp) {
  const std::string good = event({item("text", "TEXT", "some words")});
  Stranger stranger = connect();
  for (std::size_t size = 0; size < good.size(); ++size) {
    ASSERT_TRUE(send(stranger, wholePacket(good.substr(0, size), kToken).bytes()));
    const std::optional<RawAnswer> answer = stranger.receive();
    ASSERT_TRUE(answer) << size;
    EXPECT_EQ(kAbandonment, answer->kind) << size;
  }
}

/// A list in a list in a list.
std::string nested(std::size_t levels) {
  std::string bytes;
  for (std::size_t left = levels - 1; left > 0; --left) {
    bytes += word(1) + "****list" + word(static_cast<UInt32>(16 * left - 12));
  }
  return bytes + word(0);
}

TEST_F(HostileBytes, AreNestedToAnyDepth) {
  Stranger stranger = connect();
  std::vector<std::size_t> refused;
  for (const std::size_t levels : {1u, 10u, 63u, 64u, 1000u, 10'000u, 100'000u}) {
    ASSERT_TRUE(sendInParts(stranger, event({item("deep", "list", nested(levels))}), kToken));
    const std::optional<RawAnswer> answer = stranger.receive();
    ASSERT_TRUE(answer) << levels;
    if (!isNotHandled(*answer)) refused.push_back(levels);
  }
  EXPECT_THAT(refused, testing::ElementsAre(64, 1000, 10'000, 100'000));
}

TEST_F(HostileBytes, OfManyItemsAreCounted) {
  const int count = tests::stressCount(50'000);
  std::string items;
  for (int i = 0; i < count; ++i) items += item("****", "null", "");
  Stranger stranger = connect();
  for (const int claimed : {count, count - 1, count + 1, 0}) {
    const std::string list = word(static_cast<UInt32>(claimed)) + items;
    ASSERT_TRUE(sendInParts(stranger, event({item("many", "list", list)}), kToken));
    const std::optional<RawAnswer> answer = stranger.receive();
    ASSERT_TRUE(answer);
    EXPECT_EQ(claimed == count, isNotHandled(*answer)) << claimed;
  }
}

TEST_F(HostileBytes, OfOneMessageInAnotherEndTheFirst) {
  Stranger stranger = connect();
  RawPacket part = wholePacket(std::string(100, 'x'), kToken);
  part.body.resize(50);
  ASSERT_TRUE(send(stranger, part.bytes()));
  ASSERT_TRUE(send(stranger, wholePacket(event(), kToken + 1).bytes()));
  const std::optional<RawAnswer> answer = stranger.receive();
  ASSERT_TRUE(answer);
  EXPECT_EQ(kToken + 1, answer->destination);
  part.kind = kContinuingPacket;
  ASSERT_TRUE(send(stranger, part.bytes()));
  EXPECT_TRUE(stranger.isCutOff());
}

// Answers and deaths that nobody waits for, by tokens that others' requests may well have.
TEST_F(HostileBytes, OfForgedAnswersAndDeathsReachNobody) {
  Stranger stranger = connect();
  for (std::uint32_t guess = 1; guess < 200; ++guess) {
    RawPacket answer = wholePacket(event());
    answer.destination = guess;
    ASSERT_TRUE(send(stranger, answer.bytes()));
    ASSERT_TRUE(send(stranger, RawPacket{.kind = kAbandonment, .destination = guess}.bytes()));
    if (guess % 20 == 0) expectService();
  }
  ASSERT_TRUE(send(stranger, wholePacket(event(), kToken).bytes()));
  EXPECT_TRUE(isNotHandled(stranger.receive().value_or(RawAnswer{})));
}

TEST_F(HostileBytes, ThatNeverEndCostWhatWasSent) {
  std::vector<Stranger> strangers;
  RawPacket part{.reply = kToken, .total = 0x7fffffff, .body = std::string(100'000, 'x')};
  for (int i = 0; i < 100; ++i) {
    strangers.push_back(connect());
    ASSERT_TRUE(send(strangers.back(), part.bytes()));
  }
  expectService();
}

TEST_F(HostileBytes, ThatDoNotComeCostADescriptor) {
  std::vector<Stranger> strangers;
  const std::size_t before = descriptors();
  for (int i = 0; i < 120; ++i) strangers.push_back(connect());
  while (descriptors() < before + strangers.size() && !HasFailure()) expectService();
  expectService();
}

// One that asks and does not listen is not listened to, once enough answers wait for it.
TEST_F(HostileBytes, ThatAreNeverReadStopTheirRequestsOnly) {
  Stranger stranger = connect();
  const std::string request = wholePacket(event(), kToken).bytes();
  int asked = 0;
  for (int refused = 0; refused < 10 && asked < 100'000;) {
    if (stranger.sendNow(request)) {
      ++asked;
      refused = 0;
    } else {
      ++refused;
      expectService();
    }
  }
  EXPECT_GT(asked, 100);
  EXPECT_LT(asked, 100'000);
  for (int answers = 0; answers < asked; ++answers) {
    ASSERT_TRUE(isNotHandled(stranger.receive().value_or(RawAnswer{}))) << answers;
  }
}

}  // namespace
