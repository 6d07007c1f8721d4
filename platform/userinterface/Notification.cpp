// Licence: MIT, see LICENSE.
#include <CarbonCore/MacErrors.h>
#include <HIToolbox/Notification.h>

#include <new>

#include "platform/events/Interaction.h"
#include "platform/userinterface/NoticeQueue.h"

using platform::userinterface::NoticeQueue;

namespace {

/// Whoever waits for the user's attention posts its notice here, from below.
[[maybe_unused]] const bool gOffered = [] {
  platform::events::setNoticeCalls({NMInstall, NMRemove});
  return true;
}();

}  // namespace

OSErr NMInstall(NMRecPtr record) try {
  if (record == nullptr || record->qType != nmType) return nmTypErr;
  return NoticeQueue::shared().install(record);
} catch (const std::bad_alloc&) {
  return memFullErr;
}

OSErr NMRemove(NMRecPtr record) try {
  if (record == nullptr || record->qType != nmType) return nmTypErr;
  return NoticeQueue::shared().remove(record);
} catch (const std::bad_alloc&) {
  return memFullErr;
}

NMUPP NewNMUPP(NMProcPtr procedure) { return procedure; }

void DisposeNMUPP(NMUPP) {}

void InvokeNMUPP(NMRecPtr record, NMUPP procedure) { procedure(record); }
