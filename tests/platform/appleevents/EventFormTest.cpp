// Licence: MIT, see LICENSE.
#include "platform/appleevents/EventForm.h"

#include <gtest/gtest.h>

#include <span>

#include "tests/platform/appleevents/Messages.h"

namespace {

using namespace platform::appleevents;
using tests::eventBlock;
using tests::item;
using tests::word;

const std::string kTrue("\1", 1);
const std::string kFalse("\0", 1);
constexpr Postmark kMark = {kAEWaitReply | kAENeverInteract, 120, kAELocalProcess, {1, 2}};

std::string textOf(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

WritableBytes writable(std::string& text) { return std::as_writable_bytes(std::span(text)); }

std::vector<std::string> postmark(const std::string& wantsReply, UInt32 timeOut, UInt32 level,
                                  const std::string& source, UInt32 high, UInt32 low) {
  return {item("repq", "bool", wantsReply), item("timo", "long", word(timeOut)),
          item("inte", "long", word(level)), item("esrc", "shor", source),
          item("from", "psn ", word(high) + word(low))};
}

std::string half(UInt32 value) { return word(value).substr(2); }

TEST(EventForm, StartsWithEveryAttributeInItsOrder) {
  const UInt32 port = 0x1003;
  const auto made =
      makeEvent({'evnt', 'what', -2, 9, typeMachPort, std::as_bytes(std::span(&port, 1))}, kMark);
  ASSERT_NE(made, nullptr);
  std::vector<std::string> attributes = {item("evcl", "type", "evnt"), item("evid", "type", "what"),
                                         item("rtid", "shor", "\xFF\xFE"),
                                         item("tran", "long", word(9))};
  for (auto& part : postmark(kTrue, 120, kAENeverInteract, half(3), 1, 2)) {
    attributes.push_back(part);
  }
  attributes.push_back(item("addr", "port", word(port)));
  EXPECT_EQ(textOf(made->bytes()), eventBlock(attributes, {}));
}

TEST(EventForm, FillsAnAddressOfOddLengthUp) {
  const auto made =
      makeEvent({'evnt', 'what', 1, 0, typeChar, std::as_bytes(std::span("name", 3))}, kMark);
  ASSERT_NE(made, nullptr);
  const std::string block = textOf(made->bytes());
  EXPECT_TRUE(
      block.ends_with(item("from", "psn ", word(1) + word(2)) + item("addr", "TEXT", "nam")));
}

TEST(EventForm, NeedsNoAddress) {
  const auto made = makeEvent({'evnt', 'what', 1, 0, typeNull, {}}, kMark);
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(textOf(made->bytes()).find("addr"), std::string::npos);
}

TEST(EventForm, TakesANewPostmarkInPlace) {
  std::string event =
      eventBlock(postmark(kFalse, 1, 2, half(0), 3, 4), {item("a   ", "b   ", "c")});
  EXPECT_TRUE(writeOver(writable(event), kMark));
  EXPECT_EQ(event, eventBlock(postmark(kTrue, 120, kAENeverInteract, half(3), 1, 2),
                              {item("a   ", "b   ", "c")}));
}

TEST(EventForm, TellsThatAPartOfThePostmarkIsMissing) {
  for (std::size_t missing = 0; missing < 5; ++missing) {
    std::vector<std::string> parts = postmark(kFalse, 1, 2, half(0), 3, 4);
    parts.erase(parts.begin() + static_cast<std::ptrdiff_t>(missing));
    std::string event = eventBlock(parts, {});
    EXPECT_FALSE(writeOver(writable(event), kMark)) << "part " << missing;
  }
}

TEST(EventForm, LeavesAPartOfAnotherFormAlone) {
  std::vector<std::string> parts = postmark(kFalse, 1, 2, half(0), 3, 4);
  parts[1] = item("timo", "shor", half(1));
  std::string event = eventBlock(parts, {});
  EXPECT_FALSE(writeOver(writable(event), kMark));
  EXPECT_NE(event.find(parts[1]), std::string::npos);
}

TEST(EventForm, CountsAbsentInteractionAsAllowed) {
  EXPECT_EQ((Postmark{kAENoReply, 0, 0, {}}.interactionLevel()), kAECanInteract);
  EXPECT_EQ((Postmark{kAEAlwaysInteract, 0, 0, {}}.interactionLevel()), kAEAlwaysInteract);
}

std::string arrived(const std::string& address, UInt32 source, bool isOwn) {
  std::string message = eventBlock({address, item("esrc", "shor", half(source))}, {});
  writeArrival(writable(message), 0x2003, isOwn, Front::kUnknown);
  return message;
}

TEST(EventForm, TakesThePortOfItsArrival) {
  const std::string address = item("addr", "port", word(7));
  EXPECT_EQ(
      arrived(address, kAELocalProcess, false),
      eventBlock({item("addr", "port", word(0x2003)), item("esrc", "shor", half(kAELocalProcess))},
                 {}));
}

TEST(EventForm, KeepsTheAddressOfAProcess) {
  const std::string address = item("addr", "psn ", word(0) + word(5));
  EXPECT_EQ(arrived(address, kAELocalProcess, false),
            eventBlock({address, item("esrc", "shor", half(kAELocalProcess))}, {}));
}

TEST(EventForm, BelievesOnlyOnesOwnEventsThatTheyAre) {
  const std::string address = item("addr", "psn ", word(0) + word(5));
  EXPECT_EQ(arrived(address, kAESameProcess, true),
            eventBlock({address, item("esrc", "shor", half(kAESameProcess))}, {}));
  EXPECT_EQ(arrived(address, kAESameProcess, false),
            eventBlock({address, item("esrc", "shor", half(kAELocalProcess))}, {}));
}

std::unique_ptr<Storage> eventTo(UInt32 port) {
  return makeEvent({'evnt', 'what', 1, 0, typeMachPort, std::as_bytes(std::span(&port, 1))}, kMark);
}

TEST(EventForm, ChangesAFrontAsItChangesAttributesOneByOne) {
  for (const bool isOwn : {false, true}) {
    const auto made = eventTo(7);
    ASSERT_NE(made, nullptr);
    std::string walked = textOf(made->bytes());
    std::string direct = walked;
    const Postmark mark = {kAENoReply | kAEAlwaysInteract, -2, kAESameProcess, {8, 9}};
    EXPECT_TRUE(writeOver(writable(walked), mark));
    writeOverFront(writable(direct), mark);
    EXPECT_EQ(direct, walked);
    writeArrival(writable(walked), 0x2003, isOwn, Front::kUnknown);
    writeArrival(writable(direct), 0x2003, isOwn, Front::kThere);
    EXPECT_EQ(direct, walked);
    EXPECT_NE(direct.find(item("addr", "port", word(0x2003))), std::string::npos);
  }
}

TEST(EventForm, FindsEveryAttributeInFrontAndBehindItWhereWalkingFindsIt) {
  const auto made = eventTo(7);
  ASSERT_NE(made, nullptr);
  ASSERT_TRUE(made->hasFront());
  const auto region = findRegion(typeAppleEvent, made->bytes(), Part::kAttributes);
  ASSERT_TRUE(region);
  ASSERT_EQ(region->count, 10u);
  for (auto walked = firstItem(made->bytes(), *region); walked;
       walked = nextItem(made->bytes(), *region, *walked)) {
    const auto found = findAttribute({typeAppleEvent, made.get()}, walked->keyword);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->offset, walked->offset);
    EXPECT_EQ(found->index, walked->index);
  }
}

TEST(EventForm, KnowsTheFrontByItsBytes) {
  const auto made = eventTo(7);
  ASSERT_NE(made, nullptr);
  const std::string block = textOf(made->bytes());
  EXPECT_TRUE(startsWithFront(made->bytes()));
  for (const FrontAttribute& attribute : kFront) {
    for (std::size_t at = attribute.offset; at < attribute.offset + kItemHeader; ++at) {
      std::string changed = block;
      changed[at] ^= 1;
      EXPECT_FALSE(startsWithFront(writable(changed))) << at;
    }
  }
  for (std::size_t size = 0; size < block.size(); ++size) {
    EXPECT_FALSE(startsWithFront(made->bytes().first(size))) << size;
  }
}

TEST(EventForm, HasNoFrontWithFewerAttributesThanThat) {
  const std::string few = eventBlock(postmark(kFalse, 1, 2, half(0), 3, 4), {});
  EXPECT_FALSE(startsWithFront(std::as_bytes(std::span(few))));
  std::string manyParameters = textOf(eventTo(7)->bytes());
  manyParameters[7] = 8;  // the last byte of the count
  EXPECT_FALSE(startsWithFront(writable(manyParameters)));
}

TEST(EventForm, ForgetsThatItHasAFrontWhenOneOfItsBytesMoves) {
  const auto made = eventTo(7);
  ASSERT_NE(made, nullptr);
  ASSERT_NE(made->splice(kFrontEnd, 0, 4), nullptr);
  EXPECT_TRUE(made->hasFront());
  EXPECT_TRUE(made->duplicate()->hasFront());
  ASSERT_NE(made->splice(kFrontEnd - 4, 0, 4), nullptr);
  EXPECT_FALSE(made->hasFront());
}

TEST(EventForm, FindsAttributesOfEventsOnly) {
  const auto made = makeEvent({'evnt', 'what', 1, 0, typeNull, {}}, kMark);
  ASSERT_NE(made, nullptr);
  const auto found = findAttribute({typeAppleEvent, made.get()}, keyEventIDAttr);
  ASSERT_TRUE(found);
  EXPECT_EQ(textOf(found->data), "what");
  EXPECT_FALSE(findAttribute({typeAppleEvent, made.get()}, keyAddressAttr));
  EXPECT_FALSE(findAttribute({typeAERecord, made.get()}, keyEventIDAttr));
  EXPECT_FALSE(findAttribute({typeAppleEvent, nullptr}, keyEventIDAttr));
}

}  // namespace
