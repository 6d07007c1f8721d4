// Licence: MIT, see LICENSE.
// The installed notification records, below the calls of <HIToolbox/Notification.h>.
#ifndef PLATFORM_USERINTERFACE_NOTICEQUEUE_H
#define PLATFORM_USERINTERFACE_NOTICEQUEUE_H

#include <HIToolbox/Notification.h>

#include <atomic>
#include <list>
#include <memory>
#include <mutex>

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
  using Flag = std::shared_ptr<std::atomic<bool>>;
  struct Entry {
    NMRecPtr record = nullptr;
    NMUPP response = nullptr;
    NoticeContents contents;
    Flag isDismissed;
    bool isOver = false;  // its response was called
    std::unique_ptr<Showing> showing;
  };
  using Entries = std::list<Entry>;

  NoticeQueue();
  static Entry entryFor(NMRecPtr record);
  Entries::iterator find(NMRecPtr record);
  void showNext();
  void show(Entry& entry);
  bool respondToNext();

  std::mutex mutex;
  Entries entries;          // in the order of installation; those that are over before the others
  RunLoopSignal dismissal;  // on the main loop: some notice was dismissed
};

}  // namespace platform::userinterface

#endif
