// Licence: MIT, see LICENSE.
#include "platform/events/InteractionTurn.h"

#include <CarbonCore/MacErrors.h>
#include <HIToolbox/AEInteraction.h>
#include <HIToolbox/CarbonEventsCore.h>
#include <signal.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "platform/events/Interaction.h"
#include "tests/platform/events/EventFixture.h"
#include "tests/support/ChildProcess.h"

namespace {

using platform::events::Presentation;
using tests::ChildProcess;
using tests::post;
using Log = std::vector<std::string>;

std::function<bool(EventRecord&, SInt32&)> onIdle;

Boolean idleProcedure(EventRecord* event, SInt32* sleepTime, RgnHandle*) {
  *sleepTime = 0x7FFFFFFF;
  return onIdle(*event, *sleepTime);
}

void passOn(const EventRecord& event) {
  if (event.what != kHighLevelEvent) return;
  EXPECT_EQ(AEProcessAppleEvent(&event), noErr);
}

struct Notices {
  int installed = 0;
  int removed = 0;
} notices;

class Turn : public tests::EventFixture {
 protected:
  ~Turn() override {
    onIdle = nullptr;
    notices = {};
  }

  static std::string answer(ChildProcess& child, const std::string& line) {
    EXPECT_TRUE(child.writeLine(line));
    return child.readLine().value_or("nothing");
  }

  /// Another process that has the turn.
  static std::unique_ptr<ChildProcess> startHolder() {
    auto child = std::make_unique<ChildProcess>(ChildProcess::Command{QRL_EVENT_PROCESS});
    EXPECT_EQ(answer(*child, "take 0"), "0");
    return child;
  }

  /// Which of two processes that wait for the turn gets it.
  static ChildProcess& firstToAnswer(ChildProcess& first, ChildProcess& second) {
    const auto end = std::chrono::steady_clock::now() + tests::kPatience;
    for (ChildProcess* each = &first; std::chrono::steady_clock::now() < end;
         each = each == &first ? &second : &first) {
      const auto line = each->readLine(std::chrono::milliseconds(10));
      if (!line) continue;
      EXPECT_EQ(*line, "0");
      return *each;
    }
    ADD_FAILURE() << "neither got the turn";
    return first;
  }

  /// Whether another process can have the turn now; it gives it up again.
  static bool isFree() {
    ChildProcess child({QRL_EVENT_PROCESS});
    return answer(child, "take 0") == "0";
  }

  static OSErr ask(SInt32 ticks = kNoTimeOut) {
    return AEInteractWithUser(ticks, nullptr, nullptr);
  }

  static OSErr askIdling(std::function<bool(EventRecord&, SInt32&)> idle,
                         SInt32 ticks = kNoTimeOut) {
    onIdle = std::move(idle);
    return AEInteractWithUser(ticks, nullptr, &idleProcedure);
  }
};

TEST_F(Turn, IsHadAtOnceWhenNobodyHasIt) {
  EXPECT_EQ(askIdling([this](EventRecord&, SInt32&) {
              log.push_back("idle");
              return true;
            }),
            noErr);
  EXPECT_TRUE(log.empty());
  EXPECT_FALSE(isFree());
}

TEST_F(Turn, IsHadAgainByWhoHasIt) {
  EXPECT_EQ(ask(), noErr);
  EXPECT_EQ(ask(0), noErr);
  const Presentation shown;
  EXPECT_EQ(ask(0), noErr);
}

TEST_F(Turn, IsNotHadWhileAnotherProcessHasIt) {
  const auto holder = startHolder();
  EXPECT_EQ(ask(0), errAETimeout);
  const UInt32 before = TickCount();
  EXPECT_EQ(ask(3), errAETimeout);
  EXPECT_GE(TickCount() - before, 3u);
}

TEST_F(Turn, PassesOnWhenTheHolderGivesItUp) {
  const auto holder = startHolder();
  EXPECT_EQ(askIdling([&](EventRecord&, SInt32&) {
              EXPECT_TRUE(holder->writeLine("give"));
              return false;
            }),
            noErr);
  EXPECT_EQ(holder->readLine(), "0");
  EXPECT_FALSE(isFree());
}

TEST_F(Turn, PassesOnAtOnceWhenTheHolderIsKilled) {
  const auto holder = startHolder();
  EXPECT_EQ(askIdling([&](EventRecord&, SInt32&) {
              holder->signal(SIGKILL);
              return false;
            }),
            noErr);
  EXPECT_EQ(holder->wait(), -SIGKILL);
}

TEST_F(Turn, IsFreeWhenTheHolderWasKilledBefore) {
  const auto holder = startHolder();
  holder->signal(SIGKILL);
  EXPECT_EQ(holder->wait(), -SIGKILL);
  EXPECT_EQ(ask(0), noErr);
}

TEST_F(Turn, PassesToOneOfSeveralAfterTheOther) {
  std::optional<Presentation> shown;
  ASSERT_EQ(ask(), noErr);
  shown.emplace();
  ChildProcess first({QRL_EVENT_PROCESS}), second({QRL_EVENT_PROCESS});
  EXPECT_TRUE(first.writeLine("take -2"));
  EXPECT_TRUE(second.writeLine("take -2"));
  shown.reset();
  ChildProcess& winner = firstToAnswer(first, second);
  ChildProcess& loser = &winner == &first ? second : first;
  EXPECT_EQ(loser.readLine(std::chrono::milliseconds(50)), std::nullopt);
  winner.signal(SIGKILL);
  EXPECT_EQ(loser.readLine(), "0");
}

TEST_F(Turn, IsNotLostWithAWaiterThatIsKilled) {
  std::optional<Presentation> shown;
  ASSERT_EQ(ask(), noErr);
  shown.emplace();
  {
    ChildProcess waiter({QRL_EVENT_PROCESS});
    EXPECT_TRUE(waiter.writeLine("take -2"));
    EXPECT_EQ(waiter.readLine(std::chrono::milliseconds(50)), std::nullopt);
  }
  EXPECT_FALSE(isFree());
  shown.reset();
  EXPECT_TRUE(isFree());
}

TEST_F(Turn, EndsWithWhatIsPresented) {
  ASSERT_EQ(ask(), noErr);
  { const Presentation shown; }
  EXPECT_TRUE(isFree());
}

TEST_F(Turn, EndsWithTheLastOfSeveralThingsPresented) {
  auto outer = std::make_unique<Presentation>();
  auto inner = std::make_unique<Presentation>();
  EXPECT_FALSE(isFree());
  inner.reset();
  EXPECT_FALSE(isFree());
  outer.reset();
  EXPECT_TRUE(isFree());
}

TEST_F(Turn, IsTakenByAPresentationThatDidNotAsk) {
  const Presentation shown;
  EXPECT_FALSE(isFree());
}

TEST_F(Turn, StaysWithItsHolderWhenSomethingIsPresentedAnyway) {
  const auto holder = startHolder();
  { const Presentation shown; }
  EXPECT_EQ(ask(0), errAETimeout);
}

TEST_F(Turn, EndsWhenNothingUsedItBeforeTheLoopIsIdle) {
  handle('ask ', [this] {
    EXPECT_EQ(ask(), noErr);
    log.push_back(isFree() ? "free" : "taken");
    tests::later(
        [this] {
          log.push_back(isFree() ? "free" : "taken");
          QuitApplicationEventLoop();
        },
        0.05);
    return OSErr{noErr};
  });
  post('ask ');
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"taken", "free"}));
}

TEST_F(Turn, LastsWhileARunLoopInsideAHandlerIsIdle) {
  handle('ask ', [this] {
    EXPECT_EQ(ask(), noErr);
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.05, false);
    log.push_back(isFree() ? "free" : "taken");
    QuitApplicationEventLoop();
    return OSErr{noErr};
  });
  post('ask ');
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"taken"}));
}

TEST_F(Turn, IsNoLongerWaitedForWhenTheIdleProcedureSaysSo) {
  const auto holder = startHolder();
  int calls = 0;
  EXPECT_EQ(askIdling([&](EventRecord& event, SInt32&) {
              ++calls;
              EXPECT_EQ(+event.what, nullEvent);
              return true;
            }),
            errAEWaitCanceled);
  EXPECT_EQ(calls, 1);
}

TEST_F(Turn, IsWaitedForWithoutBotherWhereTheIdleProcedureWantsToSleep) {
  const auto holder = startHolder();
  int calls = 0;
  EXPECT_EQ(askIdling(
                [&](EventRecord&, SInt32&) {
                  ++calls;
                  return false;
                },
                12),
            errAETimeout);
  EXPECT_LE(calls, 2);
}

TEST_F(Turn, IsWaitedForWithNullEventsAsOftenAsTheIdleProcedureWants) {
  const auto holder = startHolder();
  int calls = 0;
  EXPECT_EQ(askIdling([&](EventRecord& event, SInt32& sleepTime) {
              EXPECT_EQ(+event.what, nullEvent);
              sleepTime = 1;
              return ++calls == 5;
            }),
            errAEWaitCanceled);
  EXPECT_EQ(calls, 5);
}

TEST_F(Turn, IsGivenUpForAQuitEventThatTheIdleProcedurePassesOn) {
  const auto holder = startHolder();
  bool quit = false;
  handle('quit', [&] {
    quit = true;
    return OSErr{noErr};
  });
  post('quit');
  EXPECT_EQ(askIdling([&](EventRecord& event, SInt32&) {
              passOn(event);
              return quit;
            }),
            errAEWaitCanceled);
  EXPECT_TRUE(quit);
  EXPECT_FALSE(EventAvail(everyEvent, nullptr));
}

TEST_F(Turn, IsGivenUpForAQuitEventThatComesDuringTheWait) {
  const auto holder = startHolder();
  bool quit = false, sent = false;
  handle('quit', [&] {
    quit = true;
    return OSErr{noErr};
  });
  EXPECT_EQ(askIdling([&](EventRecord& event, SInt32&) {
              passOn(event);
              if (!std::exchange(sent, true)) post('quit');
              return quit;
            }),
            errAEWaitCanceled);
}

TEST_F(Turn, IsGivenUpForAnEventThatAPortReceivesDuringTheWait) {
  const auto holder = startHolder();
  bool quit = false, sent = false;
  tests::TestPort port([&] { quit = true; });
  EXPECT_EQ(askIdling([&](EventRecord& event, SInt32&) {
              EXPECT_EQ(+event.what, nullEvent);
              if (!std::exchange(sent, true)) port.send();
              return quit;
            }),
            errAEWaitCanceled);
}

TEST_F(Turn, LeavesEventsInTheQueueThatTheIdleProcedureDoesNotPassOn) {
  const auto holder = startHolder();
  post('one ');
  post('two ');
  EXPECT_EQ(askIdling([&](EventRecord& event, SInt32&) {
              if (event.what == nullEvent) return true;
              const AEEventID id = tests::idOf(event);
              log.push_back(id == 'one ' ? "one" : "two");
              return false;
            }),
            errAEWaitCanceled);
  EXPECT_EQ(log, (Log{"one", "two"}));
  EXPECT_EQ(takeAll(), (std::vector<AEEventID>{'one ', 'two '}));
}

TEST_F(Turn, LeavesEventsInTheQueueWithoutAnIdleProcedure) {
  const auto holder = startHolder();
  post('one ');
  EXPECT_EQ(ask(3), errAETimeout);
  EXPECT_EQ(takeAll(), (std::vector<AEEventID>{'one '}));
}

TEST_F(Turn, IsHadByBothOfTwoNestedWaits) {
  const auto holder = startHolder();
  tests::TestPort inner([&] {
    tests::later([&] { holder->signal(SIGKILL); });
    EXPECT_EQ(ask(), noErr);
    log.push_back("inner");
    const Presentation shown;
  });
  inner.send();
  EXPECT_EQ(ask(), noErr);
  log.push_back("outer");
  EXPECT_EQ(log, (Log{"inner", "outer"}));
  EXPECT_FALSE(isFree());
}

TEST_F(Turn, IsOursInANestedWaitWhileSomethingIsPresented) {
  ASSERT_EQ(ask(), noErr);
  const Presentation shown;
  tests::TestPort inner([&] {
    EXPECT_EQ(ask(0), noErr);
    const Presentation above;
    log.push_back("inner");
  });
  inner.send();
  tests::runUntil([&] { return !log.empty(); });
  EXPECT_FALSE(isFree());
}

OSErr install(NMRecPtr) {
  ++notices.installed;
  return noErr;
}

OSErr removeNotice(NMRecPtr) {
  ++notices.removed;
  return noErr;
}

TEST_F(Turn, IsWaitedForWithTheNoticeUp) {
  platform::events::setNoticeCalls({install, removeNotice});
  NMRec record = {};
  const auto holder = startHolder();
  int installedDuringWait = 0;
  onIdle = [&](EventRecord&, SInt32&) {
    installedDuringWait = notices.installed - notices.removed;
    return true;
  };
  EXPECT_EQ(AEInteractWithUser(kNoTimeOut, &record, &idleProcedure), errAEWaitCanceled);
  EXPECT_EQ(installedDuringWait, 1);
  EXPECT_EQ(notices.removed, 1);
}

TEST_F(Turn, NeedsNoNoticeWhenItIsHadAtOnce) {
  platform::events::setNoticeCalls({install, removeNotice});
  NMRec record = {};
  EXPECT_EQ(AEInteractWithUser(kNoTimeOut, &record, nullptr), noErr);
  EXPECT_EQ(notices.installed, 0);
}

}  // namespace
