// Licence: MIT, see LICENSE.
// Valid events, made at random and then damaged at random, through the real decoder: what it takes
// can be read to its end and sent on, and what it refuses leaves nothing behind.
#include <AE/AppleEvents.h>

#include <random>

#include "platform/appleevents/Storage.h"
#include "tests/platform/appleevents/Descriptors.h"
#include "tests/platform/appleevents/Messages.h"
#include "tests/support/StressCount.h"

namespace {

using tests::Desc;

class Mutation : public testing::Test {
 protected:
  std::size_t below(std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
  }

  std::string bytes(std::size_t size) {
    std::string made(size, '\0');
    for (char& byte : made) byte = static_cast<char>(below(256));
    return made;
  }

  /// One of the types with the data that it has, or a list or record of some.
  std::string anything(const std::string& keyword, int depth) {
    static constexpr struct {
      const char* type;
      std::size_t size;
    } kPlain[] = {{"long", 4}, {"shor", 2}, {"TEXT", 13}, {"doub", 8}, {"psn ", 8},
                  {"bool", 1}, {"port", 4}, {"null", 0},  {"zzzz", 7}, {"utxt", 6}};
    if (depth > 0 && below(3) == 0) {
      const bool isList = below(2) == 0;
      std::vector<std::string> items;
      for (std::size_t count = below(4); count > 0; --count) {
        items.push_back(anything(isList ? "****" : "key" + std::to_string(count), depth - 1));
      }
      return tests::item(keyword, isList ? "list" : "reco", tests::block(items));
    }
    const auto& plain = kPlain[below(std::size(kPlain))];
    return tests::item(keyword, plain.type, bytes(plain.size));
  }

  std::string event() {
    std::vector<std::string> parameters;
    for (std::size_t count = below(6); count > 0; --count) {
      parameters.push_back(anything("par" + std::to_string(count), 4));
    }
    return tests::eventBlock(tests::travellingAttributes(), parameters);
  }

  void damage(std::string& body) {
    switch (below(4)) {
      case 0:
        body[below(body.size())] = static_cast<char>(below(256));
        break;
      case 1:
        body[below(body.size())] ^= static_cast<char>(1 << below(8));
        break;
      case 2:
        body.resize(below(body.size()) + 1);
        break;
      default:
        body.insert(below(body.size()), bytes(1 + below(8)));
        break;
    }
  }

  std::mt19937 random{20040601};
};

/// Reads everything that a container has: how many plain items that was.
int readAll(const AEDesc& container) {
  SInt32 count = 0;
  if (AECountItems(&container, &count) != noErr) return 1;
  int found = 0;
  for (SInt32 index = 1; index <= count; ++index) {
    AEKeyword keyword = 0;
    Desc item;
    EXPECT_EQ(noErr, AEGetNthDesc(&container, index, typeWildCard, &keyword, &item));
    found += readAll(*item.get());
  }
  EXPECT_EQ(errAEDescNotFound, AESizeOfNthItem(&container, count + 1, nullptr, nullptr));
  return found;
}

std::string bodyOf(const AppleEvent& event) {
  const auto block = platform::appleevents::bytesOf(event);
  return {reinterpret_cast<const char*>(block.data()), block.size()};
}

TEST_F(Mutation, LeavesValidEventsDecodable) {
  for (int round = 0; round < tests::stressCount(2'000); ++round) {
    Desc decoded;
    ASSERT_EQ(noErr, tests::decode(event(), &decoded)) << round;
    readAll(*decoded.get());
  }
}

TEST_F(Mutation, IsRefusedOrMakesAnotherWholeEvent) {
  const int rounds = tests::stressCount(20'000);
  int refused = 0;
  for (int round = 0; round < rounds; ++round) {
    std::string body = event();
    for (std::size_t times = 1 + below(3); times > 0; --times) damage(body);
    Desc decoded;
    const OSStatus status = tests::decode(body, &decoded);
    if (status != noErr) {
      ASSERT_EQ(errAECorruptData, status) << round;
      ASSERT_TRUE(decoded.isNull());
      ++refused;
      continue;
    }
    readAll(*decoded.get());
    Desc again;
    ASSERT_EQ(noErr, tests::decode(bodyOf(*decoded.get()), &again)) << round;
    EXPECT_EQ(bodyOf(*decoded.get()), bodyOf(*again.get()));
  }
  EXPECT_GT(refused, rounds / 4);
  EXPECT_LT(refused, rounds);
}

/// Each byte of one event, in its turn, has been every other byte.
TEST_F(Mutation, OfAnyOneByteIsSurvived) {
  const std::string good = tests::eventBlock(
      tests::travellingAttributes(),
      {tests::item("list", "list", tests::block({tests::item("****", "long", tests::word(7))}))});
  const int step = tests::stressCount(10) > 1 ? 1 : 15;
  for (std::size_t at = 0; at < good.size(); ++at) {
    for (int value = 0; value < 256; value += step) {
      std::string body = good;
      body[at] = static_cast<char>(value);
      Desc decoded;
      const OSStatus status = tests::decode(body, &decoded);
      ASSERT_TRUE(status == noErr || status == errAECorruptData) << at << " is " << value;
      if (status == noErr) readAll(*decoded.get());
    }
  }
}

}  // namespace
