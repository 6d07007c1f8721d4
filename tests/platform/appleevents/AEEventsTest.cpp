// Licence: MIT, see LICENSE.
#include <AE/AEMach.h>
#include <AE/AppleEvents.h>

#include <gtest/gtest.h>

#include <set>

#include "platform/appleevents/Attributes.h"
#include "tests/platform/appleevents/Descriptors.h"

namespace {

using tests::attribute;
using tests::Desc;

TEST(AppleEvent, HasTheAttributesThatItWasMadeWith) {
  const Desc target = tests::makeValue<ProcessSerialNumber>(typeProcessSerialNumber, {3, 4});
  Desc event;
  ASSERT_EQ(AECreateAppleEvent('QrlP', 'Mcam', &target, 12, -34, &event), noErr);
  EXPECT_EQ(event.type(), DescType{typeAppleEvent});
  EXPECT_EQ(attribute<OSType>(event, keyEventClassAttr, typeType), OSType{'QrlP'});
  EXPECT_EQ(attribute<OSType>(event, keyEventIDAttr, typeType), OSType{'Mcam'});
  EXPECT_EQ(attribute<SInt16>(event, keyReturnIDAttr, typeSInt16), 12);
  EXPECT_EQ(attribute<SInt32>(event, keyTransactionIDAttr, typeSInt32), -34);
  const auto address =
      attribute<ProcessSerialNumber>(event, keyAddressAttr, typeProcessSerialNumber);
  ASSERT_TRUE(address);
  EXPECT_EQ(address->highLongOfPSN, 3u);
  EXPECT_EQ(address->lowLongOfPSN, 4u);
}

TEST(AppleEvent, HasTheAttributesOfSendingBeforeItIsSent) {
  const Desc event = tests::makeEvent();
  EXPECT_EQ(attribute<Boolean>(event, keyReplyRequestedAttr, typeBoolean), 0);
  EXPECT_EQ(attribute<SInt32>(event, keyTimeoutAttr, typeSInt32), kAEDefaultTimeout);
  EXPECT_EQ(attribute<SInt32>(event, keyInteractLevelAttr, typeSInt32), SInt32{kAECanInteract});
  EXPECT_EQ(attribute<SInt16>(event, keyEventSourceAttr, typeSInt16), SInt16{kAEUnknownSource});
  EXPECT_TRUE(
      attribute<ProcessSerialNumber>(event, keyOriginalAddressAttr, typeProcessSerialNumber));
}

TEST(AppleEvent, NeedsNoTarget) {
  const Desc null;
  Desc event;
  ASSERT_EQ(AECreateAppleEvent('test', 'case', &null, 1, 0, &event), noErr);
  EXPECT_EQ(AESizeOfAttribute(&event, keyAddressAttr, nullptr, nullptr), errAEDescNotFound);
  EXPECT_EQ(AECreateAppleEvent('test', 'case', nullptr, 1, 0, nullptr), paramErr);
}

TEST(AppleEvent, GetsReturnIDsThatDiffer) {
  std::set<SInt16> seen;
  for (int i = 0; i < 1000; ++i) {
    Desc event;
    ASSERT_EQ(AECreateAppleEvent('test', 'case', nullptr, kAutoGenerateReturnID, 0, &event), noErr);
    const auto returnID = attribute<SInt16>(event, keyReturnIDAttr, typeSInt16);
    ASSERT_TRUE(returnID);
    EXPECT_GT(*returnID, 0);
    seen.insert(*returnID);
  }
  EXPECT_EQ(seen.size(), 1000u);
}

TEST(Attribute, DoesNotMixWithParameters) {
  Desc event = tests::makeEvent();
  ASSERT_EQ(tests::putParameter<SInt32>(event, 'same', typeSInt32, 1), noErr);
  const SInt32 value = 2;
  ASSERT_EQ(AEPutAttributePtr(&event, 'same', typeSInt32, &value, sizeof value), noErr);
  ASSERT_EQ(tests::putParameter<SInt32>(event, 'next', typeSInt32, 3), noErr);
  EXPECT_EQ(tests::parameter<SInt32>(event, 'same', typeSInt32), 1);
  EXPECT_EQ(tests::parameter<SInt32>(event, 'next', typeSInt32), 3);
  EXPECT_EQ(attribute<SInt32>(event, 'same', typeSInt32), 2);
  SInt32 count = 0;
  EXPECT_EQ(AECountItems(&event, &count), noErr);
  EXPECT_EQ(count, 2);
}

TEST(Attribute, IsReplaced) {
  Desc event = tests::makeEvent();
  ASSERT_EQ(tests::putParameter<SInt32>(event, 'parm', typeSInt32, 5), noErr);
  const Desc text = tests::makeText("longer than before");
  ASSERT_EQ(AEPutAttributePtr(&event, 'mine', typeChar, "a", 1), noErr);
  ASSERT_EQ(AEPutAttributeDesc(&event, 'mine', &text), noErr);
  Desc found;
  ASSERT_EQ(AEGetAttributeDesc(&event, 'mine', typeChar, &found), noErr);
  EXPECT_EQ(tests::textOf(found), "longer than before");
  EXPECT_EQ(tests::parameter<SInt32>(event, 'parm', typeSInt32), 5);
}

TEST(Attribute, OfAFixedTypeIsCoercedToIt) {
  Desc event = tests::makeEvent();
  const SInt32 value = 300;
  EXPECT_EQ(AEPutAttributePtr(&event, keyReturnIDAttr, typeSInt32, &value, sizeof value), noErr);
  DescType type = 0;
  Size size = 0;
  EXPECT_EQ(AESizeOfAttribute(&event, keyReturnIDAttr, &type, &size), noErr);
  EXPECT_EQ(type, DescType{typeSInt16});
  EXPECT_EQ(size, 2);
  EXPECT_EQ(AEPutAttributePtr(&event, keyReturnIDAttr, typeChar, "x", 1), errAECoercionFail);
  EXPECT_EQ(AEPutAttributePtr(&event, keyReplyPortAttr, typeSInt32, &value, 4), errAECoercionFail);
  EXPECT_EQ(AEPutAttributePtr(&event, keyEventClassAttr, typeType, "abcdefgh", 8),
            errAECoercionFail);
  EXPECT_EQ(attribute<SInt16>(event, keyReturnIDAttr, typeSInt16), 300);
}

TEST(Attribute, KeepsTheReplyPort) {
  Desc event = tests::makeEvent();
  const mach_port_t port = 0x1234;
  EXPECT_EQ(AEPutAttributePtr(&event, keyReplyPortAttr, typeMachPort, &port, sizeof port), noErr);
  EXPECT_EQ(attribute<mach_port_t>(event, keyReplyPortAttr, typeMachPort), port);
}

TEST(Attribute, BelongsToEventsAlone) {
  Desc record = tests::makeRecord();
  SInt32 value = 0;
  EXPECT_EQ(AEPutAttributePtr(&record, 'mine', typeSInt32, &value, 4), errAENotAppleEvent);
  EXPECT_EQ(AEGetAttributePtr(&record, 'mine', typeSInt32, nullptr, &value, 4, nullptr),
            errAENotAppleEvent);
  Desc found;
  EXPECT_EQ(AEGetAttributeDesc(Desc().get(), 'mine', typeSInt32, &found), errAENotAppleEvent);
  EXPECT_EQ(AESizeOfAttribute(nullptr, 'mine', nullptr, nullptr), paramErr);
}

TEST(Attribute, ReportsBadArguments) {
  Desc event = tests::makeEvent();
  SInt32 value = 0;
  EXPECT_EQ(AEGetAttributePtr(&event, 'none', typeSInt32, nullptr, &value, 4, nullptr),
            errAEDescNotFound);
  EXPECT_EQ(AEGetAttributePtr(&event, keyEventIDAttr, typeType, nullptr, nullptr, 4, nullptr),
            paramErr);
  EXPECT_EQ(AEGetAttributeDesc(&event, keyEventIDAttr, typeType, nullptr), paramErr);
  EXPECT_EQ(AEPutAttributePtr(nullptr, 'mine', typeSInt32, &value, 4), paramErr);
  EXPECT_EQ(AEPutAttributePtr(&event, 'mine', typeSInt32, nullptr, 4), paramErr);
  EXPECT_EQ(AEPutAttributePtr(&event, keyMissedKeywordAttr, typeKeyword, &value, 4), paramErr);
}

class MissedKeyword : public testing::Test {
 protected:
  MissedKeyword() {
    tests::putParameter<SInt32>(event, 'one ', typeSInt32, 1);
    tests::putParameter<SInt32>(event, 'two ', typeSInt32, 2);
  }

  OSErr missed(AEKeyword& found) {
    return AEGetAttributePtr(&event, keyMissedKeywordAttr, typeKeyword, nullptr, &found,
                             sizeof found, nullptr);
  }

  Desc event = tests::makeEvent();
  AEKeyword keyword = 0;
};

TEST_F(MissedKeyword, IsNotFoundInAnEventThatHasNotArrived) {
  EXPECT_EQ(missed(keyword), errAEDescNotFound);
}

TEST_F(MissedKeyword, IsTheFirstParameterNotRead) {
  ASSERT_EQ(platform::appleevents::trackReads(*&event), noErr);
  EXPECT_EQ(missed(keyword), noErr);
  EXPECT_EQ(keyword, AEKeyword{'one '});
  EXPECT_EQ(tests::parameter<SInt32>(event, 'one ', typeSInt32), 1);
  EXPECT_EQ(missed(keyword), noErr);
  EXPECT_EQ(keyword, AEKeyword{'two '});
  Desc second;
  EXPECT_EQ(AEGetNthDesc(&event, 2, typeWildCard, nullptr, &second), noErr);
  EXPECT_EQ(missed(keyword), errAEDescNotFound);
}

TEST_F(MissedKeyword, IsNotReadByTheSizeCallsOrAFailedCoercion) {
  ASSERT_EQ(platform::appleevents::trackReads(*&event), noErr);
  EXPECT_EQ(AESizeOfParam(&event, 'one ', nullptr, nullptr), noErr);
  EXPECT_FALSE(tests::parameter<OSType>(event, 'one ', typeType));
  EXPECT_EQ(missed(keyword), noErr);
  EXPECT_EQ(keyword, AEKeyword{'one '});
}

TEST_F(MissedKeyword, LeavesOptionalParametersOut) {
  Desc optional = tests::makeList();
  const AEKeyword name = 'one ';
  ASSERT_EQ(AEPutPtr(&optional, 0, typeKeyword, &name, sizeof name), noErr);
  ASSERT_EQ(AEPutAttributeDesc(&event, keyOptionalKeywordAttr, &optional), noErr);
  ASSERT_EQ(platform::appleevents::trackReads(*&event), noErr);
  EXPECT_EQ(missed(keyword), noErr);
  EXPECT_EQ(keyword, AEKeyword{'two '});
}

}  // namespace
