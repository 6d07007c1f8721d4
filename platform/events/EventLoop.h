// Licence: MIT, see LICENSE.
// How the main thread waits: passes of the main run loop in its default mode, each of which ends
// when something was served.
#ifndef PLATFORM_EVENTS_EVENTLOOP_H
#define PLATFORM_EVENTS_EVENTLOOP_H

#include <CoreFoundation/CFRunLoop.h>

#include <atomic>
#include <limits>

#include "platform/corefoundation/CFRuntime.h"

namespace platform::events {

class EventLoop final {
 public:
  static EventLoop& main();

  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  /// Whether a request to quit has ended a pass or keeps the next from sleeping.
  enum class OnQuit { kReturn, kIgnore };

  /// Runs until a source was served or the time is over; the turn at interacting with the user that
  /// nothing has used ends when it would sleep.
  void pass(CFTimeInterval seconds, OnQuit onQuit);

  /// Any thread.
  void quit();
  bool isQuitting() const { return quitting; }
  void quitDone() { quitting = false; }

 private:
  /// The pass that is under way in the innermost loop of ours, and how many run loops it runs
  /// inside.
  struct Pass {
    int depth;
    OnQuit onQuit;
  };
  static constexpr Pass kNoPass = {std::numeric_limits<int>::min(), OnQuit::kIgnore};

  EventLoop();
  void wake();
  void beforeWaiting();
  static void observe(CFRunLoopObserverRef observer, CFRunLoopActivity activity, void* info);
  static void perform(void* info);

  corefoundation::Held<CFRunLoopSourceRef> source;
  std::atomic<bool> quitting = false;
  int depth = 0;
  Pass current = kNoPass;
};

/// A number of seconds that no pass outlasts.
inline constexpr CFTimeInterval kForever = 1.0e10;

}  // namespace platform::events

#endif
