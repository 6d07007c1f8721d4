// Licence: MIT, see LICENSE.
// Sources, timers and observers whose call-backs are lambdas, and a fixture that leaves the loop as
// empty as it found it.
#ifndef TESTS_PLATFORM_COREFOUNDATION_RUNLOOPTESTING_H
#define TESTS_PLATFORM_COREFOUNDATION_RUNLOOPTESTING_H

#include <CoreFoundation/CFRunLoop.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tests {

/// How long anything may take before a test fails: far more than it needs on a loaded machine.
inline constexpr CFTimeInterval kPatience = 30;

/// Owns one object and calls `invalidate` on it at its end.
template <typename Ref, void (*invalidate)(Ref)>
class Item {
 public:
  Item() = default;
  Item(const Item&) = delete;
  Item& operator=(const Item&) = delete;
  ~Item() {
    if (object == nullptr) return;
    invalidate(object);
    CFRelease(object);
  }
  operator Ref() const { return object; }

 protected:
  Ref object = nullptr;
};

class Source final : public Item<CFRunLoopSourceRef, CFRunLoopSourceInvalidate> {
 public:
  explicit Source(std::function<void()> onPerform, CFIndex order = 0)
      : action(std::move(onPerform)) {
    CFRunLoopSourceContext context{};
    context.info = this;
    context.perform = [](void* info) { static_cast<Source*>(info)->action(); };
    object = CFRunLoopSourceCreate(nullptr, order, &context);
  }
  void signal() const { CFRunLoopSourceSignal(object); }

 private:
  std::function<void()> action;
};

class Timer final : public Item<CFRunLoopTimerRef, CFRunLoopTimerInvalidate> {
 public:
  Timer(CFAbsoluteTime date, CFTimeInterval interval, std::function<void()> onFire)
      : action(std::move(onFire)) {
    CFRunLoopTimerContext context{};
    context.info = this;
    object = CFRunLoopTimerCreate(
        nullptr, date, interval, 0, 0,
        [](CFRunLoopTimerRef, void* info) { static_cast<Timer*>(info)->action(); }, &context);
  }

 private:
  std::function<void()> action;
};

class Observer final : public Item<CFRunLoopObserverRef, CFRunLoopObserverInvalidate> {
 public:
  using Action = std::function<void(CFRunLoopActivity)>;
  Observer(CFOptionFlags activities, Action onActivity, CFIndex order = 0, bool repeats = true)
      : action(std::move(onActivity)) {
    CFRunLoopObserverContext context{};
    context.info = this;
    object = CFRunLoopObserverCreate(
        nullptr, activities, repeats, order,
        [](CFRunLoopObserverRef, CFRunLoopActivity activity, void* info) {
          static_cast<Observer*>(info)->action(activity);
        },
        &context);
  }

 private:
  Action action;
};

inline std::string nameOf(CFRunLoopActivity activity) {
  switch (activity) {
    case kCFRunLoopEntry:
      return "entry";
    case kCFRunLoopBeforeTimers:
      return "before timers";
    case kCFRunLoopBeforeSources:
      return "before sources";
    case kCFRunLoopBeforeWaiting:
      return "before waiting";
    case kCFRunLoopAfterWaiting:
      return "after waiting";
    case kCFRunLoopExit:
      return "exit";
    default:
      return "unknown";
  }
}

/// A time long past, and one that no test lives to see.
inline CFAbsoluteTime longAgo() { return CFAbsoluteTimeGetCurrent() - 1000; }
inline CFAbsoluteTime muchLater() { return CFAbsoluteTimeGetCurrent() + 1000000; }

/// Works with the current thread's loop, in its default mode if nothing else is said.
class RunLoopTest : public testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(turn(), kCFRunLoopRunFinished) << "the test left something in the loop";
  }

  void add(const Source& source, CFStringRef mode = kCFRunLoopDefaultMode) const {
    CFRunLoopAddSource(loop, source, mode);
  }
  void add(const Timer& timer, CFStringRef mode = kCFRunLoopDefaultMode) const {
    CFRunLoopAddTimer(loop, timer, mode);
  }
  void add(const Observer& observer, CFStringRef mode = kCFRunLoopDefaultMode) const {
    CFRunLoopAddObserver(loop, observer, mode);
  }
  static SInt32 turn(CFStringRef mode = kCFRunLoopDefaultMode) {
    return CFRunLoopRunInMode(mode, 0, false);
  }
  static SInt32 run(CFStringRef mode = kCFRunLoopDefaultMode) {
    return CFRunLoopRunInMode(mode, kPatience, false);
  }
  static SInt32 runForOneSource(CFStringRef mode = kCFRunLoopDefaultMode) {
    return CFRunLoopRunInMode(mode, kPatience, true);
  }
  std::function<void()> note(const std::string& text) {
    return [this, text] { log.push_back(text); };
  }

  const CFRunLoopRef loop = CFRunLoopGetCurrent();
  std::vector<std::string> log;
};

}  // namespace tests

#endif
