// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFRunLoop.h>

#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/corefoundation/RunLoopTesting.h"

namespace {

using namespace tests;

class RunLoopTimer : public RunLoopTest {};

TEST_F(RunLoopTimer, TellsWhatItWasMadeWith) {
  const auto callBack = [](CFRunLoopTimerRef, void*) {};
  const CFAbsoluteTime date = muchLater();
  const CFRunLoopTimerRef timer = CFRunLoopTimerCreate(nullptr, date, 2.5, 0, 7, callBack, nullptr);
  EXPECT_EQ(CFGetTypeID(timer), CFRunLoopTimerGetTypeID());
  EXPECT_EQ(CFRunLoopTimerGetNextFireDate(timer), date);
  EXPECT_EQ(CFRunLoopTimerGetInterval(timer), 2.5);
  EXPECT_EQ(CFRunLoopTimerGetOrder(timer), 7);
  EXPECT_TRUE(CFRunLoopTimerDoesRepeat(timer));
  EXPECT_TRUE(CFRunLoopTimerIsValid(timer));
  CFRelease(timer);
}

TEST_F(RunLoopTimer, NeedsACallBack) {
  EXPECT_EQ(CFRunLoopTimerCreate(nullptr, 0, 0, 0, 0, nullptr, nullptr), nullptr);
}

TEST_F(RunLoopTimer, DoesNotRepeatWithoutAPositiveInterval) {
  for (const CFTimeInterval interval : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    Timer timer(longAgo(), interval, note("fired"));
    EXPECT_FALSE(CFRunLoopTimerDoesRepeat(timer));
    EXPECT_EQ(CFRunLoopTimerGetInterval(timer), 0);
  }
}

TEST_F(RunLoopTimer, ThatDoesNotRepeatIsInvalidAfterItFired) {
  Timer timer(longAgo(), 0, [&] {
    log.push_back("fired");
    EXPECT_TRUE(CFRunLoopTimerIsValid(timer));
  });
  add(timer);
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_EQ(log.size(), 1u);
  EXPECT_FALSE(CFRunLoopTimerIsValid(timer));
  EXPECT_EQ(CFRunLoopTimerGetNextFireDate(timer), 0);
  EXPECT_EQ(CFGetRetainCount(timer), 1);
}

TEST_F(RunLoopTimer, FiresWhenItsDateHasCome) {
  const CFAbsoluteTime date = CFAbsoluteTimeGetCurrent() + 0.02;
  CFAbsoluteTime fired = 0;
  Timer timer(date, 0, [&] { fired = CFAbsoluteTimeGetCurrent(); });
  add(timer);
  EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_GE(fired, date - 0.0001);
}

TEST_F(RunLoopTimer, RepeatsUntilItIsInvalidated) {
  Timer timer(CFAbsoluteTimeGetCurrent(), 0.001, [&] {
    log.push_back("fired");
    if (log.size() == 5) CFRunLoopTimerInvalidate(timer);
  });
  add(timer);
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_EQ(log.size(), 5u);
}

TEST_F(RunLoopTimer, SkipsTheDatesThatItMissedAndKeepsToItsRow) {
  const CFAbsoluteTime first = CFAbsoluteTimeGetCurrent() - 102500;
  Timer timer(first, 10000, note("fired"));
  add(timer);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  EXPECT_EQ(log.size(), 1u);
  EXPECT_EQ(CFRunLoopTimerGetNextFireDate(timer), first + 11 * 10000.0);
}

TEST_F(RunLoopTimer, MovesOnToItsNextDateBeforeItsCallBack) {
  const CFAbsoluteTime first = CFAbsoluteTimeGetCurrent() - 1000;
  CFAbsoluteTime next = 0;
  Timer timer(first, 100000, [&] { next = CFRunLoopTimerGetNextFireDate(timer); });
  add(timer);
  turn();
  EXPECT_EQ(next, first + 100000);
}

TEST_F(RunLoopTimer, FiresAtADateThatIsSetLater) {
  Timer timer(muchLater(), 0, note("fired"));
  add(timer);
  turn();
  EXPECT_TRUE(log.empty());
  const CFAbsoluteTime date = longAgo();
  CFRunLoopTimerSetNextFireDate(timer, date);
  EXPECT_EQ(CFRunLoopTimerGetNextFireDate(timer), date);
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_EQ(log.size(), 1u);
}

TEST_F(RunLoopTimer, KeepsTheDateThatItsCallBackSets) {
  const CFAbsoluteTime date = muchLater();
  Timer timer(longAgo(), 100000, [&] { CFRunLoopTimerSetNextFireDate(timer, date); });
  add(timer);
  turn();
  EXPECT_EQ(CFRunLoopTimerGetNextFireDate(timer), date);
}

TEST_F(RunLoopTimer, WhoseCallBackSetsAPastDateFiresOnceATurn) {
  Timer timer(longAgo(), 100000, [&] {
    log.push_back("fired");
    CFRunLoopTimerSetNextFireDate(timer, longAgo());
    if (log.size() == 3) CFRunLoopStop(loop);
  });
  int turns = 0;
  Observer observer(kCFRunLoopBeforeTimers, [&](CFRunLoopActivity) { ++turns; });
  add(timer);
  add(observer);
  EXPECT_EQ(run(), kCFRunLoopRunStopped);
  EXPECT_EQ(turns, 3);
}

TEST_F(RunLoopTimer, DoesNotFireWithinItsOwnCallBack) {
  Timer timer(longAgo(), 1e-9, [&] {
    log.push_back("fired");
    EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  });
  add(timer);
  EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  EXPECT_EQ(log.size(), 1u);
  EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  EXPECT_EQ(log.size(), 2u);
}

TEST_F(RunLoopTimer, DoesNotKeepANestedRunAwakeWhileItFires) {
  int turns = 0;
  Observer observer(kCFRunLoopBeforeTimers, [&](CFRunLoopActivity) { ++turns; });
  Timer timer(longAgo(), 1e-9, [&] {
    add(observer);
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.005, false), kCFRunLoopRunTimedOut);
    CFRunLoopRemoveObserver(loop, observer, kCFRunLoopDefaultMode);
  });
  add(timer);
  turn();
  EXPECT_LE(turns, 3);
}

TEST_F(RunLoopTimer, LetsOthersFireWithinItsCallBack) {
  Timer other(longAgo() + 1, 0, note("other"));
  Timer timer(longAgo(), 0, [&] {
    EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
    log.push_back("timer");
  });
  add(timer);
  add(other);
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_EQ(log, (std::vector<std::string>{"other", "timer"}));
}

TEST_F(RunLoopTimer, InvalidatedByAnotherOfTheSameTurnDoesNotFire) {
  Timer second(longAgo() + 1, 0, note("second"));
  Timer first(longAgo(), 0, [&] { CFRunLoopTimerInvalidate(second); });
  add(first);
  add(second);
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_TRUE(log.empty());
}

TEST_F(RunLoopTimer, BelongsToOneLoopButAnyOfItsModes) {
  Timer timer(muchLater(), 0, [] {});
  add(timer);
  add(timer, CFSTR("another"));
  EXPECT_EQ(CFGetRetainCount(timer), 3);
  CFRunLoopRef main = loop;
  std::thread([&] {
    CFRunLoopAddTimer(CFRunLoopGetCurrent(), timer, kCFRunLoopDefaultMode);
    EXPECT_FALSE(CFRunLoopContainsTimer(CFRunLoopGetCurrent(), timer, kCFRunLoopDefaultMode));
    CFRunLoopRemoveTimer(main, timer, kCFRunLoopDefaultMode);
    CFRunLoopRemoveTimer(main, timer, CFSTR("another"));
    CFRunLoopAddTimer(CFRunLoopGetCurrent(), timer, kCFRunLoopDefaultMode);
    EXPECT_TRUE(CFRunLoopContainsTimer(CFRunLoopGetCurrent(), timer, kCFRunLoopDefaultMode));
  }).join();
  EXPECT_EQ(CFGetRetainCount(timer), 1);
}

TEST_F(RunLoopTimer, IsTheNextOfItsModeIfItsDateIs) {
  EXPECT_EQ(CFRunLoopGetNextTimerFireDate(loop, kCFRunLoopDefaultMode), 0);
  const CFAbsoluteTime date = muchLater();
  Timer later(date + 10, 0, [] {});
  Timer earlier(date, 0, [] {});
  add(later);
  EXPECT_EQ(CFRunLoopGetNextTimerFireDate(loop, kCFRunLoopDefaultMode), date + 10);
  add(earlier);
  EXPECT_EQ(CFRunLoopGetNextTimerFireDate(loop, kCFRunLoopDefaultMode), date);
  EXPECT_EQ(CFRunLoopGetNextTimerFireDate(loop, CFSTR("another")), 0);
}

TEST_F(RunLoopTimer, TakesDatesOfAnySize) {
  const double dates[] = {std::numeric_limits<double>::infinity(), 1e300, 1e18};
  for (const CFAbsoluteTime date : dates) {
    Timer timer(date, 1e300, note("fired"));
    add(timer);
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.001, false), kCFRunLoopRunTimedOut);
    EXPECT_EQ(CFRunLoopTimerGetNextFireDate(timer), date);
  }
  Timer ancient(-std::numeric_limits<double>::infinity(), 1e300, note("ancient"));
  add(ancient);
  turn();
  EXPECT_EQ(log, std::vector<std::string>{"ancient"});
}

struct Counts {
  int retained = 0;
  int released = 0;
};

TEST_F(RunLoopTimer, ReleasesItsInfoWhenItIsInvalidated) {
  Counts counts;
  CFRunLoopTimerContext context{};
  context.info = &counts;
  context.retain = [](const void* info) -> const void* {
    ++static_cast<Counts*>(const_cast<void*>(info))->retained;
    return info;
  };
  context.release = [](const void* info) {
    ++static_cast<Counts*>(const_cast<void*>(info))->released;
  };
  const CFRunLoopTimerRef timer = CFRunLoopTimerCreate(
      nullptr, longAgo(), 0, 0, 0,
      [](CFRunLoopTimerRef self, void* info) {
        CFRunLoopTimerInvalidate(self);
        EXPECT_EQ(static_cast<Counts*>(info)->released, 0);
      },
      &context);
  CFRunLoopAddTimer(loop, timer, kCFRunLoopDefaultMode);
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_EQ(counts.retained, 1);
  EXPECT_EQ(counts.released, 1);
  CFRunLoopTimerGetContext(timer, &context);
  EXPECT_EQ(context.info, nullptr);
  CFRelease(timer);
  EXPECT_EQ(counts.released, 1);
}

TEST_F(RunLoopTimer, GivesItsContext) {
  int info = 0;
  CFRunLoopTimerContext context{0, &info, nullptr, nullptr, nullptr};
  const CFRunLoopTimerRef timer = CFRunLoopTimerCreate(
      nullptr, 0, 0, 0, 0, [](CFRunLoopTimerRef, void*) {}, &context);
  CFRunLoopTimerContext given{};
  CFRunLoopTimerGetContext(timer, &given);
  EXPECT_EQ(given.info, &info);
  EXPECT_EQ(given.version, 0);
  CFRelease(timer);
}

TEST_F(RunLoopTimer, IgnoresNullAndForeignReferences) {
  const auto foreign = reinterpret_cast<CFRunLoopTimerRef>(loop);
  for (const CFRunLoopTimerRef wrong : {CFRunLoopTimerRef{nullptr}, foreign}) {
    CFRunLoopTimerInvalidate(wrong);
    CFRunLoopTimerSetNextFireDate(wrong, 1);
    CFRunLoopAddTimer(loop, wrong, kCFRunLoopDefaultMode);
    EXPECT_EQ(CFRunLoopTimerGetNextFireDate(wrong), 0);
    EXPECT_EQ(CFRunLoopTimerGetInterval(wrong), 0);
    EXPECT_EQ(CFRunLoopTimerGetOrder(wrong), 0);
    EXPECT_FALSE(CFRunLoopTimerDoesRepeat(wrong));
    EXPECT_FALSE(CFRunLoopTimerIsValid(wrong));
  }
}

}  // namespace
