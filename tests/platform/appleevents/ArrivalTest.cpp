// Licence: MIT, see LICENSE.
// What becomes of messages: good ones, damaged ones and hostile ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <span>

#include "platform/appleevents/Dispatch.h"
#include "platform/appleevents/Validation.h"
#include "tests/platform/appleevents/Descriptors.h"
#include "tests/platform/appleevents/Messages.h"

namespace {

using platform::appleevents::Front;
using tests::attribute;
using tests::block;
using tests::Desc;
using tests::eventBlock;
using tests::item;
using tests::travellingAttributes;
using tests::word;

std::string goodBody() {
  return eventBlock(travellingAttributes(),
                    {item("----", "TEXT", "hello"), item("list", "list", block({}))});
}

OSStatus decodeAlone(std::string_view body) {
  Desc event;
  Desc reply;
  const OSStatus status = tests::decode(body, &event, &reply);
  EXPECT_TRUE(reply.isNull());
  EXPECT_EQ(event.isNull(), status != noErr);
  return status;
}

TEST(Arrival, GivesTheEventThatWasSent) {
  Desc event;
  ASSERT_EQ(tests::decode(goodBody(), &event), noErr);
  EXPECT_EQ(event.type(), DescType{typeAppleEvent});
  EXPECT_EQ(attribute<OSType>(event, keyEventClassAttr, typeType), OSType{'QrlP'});
  EXPECT_EQ(attribute<OSType>(event, keyEventIDAttr, typeType), OSType{'Mcam'});
  EXPECT_EQ(attribute<SInt16>(event, keyReturnIDAttr, typeSInt16), 7);
  EXPECT_EQ(attribute<SInt32>(event, keyTransactionIDAttr, typeSInt32), 9);
  EXPECT_EQ(attribute<Boolean>(event, keyReplyRequestedAttr, typeBoolean), 1);
  EXPECT_EQ(attribute<SInt32>(event, keyTimeoutAttr, typeSInt32), 3600);
  Desc text;
  EXPECT_EQ(AEGetParamDesc(&event, keyDirectObject, typeChar, &text), noErr);
  EXPECT_EQ(tests::textOf(text), "hello");
}

TEST(Arrival, TakesTheDataOutOfTheMessage) {
  platform::mach::MessageBlock message = platform::mach::makeBlock(tests::makeMessage(goodBody()));
  const void* data = message.data.address;
  Desc event;
  ASSERT_EQ(AEDecodeMessage(&message.header, &event, nullptr), noErr);
  EXPECT_EQ(message.data.address, nullptr);
  EXPECT_EQ(static_cast<const void*>((*&event).dataHandle->bytes().data()), data);
  Desc again;
  EXPECT_EQ(AEDecodeMessage(&message.header, &again, nullptr), errAECorruptData);
}

TEST(Arrival, RefusesBadArguments) {
  Desc event;
  Desc reply;
  platform::mach::MessageBlock message = platform::mach::makeBlock(tests::makeMessage(goodBody()));
  EXPECT_EQ(AEDecodeMessage(nullptr, &event, &reply), paramErr);
  EXPECT_EQ(AEDecodeMessage(&message.header, nullptr, &reply), paramErr);
  EXPECT_NE(message.data.address, nullptr);
  mach_msg_header_t plain = {};
  plain.msgh_size = sizeof plain;
  EXPECT_EQ(AEDecodeMessage(&plain, &event, &reply), errAECorruptData);
  EXPECT_EQ(AEProcessMessage(nullptr), paramErr);
  EXPECT_EQ(AEProcessMessage(&plain), errAECorruptData);
  platform::mach::destroyBlock(message);
}

TEST(Arrival, RefusesAMessageOfAnotherKind) {
  platform::mach::Message other = tests::makeMessage(goodBody());
  other.id = 1;
  platform::mach::MessageBlock message = platform::mach::makeBlock(std::move(other));
  Desc event;
  EXPECT_EQ(AEDecodeMessage(&message.header, &event, nullptr), errAECorruptData);
  EXPECT_EQ(message.data.address, nullptr);
}

TEST(Arrival, RefusesABodyCutShortAnywhere) {
  const std::string body = goodBody();
  for (std::size_t length = 0; length < body.size(); ++length) {
    EXPECT_EQ(decodeAlone(body.substr(0, length)), errAECorruptData) << length;
  }
  EXPECT_EQ(decodeAlone(body + std::string(4, '\0')), errAECorruptData);
  EXPECT_EQ(decodeAlone(body), noErr);
}

TEST(Arrival, SurvivesAnyWordReplaced) {
  const std::string body = goodBody();
  for (const UInt32 value : {0u, 1u, 3u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu, 0xFFFFFFFCu}) {
    for (std::size_t at = 0; at < body.size(); at += 4) {
      std::string damaged = body;
      damaged.replace(at, 4, word(value));
      Desc event;
      const OSStatus status = tests::decode(damaged, &event);
      EXPECT_TRUE(status == noErr || status == errAECorruptData) << at;
      EXPECT_EQ(event.isNull(), status != noErr);
    }
  }
}

TEST(Arrival, RefusesAnEventWithoutARequiredAttribute) {
  const std::vector<std::string> attributes = travellingAttributes();
  for (std::size_t missing = 0; missing < attributes.size(); ++missing) {
    std::vector<std::string> rest = attributes;
    rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(missing));
    EXPECT_EQ(decodeAlone(eventBlock(rest, {})), errAECorruptData)
        << attributes[missing].substr(0, 4);
  }
  EXPECT_EQ(decodeAlone(eventBlock(attributes, {})), noErr);
}

TEST(Arrival, RefusesAnAttributeOfAnotherTypeOrSizeOrTwice) {
  const std::vector<std::string> attributes = travellingAttributes();
  for (std::size_t index = 0; index < attributes.size(); ++index) {
    const std::string keyword = attributes[index].substr(0, 4);
    const std::string type = attributes[index].substr(4, 4);
    std::vector<std::string> changed = attributes;
    changed[index] = item(keyword, "TEXT", "abcd");
    EXPECT_EQ(decodeAlone(eventBlock(changed, {})), errAECorruptData) << keyword;
    changed[index] = item(keyword, type, "abcdefghijkl");
    EXPECT_EQ(decodeAlone(eventBlock(changed, {})), errAECorruptData) << keyword;
    changed = attributes;
    changed.push_back(attributes[index]);
    EXPECT_EQ(decodeAlone(eventBlock(changed, {})), errAECorruptData) << keyword;
  }
}

TEST(Arrival, RefusesCountsThatAreWrong) {
  const std::string one = item("****", "TEXT", "a");
  const auto withList = [](const std::string& list) {
    return eventBlock(travellingAttributes(), {item("list", "list", list)});
  };
  EXPECT_EQ(decodeAlone(withList(word(1) + one)), noErr);
  EXPECT_EQ(decodeAlone(withList(word(0) + one)), errAECorruptData);
  EXPECT_EQ(decodeAlone(withList(word(2) + one)), errAECorruptData);
  EXPECT_EQ(decodeAlone(withList(word(0xFFFFFFFF) + one)), errAECorruptData);
  EXPECT_EQ(decodeAlone(withList("")), errAECorruptData);
  EXPECT_EQ(decodeAlone(withList(word(1) + item("name", "TEXT", "a"))), errAECorruptData);
}

TEST(Arrival, RefusesItemsNestedTooDeep) {
  std::string list = block({});
  for (int depth = 2; depth <= 63; ++depth) list = block({item("****", "list", list)});
  EXPECT_EQ(decodeAlone(eventBlock(travellingAttributes(), {item("deep", "list", list)})), noErr);
  list = block({item("****", "list", list)});
  EXPECT_EQ(decodeAlone(eventBlock(travellingAttributes(), {item("deep", "list", list)})),
            errAECorruptData);
}

TEST(Arrival, RefusesDamageDeepInside) {
  const std::string inner = eventBlock({item("repq", "TEXT", "x")}, {item("----", "TEXT", "y")});
  const std::string record = block({item("evnt", "aevt", inner)});
  const std::string body = eventBlock(travellingAttributes(), {item("reco", "reco", record)});
  EXPECT_EQ(decodeAlone(body), noErr);
  std::string damaged = body;
  damaged.replace(damaged.find("TEXT", damaged.rfind("repq")) + 4, 4, word(400));
  EXPECT_EQ(decodeAlone(damaged), errAECorruptData);
}

TEST(Arrival, ForgetsThePortsOfTheSender) {
  std::vector<std::string> attributes = travellingAttributes();
  attributes.push_back(item("repp", "port", word(0x503)));
  const std::string inner =
      eventBlock({item("addr", "port", word(0x603)), item("repp", "port", word(0x703))}, {});
  Desc event;
  ASSERT_EQ(tests::decode(eventBlock(attributes, {item("port", "port", word(0x803)),
                                                  item("evnt", "aevt", inner)}),
                          &event),
            noErr);
  EXPECT_EQ(attribute<UInt32>(event, keyReplyPortAttr, typeMachPort), 0u);
  EXPECT_EQ(tests::parameter<UInt32>(event, 'port', typeMachPort), 0u);
  Desc found;
  ASSERT_EQ(AEGetParamDesc(&event, 'evnt', typeAppleEvent, &found), noErr);
  EXPECT_EQ(attribute<UInt32>(found, keyAddressAttr, typeMachPort), 0u);
  EXPECT_EQ(attribute<UInt32>(found, keyReplyPortAttr, typeMachPort), 0u);
}

/// The attributes in the order in which our own events have them, the address last.
std::vector<std::string> ownAttributes() {
  std::vector<std::string> attributes = travellingAttributes();
  std::rotate(attributes.begin() + 4, attributes.begin() + 5, attributes.end());
  return attributes;
}

bool isMessageByWalking(const std::string& body) {
  return platform::appleevents::isMessage(std::as_bytes(std::span(body)), Front::kUnknown);
}

bool isMessageByItsFront(const std::string& body) {
  const auto bytes = std::as_bytes(std::span(body));
  const Front front =
      platform::appleevents::startsWithFront(bytes) ? Front::kThere : Front::kUnknown;
  return platform::appleevents::isMessage(bytes, front);
}

TEST(Arrival, JudgesAFrontAsItJudgesAttributesOneByOne) {
  const std::string body =
      eventBlock(ownAttributes(), {item("----", "TEXT", "y"), item("long", "long", word(1))});
  ASSERT_TRUE(isMessageByItsFront(body));
  for (std::size_t at = 0; at < body.size(); ++at) {
    for (const int change : {1, 4, 0x80}) {
      std::string changed = body;
      changed[at] = static_cast<char>(changed[at] ^ change);
      ASSERT_EQ(isMessageByItsFront(changed), isMessageByWalking(changed)) << at;
    }
    ASSERT_FALSE(isMessageByItsFront(body.substr(0, at))) << at;
  }
}

TEST(Arrival, RefusesAnAttributeBehindTheFrontThatIsInIt) {
  for (std::size_t again = 0; again < ownAttributes().size(); ++again) {
    std::vector<std::string> attributes = ownAttributes();
    attributes.push_back(attributes[again]);
    EXPECT_FALSE(isMessageByWalking(eventBlock(attributes, {}))) << again;
    EXPECT_FALSE(isMessageByItsFront(eventBlock(attributes, {}))) << again;
    EXPECT_EQ(decodeAlone(eventBlock(attributes, {})), errAECorruptData) << again;
  }
}

TEST(Arrival, RefusesAFrontWithoutAnAddress) {
  std::vector<std::string> attributes = ownAttributes();
  attributes.pop_back();
  EXPECT_EQ(decodeAlone(eventBlock(attributes, {})), errAECorruptData);
}

TEST(Arrival, ForgetsThePortsBehindAFront) {
  std::vector<std::string> attributes = ownAttributes();
  attributes.push_back(item("repp", "port", word(0x503)));
  Desc event;
  ASSERT_EQ(tests::decode(eventBlock(attributes, {item("port", "port", word(0x803))}), &event),
            noErr);
  EXPECT_EQ(attribute<UInt32>(event, keyReplyPortAttr, typeMachPort), 0u);
  EXPECT_EQ(tests::parameter<UInt32>(event, 'port', typeMachPort), 0u);
  EXPECT_EQ(attribute<SInt16>(event, keyReturnIDAttr, typeSInt16), 7);
  EXPECT_EQ(attribute<SInt16>(event, keyEventSourceAttr, typeSInt16), kAELocalProcess);
}

TEST(Arrival, NamesThePortThatAnEventCameTo) {
  std::vector<std::string> attributes = travellingAttributes();
  attributes[4] = item("addr", "port", word(0x503));
  platform::mach::MessageBlock message =
      platform::mach::makeBlock(tests::makeMessage(eventBlock(attributes, {}), 0x1003));
  Desc event;
  ASSERT_EQ(AEDecodeMessage(&message.header, &event, nullptr), noErr);
  EXPECT_EQ(attribute<UInt32>(event, keyAddressAttr, typeMachPort), 0x1003u);
}

TEST(Arrival, BelievesNoMessageThatItIsADirectCall) {
  for (SInt16 source = -1; source <= 5; ++source) {
    std::vector<std::string> attributes = travellingAttributes();
    attributes[8] = item("esrc", "shor", word(static_cast<UInt32>(source)).substr(2));
    platform::mach::Message message = tests::makeMessage(eventBlock(attributes, {}));
    message.isOwn = true;
    platform::mach::MessageBlock block = platform::mach::makeBlock(std::move(message));
    Desc event;
    ASSERT_EQ(AEDecodeMessage(&block.header, &event, nullptr), noErr);
    const SInt16 expected = source == kAESameProcess ? kAESameProcess : kAELocalProcess;
    EXPECT_EQ(attribute<SInt16>(event, keyEventSourceAttr, typeSInt16), expected);
  }
}

// Else any process could interact with the person as this one.
TEST(Arrival, BelievesNoStrangerThatItIsThisProcess) {
  for (SInt16 source = -1; source <= 5; ++source) {
    std::vector<std::string> attributes = travellingAttributes();
    attributes[8] = item("esrc", "shor", word(static_cast<UInt32>(source)).substr(2));
    Desc event;
    ASSERT_EQ(tests::decode(eventBlock(attributes, {}), &event), noErr);
    EXPECT_EQ(attribute<SInt16>(event, keyEventSourceAttr, typeSInt16), kAELocalProcess);
  }
}

TEST(Arrival, RemembersWhatIsRead) {
  Desc event;
  ASSERT_EQ(tests::decode(goodBody(), &event), noErr);
  EXPECT_EQ(attribute<AEKeyword>(event, keyMissedKeywordAttr, typeKeyword), AEKeyword{'----'});
}

TEST(Arrival, DeletesAKeywordThatComesTwiceAltogether) {
  Desc event;
  ASSERT_EQ(tests::decode(eventBlock(travellingAttributes(),
                                     {item("twin", "TEXT", "a"), item("twin", "TEXT", "b")}),
                          &event),
            noErr);
  EXPECT_EQ(AEDeleteParam(&event, 'twin'), noErr);
  EXPECT_EQ(AESizeOfParam(&event, 'twin', nullptr, nullptr), errAEDescNotFound);
}

TEST(MessageKind, IsReadWithoutDecoding) {
  const std::string body = goodBody();
  const auto kind = platform::appleevents::peekKind(std::as_bytes(std::span(body)));
  ASSERT_TRUE(kind);
  EXPECT_EQ(kind->eventClass, AEEventClass{'QrlP'});
  EXPECT_EQ(kind->eventID, AEEventID{'Mcam'});
}

TEST(MessageKind, IsNotReadFromBytesThatAreNoEvent) {
  const std::string body = goodBody();
  for (const std::size_t length : {0u, 15u, 16u, 40u}) {
    const std::string cut = body.substr(0, length);
    EXPECT_FALSE(platform::appleevents::peekKind(std::as_bytes(std::span(cut)))) << length;
  }
  std::string other = body;
  other[3] = 2;
  EXPECT_FALSE(platform::appleevents::peekKind(std::as_bytes(std::span(other))));
}

}  // namespace
