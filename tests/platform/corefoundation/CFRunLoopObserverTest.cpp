// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFRunLoop.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/platform/corefoundation/RunLoopTesting.h"

namespace {

using namespace tests;
using Names = std::vector<std::string>;

class RunLoopObserver : public RunLoopTest {
 protected:
  void SetUp() override { add(source); }
  void TearDown() override {
    CFRunLoopSourceInvalidate(source);
    RunLoopTest::TearDown();
  }
  Observer::Action noteActivity() {
    return [this](CFRunLoopActivity activity) { log.push_back(nameOf(activity)); };
  }

  Source source{[] {}};
};

TEST_F(RunLoopObserver, TellsWhatItWasMadeWith) {
  const CFRunLoopObserverRef observer = CFRunLoopObserverCreate(
      nullptr, kCFRunLoopEntry | kCFRunLoopExit, false, 9,
      [](CFRunLoopObserverRef, CFRunLoopActivity, void*) {}, nullptr);
  EXPECT_EQ(CFGetTypeID(observer), CFRunLoopObserverGetTypeID());
  EXPECT_EQ(CFRunLoopObserverGetActivities(observer), 0x81u);
  EXPECT_EQ(CFRunLoopObserverGetOrder(observer), 9);
  EXPECT_FALSE(CFRunLoopObserverDoesRepeat(observer));
  EXPECT_TRUE(CFRunLoopObserverIsValid(observer));
  CFRelease(observer);
}

TEST_F(RunLoopObserver, NeedsACallBack) {
  EXPECT_EQ(CFRunLoopObserverCreate(nullptr, kCFRunLoopAllActivities, true, 0, nullptr, nullptr),
            nullptr);
}

TEST_F(RunLoopObserver, IsCalledForItsActivitiesOnly) {
  Observer observer(kCFRunLoopBeforeSources | kCFRunLoopExit, noteActivity());
  add(observer);
  turn();
  EXPECT_EQ(log, (Names{"before sources", "exit"}));
}

TEST_F(RunLoopObserver, ThatDoesNotRepeatIsInvalidAfterItsFirstCall) {
  Observer observer(kCFRunLoopAllActivities, noteActivity(), 0, false);
  add(observer);
  turn();
  EXPECT_EQ(log, Names{"entry"});
  EXPECT_FALSE(CFRunLoopObserverIsValid(observer));
  EXPECT_EQ(CFGetRetainCount(observer), 1);
}

TEST_F(RunLoopObserver, InvalidatedIsNotCalledAgain) {
  Observer observer(kCFRunLoopAllActivities, [&](CFRunLoopActivity activity) {
    log.push_back(nameOf(activity));
    if (activity == kCFRunLoopBeforeTimers) CFRunLoopObserverInvalidate(observer);
  });
  add(observer);
  turn();
  EXPECT_EQ(log, (Names{"entry", "before timers"}));
}

TEST_F(RunLoopObserver, RemovedByAnotherOfTheSameNoticeIsNotCalled) {
  Observer second(kCFRunLoopEntry, noteActivity(), 2);
  Observer first(
      kCFRunLoopEntry,
      [&](CFRunLoopActivity) { CFRunLoopRemoveObserver(loop, second, kCFRunLoopDefaultMode); }, 1);
  add(first);
  add(second);
  turn();
  EXPECT_TRUE(log.empty());
}

TEST_F(RunLoopObserver, AddedDuringANoticeIsCalledInItIfItsTurnIsStillToCome) {
  Observer after(
      kCFRunLoopEntry, [&](CFRunLoopActivity) { log.push_back("after"); }, 2);
  Observer before(
      kCFRunLoopEntry, [&](CFRunLoopActivity) { log.push_back("before"); }, 0);
  Observer adding(
      kCFRunLoopEntry,
      [&](CFRunLoopActivity) {
        add(after);
        add(before);
      },
      1, false);
  add(adding);
  turn();
  EXPECT_EQ(log, Names{"after"});
}

TEST_F(RunLoopObserver, IsNotCalledWithinItsOwnCall) {
  Observer observer(kCFRunLoopEntry | kCFRunLoopExit, [&](CFRunLoopActivity activity) {
    log.push_back(nameOf(activity));
    if (log.size() < 5) turn();
  });
  add(observer);
  turn();
  EXPECT_EQ(log, (Names{"entry", "exit"}));
}

TEST_F(RunLoopObserver, IsToldTheRestOfANoticeThatANestedRunInterrupted) {
  Observer last(kCFRunLoopEntry, noteActivity(), 2);
  Observer nesting(
      kCFRunLoopEntry, [&](CFRunLoopActivity) { turn(); }, 1);
  add(last);
  add(nesting);
  turn();
  EXPECT_EQ(log, (Names{"entry", "entry"}));
}

TEST_F(RunLoopObserver, DoesNotKeepAModeRunning) {
  CFRunLoopSourceInvalidate(source);
  Observer observer(kCFRunLoopAllActivities, noteActivity());
  add(observer);
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
}

TEST_F(RunLoopObserver, ReleasesItsInfoWhenItIsInvalidated) {
  static int released;
  released = 0;
  int info = 0;
  CFRunLoopObserverContext context{0, &info, nullptr, nullptr, nullptr};
  context.release = [](const void*) { ++released; };
  const CFRunLoopObserverRef observer = CFRunLoopObserverCreate(
      nullptr, kCFRunLoopEntry, true, 0, [](CFRunLoopObserverRef, CFRunLoopActivity, void*) {},
      &context);
  CFRunLoopObserverGetContext(observer, &context);
  EXPECT_EQ(context.info, &info);
  CFRunLoopObserverInvalidate(observer);
  CFRunLoopObserverInvalidate(observer);
  EXPECT_EQ(released, 1);
  CFRunLoopObserverGetContext(observer, &context);
  EXPECT_EQ(context.info, nullptr);
  CFRelease(observer);
  EXPECT_EQ(released, 1);
}

TEST_F(RunLoopObserver, IgnoresNullAndForeignReferences) {
  const auto foreign = reinterpret_cast<CFRunLoopObserverRef>(loop);
  for (const CFRunLoopObserverRef wrong : {CFRunLoopObserverRef{nullptr}, foreign}) {
    CFRunLoopObserverInvalidate(wrong);
    CFRunLoopAddObserver(loop, wrong, kCFRunLoopDefaultMode);
    CFRunLoopRemoveObserver(loop, wrong, kCFRunLoopDefaultMode);
    EXPECT_FALSE(CFRunLoopContainsObserver(loop, wrong, kCFRunLoopDefaultMode));
    EXPECT_EQ(CFRunLoopObserverGetActivities(wrong), 0u);
    EXPECT_EQ(CFRunLoopObserverGetOrder(wrong), 0);
    EXPECT_FALSE(CFRunLoopObserverDoesRepeat(wrong));
    EXPECT_FALSE(CFRunLoopObserverIsValid(wrong));
  }
}

}  // namespace
