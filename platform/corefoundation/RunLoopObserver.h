// Licence: MIT, see LICENSE.
// Observers of run loops.
#ifndef PLATFORM_COREFOUNDATION_RUNLOOPOBSERVER_H
#define PLATFORM_COREFOUNDATION_RUNLOOPOBSERVER_H

#include <CoreFoundation/CFRunLoop.h>

#include "platform/corefoundation/RunLoopItem.h"

namespace platform::corefoundation {

class RunLoopObserver final : public RunLoopItem {
 public:
  enum class Calls { kOnce, kEveryTime };

  RunLoopObserver(CFOptionFlags activities, Calls howOften, CFIndex order,
                  CFRunLoopObserverCallBack function, InfoReference info);

  static CFTypeID type();
  CFTypeID typeID() const override { return type(); }

  CFOptionFlags activities() const { return wanted; }
  bool repeats() const { return calls == Calls::kEveryTime; }

  /// Starts a call. False if the observer does not want it, or is being called already.
  bool beginCall(CFRunLoopActivity activity);
  /// Calls the program, and ends the call.
  void call(CFRunLoopActivity activity);

 private:
  const CFOptionFlags wanted;
  const Calls calls;
  const CFRunLoopObserverCallBack callBack;
  std::atomic<bool> calling{false};
};

}  // namespace platform::corefoundation

#endif
