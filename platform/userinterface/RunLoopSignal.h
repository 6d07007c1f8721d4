// Licence: MIT, see LICENSE.
// A way for any thread to make a run loop take notice.
#ifndef PLATFORM_USERINTERFACE_RUNLOOPSIGNAL_H
#define PLATFORM_USERINTERFACE_RUNLOOPSIGNAL_H

#include <CoreFoundation/CFRunLoop.h>

#include "platform/corefoundation/CFRuntime.h"

namespace platform::userinterface {

/// A source in the default mode of a loop, there as long as the object is. Any thread may raise it;
/// it is made and destroyed on the loop's thread, or where no raise can happen at the same time.
class RunLoopSignal final {
 public:
  /// What the loop is to do when the signal was raised; nothing but end its present wait if null.
  using Reaction = void (*)();

  explicit RunLoopSignal(CFRunLoopRef notified, Reaction reaction = nullptr)
      : loop(corefoundation::Held<CFRunLoopRef>::retaining(notified)) {
    CFRunLoopSourceContext context{};
    context.info = reinterpret_cast<void*>(reaction);
    context.perform = perform;
    source = corefoundation::Held<CFRunLoopSourceRef>(
        CFRunLoopSourceCreate(kCFAllocatorDefault, 0, &context));
    CFRunLoopAddSource(loop.get(), source.get(), kCFRunLoopDefaultMode);
  }
  ~RunLoopSignal() { CFRunLoopSourceInvalidate(source.get()); }
  RunLoopSignal(const RunLoopSignal&) = delete;
  RunLoopSignal& operator=(const RunLoopSignal&) = delete;

  /// False if there was no memory for it.
  explicit operator bool() const { return static_cast<bool>(source); }

  void raise() {
    CFRunLoopSourceSignal(source.get());
    CFRunLoopWakeUp(loop.get());
  }

 private:
  static void perform(void* info) {
    if (info != nullptr) reinterpret_cast<Reaction>(info)();
  }

  corefoundation::Held<CFRunLoopRef> loop;
  corefoundation::Held<CFRunLoopSourceRef> source;
};

}  // namespace platform::userinterface

#endif
