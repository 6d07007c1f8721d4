// Licence: MIT, see LICENSE.
// The run loop of one thread. Its contents may be changed from any thread; it is run by its own
// only.
#ifndef PLATFORM_COREFOUNDATION_RUNLOOP_H
#define PLATFORM_COREFOUNDATION_RUNLOOP_H

#include <CoreFoundation/CFRunLoop.h>

#include <memory>
#include <mutex>
#include <vector>

#include "platform/corefoundation/RunLoopItem.h"
#include "platform/corefoundation/RunLoopMode.h"
#include "platform/host/Clock.h"

namespace platform::corefoundation {

class RunLoop final : public Object {
 public:
  static CFTypeID type();
  CFTypeID typeID() const override { return type(); }

  /// A loop for the calling thread, or null if there is no memory.
  static RunLoop* make();
  /// The end of its thread: takes everything out, for good.
  void end();

  // Contents. Adding throws std::bad_alloc and may then have added to some of the common modes.
  void add(RunLoopItem& item, CFStringRef mode);
  void remove(RunLoopItem& item, CFStringRef mode);
  /// Also from the common modes.
  void removeEverywhere(RunLoopItem& item);
  bool contains(const RunLoopItem& item, CFStringRef mode) const;
  void addCommonMode(CFStringRef mode);
  /// The names of the modes, each with a reference.
  std::vector<Held<CFStringRef>> modeNames() const;
  CFAbsoluteTime nextTimerDate(CFStringRef mode) const;

  // Running.
  struct Limits {
    host::Deadline deadline = host::Deadline::never();
    bool oneTurn = false;    // which serves one source or timer, and does not sleep
    bool oneSource = false;  // ends after a turn that served a source
  };
  SInt32 run(CFStringRef mode, const Limits& limits);
  void stop();
  void wakeUp();
  /// Has a sleeping loop find out again how long to sleep.
  void reconsiderWait();
  bool isWaiting() const;
  /// Null if it does not run.
  Held<CFStringRef> currentMode() const;

 private:
  template <typename T, typename... Arguments>
  friend T* createWithSpace(CFAllocatorRef allocator, std::size_t space, Arguments&&... arguments);

  /// A run that has not ended; call-backs nest them.
  struct Activation {
    RunLoopMode& mode;
    const Limits& limits;
    Activation* outer;
    bool stopped = false;
  };
  using Lock = std::unique_lock<std::mutex>;

  RunLoop() = default;

  RunLoopMode* findMode(CFStringRef name) const;
  RunLoopMode& modeNamed(CFStringRef name);
  RunLoopMode* commonMode(std::size_t index) const;
  bool addToCommonItems(RunLoopItem& item);
  Held<RunLoopItem*> removeFromCommonItems(const RunLoopItem& item);
  void enter(RunLoopItem& item, RunLoopMode& mode);
  void takeOut(RunLoopItem& item, RunLoopMode& mode);
  void leaveIfGone(RunLoopItem& item);
  bool isInAnyMode(const RunLoopItem& item) const;
  void wakeHolding(const Lock&);

  SInt32 turn(Activation& run);
  bool serveSignalledSources(Activation& run, RunLoopMode::Turn number);
  bool serveTimers(Activation& run, RunLoopMode::Turn number, host::Nanoseconds now);
  enum class Looking { kHere, kEverywhere };
  bool findMessage(RunLoopMode& mode, mach_port_name_t& port, Looking looking);
  bool servePort(RunLoopMode& mode, mach_port_name_t port);
  bool maySleep(Activation& run, bool handledSource) const;
  bool sleep(Activation& run, mach_port_name_t& port);
  host::Deadline endOfSleep(const Activation& run) const;
  SInt32 resultOf(const Activation& run, bool handledSource, host::Nanoseconds now) const;
  bool isStopped(const Activation& run) const;
  void notify(RunLoopMode& mode, CFRunLoopActivity activity);
  RunLoopMode::Turn startTurn();

  mutable std::mutex lock;
  std::vector<std::unique_ptr<RunLoopMode>> modes;  // never removed
  std::vector<RunLoopMode*> commonModes;
  std::vector<Held<RunLoopItem*>> commonItems;
  Activation* innermost = nullptr;
  RunLoopMode::Turn lastTurn = 0;
  mach::PortSet* sleepingOn = nullptr;
  bool woken = false;        // since the turn began
  bool stopPending = false;  // for the next run
  bool timerServedLast = false;
  bool ended = false;
};

/// The calling thread's loop and the first thread's, not retained.
RunLoop* currentRunLoop();
RunLoop* mainRunLoop();

}  // namespace platform::corefoundation

#endif
