// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFRunLoop.h>

#include <new>
#include <utility>
#include <vector>

#include "platform/corefoundation/RunLoop.h"
#include "platform/host/ThreadIdentity.h"

namespace platform::corefoundation {

namespace {

constinit thread_local RunLoop* tLoop = nullptr;
constinit thread_local bool tEnded = false;

// Ends the loop of a thread other than the first with its thread. Functions that run later at the
// thread's end find no loop.
struct ThreadEnd {
  ~ThreadEnd() {
    tLoop->end();
    tEnded = true;
    std::exchange(tLoop, nullptr)->release();
  }
};

// Calls a function of a loop that may need memory; without it, gives what stands for that.
template <typename Function, typename Value>
Value guarded(Function function, Value withoutMemory) {
  try {
    return function();
  } catch (const std::bad_alloc&) {
    return withoutMemory;
  }
}

template <typename Item>
Boolean contains(CFRunLoopRef runLoop, CFTypeRef reference, CFStringRef mode) {
  const auto* loop = checkedObject<RunLoop>(runLoop);
  const auto* item = checkedObject<Item>(reference);
  return loop != nullptr && item != nullptr && mode != nullptr && loop->contains(*item, mode);
}

template <typename Item>
void remove(CFRunLoopRef runLoop, CFTypeRef reference, CFStringRef mode) {
  auto* loop = checkedObject<RunLoop>(runLoop);
  auto* item = checkedObject<Item>(reference);
  if (loop == nullptr || item == nullptr || mode == nullptr) return;
  const Held<Item*> duringTheCall = Held<Item*>::retaining(item);
  loop->remove(*item, mode);
}

template <typename Item>
void add(CFRunLoopRef runLoop, CFTypeRef reference, CFStringRef mode) {
  auto* loop = checkedObject<RunLoop>(runLoop);
  auto* item = checkedObject<Item>(reference);
  if (loop == nullptr || item == nullptr || mode == nullptr) return;
  try {
    loop->add(*item, mode);
  } catch (const std::bad_alloc&) {
    loop->remove(*item, mode);
  }
}

SInt32 runCurrent(CFStringRef mode, const RunLoop::Limits& limits) {
  RunLoop* loop = currentRunLoop();
  if (loop == nullptr || mode == nullptr) return kCFRunLoopRunFinished;
  return loop->run(mode, limits);
}

}  // namespace

RunLoop* mainRunLoop() {
  static RunLoop* const loop = RunLoop::make();
  return loop;
}

RunLoop* currentRunLoop() {
  if (tLoop != nullptr || tEnded) return tLoop;
  if (host::onFirstThread()) return tLoop = mainRunLoop();
  tLoop = RunLoop::make();
  if (tLoop != nullptr) thread_local const ThreadEnd atThreadEnd;
  return tLoop;
}

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

const CFStringRef kCFRunLoopDefaultMode = CFSTR("kCFRunLoopDefaultMode");
const CFStringRef kCFRunLoopCommonModes = CFSTR("kCFRunLoopCommonModes");

CFTypeID CFRunLoopGetTypeID() { return RunLoop::type(); }

CFRunLoopRef CFRunLoopGetCurrent() { return referenceTo<CFRunLoopRef>(currentRunLoop()); }

CFRunLoopRef CFRunLoopGetMain() { return referenceTo<CFRunLoopRef>(mainRunLoop()); }

void CFRunLoopRun() { runCurrent(kCFRunLoopDefaultMode, {}); }

SInt32 CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds,
                          Boolean returnAfterSourceHandled) {
  RunLoop::Limits limits;
  limits.oneTurn = !(seconds > 0);
  limits.oneSource = returnAfterSourceHandled;
  if (!limits.oneTurn) limits.deadline = platform::host::Deadline::after(toNanoseconds(seconds));
  return runCurrent(mode, limits);
}

void CFRunLoopStop(CFRunLoopRef runLoop) {
  if (auto* loop = checkedObject<RunLoop>(runLoop)) loop->stop();
}

void CFRunLoopWakeUp(CFRunLoopRef runLoop) {
  if (auto* loop = checkedObject<RunLoop>(runLoop)) loop->wakeUp();
}

Boolean CFRunLoopIsWaiting(CFRunLoopRef runLoop) {
  const auto* loop = checkedObject<RunLoop>(runLoop);
  return loop != nullptr && loop->isWaiting();
}

CFStringRef CFRunLoopCopyCurrentMode(CFRunLoopRef runLoop) {
  const auto* loop = checkedObject<RunLoop>(runLoop);
  return loop != nullptr ? loop->currentMode().take() : nullptr;
}

CFArrayRef CFRunLoopCopyAllModes(CFRunLoopRef runLoop) {
  const auto* loop = checkedObject<RunLoop>(runLoop);
  if (loop == nullptr) return nullptr;
  const auto copyNames = [loop]() -> CFArrayRef {
    const std::vector<Held<CFStringRef>> names = loop->modeNames();
    std::vector<const void*> values;
    for (const auto& name : names) values.push_back(name.get());
    return CFArrayCreate(nullptr, values.data(), static_cast<CFIndex>(values.size()),
                         &kCFTypeArrayCallBacks);
  };
  return guarded(copyNames, CFArrayRef{nullptr});
}

void CFRunLoopAddCommonMode(CFRunLoopRef runLoop, CFStringRef mode) {
  auto* loop = checkedObject<RunLoop>(runLoop);
  if (loop == nullptr || mode == nullptr) return;
  guarded([&] { return loop->addCommonMode(mode), true; }, false);
}

CFAbsoluteTime CFRunLoopGetNextTimerFireDate(CFRunLoopRef runLoop, CFStringRef mode) {
  const auto* loop = checkedObject<RunLoop>(runLoop);
  return loop != nullptr && mode != nullptr ? loop->nextTimerDate(mode) : 0;
}

Boolean CFRunLoopContainsSource(CFRunLoopRef runLoop, CFRunLoopSourceRef source, CFStringRef mode) {
  return contains<RunLoopSource>(runLoop, source, mode);
}

void CFRunLoopAddSource(CFRunLoopRef runLoop, CFRunLoopSourceRef source, CFStringRef mode) {
  add<RunLoopSource>(runLoop, source, mode);
}

void CFRunLoopRemoveSource(CFRunLoopRef runLoop, CFRunLoopSourceRef source, CFStringRef mode) {
  remove<RunLoopSource>(runLoop, source, mode);
}

Boolean CFRunLoopContainsObserver(CFRunLoopRef runLoop, CFRunLoopObserverRef observer,
                                  CFStringRef mode) {
  return contains<RunLoopObserver>(runLoop, observer, mode);
}

void CFRunLoopAddObserver(CFRunLoopRef runLoop, CFRunLoopObserverRef observer, CFStringRef mode) {
  add<RunLoopObserver>(runLoop, observer, mode);
}

void CFRunLoopRemoveObserver(CFRunLoopRef runLoop, CFRunLoopObserverRef observer,
                             CFStringRef mode) {
  remove<RunLoopObserver>(runLoop, observer, mode);
}

Boolean CFRunLoopContainsTimer(CFRunLoopRef runLoop, CFRunLoopTimerRef timer, CFStringRef mode) {
  return contains<RunLoopTimer>(runLoop, timer, mode);
}

void CFRunLoopAddTimer(CFRunLoopRef runLoop, CFRunLoopTimerRef timer, CFStringRef mode) {
  add<RunLoopTimer>(runLoop, timer, mode);
}

void CFRunLoopRemoveTimer(CFRunLoopRef runLoop, CFRunLoopTimerRef timer, CFStringRef mode) {
  remove<RunLoopTimer>(runLoop, timer, mode);
}
