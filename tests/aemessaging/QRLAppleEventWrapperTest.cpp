// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/aemessaging/QRLAppleEventWrapper.h>
#include <quorvant/aemessaging/QRLProcessDestinationAddress.h>

#include <functional>
#include <memory>

#include "tests/aemessaging/FrameworkCalls.h"
#include "tests/aemessaging/TestListener.h"
#include "tests/support/AllocationFailures.h"
#include "tests/support/PrivateRoot.h"

namespace {

// Sends nothing, but remembers how it was asked to and makes the reply that a test wants.
class ScriptedEvent : public QRLAppleEventWrapper {
 public:
  struct Sent {
    SInt32 mode = 0;
    SInt32 timeout = 0;
    SInt16 priority = 0;
    int times = 0;
  };
  Sent sent;
  OSErr sendResult = noErr;
  std::function<void(AppleEvent&)> fillReply = [](AppleEvent&) {};

 protected:
  OSErr doSendEvent(SInt32 sendMode, SInt32 timeout, SInt16 priority) override {
    sent = {sendMode, timeout, priority, sent.times + 1};
    if (sendResult != noErr || replyMode == kAENoReply) return sendResult;
    EXPECT_EQ(AECreateAppleEvent(kCoreEventClass, kAEAnswer, nullptr, 1, 0, &reply), noErr);
    fillReply(reply);
    return noErr;
  }
};

class UnreachableAddress : public QRLAppleEventDestinationAddress {
 public:
  SInt32 initialize() override { return 0; }
  OSErr getDestinationAddress(AEDesc*) override { return -1; }
};

class EventWrapper : public testing::Test {
 protected:
  EventWrapper() : event(std::make_unique<ScriptedEvent>()) {
    target.psn = {0, 9};
    event->eventClass = 'QrlP';
    event->eventID = 'Mcam';
    event->replyMode = kAEWaitReply;
    event->returnID = -321;
    event->transactionID = 0x12345678;
    event->destination = &target;
  }
  ~EventWrapper() override {
    if (event) event->finalizeEvent();
  }

  template <typename T>
  T attribute(AEKeyword keyword, DescType expectedType) {
    T value{};
    DescType type = 0;
    Size size = 0;
    EXPECT_EQ(
        AEGetAttributePtr(&event->event, keyword, typeWildCard, &type, &value, sizeof value, &size),
        noErr);
    EXPECT_EQ(type, expectedType);
    EXPECT_EQ(size, Size(sizeof value));
    return value;
  }

  void replyWith(DescType type, const void* data, Size size) {
    event->fillReply = [=](AppleEvent& reply) {
      EXPECT_EQ(AEPutParamPtr(&reply, keyErrorNumber, type, data, size), noErr);
    };
  }

  tests::PrivateRoot root;
  tests::FrameworkCalls calls;
  QRLProcessDestinationAddress target;
  std::unique_ptr<ScriptedEvent> event;
};

TEST(EventWrapperItself, StartsEmpty) {
  const ScriptedEvent event;
  EXPECT_EQ(event.target.descriptorType, DescType(typeNull));
  EXPECT_EQ(event.event.descriptorType, DescType(typeNull));
  EXPECT_EQ(event.reply.descriptorType, DescType(typeNull));
  EXPECT_EQ(event.targetCreated | event.eventCreated | event.replyReceived | event.replyHadError,
            0u);
  EXPECT_EQ(event.destination, nullptr);
  EXPECT_EQ(event.returnAddress.port, MACH_PORT_NULL);
}

// -- createEvent --

TEST_F(EventWrapper, NeedsADestination) {
  event->destination = nullptr;
  EXPECT_EQ(event->createEvent(), paramErr);
  EXPECT_EQ(calls.portAllocate.count, 0);
  EXPECT_EQ(event->targetCreated, 0u);
  EXPECT_EQ(event->eventCreated, 0u);
}

TEST_F(EventWrapper, CreatesTheEventAsDescribed) {
  ASSERT_EQ(event->createEvent(), noErr);
  EXPECT_EQ(event->targetCreated, 1u);
  EXPECT_EQ(event->eventCreated, 1u);
  EXPECT_EQ(event->target.descriptorType, DescType(typeProcessSerialNumber));
  EXPECT_EQ(attribute<OSType>(keyEventClassAttr, typeType), OSType('QrlP'));
  EXPECT_EQ(attribute<OSType>(keyEventIDAttr, typeType), OSType('Mcam'));
  EXPECT_EQ(attribute<SInt16>(keyReturnIDAttr, typeSInt16), -321);
  EXPECT_EQ(attribute<SInt32>(keyTransactionIDAttr, typeSInt32), 0x12345678);
}

TEST_F(EventWrapper, AddsItsPrivateReplyPort) {
  ASSERT_EQ(event->createEvent(), noErr);
  EXPECT_EQ(tests::rightsOf(event->returnAddress.port), MACH_PORT_TYPE_RECEIVE);
  EXPECT_EQ(attribute<mach_port_t>(keyReplyPortAttr, typeMachPort), event->returnAddress.port);
}

TEST_F(EventWrapper, PassesOnThatThereIsNoReplyPort) {
  calls.portAllocate.instead = [](mach_port_name_t*) { return KERN_RESOURCE_SHORTAGE; };
  EXPECT_EQ(event->createEvent(), KERN_RESOURCE_SHORTAGE);
  EXPECT_EQ(event->targetCreated, 0u);
  EXPECT_EQ(event->eventCreated, 0u);
}

TEST_F(EventWrapper, CannotAddAReplyPortThatFailedBefore) {
  calls.portAllocate.instead = [](mach_port_name_t*) { return KERN_RESOURCE_SHORTAGE; };
  EXPECT_EQ(event->createEvent(), KERN_RESOURCE_SHORTAGE);
  EXPECT_EQ(event->createEvent(), -1);
  EXPECT_EQ(event->targetCreated, 1u);
  EXPECT_EQ(event->eventCreated, 1u);
}

TEST_F(EventWrapper, PassesOnThatTheDestinationHasNoAddress) {
  UnreachableAddress nowhere;
  event->destination = &nowhere;
  EXPECT_EQ(event->createEvent(), -1);
  EXPECT_EQ(event->targetCreated, 0u);
  EXPECT_EQ(event->eventCreated, 0u);
  EXPECT_EQ(calls.createAppleEvent.count, 0);
}

TEST_F(EventWrapper, RemembersTheTargetWhenTheEventCannotBeCreated) {
  calls.createAppleEvent.instead = [](AppleEvent*) { return memFullErr; };
  EXPECT_EQ(event->createEvent(), memFullErr);
  EXPECT_EQ(event->targetCreated, 1u);
  EXPECT_EQ(event->eventCreated, 0u);
}

TEST_F(EventWrapper, RemembersTheEventWhenTheReplyPortCannotBeAdded) {
  calls.putAttribute.instead = [](AEKeyword) { return memFullErr; };
  EXPECT_EQ(event->createEvent(), memFullErr);
  EXPECT_EQ(event->targetCreated, 1u);
  EXPECT_EQ(event->eventCreated, 1u);
}

TEST_F(EventWrapper, CreatesTheEventAgainWithTheSamePort) {
  ASSERT_EQ(event->createEvent(), noErr);
  const mach_port_t port = event->returnAddress.port;
  event->eventID = 'quit';
  ASSERT_EQ(event->createEvent(), noErr);
  EXPECT_EQ(event->returnAddress.port, port);
  EXPECT_EQ(calls.portAllocate.count, 1);
  EXPECT_EQ(attribute<OSType>(keyEventIDAttr, typeType), OSType('quit'));
}

// -- sendEvent --

TEST_F(EventWrapper, DecidesTheReplyModeItself) {
  const struct {
    SInt32 replyMode, sendMode, sent;
  } cases[] = {
      {kAENoReply, kAEWaitReply | kAECanInteract, kAENoReply | kAECanInteract},
      {kAEWaitReply, kAENoReply | 0x1060, kAEWaitReply | 0x1060},
      {kAEQueueReply, 0, kAEQueueReply},
      {kAENoReply, kAEQueueReply, kAENoReply},
      {0x7FFFFFF1, 0x30, kAENoReply | 0x30},
      {-1, kAENoReply, kAEWaitReply},
  };
  for (const auto& [replyMode, sendMode, sent] : cases) {
    event->replyMode = replyMode;
    EXPECT_EQ(event->sendEvent(sendMode, 60, 0), 0);
    EXPECT_EQ(event->sent.mode, sent);
    EXPECT_EQ(event->replyMode, sent & 3);
  }
}

TEST_F(EventWrapper, HandsTimeOutAndPriorityOn) {
  EXPECT_EQ(event->sendEvent(0, kNoTimeOut, kAEHighPriority), 0);
  EXPECT_EQ(event->sent.timeout, kNoTimeOut);
  EXPECT_EQ(event->sent.priority, kAEHighPriority);
  EXPECT_EQ(event->sent.times, 1);
}

TEST_F(EventWrapper, ReadsNoReplyWhereNoneIsWanted) {
  event->replyMode = kAENoReply;
  EXPECT_EQ(event->sendEvent(kAEWaitReply, 60, 0), 0);
  EXPECT_EQ(event->replyReceived, 0u);
  EXPECT_EQ(event->replyHadError, 0u);
}

TEST_F(EventWrapper, PassesOnThatSendingFailed) {
  event->sendResult = errAETimeout;
  EXPECT_EQ(event->sendEvent(0, 60, 0), errAETimeout);
  EXPECT_EQ(event->replyReceived, 0u);
  EXPECT_EQ(event->replyHadError, 0u);
}

TEST_F(EventWrapper, MayBeSentAgainAfterAFailure) {
  event->sendResult = errAETimeout;
  EXPECT_EQ(event->sendEvent(0, 60, 0), errAETimeout);
  event->sendResult = noErr;
  EXPECT_EQ(event->sendEvent(0, 60, 0), 0);
  EXPECT_EQ(event->replyReceived, 1u);
}

TEST_F(EventWrapper, TakesAReplyWithoutErrorNumberForSuccess) {
  EXPECT_EQ(event->sendEvent(0, 60, 0), 0);
  EXPECT_EQ(event->replyReceived, 1u);
  EXPECT_EQ(event->replyHadError, 0u);
}

TEST_F(EventWrapper, NotesAnErrorNumberOfZero) {
  const SInt32 zero = 0;
  replyWith(typeSInt32, &zero, sizeof zero);
  EXPECT_EQ(event->sendEvent(0, 60, 0), 0);
  EXPECT_EQ(event->replyReceived, 1u);
  EXPECT_EQ(event->replyHadError, 1u);
}

TEST_F(EventWrapper, ReturnsTheErrorNumberOfTheReply) {
  const SInt32 number = static_cast<SInt32>(0xE00002BE);
  replyWith(typeSInt32, &number, sizeof number);
  EXPECT_EQ(event->sendEvent(0, 60, 0), number);
  EXPECT_EQ(event->replyReceived, 1u);
  EXPECT_EQ(event->replyHadError, 1u);
}

TEST_F(EventWrapper, ReturnsAnErrorNumberOfAnotherWidth) {
  const SInt16 number = errAEEventNotHandled;
  replyWith(typeSInt16, &number, sizeof number);
  EXPECT_EQ(event->sendEvent(0, 60, 0), errAEEventNotHandled);
  EXPECT_EQ(event->replyHadError, 1u);
}

TEST_F(EventWrapper, NotesAnErrorNumberThatIsNoNumber) {
  replyWith(typeProcessSerialNumber, "12345678", 8);
  EXPECT_EQ(event->sendEvent(0, 60, 0), 0);
  EXPECT_EQ(event->replyReceived, 1u);
  EXPECT_EQ(event->replyHadError, 1u);
}

TEST_F(EventWrapper, ForgetsTheLastReplyWhenItIsSentAgain) {
  const SInt32 number = -5;
  replyWith(typeSInt32, &number, sizeof number);
  EXPECT_EQ(event->sendEvent(0, 60, 0), -5);
  event->fillReply = [](AppleEvent&) {};
  EXPECT_EQ(event->sendEvent(0, 60, 0), 0);
  EXPECT_EQ(event->replyReceived, 1u);
  EXPECT_EQ(event->replyHadError, 0u);
}

// -- Typed parameters --

class EventWrapperParameters : public testing::Test {
 protected:
  EventWrapperParameters() {
    for (AppleEvent* made : {&event.event, &event.reply}) {
      EXPECT_EQ(AECreateAppleEvent(kCoreEventClass, kAEAnswer, nullptr, 1, 0, made), noErr);
    }
    event.eventCreated = event.replyReceived = true;
  }

  ScriptedEvent event;
};

TEST_F(EventWrapperParameters, PutsThemIntoTheEvent) {
  SInt16 shortValues[] = {-2, 3};
  SInt32 longValues[] = {-4, 5};
  SInt64 wide = -6;
  UInt64 positive = 7;
  int integer = 8;
  float single = 0.5F;
  double real = 0.25;
  bool truth = true;
  unsigned char byte = 0;
  OSType code = 'code';
  const unsigned char text[] = "\3abc";
  const OSErr results[] = {
      event.putShort('shor', shortValues),      event.putLong('long', longValues),
      event.putInteger('inte', &integer),       event.putLongLong('wide', &wide),
      event.putUInt64('posi', &positive),       event.putFloat('sing', &single),
      event.putDouble('doub', &real),           event.putBoolean('bool', &truth),
      event.putBoolean('byte', &byte),          event.putOSType('type', &code),
      event.putCString('cstr', "hello"),        event.putPString('pstr', text),
      event.putText('text', text + 1, 2),       event.putShortArray('shos', shortValues, 2),
      event.putLongArray('lons', longValues, 2)};
  for (const OSErr result : results) EXPECT_EQ(result, noErr);
  char* printed = nullptr;
  ASSERT_EQ(QRLAppleEventWrapper::printDescToBufAlloc(&event.event, printed), noErr);
  EXPECT_STREQ(
      printed,
      "'aevt'\\'ansr'{'shor':'shor'(-2), 'long':-4, 'inte':8, 'wide':'comp'(-6), "
      "'posi':'comp'(7), 'sing':'sing'(0.5), 'doub':'doub'(0.25), 'bool':'bool'(\"true\"), "
      "'byte':'bool'(\"false\"), 'type':'type'('code'), 'cstr':\"hello\", "
      "'pstr':\"abc\", 'text':\"ab\", 'shos':'shor'($FFFE0003$), "
      "'lons':'long'($FFFFFFFC00000005$)}");
  delete[] printed;
}

TEST_F(EventWrapperParameters, GetsNumbersOfTheReply) {
  SInt32 stored[] = {1, -2};
  ASSERT_EQ(PutAELong(event.reply, 'numb', stored), noErr);
  ASSERT_EQ(PutAELongArray(event.reply, 'many', stored, 2), noErr);
  SInt16 narrow = 0;
  SInt32 number = 0;
  SInt64 wide = 0;
  UInt64 positive = 0;
  bool truth = false;
  unsigned char byte = 0;
  SInt32 numbers[2] = {};
  SInt32 count = 2;
  const OSErr results[] = {
      event.getShort('numb', &narrow),           event.getLong('numb', &number),
      event.getLongLong('numb', &wide),          event.getUInt64('numb', &positive),
      event.getBoolean('numb', &truth),          event.getBoolean('numb', &byte),
      event.getLongArray('many', numbers, count)};
  for (const OSErr result : results) EXPECT_EQ(result, noErr);
  EXPECT_TRUE(narrow == 1 && number == 1 && wide == 1 && positive == 1 && truth && byte == 1);
  EXPECT_EQ(numbers[1], -2);
  EXPECT_EQ(event.getParamExists('numb', truth), 1);
  EXPECT_EQ(event.getParamExists('none', truth), 0);
  EXPECT_EQ(event.getLong('none', &number), errAEDescNotFound);
}

TEST_F(EventWrapperParameters, GetsTextAndCodesOfTheReply) {
  ASSERT_EQ(PutAECString(event.reply, 'text', "code"), noErr);
  SInt16 stored[] = {9, 8};
  ASSERT_EQ(PutAEShortArray(event.reply, 'many', stored, 2), noErr);
  char string[5] = {};
  unsigned char pascal[5] = {};
  unsigned char text[4] = {};
  SInt32 size = 4;
  OSType code = 0;
  SInt16 numbers[2] = {};
  SInt32 count = 2;
  const OSErr results[] = {event.getCString('text', string, 5), event.getPString('text', pascal, 5),
                           event.getText('text', text, size), event.getOSType('text', &code),
                           event.getShortArray('many', numbers, count)};
  for (const OSErr result : results) EXPECT_EQ(result, noErr);
  EXPECT_STREQ(string, "code");
  EXPECT_EQ(pascal[0], 4);
  EXPECT_EQ(std::string(text, text + 4), "code");
  EXPECT_EQ(code, OSType{'code'});
  EXPECT_EQ(numbers[1], 8);
}

// -- Printing --

TEST(EventWrapperPrinting, WritesADescriptorAsText) {
  AEDesc desc;
  ASSERT_EQ(AECreateDesc(typeChar, "say \"hi\"", 8, &desc), noErr);
  char* text = nullptr;
  ASSERT_EQ(QRLAppleEventWrapper::printDescToBufAlloc(&desc, text), noErr);
  EXPECT_STREQ(text, "\"say \\\"hi\\\"\"");
  delete[] text;
  AEDisposeDesc(&desc);
}

TEST(EventWrapperPrinting, PassesOnWhyThereIsNoText) {
  char untouched = 0;
  char* text = &untouched;
  EXPECT_EQ(QRLAppleEventWrapper::printDescToBufAlloc(nullptr, text), paramErr);
  EXPECT_EQ(text, &untouched);
}

TEST(EventWrapperPrinting, FailsWithEachAllocationAndLeaksNothing) {
  AEDesc desc;
  ASSERT_EQ(AECreateDesc(typeUTF8Text, "hello", 5, &desc), noErr);
  char untouched = 0;
  char* text = &untouched;
  const UInt32 allocations = tests::failEachAllocation(
      [&] { return QRLAppleEventWrapper::printDescToBufAlloc(&desc, text); },
      [&](OSErr status, bool failed) {
        EXPECT_EQ(status, failed ? OSErr{memFullErr} : OSErr{noErr});
        if (failed) {
          EXPECT_EQ(text, &untouched);
        }
      });
  EXPECT_GE(allocations, 8u);  // two texts and a line with their blocks, the handle, the array
  EXPECT_STREQ(text, "'utf8'(\"hello\")");
  delete[] text;
  AEDisposeDesc(&desc);
}

TEST(EventWrapperPrinting, WritesNothingForDiagnostics) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const AEDesc null = {typeNull, nullptr};
  QRLAppleEventWrapper::printDesc("label", &null);
  QRLAppleEventWrapper::printDesc(nullptr, nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// -- The end --

TEST_F(EventWrapper, DestroysTheReplyPortWhenFinalized) {
  ASSERT_EQ(event->createEvent(), noErr);
  const mach_port_t port = event->returnAddress.port;
  EXPECT_EQ(event->finalizeEvent(), 0);
  EXPECT_EQ(tests::rightsOf(port), MACH_PORT_TYPE_NONE);
  EXPECT_EQ(event->finalizeEvent(), 0);
}

TEST_F(EventWrapper, LeavesTheReplyPortToItsOwner) {
  ASSERT_EQ(event->createEvent(), noErr);
  const mach_port_t port = event->returnAddress.port;
  event.reset();
  EXPECT_EQ(tests::rightsOf(port), MACH_PORT_TYPE_RECEIVE);
  mach_port_destroy(mach_task_self(), port);
}

TEST_F(EventWrapper, LeavesDescriptorsAloneThatItDidNotCreate) {
  AEDesc foreign;
  ASSERT_EQ(AECreateDesc(typeChar, "text", 4, &foreign), noErr);
  event->target = event->event = event->reply = foreign;
  event.reset();
  EXPECT_EQ(AEGetDescDataSize(&foreign), 4);
  AEDisposeDesc(&foreign);
}

}  // namespace
