// Licence: MIT, see LICENSE.
// What other threads may do to a loop.
#include <CoreFoundation/CFRunLoop.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <thread>
#include <utility>
#include <vector>

#include "tests/platform/corefoundation/RunLoopTesting.h"
#include "tests/support/StressCount.h"

namespace {

using namespace tests;

/// Waits for a condition that another thread makes true.
bool eventually(const std::function<bool()>& condition) {
  const CFAbsoluteTime deadline = CFAbsoluteTimeGetCurrent() + kPatience;
  while (!condition() && CFAbsoluteTimeGetCurrent() < deadline) std::this_thread::yield();
  return condition();
}

/// A thread that runs its loop in the default mode until it is stopped. A timer far off keeps it
/// from finishing.
class Runner final {
 public:
  explicit Runner(std::function<void()> beforeRun = [] {}) {
    std::promise<CFRunLoopRef> ready;
    std::future<CFRunLoopRef> loopOfThread = ready.get_future();
    thread = std::thread([this, beforeRun, ready = std::move(ready)]() mutable {
      Timer keeper(muchLater(), 0, [] {});
      Observer counter(kCFRunLoopAfterWaiting, [this](CFRunLoopActivity) { ++wakeUps; });
      CFRunLoopAddTimer(CFRunLoopGetCurrent(), keeper, kCFRunLoopDefaultMode);
      CFRunLoopAddObserver(CFRunLoopGetCurrent(), counter, kCFRunLoopDefaultMode);
      CFRetain(CFRunLoopGetCurrent());
      ready.set_value(CFRunLoopGetCurrent());
      beforeRun();
      result = CFRunLoopRunInMode(kCFRunLoopDefaultMode, kPatience, false);
    });
    loop = loopOfThread.get();
  }
  ~Runner() {
    end();
    CFRelease(loop);
  }

  SInt32 end() {
    if (!thread.joinable()) return result;
    CFRunLoopStop(loop);
    thread.join();
    return result;
  }
  void untilItSleeps() const {
    EXPECT_TRUE(eventually([this] { return CFRunLoopIsWaiting(loop) != 0; }));
  }

  CFRunLoopRef loop = nullptr;
  std::atomic<int> wakeUps{0};

 private:
  std::thread thread;
  SInt32 result = 0;
};

/// Something that happens on another thread, waited for with a deadline.
class Event final {
 public:
  void happen() { promise.set_value(); }
  bool happened() const {
    return future.wait_for(std::chrono::duration<double>(kPatience)) == std::future_status::ready;
  }

 private:
  std::promise<void> promise;
  std::future<void> future = promise.get_future();
};

TEST(RunLoopThreads, StopASleepingLoop) {
  Runner runner;
  runner.untilItSleeps();
  EXPECT_EQ(runner.end(), kCFRunLoopRunStopped);
  EXPECT_FALSE(CFRunLoopIsWaiting(runner.loop));
}

TEST(RunLoopThreads, StopALoopThatIsNotYetEntered) {
  std::promise<void> stopped;
  Runner runner([&] { stopped.get_future().wait(); });
  CFRunLoopStop(runner.loop);
  stopped.set_value();
  EXPECT_EQ(runner.end(), kCFRunLoopRunStopped);
  EXPECT_EQ(runner.wakeUps, 0);
}

TEST(RunLoopThreads, SignalAndWakeASleepingLoop) {
  Event performed;
  Source source([&] { performed.happen(); });
  Runner runner;
  CFRunLoopAddSource(runner.loop, source, kCFRunLoopDefaultMode);
  runner.untilItSleeps();
  source.signal();
  CFRunLoopWakeUp(runner.loop);
  EXPECT_TRUE(performed.happened());
  EXPECT_EQ(runner.end(), kCFRunLoopRunStopped);
}

TEST(RunLoopThreads, AddATimerThatIsEarlierThanTheEndOfTheSleep) {
  Event fired;
  Timer timer(CFAbsoluteTimeGetCurrent(), 0, [&] { fired.happen(); });
  Runner runner;
  runner.untilItSleeps();
  CFRunLoopAddTimer(runner.loop, timer, kCFRunLoopDefaultMode);
  EXPECT_TRUE(fired.happened());
  EXPECT_EQ(runner.end(), kCFRunLoopRunStopped);
}

TEST(RunLoopThreads, SetATimersDateBeforeTheEndOfTheSleep) {
  Event fired;
  Timer timer(muchLater(), 0, [&] { fired.happen(); });
  Runner runner;
  CFRunLoopAddTimer(runner.loop, timer, kCFRunLoopDefaultMode);
  runner.untilItSleeps();
  CFRunLoopTimerSetNextFireDate(timer, CFAbsoluteTimeGetCurrent());
  EXPECT_TRUE(fired.happened());
  EXPECT_EQ(runner.end(), kCFRunLoopRunStopped);
}

TEST(RunLoopThreads, TakeTheLastSourceOfASleepingLoop) {
  Source source([] {});
  std::atomic<SInt32> result{0};
  std::promise<CFRunLoopRef> ready;
  std::thread thread([&] {
    CFRunLoopAddSource(CFRunLoopGetCurrent(), source, kCFRunLoopDefaultMode);
    ready.set_value(CFRunLoopGetCurrent());
    result = CFRunLoopRunInMode(kCFRunLoopDefaultMode, kPatience, false);
  });
  const CFRunLoopRef loop = ready.get_future().get();
  EXPECT_TRUE(eventually([&] { return CFRunLoopIsWaiting(loop) != 0; }));
  CFRunLoopSourceInvalidate(source);
  thread.join();
  EXPECT_EQ(result, kCFRunLoopRunFinished);
}

TEST(RunLoopThreads, DoNotWakeALoopByASignalOrAnObserverAlone) {
  Event performed;
  Source source([&] { performed.happen(); });
  Observer observer(kCFRunLoopExit, [](CFRunLoopActivity) {});
  Runner runner;
  CFRunLoopAddSource(runner.loop, source, kCFRunLoopDefaultMode);
  runner.untilItSleeps();
  const int before = runner.wakeUps;
  source.signal();
  CFRunLoopAddObserver(runner.loop, observer, kCFRunLoopDefaultMode);
  EXPECT_TRUE(CFRunLoopIsWaiting(runner.loop));
  CFRunLoopWakeUp(runner.loop);
  EXPECT_TRUE(performed.happened());
  EXPECT_EQ(runner.wakeUps, before + 1);
  EXPECT_EQ(runner.end(), kCFRunLoopRunStopped);
}

TEST(RunLoopThreads, LetOnlyOneLoopPerformForASignal) {
  std::atomic<int> performed{0};
  Source source([&] { ++performed; });
  {
    Runner one;
    Runner two;
    for (const Runner* runner : {&one, &two}) {
      CFRunLoopAddSource(runner->loop, source, kCFRunLoopDefaultMode);
    }
    source.signal();
    for (const Runner* runner : {&one, &two}) CFRunLoopWakeUp(runner->loop);
    EXPECT_TRUE(eventually([&] { return performed > 0; }));
    for (Runner* runner : {&one, &two}) EXPECT_EQ(runner->end(), kCFRunLoopRunStopped);
  }
  EXPECT_EQ(performed, 1);
  EXPECT_EQ(CFGetRetainCount(source), 1);
}

TEST(RunLoopThreads, LoseNoSignalThatIsFollowedByAWakeUp) {
  const int rounds = stressCount(2000);
  std::atomic<int> performed{0};
  Source source([&] { ++performed; });
  Runner runner;
  CFRunLoopAddSource(runner.loop, source, kCFRunLoopDefaultMode);
  for (int round = 1; round <= rounds; ++round) {
    source.signal();
    CFRunLoopWakeUp(runner.loop);
    ASSERT_TRUE(eventually([&] { return performed == round; }));
  }
  EXPECT_EQ(performed, rounds);
  EXPECT_EQ(runner.end(), kCFRunLoopRunStopped);
}

TEST(RunLoopThreads, AddRemoveSignalAndInvalidateWhileTheLoopRuns) {
  const int rounds = stressCount(500);
  Runner runner;
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < rounds; ++round) {
        std::atomic<int> calls{0};
        Source source([&] { ++calls; });
        Timer timer(CFAbsoluteTimeGetCurrent(), 0, [] {});
        CFRunLoopAddSource(runner.loop, source, kCFRunLoopCommonModes);
        CFRunLoopAddTimer(runner.loop, timer, kCFRunLoopDefaultMode);
        source.signal();
        CFRunLoopWakeUp(runner.loop);
        EXPECT_TRUE(eventually([&] { return calls == 1; }));
        CFRunLoopRemoveSource(runner.loop, source, kCFRunLoopDefaultMode);
        CFRunLoopRemoveTimer(runner.loop, timer, kCFRunLoopDefaultMode);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(runner.end(), kCFRunLoopRunStopped);
}

TEST(RunLoopThreads, AddToALoopWhileItsThreadEnds) {
  const int rounds = stressCount(200);
  for (int round = 0; round < rounds; ++round) {
    Source source([] {});
    {
      Runner runner;
      std::thread adding([&] {
        CFRunLoopAddSource(runner.loop, source, kCFRunLoopDefaultMode);
        CFRunLoopSourceInvalidate(source);
      });
      EXPECT_EQ(runner.end(), kCFRunLoopRunStopped);
      adding.join();
    }
    ASSERT_EQ(CFGetRetainCount(source), 1);
  }
}

TEST(RunLoopThreads, MayInvalidateASourceWhileItPerforms) {
  static std::atomic<int> released;
  released = 0;
  struct State {
    Event entered;
    Event invalidated;
    bool releasedMeanwhile = true;
  } state;
  CFRunLoopSourceContext context{};
  context.info = &state;
  context.release = [](const void*) { ++released; };
  context.perform = [](void* info) {
    auto& shared = *static_cast<State*>(info);
    shared.entered.happen();
    EXPECT_TRUE(shared.invalidated.happened());
    shared.releasedMeanwhile = released != 0;
  };
  const CFRunLoopSourceRef source = CFRunLoopSourceCreate(nullptr, 0, &context);
  Runner runner;
  CFRunLoopAddSource(runner.loop, source, kCFRunLoopDefaultMode);
  CFRunLoopSourceSignal(source);
  CFRunLoopWakeUp(runner.loop);
  EXPECT_TRUE(state.entered.happened());
  CFRunLoopSourceInvalidate(source);
  CFRelease(source);
  state.invalidated.happen();
  EXPECT_EQ(runner.end(), kCFRunLoopRunStopped);
  EXPECT_FALSE(state.releasedMeanwhile);
  EXPECT_EQ(released, 1);
}

}  // namespace
