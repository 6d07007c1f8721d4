// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFRunLoop.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/corefoundation/RunLoop.h"
#include "platform/corefoundation/RunLoopTimer.h"

namespace platform::corefoundation {

using host::Nanoseconds;

namespace {

constexpr double kSecond = 1e9;
// 36 years: sums of them overflow nowhere, nor does their number of seconds where that has 32 bits.
constexpr double kLongest = 0x1p60;
constexpr Nanoseconds kNever = std::numeric_limits<Nanoseconds>::max();

}  // namespace

Nanoseconds toNanoseconds(CFTimeInterval seconds) {
  if (std::isnan(seconds)) return 0;
  return static_cast<Nanoseconds>(std::clamp(seconds * kSecond, -kLongest, kLongest));
}

RunLoopTimer::RunLoopTimer(CFAbsoluteTime fireDate, CFTimeInterval interval, CFIndex order,
                           CFRunLoopTimerCallBack function, InfoReference info)
    : RunLoopItem(Kind::kTimer, order, std::move(info)),
      period(interval > 0 ? interval : 0),
      callBack(function) {
  startRow(fireDate);
}

CFTypeID RunLoopTimer::type() {
  static const CFTypeID id = registerType("CFRunLoopTimer");
  return id;
}

void RunLoopTimer::startRow(CFAbsoluteTime date) {
  firstDate = date;
  firstTime = host::monotonicNow() + toNanoseconds(date - CFAbsoluteTimeGetCurrent());
  step = 0;
  next = firstTime;
}

void RunLoopTimer::moveBeyond(Nanoseconds now) {
  const double spacing = std::max(period * kSecond, 1.0);
  step = std::max(step, std::floor(static_cast<double>(now - firstTime) / spacing)) + 1;
  const double offset = std::min(step * spacing, kLongest);
  next = std::max(firstTime + static_cast<Nanoseconds>(offset), now + 1);
}

CFAbsoluteTime RunLoopTimer::nextDate() const {
  const std::lock_guard guard(lock);
  return isValid() ? firstDate + step * period : 0;
}

void RunLoopTimer::setNextDate(CFAbsoluteTime date) {
  {
    const std::lock_guard guard(lock);
    if (!isValid()) return;
    startRow(date);
  }
  if (const Held<RunLoop*> loop{retainLoop()}) loop.get()->reconsiderWait();
}

Nanoseconds RunLoopTimer::nextTime() const {
  const std::lock_guard guard(lock);
  return firing || !isValid() ? kNever : next;
}

bool RunLoopTimer::beginFiring(Nanoseconds now) {
  const std::lock_guard guard(lock);
  if (firing || !isValid() || next > now) return false;
  firing = true;
  if (repeats()) moveBeyond(now);
  return true;
}

void RunLoopTimer::fire() {
  if (const InfoReference info = context(); info != nullptr && isValid()) {
    callBack(referenceTo<CFRunLoopTimerRef>(this), info->value());
  }
  {
    const std::lock_guard guard(lock);
    firing = false;
  }
  if (!repeats()) invalidate();
}

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFTypeID CFRunLoopTimerGetTypeID() { return RunLoopTimer::type(); }

CFRunLoopTimerRef CFRunLoopTimerCreate(CFAllocatorRef allocator, CFAbsoluteTime fireDate,
                                       CFTimeInterval interval, CFOptionFlags, CFIndex order,
                                       CFRunLoopTimerCallBack callBack,
                                       CFRunLoopTimerContext* context) {
  InfoReference info = makeContextInfo();
  if (callBack == nullptr || info == nullptr) return nullptr;
  auto* timer = create<RunLoopTimer>(allocator, fireDate, interval, order, callBack, info);
  if (timer != nullptr) info->adopt(context);
  return referenceTo<CFRunLoopTimerRef>(timer);
}

CFAbsoluteTime CFRunLoopTimerGetNextFireDate(CFRunLoopTimerRef reference) {
  const auto* timer = checkedObject<RunLoopTimer>(reference);
  return timer != nullptr ? timer->nextDate() : 0;
}

void CFRunLoopTimerSetNextFireDate(CFRunLoopTimerRef reference, CFAbsoluteTime fireDate) {
  if (auto* timer = checkedObject<RunLoopTimer>(reference)) timer->setNextDate(fireDate);
}

CFTimeInterval CFRunLoopTimerGetInterval(CFRunLoopTimerRef reference) {
  const auto* timer = checkedObject<RunLoopTimer>(reference);
  return timer != nullptr ? timer->interval() : 0;
}

Boolean CFRunLoopTimerDoesRepeat(CFRunLoopTimerRef reference) {
  const auto* timer = checkedObject<RunLoopTimer>(reference);
  return timer != nullptr && timer->repeats();
}

CFIndex CFRunLoopTimerGetOrder(CFRunLoopTimerRef reference) {
  const auto* timer = checkedObject<RunLoopTimer>(reference);
  return timer != nullptr ? timer->order() : 0;
}

void CFRunLoopTimerInvalidate(CFRunLoopTimerRef reference) {
  if (auto* timer = checkedObject<RunLoopTimer>(reference)) timer->invalidate();
}

Boolean CFRunLoopTimerIsValid(CFRunLoopTimerRef reference) {
  const auto* timer = checkedObject<RunLoopTimer>(reference);
  return timer != nullptr && timer->isValid();
}

void CFRunLoopTimerGetContext(CFRunLoopTimerRef reference, CFRunLoopTimerContext* context) {
  const auto* timer = checkedObject<RunLoopTimer>(reference);
  if (timer != nullptr) ContextInfo::copyTo(context, timer->context().get());
}
