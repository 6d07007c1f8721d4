// Licence: MIT, see LICENSE.
// What a turn does in which order, and that no kind of work starves another.
#include <CoreFoundation/CFMachPort.h>
#include <CoreFoundation/CFRunLoop.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "tests/platform/corefoundation/PortTesting.h"
#include "tests/platform/corefoundation/RunLoopTesting.h"

namespace {

using namespace tests;
using Names = std::vector<std::string>;

class RunLoopOrder : public PortTest {
 protected:
  void observe() { add(observer); }
  long count(const std::string& name) const { return std::count(log.begin(), log.end(), name); }

  Observer observer{kCFRunLoopAllActivities,
                    [this](CFRunLoopActivity activity) { log.push_back(nameOf(activity)); }};
};

TEST_F(RunLoopOrder, OfATurnThatFindsNothing) {
  Source source([] {});
  add(source);
  observe();
  EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  EXPECT_EQ(log, (Names{"entry", "before timers", "before sources", "exit"}));
}

TEST_F(RunLoopOrder, OfATurnWithASignalledSource) {
  Source source(note("source"));
  add(source);
  observe();
  source.signal();
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log, (Names{"entry", "before timers", "before sources", "source", "exit"}));
}

TEST_F(RunLoopOrder, OfATurnThatSleepsUntilATimer) {
  Timer timer(CFAbsoluteTimeGetCurrent() + 0.01, 0, note("timer"));
  add(timer);
  observe();
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_EQ(log, (Names{"entry", "before timers", "before sources", "before waiting",
                        "after waiting", "timer", "exit"}));
}

TEST_F(RunLoopOrder, OfATurnWithAMessageThatIsThereAlready) {
  TestPort port;
  port.onMessage = [&](void*, CFIndex) { log.push_back("port"); };
  observe();
  port.send();
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log, (Names{"entry", "before timers", "before sources", "port", "exit"}));
}

TEST_F(RunLoopOrder, OfATurnThatAMessageWakes) {
  TestPort port;
  port.onMessage = [&](void*, CFIndex) { log.push_back("port"); };
  Observer sender(
      kCFRunLoopBeforeWaiting, [&](CFRunLoopActivity) { port.send(); }, 1);
  add(sender);
  observe();
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log, (Names{"entry", "before timers", "before sources", "before waiting",
                        "after waiting", "port", "exit"}));
}

TEST_F(RunLoopOrder, OfTurnsWithAllKindsOfWork) {
  TestPort port;
  port.onMessage = [&](void*, CFIndex) {
    log.push_back("port");
    CFRunLoopStop(loop);
  };
  Source source(note("source"));
  Timer timer(longAgo(), 0, note("timer"));
  add(source);
  add(timer);
  observe();
  source.signal();
  port.send();
  EXPECT_EQ(run(), kCFRunLoopRunStopped);
  EXPECT_EQ(log,
            (Names{"entry", "before timers", "before sources", "source", "timer", "port", "exit"}));
}

TEST_F(RunLoopOrder, OfANestedRun) {
  const CFStringRef inner = CFSTR("inner");
  Source innerSource(note("inner source"));
  Source source([&] {
    innerSource.signal();
    runForOneSource(inner);
    log.push_back("source");
  });
  add(innerSource, inner);
  add(source);
  add(observer, inner);
  observe();
  source.signal();
  runForOneSource();
  EXPECT_EQ(log, (Names{"entry", "before timers", "before sources", "entry", "before timers",
                        "before sources", "inner source", "exit", "source", "exit"}));
}

TEST_F(RunLoopOrder, TakesAnotherTurnForASourceThatSignalsItself) {
  Source source([&] {
    log.push_back("source");
    if (count("source") < 2) CFRunLoopSourceSignal(source);
    if (count("source") == 2) CFRunLoopStop(loop);
  });
  add(source);
  observe();
  source.signal();
  EXPECT_EQ(run(), kCFRunLoopRunStopped);
  EXPECT_EQ(log, (Names{"entry", "before timers", "before sources", "source", "before timers",
                        "before sources", "source", "exit"}));
}

TEST_F(RunLoopOrder, TakesAnotherTurnForAWakeUpFromACallBack) {
  Source source([&] {
    log.push_back("source");
    CFRunLoopWakeUp(loop);
  });
  Observer stopping(
      kCFRunLoopBeforeSources,
      [&](CFRunLoopActivity) {
        if (count("before sources") == 2) CFRunLoopStop(loop);
      },
      1);
  add(source);
  add(stopping);
  observe();
  source.signal();
  EXPECT_EQ(run(), kCFRunLoopRunStopped);
  EXPECT_EQ(log, (Names{"entry", "before timers", "before sources", "source", "before waiting",
                        "after waiting", "before timers", "before sources", "exit"}));
}

TEST_F(RunLoopOrder, OfSourcesIsTheirsThenThatOfTheirComing) {
  Source last(note("last"), 7);
  Source second(note("second"), -1);
  Source third(note("third"), -1);
  Source first(note("first"), -5);
  for (const Source* source : {&last, &second, &third, &first}) {
    add(*source);
    source->signal();
  }
  Timer end(longAgo(), 0, [&] { CFRunLoopStop(loop); });
  add(end);
  EXPECT_EQ(run(), kCFRunLoopRunStopped);
  EXPECT_EQ(log, (Names{"first", "second", "third", "last"}));
}

TEST_F(RunLoopOrder, OfTimersIsThatOfTheirDates) {
  const CFAbsoluteTime past = longAgo();
  Timer third(past + 3, 0, note("third"));
  Timer first(past + 1, 0, note("first"));
  Timer second(past + 2, 0, note("second"));
  for (const Timer* timer : {&third, &first, &second}) add(*timer);
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_EQ(log, (Names{"first", "second", "third"}));
}

TEST_F(RunLoopOrder, OfObserversIsTheirsThenThatOfTheirComing) {
  Source source([] {});
  add(source);
  const auto noting = [this](const char* name) {
    return [this, name](CFRunLoopActivity) { log.push_back(name); };
  };
  Observer third(kCFRunLoopEntry, noting("third"), 1);
  Observer first(kCFRunLoopEntry, noting("first"), -1);
  Observer fourth(kCFRunLoopEntry, noting("fourth"), 1);
  Observer second(kCFRunLoopEntry, noting("second"), 0);
  for (const Observer* each : {&third, &first, &fourth, &second}) add(*each);
  turn();
  EXPECT_EQ(log, (Names{"first", "second", "third", "fourth"}));
}

TEST_F(RunLoopOrder, OfPortsIsThatOfTheirMessages) {
  TestPort one;
  TestPort two;
  one.onMessage = [&](void*, CFIndex) { log.push_back("one"); };
  two.onMessage = [&](void*, CFIndex) { log.push_back("two"); };
  two.send();
  one.send();
  two.send();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log, (Names{"two", "one", "two"}));
}

TEST_F(RunLoopOrder, ServesOneSourceOrTimerInASingleTurnAfterOneSignalledSource) {
  TestPort port;
  port.onMessage = [&](void*, CFIndex) { log.push_back("port"); };
  Source one(note("source"));
  Source two(note("source"));
  Timer timer(longAgo(), 0, note("timer"));
  for (const Source* source : {&one, &two}) {
    add(*source);
    source->signal();
  }
  add(timer);
  port.send();
  EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  ASSERT_EQ(log.size(), 2u);
  EXPECT_EQ(log[0], "source");
  EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  std::sort(log.begin(), log.end());
  EXPECT_EQ(log, (Names{"port", "source", "source", "timer"}));
}

TEST_F(RunLoopOrder, ServesEverySourceOfEqualOrderThoughOneSignalsItselfForEver) {
  Source greedy([&] {
    log.push_back("greedy");
    CFRunLoopSourceSignal(greedy);
  });
  Source modest(note("modest"));
  add(greedy);
  add(modest);
  greedy.signal();
  modest.signal();
  for (int i = 0; i < 4; ++i) EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(count("modest"), 1);
  EXPECT_EQ(count("greedy"), 3);
}

// A source, a timer and a port that are ready at every moment.
class RunLoopFairness : public RunLoopOrder {
 protected:
  void SetUp() override {
    port.emplace(loop, [this](void*, CFIndex) {
      log.push_back("port");
      port->send();
    });
    add(source);
    add(timer);
    source.signal();
    port->send();
  }
  void TearDown() override {
    port.reset();
    CFRunLoopSourceInvalidate(source);
    CFRunLoopTimerInvalidate(timer);
    RunLoopOrder::TearDown();
  }

  std::optional<TestPort> port;
  Source source{[this] {
    log.push_back("source");
    CFRunLoopSourceSignal(source);
  }};
  Timer timer{longAgo(), 1e-9, note("timer")};
};

TEST_F(RunLoopFairness, ServesEachKindInEveryTurn) {
  int turns = 0;
  Observer counter(kCFRunLoopBeforeTimers, [&](CFRunLoopActivity) {
    if (++turns > 10) CFRunLoopStop(loop);
  });
  add(counter);
  EXPECT_EQ(run(), kCFRunLoopRunStopped);
  EXPECT_EQ(count("source"), 10);
  EXPECT_EQ(count("timer"), 10);
  EXPECT_EQ(count("port"), 10);
}

TEST_F(RunLoopFairness, ServesPortsAndTimersInTurnsWhenOneIsServedATime) {
  for (int i = 0; i < 10; ++i) EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  EXPECT_EQ(count("source"), 10);
  EXPECT_EQ(count("timer"), 5);
  EXPECT_EQ(count("port"), 5);
}

TEST_F(RunLoopFairness, ServesEachKindWhenRunsEndAfterASource) {
  for (int i = 0; i < 10; ++i) EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(count("source"), 10);
  EXPECT_EQ(count("timer"), 10);
  EXPECT_EQ(count("port"), 10);
}

}  // namespace
