// Licence: MIT, see LICENSE.
// How a run loop runs. One turn:
//
//   1. tells observers: before timers, before sources
//   2. performs the version-0 sources that are signalled
//   3. looks whether a message has been taken in; if none is and nothing else forbids it, tells
//      observers, sleeps (until a message, a wake-up, the next timer or the end of the run), and
//      tells them again
//   4. reads the clock; fires the timers that are due, and serves one message
//
// Each kind has its place in every turn, so that none can starve another; ports among each other
// are served in the order in which their messages came. What asks for a turn from outside leaves a
// mark that is looked at before sleeping (a signal, `woken`, a stop), and then wakes the sleeper:
// nothing that comes in between is slept over.
#include <algorithm>

#include "platform/corefoundation/RunLoop.h"

namespace platform::corefoundation {

using host::Deadline;
using host::Nanoseconds;
using Outcome = mach::PortSet::Outcome;

namespace {

constexpr SInt32 kGoOn = 0;

}  // namespace

SInt32 RunLoop::run(CFStringRef name, const Limits& limits) {
  Lock held(lock);
  if (stopPending) {
    stopPending = false;
    return kCFRunLoopRunStopped;
  }
  RunLoopMode* mode = findMode(name);
  if (mode == nullptr || mode->isEmpty()) return kCFRunLoopRunFinished;
  Activation self{*mode, limits, innermost};
  innermost = &self;
  held.unlock();

  notify(*mode, kCFRunLoopEntry);
  SInt32 result = kGoOn;
  while (result == kGoOn) result = turn(self);
  notify(*mode, kCFRunLoopExit);

  held.lock();
  innermost = self.outer;
  return self.stopped ? SInt32{kCFRunLoopRunStopped} : result;
}

SInt32 RunLoop::turn(Activation& run) {
  const RunLoopMode::Turn number = startTurn();
  notify(run.mode, kCFRunLoopBeforeTimers);
  notify(run.mode, kCFRunLoopBeforeSources);
  bool handledSource = serveSignalledSources(run, number);

  mach_port_name_t port = MACH_PORT_NULL;
  bool portIsReady = false;
  if (!isStopped(run)) {
    const bool mayWait = maySleep(run, handledSource);
    portIsReady = findMessage(run.mode, port, mayWait ? Looking::kHere : Looking::kEverywhere);
    if (!portIsReady && mayWait) portIsReady = sleep(run, port);
  }

  const Nanoseconds now = host::monotonicNow();
  const bool portComesFirst = portIsReady && run.limits.oneTurn && timerServedLast;
  const bool firedTimer = !portComesFirst && serveTimers(run, number, now);
  timerServedLast = firedTimer;
  if (portIsReady && !isStopped(run) && !(firedTimer && run.limits.oneTurn)) {
    handledSource |= servePort(run.mode, port);
  }
  return resultOf(run, handledSource, now);
}

RunLoopMode::Turn RunLoop::startTurn() {
  const Lock held(lock);
  // A wake-up asks for a turn that begins after it: this one.
  woken = false;
  return ++lastTurn;
}

bool RunLoop::serveSignalledSources(Activation& run, RunLoopMode::Turn number) {
  const bool onlyOne = run.limits.oneTurn || run.limits.oneSource;
  const auto choice = onlyOne ? RunLoopMode::Choice::kFairly : RunLoopMode::Choice::kInOrder;
  const auto next = [&] {
    const Lock held(lock);
    return run.stopped ? Held<RunLoopSource*>() : run.mode.takeSignalled(number, choice);
  };
  bool served = false;
  while (!(served && onlyOne)) {
    const Held<RunLoopSource*> source = next();
    if (!source) break;
    source.get()->perform();
    served = true;
  }
  return served;
}

bool RunLoop::serveTimers(Activation& run, RunLoopMode::Turn number, Nanoseconds now) {
  const auto next = [&] {
    const Lock held(lock);
    return run.stopped ? Held<RunLoopTimer*>() : run.mode.takeDueTimer(number, now);
  };
  bool served = false;
  while (!(served && run.limits.oneTurn)) {
    const Held<RunLoopTimer*> timer = next();
    if (!timer) break;
    timer.get()->fire();
    served = true;
  }
  return served;
}

// Before a wait only what has been taken in counts: the wait finds the rest as fast, and asking the
// host twice for each message is dear.
bool RunLoop::findMessage(RunLoopMode& mode, mach_port_name_t& port, Looking looking) {
  Outcome outcome;
  do {
    // A wake-up that came as the last sleep ended for another reason is still in the set.
    outcome = looking == Looking::kHere ? mode.ports().glance(port)
                                        : mode.ports().wait(port, Deadline::immediate());
  } while (outcome == Outcome::kWoken);
  return outcome == Outcome::kMessage;
}

bool RunLoop::servePort(RunLoopMode& mode, mach_port_name_t port) {
  const auto found = [&] {
    const Lock held(lock);
    return mode.sourceOf(port);
  };
  const Held<RunLoopSource*> source = found();
  return source && source.get()->serve(port);
}

bool RunLoop::maySleep(Activation& run, bool handledSource) const {
  if (run.limits.oneTurn || (run.limits.oneSource && handledSource)) return false;
  const Lock held(lock);
  return !run.mode.isEmpty() && !run.mode.hasSignalledSource();
}

bool RunLoop::sleep(Activation& run, mach_port_name_t& port) {
  notify(run.mode, kCFRunLoopBeforeWaiting);
  Lock held(lock);
  const Deadline end = endOfSleep(run);
  if (!end.isImmediate()) sleepingOn = &run.mode.ports();
  held.unlock();
  const Outcome outcome = run.mode.ports().wait(port, end);
  held.lock();
  sleepingOn = nullptr;
  held.unlock();
  notify(run.mode, kCFRunLoopAfterWaiting);
  return outcome == Outcome::kMessage;
}

Deadline RunLoop::endOfSleep(const Activation& run) const {
  if (woken || run.stopped || run.mode.isEmpty() || run.mode.hasSignalledSource()) {
    return Deadline::immediate();
  }
  const Deadline nextTimer = Deadline::at(std::max<Nanoseconds>(run.mode.nextTimerTime(), 1));
  return std::min(nextTimer, run.limits.deadline);
}

SInt32 RunLoop::resultOf(const Activation& run, bool handledSource, Nanoseconds now) const {
  const Lock held(lock);
  if (run.stopped) return kCFRunLoopRunStopped;
  if (run.limits.oneSource && handledSource) return kCFRunLoopRunHandledSource;
  if (run.limits.oneTurn || now >= run.limits.deadline.time()) return kCFRunLoopRunTimedOut;
  return run.mode.isEmpty() ? SInt32{kCFRunLoopRunFinished} : kGoOn;
}

void RunLoop::notify(RunLoopMode& mode, CFRunLoopActivity activity) {
  if (!mode.isObserved(activity)) return;
  RunLoopMode::Progress progress;
  const auto next = [&] {
    const Lock held(lock);
    return mode.takeObserver(progress, activity);
  };
  while (const Held<RunLoopObserver*> observer = next()) observer.get()->call(activity);
}

// Asked from any thread.

bool RunLoop::isStopped(const Activation& run) const {
  const Lock held(lock);
  return run.stopped;
}

void RunLoop::stop() {
  const Lock held(lock);
  if (innermost != nullptr) {
    innermost->stopped = true;
  } else {
    stopPending = true;
  }
  wakeHolding(held);
}

void RunLoop::wakeUp() {
  const Lock held(lock);
  wakeHolding(held);
}

void RunLoop::wakeHolding(const Lock&) {
  if (woken) return;
  woken = true;
  if (sleepingOn != nullptr) sleepingOn->wake();
}

void RunLoop::reconsiderWait() {
  const Lock held(lock);
  if (sleepingOn != nullptr) wakeHolding(held);
}

bool RunLoop::isWaiting() const {
  const Lock held(lock);
  return sleepingOn != nullptr;
}

Held<CFStringRef> RunLoop::currentMode() const {
  const Lock held(lock);
  if (innermost == nullptr) return {};
  return Held<CFStringRef>::retaining(innermost->mode.name());
}

}  // namespace platform::corefoundation
