// Licence: MIT, see LICENSE.
// How the two kinds of events are sent: the arguments that reach the Apple Event Manager, and then
// the real way there and back.
#include <gtest/gtest.h>
#include <quorvant/aemessaging/QRLAppleEvent.h>
#include <quorvant/aemessaging/QRLPortAppleEvent.h>
#include <quorvant/aemessaging/QRLPortDestinationAddress.h>
#include <quorvant/aemessaging/QRLProcessDestinationAddress.h>

#include <cstring>

#include "tests/aemessaging/FrameworkCalls.h"
#include "tests/aemessaging/TestListener.h"
#include "tests/support/PrivateRoot.h"

namespace {

constexpr char kServerName[] = "com.quorvant.test.server";

struct Arguments {
  const AppleEvent* event = nullptr;
  const AppleEvent* reply = nullptr;
  SInt32 mode = 0;
  SInt32 timeout = 0;
  SInt16 priority = -1;
  bool callBacks = false;
};

class Sending : public testing::Test {
 protected:
  Sending() {
    calls.send.instead = [this](const AppleEvent* event, AppleEvent* reply, AESendMode mode,
                                AESendPriority priority, SInt32 timeout, AEIdleUPP idle,
                                AEFilterUPP filter) {
      used = {event, reply, mode, timeout, priority, idle != nullptr || filter != nullptr};
      return OSErr(connectionInvalid);
    };
    calls.sendMessage.instead = [this](const AppleEvent* event, AppleEvent* reply, AESendMode mode,
                                       SInt32 timeout) {
      used = {event, reply, mode, timeout};
      return OSStatus(connectionInvalid);
    };
  }

  tests::FrameworkCalls calls;
  Arguments used;
};

TEST_F(Sending, ThroughTheManagerHandsEverythingOn) {
  QRLAppleEvent event;
  event.replyMode = kAEWaitReply;
  EXPECT_EQ(event.sendEvent(kAECanInteract, 77, kAEHighPriority), connectionInvalid);
  EXPECT_EQ(used.event, &event.event);
  EXPECT_EQ(used.reply, &event.reply);
  EXPECT_EQ(used.mode, kAECanInteract | kAEWaitReply);
  EXPECT_EQ(used.timeout, 77);
  EXPECT_EQ(used.priority, kAEHighPriority);
  EXPECT_FALSE(used.callBacks);
}

TEST_F(Sending, ThroughTheManagerOffersNoReplyWhereNoneIsWanted) {
  QRLAppleEvent event;
  event.replyMode = kAENoReply;
  EXPECT_EQ(event.sendEvent(kAEWaitReply, 77, 0), connectionInvalid);
  EXPECT_EQ(used.reply, nullptr);
  EXPECT_EQ(used.mode, kAENoReply);
}

TEST_F(Sending, AsAMessageHandsEverythingOnButThePriority) {
  QRLPortAppleEvent event;
  event.replyMode = kAEWaitReply;
  EXPECT_EQ(event.sendEvent(kAECanInteract, kAEDefaultTimeout, kAEHighPriority), connectionInvalid);
  EXPECT_EQ(used.event, &event.event);
  EXPECT_EQ(used.reply, &event.reply);
  EXPECT_EQ(used.mode, kAECanInteract | kAEWaitReply);
  EXPECT_EQ(used.timeout, kAEDefaultTimeout);
  EXPECT_EQ(calls.send.count, 0);
}

TEST_F(Sending, AsAMessageOffersNoReplyWhereNoneIsWanted) {
  QRLPortAppleEvent event;
  event.replyMode = kAENoReply;
  EXPECT_EQ(event.sendEvent(kAEWaitReply, 77, 0), connectionInvalid);
  EXPECT_EQ(used.reply, nullptr);
  EXPECT_EQ(used.mode, kAENoReply);
}

class RoundTrip : public testing::Test {
 protected:
  static SInt32 answer(UInt32 eventClass, UInt32 eventID, const AEDesc* event, AEDesc* reply,
                       void*) {
    SInt32 number = 0;
    EXPECT_EQ(eventClass, UInt32('QrlP'));
    EXPECT_EQ(eventID, UInt32('Mcam'));
    EXPECT_EQ(AEGetParamPtr(event, 'numb', typeSInt32, nullptr, &number, sizeof number, nullptr),
              noErr);
    ++number;
    EXPECT_EQ(AEPutParamPtr(reply, 'numb', typeSInt32, &number, sizeof number), noErr);
    return number == 1 ? -1234 : 0;
  }

  static SInt32 handle(const AppleEvent* event, AppleEvent* reply) {
    return answer('QrlP', 'Mcam', event, reply, nullptr);
  }

  // Asks the server for the number behind this one.
  template <typename Event>
  SInt32 ask(QRLAppleEventDestinationAddress& address, SInt32 number, SInt32& result) {
    Event event;
    event.eventClass = 'QrlP';
    event.eventID = 'Mcam';
    event.replyMode = kAEWaitReply;
    event.returnID = kAutoGenerateReturnID;
    event.destination = &address;
    SInt32 err = address.initialize();
    if (err == 0) err = event.createEvent();
    if (err == 0) AEPutParamPtr(&event.event, 'numb', typeSInt32, &number, sizeof number);
    if (err == 0) err = event.sendEvent(0, 60 * 60, 0);
    result = 0;
    AEGetParamPtr(&event.reply, 'numb', typeSInt32, nullptr, &result, sizeof result, nullptr);
    event.finalizeEvent();
    return err;
  }

  tests::PrivateRoot root;
};

class PortRoundTrip : public RoundTrip {
 protected:
  PortRoundTrip() {
    EXPECT_EQ(server.ListenOnPort(kServerName, CFRunLoopGetCurrent(), answer, nullptr), 0);
    std::strcpy(address.name, kServerName);
  }
  tests::TestListener server;
  QRLPortDestinationAddress address;
};

TEST_F(PortRoundTrip, OfAMessageBringsTheReply) {
  SInt32 err = -1, result = 0;
  EXPECT_TRUE(tests::whileServing([&] { err = ask<QRLPortAppleEvent>(address, 41, result); }));
  EXPECT_EQ(err, 0);
  EXPECT_EQ(result, 42);
}

TEST_F(PortRoundTrip, OfAnEventBringsTheReply) {
  SInt32 err = -1, result = 0;
  EXPECT_TRUE(tests::whileServing([&] { err = ask<QRLAppleEvent>(address, -2, result); }));
  EXPECT_EQ(err, 0);
  EXPECT_EQ(result, -1);
}

TEST_F(PortRoundTrip, BringsTheServersErrorNumber) {
  SInt32 err = 0, result = 0;
  EXPECT_TRUE(tests::whileServing([&] { err = ask<QRLPortAppleEvent>(address, 0, result); }));
  EXPECT_EQ(err, -1234);
  EXPECT_EQ(result, 1);
}

TEST_F(RoundTrip, ToTheOwnProcessIsHandledByItsHandler) {
  const auto handler = [](const AppleEvent* event, AppleEvent* reply, SInt32) -> OSErr {
    return static_cast<OSErr>(handle(event, reply));
  };
  ASSERT_EQ(AEInstallEventHandler('QrlP', 'Mcam', NewAEEventHandlerUPP(handler), 0, false), noErr);
  QRLProcessDestinationAddress self;
  self.psn = {0, kCurrentProcess};
  SInt32 result = 0;
  EXPECT_EQ(ask<QRLAppleEvent>(self, 41, result), 0);
  EXPECT_EQ(result, 42);
  EXPECT_EQ(AERemoveEventHandler('QrlP', 'Mcam', nullptr, false), noErr);
}

TEST_F(RoundTrip, ToAServerThatIsNotThereFailsAtTheAddress) {
  QRLPortDestinationAddress address;
  std::strcpy(address.name, kServerName);
  SInt32 result = 0;
  EXPECT_EQ(ask<QRLPortAppleEvent>(address, 41, result), BOOTSTRAP_UNKNOWN_SERVICE);
}

}  // namespace
