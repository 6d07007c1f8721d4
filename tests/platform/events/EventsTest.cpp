// Licence: MIT, see LICENSE.
#include <HIToolbox/Events.h>

#include <CarbonCore/MacErrors.h>
#include <HIToolbox/AEInteraction.h>
#include <QD/Quickdraw.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <thread>

#include "platform/events/EventQueue.h"
#include "platform/events/EventSource.h"
#include "platform/host/Ticks.h"
#include "tests/platform/events/EventFixture.h"

namespace {

using tests::idOf;
using tests::post;

class Events : public tests::EventFixture {
 protected:
  static EventRecord scribble() {
    EventRecord record;
    std::memset(&record, 0xEE, sizeof record);
    return record;
  }

  static void expectNullEvent(const EventRecord& record) {
    EXPECT_EQ(+record.what, nullEvent);
    EXPECT_EQ(+record.message, 0u);
    EXPECT_EQ(+record.where.v, 0);
    EXPECT_EQ(+record.where.h, 0);
    EXPECT_EQ(+record.modifiers, 0);
    EXPECT_LE(TickCount() - record.when, 60u * 60);
  }
};

TEST_F(Events, AreDescribedInTheSame16BytesEverywhere) {
  EXPECT_EQ(sizeof(EventRecord), 16u);
  EXPECT_EQ(offsetof(EventRecord, message), 2u);
  EXPECT_EQ(offsetof(EventRecord, when), 6u);
  EXPECT_EQ(offsetof(EventRecord, where), 10u);
  EXPECT_EQ(offsetof(EventRecord, modifiers), 14u);
}

TEST_F(Events, AreSeenByEventAvailAndNotTaken) {
  post('one ');
  for (int look = 0; look < 3; ++look) {
    EventRecord record = scribble();
    EXPECT_TRUE(EventAvail(highLevelEventMask, &record));
    EXPECT_EQ(+record.what, kHighLevelEvent);
    EXPECT_EQ(+record.message, tests::kTestClass);
    EXPECT_EQ(idOf(record), AEEventID{'one '});
    EXPECT_EQ(+record.modifiers, 0);
  }
  EXPECT_EQ(takeAll(), (std::vector<AEEventID>{'one '}));
}

TEST_F(Events, AreNeverSeenThroughAnEmptyMask) {
  post('one ');
  EventRecord record = scribble();
  EXPECT_FALSE(EventAvail(0, &record));
  expectNullEvent(record);
  EXPECT_TRUE(EventAvail(everyEvent, &record));
}

TEST_F(Events, AreNotSeenThroughAMaskWithoutThem) {
  post('one ');
  EventRecord record = scribble();
  EXPECT_FALSE(EventAvail(static_cast<EventMask>(~highLevelEventMask), &record));
  expectNullEvent(record);
}

TEST_F(Events, AreNullWhenNothingWaits) {
  EventRecord record = scribble();
  EXPECT_FALSE(EventAvail(everyEvent, &record));
  expectNullEvent(record);
}

TEST_F(Events, MayBeLookedForWithoutARecord) {
  EXPECT_FALSE(EventAvail(everyEvent, nullptr));
  post('one ');
  EXPECT_TRUE(EventAvail(everyEvent, nullptr));
  EXPECT_TRUE(WaitNextEvent(everyEvent, nullptr, 0, nullptr));
  EXPECT_FALSE(EventAvail(everyEvent, nullptr));
}

TEST_F(Events, CanBeSentToAProcessThatHasCalledEventAvail) {
  const std::string folder =
      root.path() / "run/user" / std::to_string(geteuid()) / "quorvant/processes/record.1";
  EXPECT_EQ(access(folder.c_str(), F_OK), 0);  // the fixture called it
}

TEST_F(Events, AreTakenInTheOrderOfTheirArrival) {
  for (const AEEventID id : {'one ', 'two ', 'thre', 'four'}) post(id);
  EXPECT_EQ(takeAll(), (std::vector<AEEventID>{'one ', 'two ', 'thre', 'four'}));
  EXPECT_FALSE(EventAvail(everyEvent, nullptr));
}

TEST_F(Events, BearTheTimeOfTheirArrival) {
  const UInt32 before = TickCount();
  post('one ');
  EventRecord record;
  EXPECT_TRUE(EventAvail(everyEvent, &record));
  EXPECT_LE(+record.when - before, TickCount() - before);
}

TEST_F(Events, AreLostWhenTheNextIsAskedForBeforeTheyWereProcessed) {
  handle('one ', [] { return OSErr{noErr}; });
  post('one ');
  EventRecord taken, none;
  EXPECT_TRUE(WaitNextEvent(everyEvent, &taken, 0, nullptr));
  EXPECT_FALSE(WaitNextEvent(everyEvent, &none, 0, nullptr));
  EXPECT_EQ(AEProcessAppleEvent(&taken), errAENotAppleEvent);
}

TEST_F(Events, AreNotLostByALookAtTheNext) {
  handle('one ', [] { return OSErr{noErr}; });
  post('one ');
  post('two ');
  EventRecord taken, next;
  EXPECT_TRUE(WaitNextEvent(everyEvent, &taken, 0, nullptr));
  EXPECT_TRUE(EventAvail(everyEvent, &next));
  EXPECT_EQ(AEProcessAppleEvent(&taken), noErr);
  EXPECT_EQ(takeAll(), (std::vector<AEEventID>{'two '}));
}

TEST_F(Events, AreWaitedForNoLongerThanAsked) {
  const UInt32 before = TickCount();
  EventRecord record = scribble();
  EXPECT_FALSE(WaitNextEvent(everyEvent, &record, 3, nullptr));
  expectNullEvent(record);
  EXPECT_GE(TickCount() - before, 3u);
}

TEST_F(Events, EndTheWaitWhenTheyCome) {
  std::thread sender([] { post('one '); });
  EventRecord record;
  EXPECT_TRUE(WaitNextEvent(highLevelEventMask, &record, 60 * 60, nullptr));
  EXPECT_EQ(idOf(record), AEEventID{'one '});
  sender.join();
}

TEST_F(Events, AreWaitedForWhileTheRunLoopServesOthers) {
  tests::later([this] {
    log.push_back("timer");
    post('one ');
  });
  EXPECT_TRUE(WaitNextEvent(everyEvent, nullptr, 60 * 60, nullptr));
  EXPECT_EQ(log, (std::vector<std::string>{"timer"}));
}

TEST_F(Events, OnlyFillTheQueueWhenTheRunLoopServesThem) {
  handle('one ', [this] {
    log.push_back("handled");
    return OSErr{noErr};
  });
  post('one ');
  tests::runUntil([] { return platform::events::EventSource::prepared().events().size() > 0; });
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(takeAll(), (std::vector<AEEventID>{'one '}));
}

// More than the queue holds: the rest waits in the port, the loop can still sleep, and nothing is
// lost.
TEST_F(Events, WaitInThePortWhileTheQueueIsFull) {
  constexpr std::size_t kCount = platform::events::EventQueue::kCapacity + 100;
  std::thread sender([] {
    for (std::size_t i = 0; i < kCount; ++i) post('many');
  });
  const auto& queue = platform::events::EventSource::prepared().events();
  tests::runUntil([&] { return queue.isFull(); });
  EXPECT_NE(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.05, true), kCFRunLoopRunHandledSource);
  EXPECT_EQ(queue.size(), platform::events::EventQueue::kCapacity);
  EXPECT_TRUE(EventAvail(everyEvent, nullptr));
  EXPECT_EQ(queue.size(), platform::events::EventQueue::kCapacity);
  std::size_t taken = 0;
  while (taken < kCount && WaitNextEvent(everyEvent, nullptr, 60 * 60, nullptr)) ++taken;
  EXPECT_EQ(taken, kCount);
  sender.join();
  EXPECT_FALSE(EventAvail(everyEvent, nullptr));
}

TEST_F(Events, CountTimeInTicks) {
  using platform::host::monotonicNow;
  using platform::host::ticksAt;
  const UInt32 before = ticksAt(monotonicNow());
  const UInt32 now = TickCount();
  EXPECT_LE(now - before, ticksAt(monotonicNow()) - before);
}

TEST_F(Events, AreNoneAfterTheCursorWasMadeAnArrow) {
  InitCursor();
  EXPECT_FALSE(EventAvail(everyEvent, nullptr));
}

}  // namespace
