// Licence: MIT, see LICENSE.
#include <HIToolbox/CarbonEventsCore.h>

#include <CarbonCore/MacErrors.h>

#include <memory>
#include <thread>

#include "platform/events/EventSource.h"
#include "tests/platform/events/EventFixture.h"

namespace {

using tests::later;
using tests::post;
using tests::TestPort;
using Log = std::vector<std::string>;

class ApplicationLoop : public tests::EventFixture {
 protected:
  /// Has an event write its name down and do something.
  void onEvent(AEEventID eventID, const std::string& name, std::function<void()> action = {}) {
    handle(eventID, [this, name, action] {
      log.push_back(name);
      if (action) action();
      return OSErr{noErr};
    });
  }

  /// Runs the run loop inside a call-back, as an alert does, until it is dismissed.
  void show() {
    log.push_back("show");
    while (!dismissed) CFRunLoopRunInMode(kCFRunLoopDefaultMode, tests::kPatienceSeconds, true);
    log.push_back("dismissed");
  }

  /// Quits, and dismisses what is shown a while later.
  void quit() {
    log.push_back("quit");
    QuitApplicationEventLoop();
    later([this] { dismiss(); }, 0.05);
  }

  void dismiss() {
    dismissed = true;
    CFRunLoopStop(CFRunLoopGetMain());
  }

  bool dismissed = false;
};

TEST_F(ApplicationLoop, ReturnsAtOnceWhenTheQuitCameBefore) {
  onEvent('one ', "one");
  post('one ');
  QuitApplicationEventLoop();
  RunApplicationEventLoop();
  EXPECT_TRUE(log.empty());
}

TEST_F(ApplicationLoop, ForgetsAQuitThatWasHeeded) {
  QuitApplicationEventLoop();
  QuitApplicationEventLoop();
  RunApplicationEventLoop();
  later([this] {
    log.push_back("ran");
    QuitApplicationEventLoop();
  });
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"ran"}));
}

TEST_F(ApplicationLoop, HandlesTheEventsInTheOrderOfTheirArrival) {
  onEvent('one ', "one");
  onEvent('two ', "two");
  onEvent('quit', "quit", QuitApplicationEventLoop);
  for (const AEEventID id : {'two ', 'one ', 'two ', 'quit'}) post(id);
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"two", "one", "two", "quit"}));
}

TEST_F(ApplicationLoop, LeavesEventsBehindTheQuitInTheQueue) {
  onEvent('quit', "quit", QuitApplicationEventLoop);
  onEvent('one ', "one");
  post('quit');
  post('one ');
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"quit"}));
  EXPECT_EQ(takeAll(), (std::vector<AEEventID>{'one '}));
}

TEST_F(ApplicationLoop, GoesOnAfterAnEventThatNobodyHandles) {
  onEvent('quit', "quit", QuitApplicationEventLoop);
  post('nobo');
  post('quit');
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"quit"}));
}

TEST_F(ApplicationLoop, ServesPortsAndEventsInTheOrderOfTheirArrival) {
  TestPort port([this] { log.push_back("port"); });
  onEvent('one ', "one");
  onEvent('quit', "quit", QuitApplicationEventLoop);
  port.send();
  post('one ');
  port.send();
  post('one ');
  port.send();
  post('quit');
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"port", "one", "port", "one", "port", "quit"}));
}

TEST_F(ApplicationLoop, IsWokenByAQuitOfAnotherThread) {
  std::thread quitter;
  later([&] { quitter = std::thread(QuitApplicationEventLoop); });
  RunApplicationEventLoop();
  quitter.join();
}

TEST_F(ApplicationLoop, IsEndedByAMessageOfAPort) {
  TestPort port(QuitApplicationEventLoop);
  port.send();
  RunApplicationEventLoop();
}

TEST_F(ApplicationLoop, QuitInsideAHandlersRunLoopLastsUntilThatHasEnded) {
  onEvent('show', "event", [this] { show(); });
  TestPort port([this] { quit(); });
  post('show');
  port.send();
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"event", "show", "quit", "dismissed"}));
}

TEST_F(ApplicationLoop, QuitInsideAPortsRunLoopLastsUntilThatHasEnded) {
  TestPort quitPort([this] { quit(); });
  TestPort showPort([&] {
    quitPort.send();
    show();
  });
  showPort.send();
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"show", "quit", "dismissed"}));
}

// A timer's call does not end a pass of the run loop, and the signal that a quit sends is used up
// by the run inside.
TEST_F(ApplicationLoop, QuitInsideATimersRunLoopLastsUntilThatHasEnded) {
  TestPort quitPort([this] { quit(); });
  later([&] {
    quitPort.send();
    show();
  });
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"show", "quit", "dismissed"}));
}

TEST_F(ApplicationLoop, QuitInADeepRunLoopLastsUntilAllHaveEnded) {
  TestPort quitPort([this] { quit(); });
  TestPort showPort([&] {
    quitPort.send();
    show();
  });
  onEvent('show', "event", [&] {
    showPort.send();
    show();
  });
  post('show');
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"event", "show", "show", "quit", "dismissed", "dismissed"}));
}

/// Counts the turns that the main run loop takes.
class TurnCounter final {
 public:
  TurnCounter() {
    CFRunLoopObserverContext context = {0, &turns, nullptr, nullptr, nullptr};
    observer = CFRunLoopObserverCreate(nullptr, kCFRunLoopBeforeTimers, true, 0, &count, &context);
    CFRunLoopAddObserver(CFRunLoopGetMain(), observer, kCFRunLoopDefaultMode);
  }
  ~TurnCounter() {
    CFRunLoopObserverInvalidate(observer);
    CFRelease(observer);
  }
  int turns = 0;

 private:
  static void count(CFRunLoopObserverRef, CFRunLoopActivity, void* info) {
    ++*static_cast<int*>(info);
  }
  CFRunLoopObserverRef observer;
};

TEST_F(ApplicationLoop, LetsARunLoopInsideSleepAfterTheQuit) {
  int turns = 0;
  onEvent('show', "event", [&] {
    const TurnCounter counter;
    quit();
    show();
    turns = counter.turns;
  });
  post('show');
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"event", "quit", "show", "dismissed"}));
  EXPECT_LE(turns, 6);
}

TEST_F(ApplicationLoop, SleepsWhenItHasNothingToDo) {
  const TurnCounter counter;
  later(QuitApplicationEventLoop, 0.05);
  RunApplicationEventLoop();
  EXPECT_LE(counter.turns, 6);
}

TEST_F(ApplicationLoop, KeepsEventsInTheQueueWhileAHandlerRunsALoopInside) {
  onEvent('show', "event", [this] {
    post('one ');
    later([this] { dismiss(); });
    show();
    log.push_back(EventAvail(highLevelEventMask, nullptr) ? "waits" : "lost");
  });
  onEvent('one ', "one", QuitApplicationEventLoop);
  post('show');
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"event", "show", "dismissed", "waits", "one"}));
}

TEST_F(ApplicationLoop, HandlesQueuedEventsBeforeWhatAPortGetsLater) {
  const auto& queue = platform::events::EventSource::prepared().events();
  TestPort port([this] { log.push_back("port"); });
  onEvent('show', "event", [&] {
    for (const AEEventID id : {'one ', 'one ', 'quit'}) post(id);
    tests::runUntil([&] { return queue.size() == 3; });
    port.send();
  });
  onEvent('one ', "one");
  onEvent('quit', "quit", QuitApplicationEventLoop);
  post('show');
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"event", "one", "one", "quit"}));
}

TEST_F(ApplicationLoop, ServesEventsHoweverBusyAPortIs) {
  TestPort* self = nullptr;
  TestPort port([&] { self->send(); });
  self = &port;
  int handled = 0;
  onEvent('next', "next", [&] {
    if (++handled == 100) return QuitApplicationEventLoop();
    post('next');
  });
  port.send();
  post('next');
  RunApplicationEventLoop();
  EXPECT_EQ(handled, 100);
}

TEST_F(ApplicationLoop, ServesAPortHoweverManyEventsCome) {
  int served = 0;
  TestPort* self = nullptr;
  TestPort port([&] {
    if (++served == 3) return QuitApplicationEventLoop();
    self->send();
  });
  self = &port;
  // Looking brings the new event into the queue before the port gets its turn.
  onEvent('next', "next", [&] {
    post('next');
    EventAvail(highLevelEventMask, nullptr);
  });
  port.send();
  post('next');
  RunApplicationEventLoop();
  EXPECT_EQ(served, 3);
}

TEST_F(ApplicationLoop, MayRunInsideItselfAndIsThenQuitOneAtATime) {
  onEvent('show', "show", [this] {
    RunApplicationEventLoop();
    log.push_back("inner ended");
    later([this] {
      log.push_back("outer");
      QuitApplicationEventLoop();
    });
  });
  onEvent('quit', "quit", QuitApplicationEventLoop);
  post('show');
  post('quit');
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"show", "quit", "inner ended", "outer"}));
}

TEST_F(ApplicationLoop, GoesOnWhenSomebodyStopsTheRunLoop) {
  later([this] {
    CFRunLoopStop(CFRunLoopGetMain());
    log.push_back("stopped");
    later([this] {
      log.push_back("later");
      QuitApplicationEventLoop();
    });
  });
  RunApplicationEventLoop();
  EXPECT_EQ(log, (Log{"stopped", "later"}));
}

}  // namespace
