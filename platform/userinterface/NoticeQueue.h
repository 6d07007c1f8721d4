// Licence: MIT, see LICENSE.
// The installed notification records, below the calls of <HIToolbox/Notification.h>.
#ifndef PLATFORM_USERINTERFACE_NOTICEQUEUE_H
#define PLATFORM_USERINTERFACE_NOTICEQUEUE_H

#include <HIToolbox/Notification.h>

#include <atomic>
#include <list>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/userinterface/Presenter.h"
#include "platform/userinterface/RunLoopSignal.h"

namespace platform::userinterface {

/// Records are told apart by their address; what is needed of one is copied when it is installed.
/// Any thread.
class NoticeQueue final {
 public:
  /// Never destroyed: notices may be up when the program ends.
  static NoticeQueue& shared();

  OSErr install(NMRecPtr record);
  OSErr remove(NMRecPtr record);

 private:
  enum class Sight { kAwaited, kSeen, kMissed };
  using SharedSight = std::shared_ptr<std::atomic<Sight>>;
  struct Entry {
    NMRecPtr record = nullptr;
    NMUPP response = nullptr;
    NoticeContents contents;
    std::vector<Presenter*> untried;  // the best first
    SharedSight sight;
    bool isOver = false;  // its response was called
    std::unique_ptr<Showing> showing;
  };
  using Entries = std::list<Entry>;

  NoticeQueue();
  static Entry entryFor(NMRecPtr record);
  Entries::iterator find(NMRecPtr record);
  void showNext();
  void show(Entry& entry);
  bool showMissed();
  bool respondToNext();

  std::mutex mutex;
  Entries entries;          // in the order of installation; those that are over before the others
  RunLoopSignal dismissal;  // on the main loop: some notice was dismissed, or could not be shown
};

}  // namespace platform::userinterface

#endif
