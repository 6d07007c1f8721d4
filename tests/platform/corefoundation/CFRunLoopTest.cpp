// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFRunLoop.h>

#include <limits>
#include <string>
#include <thread>

#include "tests/platform/corefoundation/RunLoopTesting.h"

namespace {

using namespace tests;

using RunLoop = RunLoopTest;

TEST_F(RunLoop, IsTheSameForAThreadAtEveryCall) {
  EXPECT_NE(loop, nullptr);
  EXPECT_EQ(CFRunLoopGetCurrent(), loop);
  EXPECT_EQ(CFGetTypeID(loop), CFRunLoopGetTypeID());
}

TEST_F(RunLoop, OfTheFirstThreadIsTheMainOne) { EXPECT_EQ(CFRunLoopGetMain(), loop); }

TEST_F(RunLoop, OfAnotherThreadIsAnother) {
  CFRunLoopRef other = nullptr;
  CFRunLoopRef main = nullptr;
  std::thread([&] {
    main = CFRunLoopGetMain();
    other = static_cast<CFRunLoopRef>(const_cast<void*>(CFRetain(CFRunLoopGetCurrent())));
  }).join();
  EXPECT_EQ(main, loop);
  EXPECT_NE(other, loop);
  CFRelease(other);
}

TEST_F(RunLoop, IsReleasedWhenItsThreadEnds) {
  CFRunLoopRef other = nullptr;
  CFIndex countThere = 0;
  std::thread([&] {
    other = CFRunLoopGetCurrent();
    countThere = CFGetRetainCount(other);
    CFRetain(other);
  }).join();
  EXPECT_EQ(countThere, 1);
  EXPECT_EQ(CFGetRetainCount(other), 1);
  CFRelease(other);
}

TEST_F(RunLoop, GivesUpItsContentsWhenItsThreadEnds) {
  Source source([] {});
  Timer timer(muchLater(), 0, [] {});
  std::thread([&] {
    CFRunLoopAddSource(CFRunLoopGetCurrent(), source, kCFRunLoopCommonModes);
    CFRunLoopAddTimer(CFRunLoopGetCurrent(), timer, CFSTR("another mode"));
    EXPECT_EQ(CFGetRetainCount(source), 3);
  }).join();
  EXPECT_EQ(CFGetRetainCount(source), 1);
  EXPECT_EQ(CFGetRetainCount(timer), 1);
  EXPECT_TRUE(CFRunLoopSourceIsValid(source));
}

TEST_F(RunLoop, WhoseThreadHasEndedTakesNothingMore) {
  CFRunLoopRef other = nullptr;
  std::thread([&] {
    other = CFRunLoopGetCurrent();
    CFRetain(other);
  }).join();
  Source source([] {});
  CFRunLoopAddSource(other, source, kCFRunLoopDefaultMode);
  CFRunLoopStop(other);
  CFRunLoopWakeUp(other);
  EXPECT_FALSE(CFRunLoopContainsSource(other, source, kCFRunLoopDefaultMode));
  EXPECT_EQ(CFGetRetainCount(source), 1);
  CFRelease(other);
}

TEST_F(RunLoop, FinishesAtOnceInAModeWithoutSourcesAndTimers) {
  Observer observer(kCFRunLoopAllActivities, [&](CFRunLoopActivity) { log.push_back("observed"); });
  add(observer);
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_EQ(run(CFSTR("a mode that nobody made")), kCFRunLoopRunFinished);
  CFRunLoopRun();
  EXPECT_TRUE(log.empty());
}

TEST_F(RunLoop, DoesNotRunInTheCommonModesNorInANullOne) {
  Source source([] {});
  add(source, kCFRunLoopCommonModes);
  EXPECT_EQ(run(kCFRunLoopCommonModes), kCFRunLoopRunFinished);
  EXPECT_EQ(run(nullptr), kCFRunLoopRunFinished);
}

TEST_F(RunLoop, WithZeroSecondsTimesOutAfterOneTurn) {
  Source source(note("performed"));
  add(source);
  EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  source.signal();
  EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  EXPECT_EQ(log, std::vector<std::string>{"performed"});
}

TEST_F(RunLoop, WithZeroOrFewerOrNoSecondsMakesOneTurn) {
  Source source(note("performed"));
  add(source);
  for (const CFTimeInterval seconds :
       {0.0, -1.0, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
    source.signal();
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, seconds, false), kCFRunLoopRunTimedOut);
  }
  EXPECT_EQ(log.size(), 4u);
}

TEST_F(RunLoop, TimesOutOnceTheSecondsHavePassed) {
  Source source([] {});
  add(source);
  const CFAbsoluteTime start = CFAbsoluteTimeGetCurrent();
  EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.02, false), kCFRunLoopRunTimedOut);
  EXPECT_GE(CFAbsoluteTimeGetCurrent() - start, 0.0199);
}

TEST_F(RunLoop, ReturnsAfterASourceWhenAskedTo) {
  Source source(note("performed"));
  add(source);
  source.signal();
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log.size(), 1u);
}

TEST_F(RunLoop, ReturnsAfterASourceInOneTurnToo) {
  Source source(note("performed"));
  add(source);
  EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, true), kCFRunLoopRunTimedOut);
  source.signal();
  EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, true), kCFRunLoopRunHandledSource);
}

TEST_F(RunLoop, DoesNotCountATimerAsASource) {
  Source source([] {});
  Timer timer(longAgo(), 0, [&] {
    log.push_back("fired");
    source.signal();
  });
  add(source);
  add(timer);
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log.size(), 1u);
}

TEST_F(RunLoop, FinishesWhenItsLastSourceGoes) {
  Source source([&] { CFRunLoopRemoveSource(loop, source, kCFRunLoopDefaultMode); });
  add(source);
  source.signal();
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
}

TEST_F(RunLoop, StoppedReturnsFromRun) {
  Source source([&] {
    log.push_back("performed");
    CFRunLoopStop(loop);
  });
  add(source);
  source.signal();
  CFRunLoopRun();
  EXPECT_EQ(log.size(), 1u);
  source.signal();
  EXPECT_EQ(run(), kCFRunLoopRunStopped);
}

TEST_F(RunLoop, StoppedLeavesTheRestOfTheTurnForTheNextRun) {
  Source stopping([&] { CFRunLoopStop(loop); });
  Source later(note("later"), 1);
  Timer timer(longAgo(), 0, note("timer"));
  add(stopping);
  add(later);
  add(timer);
  stopping.signal();
  later.signal();
  EXPECT_EQ(run(), kCFRunLoopRunStopped);
  EXPECT_TRUE(log.empty());
  turn();
  EXPECT_EQ(log, (std::vector<std::string>{"later", "timer"}));
}

TEST_F(RunLoop, StoppedBeforeItRunsReturnsAtOnceAndOnlyOnce) {
  Source source(note("performed"));
  Observer observer(kCFRunLoopAllActivities, [&](CFRunLoopActivity) { log.push_back("observed"); });
  add(source);
  add(observer);
  source.signal();
  CFRunLoopStop(loop);
  EXPECT_EQ(run(), kCFRunLoopRunStopped);
  EXPECT_TRUE(log.empty());
  CFRunLoopRemoveObserver(loop, observer, kCFRunLoopDefaultMode);
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
}

TEST_F(RunLoop, StoppedBeforeItRunsSaysSoInAnEmptyModeToo) {
  CFRunLoopStop(loop);
  EXPECT_EQ(run(), kCFRunLoopRunStopped);
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
}

TEST_F(RunLoop, StoppedWhileLeavingSaysSo) {
  Source source([] {});
  Observer observer(kCFRunLoopExit, [&](CFRunLoopActivity) { CFRunLoopStop(loop); });
  add(source);
  add(observer);
  EXPECT_EQ(turn(), kCFRunLoopRunStopped);
  CFRunLoopRemoveObserver(loop, observer, kCFRunLoopDefaultMode);
  EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
}

TEST_F(RunLoop, NestedIsStoppedAloneWhenItIsInnermost) {
  const CFStringRef inner = CFSTR("inner");
  Source stopping([&] { CFRunLoopStop(loop); });
  Source nesting([&] {
    stopping.signal();
    EXPECT_EQ(run(inner), kCFRunLoopRunStopped);
    log.push_back("inner stopped");
  });
  add(stopping, inner);
  add(nesting);
  nesting.signal();
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log.size(), 1u);
}

TEST_F(RunLoop, NestedAfterAStopOfTheOuterRunIsNotStopped) {
  const CFStringRef inner = CFSTR("inner");
  Source asleep([] {});
  Source nesting([&] {
    CFRunLoopStop(loop);
    EXPECT_EQ(turn(inner), kCFRunLoopRunTimedOut);
  });
  add(asleep, inner);
  add(nesting);
  nesting.signal();
  EXPECT_EQ(run(), kCFRunLoopRunStopped);
}

TEST_F(RunLoop, NestedInTheSameModeServesItsOtherSources) {
  Source other([&] {
    log.push_back("other");
    CFRunLoopStop(loop);
  });
  Source nesting([&] {
    other.signal();
    EXPECT_EQ(run(), kCFRunLoopRunStopped);
    log.push_back("nesting");
  });
  add(other);
  add(nesting);
  nesting.signal();
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log, (std::vector<std::string>{"other", "nesting"}));
}

TEST_F(RunLoop, NestedServesTheSourceThatNestsItAgain) {
  Source source([&] {
    log.push_back("performed");
    if (log.size() > 1) return;
    CFRunLoopSourceSignal(source);
    EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  });
  add(source);
  source.signal();
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log.size(), 2u);
}

TEST_F(RunLoop, ToldToByAWakeUpBeforeItRunsStillSleeps) {
  Source source([] {});
  add(source);
  CFRunLoopWakeUp(loop);
  EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.01, false), kCFRunLoopRunTimedOut);
}

TEST_F(RunLoop, TellsItsCurrentModeWhileItRuns) {
  const CFStringRef inner = CFSTR("inner");
  const auto noteMode = [&] {
    const CFStringRef mode = CFRunLoopCopyCurrentMode(loop);
    log.push_back(CFEqual(mode, inner) ? "inner" : "default");
    CFRelease(mode);
  };
  Source innerSource(noteMode);
  Source source([&] {
    noteMode();
    innerSource.signal();
    EXPECT_EQ(runForOneSource(inner), kCFRunLoopRunHandledSource);
    noteMode();
  });
  add(innerSource, inner);
  add(source);
  source.signal();
  EXPECT_EQ(CFRunLoopCopyCurrentMode(loop), nullptr);
  runForOneSource();
  EXPECT_EQ(log, (std::vector<std::string>{"default", "inner", "default"}));
  EXPECT_EQ(CFRunLoopCopyCurrentMode(loop), nullptr);
}

TEST_F(RunLoop, IgnoresNullAndForeignReferences) {
  Source source([] {});
  const auto foreign = reinterpret_cast<CFRunLoopRef>(
      const_cast<void*>(static_cast<const void*>(kCFRunLoopDefaultMode)));
  for (const CFRunLoopRef wrong : {CFRunLoopRef{nullptr}, foreign}) {
    CFRunLoopStop(wrong);
    CFRunLoopWakeUp(wrong);
    CFRunLoopAddSource(wrong, source, kCFRunLoopDefaultMode);
    CFRunLoopRemoveSource(wrong, source, kCFRunLoopDefaultMode);
    EXPECT_FALSE(CFRunLoopContainsSource(wrong, source, kCFRunLoopDefaultMode));
    EXPECT_FALSE(CFRunLoopIsWaiting(wrong));
    EXPECT_EQ(CFRunLoopCopyCurrentMode(wrong), nullptr);
    EXPECT_EQ(CFRunLoopCopyAllModes(wrong), nullptr);
    EXPECT_EQ(CFRunLoopGetNextTimerFireDate(wrong, kCFRunLoopDefaultMode), 0);
  }
  EXPECT_EQ(CFGetRetainCount(source), 1);
}

}  // namespace
