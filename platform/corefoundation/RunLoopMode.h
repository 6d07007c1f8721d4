// Licence: MIT, see LICENSE.
// One mode of a run loop: what was added to it, in the order of being served. The loop's lock
// guards all of it but the wait for the ports.
#ifndef PLATFORM_COREFOUNDATION_RUNLOOPMODE_H
#define PLATFORM_COREFOUNDATION_RUNLOOPMODE_H

#include <CoreFoundation/CFString.h>

#include <array>
#include <atomic>
#include <limits>
#include <vector>

#include "platform/corefoundation/RunLoopObserver.h"
#include "platform/corefoundation/RunLoopSource.h"
#include "platform/corefoundation/RunLoopTimer.h"
#include "platform/mach/PortSpace.h"

namespace platform::corefoundation {

class RunLoopMode final {
 public:
  enum class Choice {
    kInOrder,
    kFairly,  // among those of equal order, the one that waited longest
  };
  /// Numbers the turns of a loop. What was served in one is not served in it again, nor in an older
  /// one that a call-back interrupted with a newer.
  using Turn = UInt64;
  /// How far a notice to the observers has come.
  struct Progress {
    CFIndex order = std::numeric_limits<CFIndex>::min();
    UInt64 number = 0;
    friend bool operator<(const Progress& a, const Progress& b) {
      return a.order != b.order ? a.order < b.order : a.number < b.number;
    }
  };

  explicit RunLoopMode(Held<CFStringRef> modeName) : ownName(std::move(modeName)) {}

  CFStringRef name() const { return ownName.get(); }
  /// Whether there is nothing to run for.
  bool isEmpty() const;
  bool contains(const RunLoopItem& item) const;
  /// Adds an item that the mode does not contain, with the port that it wakes the loop by.
  void insert(RunLoopItem& item, mach_port_name_t port);
  /// Hands out the mode's own reference; null if the item is not in the mode.
  Held<RunLoopItem*> remove(const RunLoopItem& item);
  /// Any item, null when there is none left.
  RunLoopItem* anyItem() const;

  bool hasSignalledSource() const;
  host::Nanoseconds nextTimerTime() const;
  CFAbsoluteTime nextTimerDate() const;

  // What is to be called next, with a reference and begun. Null when there is nothing more.
  Held<RunLoopSource*> takeSignalled(Turn turn, Choice choice);
  Held<RunLoopTimer*> takeDueTimer(Turn turn, host::Nanoseconds now);
  Held<RunLoopObserver*> takeObserver(Progress& progress, CFRunLoopActivity activity);
  /// Whether any observer wants to be told of an activity. Needs no lock: most turns of most loops
  /// have nobody to tell.
  bool isObserved(CFRunLoopActivity activity) const {
    return (observed.load(std::memory_order_acquire) & static_cast<UInt32>(activity)) != 0;
  }
  /// The source that a port belongs to, with a reference.
  Held<RunLoopSource*> sourceOf(mach_port_name_t port) const;

  mach::PortSet& ports() { return portSet; }

 private:
  struct Entry {
    Held<RunLoopItem*> item;
    mach_port_name_t port = MACH_PORT_NULL;
    UInt64 number = 0;
    Turn served = 0;
  };
  using List = std::vector<Entry>;

  List& listOf(RunLoopItem::Kind kind) { return lists[static_cast<std::size_t>(kind)]; }
  const List& listOf(RunLoopItem::Kind kind) const { return lists[static_cast<std::size_t>(kind)]; }

  void noteObservers();

  const Held<CFStringRef> ownName;
  std::array<List, 3> lists;
  std::atomic<UInt32> observed{0};  // the activities that any observer wants
  UInt64 lastNumber = 0;            // of entries, in the order of their coming
  mach::PortSet portSet;
};

}  // namespace platform::corefoundation

#endif
