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
  std::vector<std::string> attributes = {
      item("evcl", "type", "evnt"), item("evid", "type", "what"), item("rtid", "shor", "\xFF\xFE"),
      item("tran", "long", word(9)), item("addr", "port", word(port))};
  for (auto& part : postmark(kTrue, 120, kAENeverInteract, half(3), 1, 2)) {
    attributes.push_back(part);
  }
  EXPECT_EQ(textOf(made->bytes()), eventBlock(attributes, {}));
}

TEST(EventForm, FillsAnAddressOfOddLengthUp) {
  const auto made =
      makeEvent({'evnt', 'what', 1, 0, typeChar, std::as_bytes(std::span("name", 3))}, kMark);
  ASSERT_NE(made, nullptr);
  const std::string block = textOf(made->bytes());
  EXPECT_NE(block.find(item("addr", "TEXT", "nam")), std::string::npos);
  EXPECT_TRUE(block.ends_with(item("from", "psn ", word(1) + word(2))));
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
  writeArrival(writable(message), 0x2003, isOwn);
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
