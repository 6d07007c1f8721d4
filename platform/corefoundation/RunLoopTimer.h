// Licence: MIT, see LICENSE.
// Timers of run loops. A timer's dates are told by the wall clock but kept on the monotonic one, so
// that setting the clock moves no timer.
#ifndef PLATFORM_COREFOUNDATION_RUNLOOPTIMER_H
#define PLATFORM_COREFOUNDATION_RUNLOOPTIMER_H

#include <CoreFoundation/CFRunLoop.h>

#include "platform/corefoundation/RunLoopItem.h"
#include "platform/host/Clock.h"

namespace platform::corefoundation {

/// Seconds as a span of nanoseconds, as far as it can hold them; 0 for what is no number.
host::Nanoseconds toNanoseconds(CFTimeInterval seconds);

class RunLoopTimer final : public RunLoopItem {
 public:
  RunLoopTimer(CFAbsoluteTime fireDate, CFTimeInterval interval, CFIndex order,
               CFRunLoopTimerCallBack function, InfoReference info);

  static CFTypeID type();
  CFTypeID typeID() const override { return type(); }

  /// 0 if it does not repeat.
  CFTimeInterval interval() const { return period; }
  bool repeats() const { return period > 0; }
  CFAbsoluteTime nextDate() const;
  void setNextDate(CFAbsoluteTime date);

  /// When the timer wants to fire; never while it is firing.
  host::Nanoseconds nextTime() const;
  /// Starts firing and moves on to the first date after `now`. False if it is not due any more.
  bool beginFiring(host::Nanoseconds now);
  /// Calls the program, and ends firing.
  void fire();

 private:
  void startRow(CFAbsoluteTime date);
  void moveBeyond(host::Nanoseconds now);

  const CFTimeInterval period;
  const CFRunLoopTimerCallBack callBack;

  // Guarded by the item's lock. The row's dates are multiples of the period after its first, which
  // is how they do not drift.
  CFAbsoluteTime firstDate = 0;
  host::Nanoseconds firstTime = 0;
  double step = 0;
  host::Nanoseconds next = 0;
  bool firing = false;
};

}  // namespace platform::corefoundation

#endif
