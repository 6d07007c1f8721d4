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
