// Licence: MIT, see LICENSE.
//
// Quitting must end the pass of the application's event loop, but no other run of the main run
// loop: a call-back that shows an alert runs the loop inside, and that run lasts until the alert is
// dismissed. So quitting stops nothing. It sets a flag and signals a source of ours that does
// nothing, which ends the pass as any source does. Where a run inside serves the source instead,
// the signal is lost on the pass; therefore the pass, before it would sleep, signals again while
// the flag is set. An observer tells that moment, and knows by the number of runs whether it is our
// pass that is about to sleep or a run inside it.
#include "platform/events/EventLoop.h"

#include <utility>

#include "platform/events/InteractionTurn.h"

namespace platform::events {

EventLoop& EventLoop::main() {
  static EventLoop& instance = *new EventLoop;  // other threads may quit while the process exits
  return instance;
}

EventLoop::EventLoop() {
  const CFRunLoopRef loop = CFRunLoopGetMain();
  CFRunLoopSourceContext sourceContext = {};
  sourceContext.info = this;
  sourceContext.perform = &EventLoop::perform;
  source =
      corefoundation::Held<CFRunLoopSourceRef>(CFRunLoopSourceCreate(nullptr, 0, &sourceContext));
  CFRunLoopAddSource(loop, source.get(), kCFRunLoopDefaultMode);

  CFRunLoopObserverContext observerContext = {};
  observerContext.info = this;
  const corefoundation::Held<CFRunLoopObserverRef> observer(
      CFRunLoopObserverCreate(nullptr, kCFRunLoopEntry | kCFRunLoopBeforeWaiting | kCFRunLoopExit,
                              true, 0, &EventLoop::observe, &observerContext));
  CFRunLoopAddObserver(loop, observer.get(), kCFRunLoopDefaultMode);
}

void EventLoop::perform(void*) {}

void EventLoop::observe(CFRunLoopObserverRef, CFRunLoopActivity activity, void* info) {
  EventLoop& self = *static_cast<EventLoop*>(info);
  if (activity == kCFRunLoopEntry) {
    ++self.depth;
  } else if (activity == kCFRunLoopExit) {
    --self.depth;
  } else {
    self.beforeWaiting();
  }
}

void EventLoop::beforeWaiting() {
  if (depth != current.depth) return;
  InteractionTurn::ours().loopIsIdle();
  if (quitting && current.onQuit == OnQuit::kReturn) wake();
}

void EventLoop::wake() {
  CFRunLoopSourceSignal(source.get());
  CFRunLoopWakeUp(CFRunLoopGetMain());
}

void EventLoop::quit() {
  quitting = true;
  wake();
}

void EventLoop::pass(CFTimeInterval seconds, OnQuit onQuit) {
  const Pass outer = std::exchange(current, {depth + 1, onQuit});
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, seconds, true);
  current = outer;
}

}  // namespace platform::events
