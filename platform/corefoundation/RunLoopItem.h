// Licence: MIT, see LICENSE.
// What the sources, timers and observers of run loops have in common.
//
// Locks: a loop's lock is taken before an item's. Neither is held while a function of the program
// is called, nor while a reference is given up, since that may be the last one.
#ifndef PLATFORM_COREFOUNDATION_RUNLOOPITEM_H
#define PLATFORM_COREFOUNDATION_RUNLOOPITEM_H

#include <mach/port.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/corefoundation/CFRuntime.h"

namespace platform::corefoundation {

class RunLoop;

/// The info of a context. Whoever calls back with it shares it, so that it outlives the call.
class ContextInfo final {
 public:
  ContextInfo() = default;
  ~ContextInfo();
  ContextInfo(const ContextInfo&) = delete;
  ContextInfo& operator=(const ContextInfo&) = delete;

  /// Takes a context's info over, retained as the context says. Null is a context without anything.
  template <typename Context>
  void adopt(const Context* context) {
    if (context == nullptr) return;
    info = context->info;
    retain = context->retain;
    release = context->release;
    describe = context->copyDescription;
    if (retain != nullptr) info = const_cast<void*>(retain(info));
  }

  /// Leaves the info to whoever gave it, as if it had not been adopted.
  void disown() {
    if (retain == nullptr) release = nullptr;
  }

  /// Fills in what `adopt` took. Null stands for an info that has been given up.
  template <typename Context>
  static void copyTo(Context* context, const ContextInfo* from) {
    if (context == nullptr) return;
    *context = {};
    if (from == nullptr) return;
    context->info = from->info;
    context->retain = from->retain;
    context->release = from->release;
    context->copyDescription = from->describe;
  }

  void* value() const { return info; }
  bool isReleased() const { return release != nullptr; }
  CFStringRef copyDescription() const;

 private:
  void* info = nullptr;
  const void* (*retain)(const void*) = nullptr;
  void (*release)(const void*) = nullptr;
  CFStringRef (*describe)(const void*) = nullptr;
};
using InfoReference = std::shared_ptr<ContextInfo>;
/// Null if there is no memory.
InfoReference makeContextInfo() noexcept;

/// "<CFRunLoopTimer 0x1234 {what the context's function says of the info}>", owned by the caller.
CFStringRef copyDescriptionWith(const Object* object, const ContextInfo* info);

class RunLoopItem : public Object {
 public:
  enum class Kind { kSource, kTimer, kObserver };

  Kind kind() const { return itemKind; }
  CFIndex order() const { return itemOrder; }
  bool isValid() const { return valid; }
  void invalidate();
  CFStringRef copyDescription() const override;

  /// The info for a call-back, null once it has been given up.
  InfoReference context() const;

  // For run loops, with their lock held.
  /// Notes that a loop has the item. False if it must not: the item is invalid, or another loop's.
  bool join(RunLoop& loop);
  void leave(RunLoop& loop);

  // For run loops, without any lock.
  /// The port that shall wake the loop.
  virtual mach_port_t port() const { return MACH_PORT_NULL; }
  virtual void joinedMode(RunLoop&, CFStringRef) {}
  virtual void leftMode(RunLoop&, CFStringRef) {}

 protected:
  RunLoopItem(Kind kind, CFIndex order, InfoReference info);
  /// A loop that has the item, with a reference, or null.
  RunLoop* retainLoop() const;

  mutable std::mutex lock;

 private:
  const Kind itemKind;
  const CFIndex itemOrder;
  std::atomic<bool> valid{true};  // changes under the lock
  InfoReference sharedInfo;
  std::vector<RunLoop*> loops;  // not retained: each takes its items out before it ends
};

}  // namespace platform::corefoundation

#endif
