// Licence: MIT, see LICENSE.
// What the agent does with the events that reach it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <quorvant/agent/AgentApplication.h>

#include <utility>

#include "tests/agent/AgentFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr SInt32 kAnyTime = 17;

class AgentHandlers : public tests::AgentFixture {
 protected:
  AgentHandlers() { calls.eventWaits = false; }

  // Puts a quit into this process's own event queue.
  void queueQuit() {
    ProcessSerialNumber self{};
    ASSERT_EQ(GetCurrentProcess(&self), noErr);
    AEAddressDesc target;
    AppleEvent quit;
    ASSERT_EQ(AECreateDesc(typeProcessSerialNumber, &self, sizeof self, &target), noErr);
    ASSERT_EQ(AECreateAppleEvent('aevt', 'quit', &target, 1, 0, &quit), noErr);
    ASSERT_EQ(AESend(&quit, nullptr, kAENoReply, kAENormalPriority, 60 * 60, nullptr, nullptr),
              noErr);
    AEDisposeDesc(&quit);
    AEDisposeDesc(&target);
  }

  AEDesc event = {typeNull, nullptr};
  AEDesc reply = {typeNull, nullptr};
};

// -- Dispatch --

TEST_F(AgentHandlers, AreCalledForTheEventsOfThePort) {
  int refcon = 0;
  EXPECT_EQ(AgentAEDispatchCallback('aevt', 'quit', &event, &reply, &refcon), 0);
  EXPECT_THAT(calls.log, ElementsAre("quit"));
  calls.log.clear();
  EXPECT_EQ(AgentAEDispatchCallback('QrlP', 'Mcam', &event, &reply, &refcon), 0);
  EXPECT_THAT(calls.log, ElementsAre("interact -2", "alert 138", "EventAvail 1024", "quit"));
}

TEST_F(AgentHandlers, DoNotHandleAnyOtherEventOfThePort) {
  const struct {
    UInt32 eventClass, eventID;
  } cases[] = {
      {'aevt', 'oapp'}, {'aevt', 'Mcam'}, {'aevt', 'QUIT'}, {'aevt', 0},
      {'QrlP', 'quit'}, {'QrlP', 'mcam'}, {'QrlP', 0},      {'CmoN', 'Mcam'},
      {'CmoN', 'quit'}, {0, 0},           {'****', '****'},
  };
  for (const auto& [eventClass, eventID] : cases) {
    EXPECT_EQ(AgentAEDispatchCallback(eventClass, eventID, &event, &reply, nullptr), -1708);
  }
  EXPECT_THAT(calls.log, IsEmpty());
  EXPECT_EQ(gQuit, 0u);
}

// -- Quit --

TEST_F(AgentHandlers, QuitWithoutLookingAtTheEvent) {
  EXPECT_EQ(AEQuitHandler(nullptr, nullptr, 0), noErr);
  EXPECT_EQ(gQuit, 1u);
  EXPECT_THAT(calls.log, ElementsAre("quit"));
}

// -- The alert --

TEST_F(AgentHandlers, ShowTheAlertAndThenQuitWhenNothingWaits) {
  EXPECT_EQ(AEMacamHandler(&event, &reply, 'Mcam'), noErr);
  EXPECT_THAT(calls.log, ElementsAre("interact -2", "alert 138", "EventAvail 1024", "quit"));
  EXPECT_EQ(gQuit, 0u);
}

TEST_F(AgentHandlers, StayWhenAHighLevelEventWaits) {
  calls.eventWaits = true;
  EXPECT_EQ(AEMacamHandler(&event, &reply, 'Mcam'), noErr);
  EXPECT_THAT(calls.log, ElementsAre("interact -2", "alert 138", "EventAvail 1024"));
}

TEST_F(AgentHandlers, StayWhenTheyAreToKeepRunning) {
  gQuitWhenDone = false;
  EXPECT_EQ(AEMacamHandler(&event, &reply, 'Mcam'), noErr);
  EXPECT_THAT(calls.log, ElementsAre("interact -2", "alert 138"));
}

TEST_F(AgentHandlers, ShowTheAlertWhateverBecameOfTheUsersAttention) {
  for (int err : {-1713, -1711, -1712, -108}) {
    calls.log.clear();
    calls.interact = [err] { return static_cast<OSErr>(err); };
    EXPECT_EQ(AEMacamHandler(&event, &reply, 'Mcam'), noErr);
    EXPECT_THAT(calls.log, ElementsAre("interact -2", "alert 138", "EventAvail 1024", "quit"));
  }
}

TEST_F(AgentHandlers, IgnoreTheAnswerToTheAlert) {
  for (DialogItemIndex answer : {-1, 1, 2}) {
    calls.alertAnswer = answer;
    EXPECT_EQ(AEMacamHandler(&event, &reply, 'Mcam'), noErr);
  }
  EXPECT_EQ(reply.descriptorType, DescType(typeNull));
}

TEST_F(AgentHandlers, KeepOneIdleProcedure) {
  EXPECT_EQ(AEMacamHandler(&event, &reply, 'Mcam'), noErr);
  const AEIdleUPP first = std::exchange(calls.idle, nullptr);
  EXPECT_EQ(AEMacamHandler(&event, &reply, 'Mcam'), noErr);
  EXPECT_EQ(calls.idle, first);
  gQuit = true;
  EventRecord nothing{};
  SInt32 sleep = 0;
  RgnHandle region = nullptr;
  EXPECT_TRUE(InvokeAEIdleUPP(&nothing, &sleep, &region, first));
}

TEST_F(AgentHandlers, ShowTheAlertAfterAQuitThatCameInTheMeantime) {
  ASSERT_EQ(installNormalAEHandlers(), noErr);
  calls.log.clear();
  calls.eventWaits.reset();
  bool ended = false;
  calls.interact = [&] {
    queueQuit();
    EventRecord waiting{};
    SInt32 sleep = 0;
    RgnHandle region = nullptr;
    EXPECT_TRUE(EventAvail(highLevelEventMask, &waiting));
    ended = InvokeAEIdleUPP(&waiting, &sleep, &region, calls.idle);
    return OSErr(errAEWaitCanceled);
  };
  EXPECT_EQ(AEMacamHandler(&event, &reply, 'Mcam'), noErr);
  EXPECT_TRUE(ended);
  EXPECT_EQ(gQuit, 1u);
  EXPECT_THAT(calls.log, ElementsAre("interact -2", "EventAvail 1024", "process aevt", "quit",
                                     "alert 138", "EventAvail 1024", "quit"));
}

// -- Events during the wait --

TEST_F(AgentHandlers, ProcessHighLevelEventsOnly) {
  for (EventKind kind : {0, 1, 22, 24, 0xFFFF}) {
    EventRecord record{};
    record.what = kind;
    SInt32 sleep = kAnyTime;
    RgnHandle region = nullptr;
    EXPECT_FALSE(MyHandleEvent(record, sleep, region));
    EXPECT_EQ(sleep, 0x7fffffff);
  }
  EXPECT_THAT(calls.log, IsEmpty());
}

TEST_F(AgentHandlers, ProcessAHighLevelEvent) {
  EventRecord record{};
  record.what = kHighLevelEvent;
  record.message = 'QrlP';
  SInt32 sleep = kAnyTime;
  RgnHandle region = nullptr;
  EXPECT_FALSE(MyHandleEvent(record, sleep, region));
  EXPECT_EQ(sleep, 0x7fffffff);
  EXPECT_THAT(calls.log, ElementsAre("process QrlP"));
}

TEST_F(AgentHandlers, EndTheWaitOnceAQuitHasCome) {
  EventRecord record{};
  SInt32 sleep = kAnyTime;
  RgnHandle region = nullptr;
  for (Boolean32 quit : {1u, 0x100u, 0x80000000u}) {
    gQuit = quit;
    EXPECT_EQ(MyHandleEvent(record, sleep, region), true);
  }
}

TEST_F(AgentHandlers, LeaveTheMouseRegionAlone) {
  int area = 0;
  const RgnHandle given = reinterpret_cast<RgnHandle>(&area);
  EventRecord record{};
  SInt32 sleep = kAnyTime;
  RgnHandle region = given;
  EXPECT_FALSE(MyHandleEvent(record, sleep, region));
  EXPECT_EQ(region, given);
}

TEST_F(AgentHandlers, AreReachedThroughTheIdleCallback) {
  EventRecord record{};
  record.what = kHighLevelEvent;
  record.message = 'aevt';
  SInt32 sleep = kAnyTime;
  RgnHandle region = nullptr;
  EXPECT_FALSE(MyAEIdleCallback(&record, &sleep, &region));
  EXPECT_EQ(sleep, 0x7fffffff);
  EXPECT_THAT(calls.log, ElementsAre("process aevt"));
  gQuit = true;
  EXPECT_EQ(MyAEIdleCallback(&record, &sleep, &region), true);
}

// -- Quitting when done --

TEST_F(AgentHandlers, QuitOnlyWhenDoneAndWithNothingWaiting) {
  EXPECT_EQ(QuitIfNoEventsPending(), 0);
  EXPECT_THAT(calls.log, ElementsAre("EventAvail 1024", "quit"));
  EXPECT_EQ(gQuit, 0u);
}

TEST_F(AgentHandlers, DoNotQuitWhileAnEventWaits) {
  calls.eventWaits = true;
  EXPECT_EQ(QuitIfNoEventsPending(), 0);
  EXPECT_THAT(calls.log, ElementsAre("EventAvail 1024"));
}

TEST_F(AgentHandlers, DoNotEvenLookWhenTheyAreToKeepRunning) {
  gQuitWhenDone = false;
  EXPECT_EQ(QuitIfNoEventsPending(), 0);
  EXPECT_THAT(calls.log, IsEmpty());
}

TEST_F(AgentHandlers, SeeAnEventThatReallyWaits) {
  ASSERT_EQ(installNormalAEHandlers(), noErr);
  calls.eventWaits.reset();
  queueQuit();
  calls.log.clear();
  EXPECT_EQ(QuitIfNoEventsPending(), 0);
  EXPECT_THAT(calls.log, ElementsAre("EventAvail 1024"));
  EventRecord waiting{};
  ASSERT_TRUE(EventAvail(highLevelEventMask, &waiting));
  EXPECT_EQ(AEProcessAppleEvent(&waiting), noErr);
  calls.log.clear();
  EXPECT_EQ(QuitIfNoEventsPending(), 0);
  EXPECT_THAT(calls.log, ElementsAre("EventAvail 1024", "quit"));
}

}  // namespace
