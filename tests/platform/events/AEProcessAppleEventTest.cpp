// Licence: MIT, see LICENSE.
#include <CarbonCore/MacErrors.h>
#include <HIToolbox/AEInteraction.h>
#include <HIToolbox/CarbonEventsCore.h>

#include <thread>

#include "tests/platform/events/EventFixture.h"

namespace {

using tests::kTestClass;
using tests::makeEvent;
using tests::post;

class ProcessAppleEvent : public tests::EventFixture {
 protected:
  /// Sends an event to this process from another thread and waits there for the reply.
  class Client final {
   public:
    explicit Client(AEEventID eventID)
        : event(makeEvent(eventID)),
          thread([this] { status = AESendMessage(&event, &reply, kAEWaitReply, kNoTimeOut); }) {}
    ~Client() {
      if (thread.joinable()) thread.join();
      AEDisposeDesc(&event);
      AEDisposeDesc(&reply);
    }

    /// The reply's keyErrorNumber, 0 when it has none.
    SInt32 error() {
      thread.join();
      EXPECT_EQ(status, noErr);
      SInt32 number = 0;
      AEGetParamPtr(&reply, keyErrorNumber, typeSInt32, nullptr, &number, sizeof number, nullptr);
      return number;
    }

   private:
    AppleEvent event;
    AppleEvent reply = {typeNull, nullptr};
    OSStatus status = 1;
    std::thread thread;
  };

  static EventRecord next() {
    EventRecord record;
    EXPECT_TRUE(WaitNextEvent(everyEvent, &record, 60 * 60, nullptr));
    return record;
  }
};

TEST_F(ProcessAppleEvent, RefusesWhatIsNoHighLevelEvent) {
  EventRecord record = {};
  EXPECT_EQ(AEProcessAppleEvent(nullptr), paramErr);
  EXPECT_EQ(AEProcessAppleEvent(&record), paramErr);
  record.what = 1;
  EXPECT_EQ(AEProcessAppleEvent(&record), paramErr);
}

TEST_F(ProcessAppleEvent, FindsNothingWhereNoSuchEventWaits) {
  post('one ');
  EventRecord record = {kHighLevelEvent, kTestClass, 0, {'tw', 'o '}, 0};
  EXPECT_EQ(AEProcessAppleEvent(&record), errAENotAppleEvent);
  EXPECT_EQ(takeAll(), (std::vector<AEEventID>{'one '}));
}

TEST_F(ProcessAppleEvent, HandlesAnEventThatWasTaken) {
  handle('one ', [this] {
    log.push_back("one");
    return OSErr{noErr};
  });
  post('one ');
  const EventRecord record = next();
  EXPECT_EQ(AEProcessAppleEvent(&record), noErr);
  EXPECT_EQ(log, (std::vector<std::string>{"one"}));
  EXPECT_EQ(AEProcessAppleEvent(&record), errAENotAppleEvent);
}

TEST_F(ProcessAppleEvent, TakesAnEventThatWasOnlyLookedAt) {
  handle('one ', [] { return OSErr{noErr}; });
  post('one ');
  EventRecord record;
  EXPECT_TRUE(EventAvail(everyEvent, &record));
  EXPECT_EQ(AEProcessAppleEvent(&record), noErr);
  EXPECT_FALSE(EventAvail(everyEvent, &record));
}

TEST_F(ProcessAppleEvent, ReturnsTheHandlersResultAndSendsIt) {
  handle('fail', [] { return OSErr{-1234}; });
  Client client('fail');
  const EventRecord record = next();
  EXPECT_EQ(AEProcessAppleEvent(&record), -1234);
  EXPECT_EQ(client.error(), -1234);
}

TEST_F(ProcessAppleEvent, SendsAReplyWithoutErrorOnSuccess) {
  handle('fine', [] { return OSErr{noErr}; });
  Client client('fine');
  const EventRecord record = next();
  EXPECT_EQ(AEProcessAppleEvent(&record), noErr);
  EXPECT_EQ(client.error(), 0);
}

TEST_F(ProcessAppleEvent, TellsTheClientThatNobodyHandlesItsEvent) {
  Client client('nobo');
  const EventRecord record = next();
  EXPECT_EQ(AEProcessAppleEvent(&record), errAEEventNotHandled);
  EXPECT_EQ(client.error(), errAEEventNotHandled);
}

TEST_F(ProcessAppleEvent, IsWhatTheApplicationsLoopDoes) {
  handle('fail', [] {
    QuitApplicationEventLoop();
    return OSErr{-1234};
  });
  Client client('fail');
  RunApplicationEventLoop();
  EXPECT_EQ(client.error(), -1234);
}

TEST_F(ProcessAppleEvent, HandlesAQueuedReplyLikeAnyEvent) {
  handle('ask ', [this] {
    log.push_back("asked");
    return OSErr{-1234};
  });
  handle(
      kAEAnswer,
      [this] {
        log.push_back("answered");
        QuitApplicationEventLoop();
        return OSErr{noErr};
      },
      kCoreEventClass);
  AppleEvent event = makeEvent('ask ');
  EXPECT_EQ(AESendMessage(&event, nullptr, kAEQueueReply, kAEDefaultTimeout), noErr);
  AEDisposeDesc(&event);
  RunApplicationEventLoop();
  EXPECT_EQ(log, (std::vector<std::string>{"asked", "answered"}));
}

}  // namespace
