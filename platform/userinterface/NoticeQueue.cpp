// Licence: MIT, see LICENSE.
// One notice is up at a time. Its presenter tells on a thread of its own, by a flag and a signal to
// the main loop and without the lock of this queue, that it was dismissed or could not be shown;
// everything else follows there.
#include "platform/userinterface/NoticeQueue.h"

#include <CarbonCore/MacErrors.h>

#include <algorithm>
#include <string_view>

#include "platform/userinterface/DisplayText.h"

namespace platform::userinterface {
namespace {

/// As a response: the record is to be removed and nothing called.
bool onlyRemoves(NMUPP response) { return reinterpret_cast<std::intptr_t>(response) == -1; }

std::string textOf(ConstStringPtr pascal) {
  if (pascal == nullptr) return {};
  return displayText({reinterpret_cast<const char*>(pascal) + 1, pascal[0]});
}

}  // namespace

NoticeQueue& NoticeQueue::shared() {
  static NoticeQueue* queue = new NoticeQueue;
  return *queue;
}

NoticeQueue::NoticeQueue()
    : dismissal(CFRunLoopGetMain(), [] {
        while (shared().showMissed() || shared().respondToNext()) {
        }
      }) {}

OSErr NoticeQueue::install(NMRecPtr record) {
  Entry entry = entryFor(record);
  std::lock_guard lock(mutex);
  auto installed = find(record);
  if (installed != entries.end()) {
    if (!installed->isOver) return noErr;
    entries.erase(installed);
  }
  entries.push_back(std::move(entry));
  showNext();
  return noErr;
}

OSErr NoticeQueue::remove(NMRecPtr record) {
  std::lock_guard lock(mutex);
  auto installed = find(record);
  if (installed == entries.end()) return qErr;
  entries.erase(installed);
  showNext();
  return noErr;
}

NoticeQueue::Entry NoticeQueue::entryFor(NMRecPtr record) {
  Entry entry;
  entry.record = record;
  entry.response = record->nmResp;
  entry.contents.text = textOf(record->nmStr);
  entry.contents.hasSound = record->nmSound != nullptr;
  entry.untried = presentersToTry();
  entry.sight = std::make_shared<std::atomic<Sight>>(Sight::kAwaited);
  return entry;
}

NoticeQueue::Entries::iterator NoticeQueue::find(NMRecPtr record) {
  return std::find_if(entries.begin(), entries.end(),
                      [record](const Entry& entry) { return entry.record == record; });
}

/// Sees to it that the first notice that is not dismissed is up.
void NoticeQueue::showNext() {
  for (Entry& entry : entries) {
    if (*entry.sight == Sight::kSeen) continue;
    if (entry.showing == nullptr) show(entry);
    if (*entry.sight != Sight::kSeen) return;
  }
}

void NoticeQueue::show(Entry& entry) {
  auto tell = [sight = entry.sight, this](bool wasSeen) {
    *sight = wasSeen ? Sight::kSeen : Sight::kMissed;
    dismissal.raise();
  };
  if (entry.contents.text.empty()) return tell(true);
  while (entry.showing == nullptr && !entry.untried.empty()) {
    Presenter* presenter = entry.untried.front();
    entry.untried.erase(entry.untried.begin());
    entry.showing = presenter->showNotice(entry.contents, tell);
  }
}

/// Gives a notice whose presenter reached nobody after all to the next one; false when there is
/// none. On the main loop.
bool NoticeQueue::showMissed() {
  std::lock_guard lock(mutex);
  auto missed = std::find_if(entries.begin(), entries.end(),
                             [](const Entry& entry) { return *entry.sight == Sight::kMissed; });
  if (missed == entries.end()) return false;
  missed->showing.reset();
  *missed->sight = Sight::kAwaited;
  show(*missed);
  return true;
}

/// Calls the response of the first notice that was dismissed; false when there is none. On the main
/// loop.
bool NoticeQueue::respondToNext() {
  NMRecPtr record = nullptr;
  NMUPP response = nullptr;
  {
    std::lock_guard lock(mutex);
    auto next = std::find_if(entries.begin(), entries.end(), [](const Entry& entry) {
      return *entry.sight == Sight::kSeen && !entry.isOver;
    });
    if (next == entries.end()) return false;
    record = next->record;
    response = next->response;
    next->showing.reset();
    next->isOver = true;
    if (onlyRemoves(response)) entries.erase(next);
    showNext();
  }
  if (response != nullptr && !onlyRemoves(response)) InvokeNMUPP(record, response);
  return true;
}

}  // namespace platform::userinterface
