// Licence: MIT, see LICENSE.
// An alert is a nested run of the thread's run loop that ends when a presenter has the answer:
// presenters work on threads of their own and signal a source of the loop. Alerts nest, since what
// the loop serves may show another one; the inner one returns first, whichever is answered first.
#include <CoreFoundation/CFRunLoop.h>
#include <HIToolbox/Dialogs.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <optional>

#include "platform/events/Interaction.h"
#include "platform/userinterface/AlertLookup.h"
#include "platform/userinterface/Presenter.h"
#include "platform/userinterface/RunLoopSignal.h"

namespace platform::userinterface {
namespace {

constexpr DialogItemIndex kNoAlert = -1;
constexpr CFTimeInterval kAYear = 366.0 * 24 * 3600;

/// How often in a row the same alert was asked for, which its stages depend on. Main thread.
class StageCounter final {
 public:
  std::size_t next(ResID alertID) {
    stage = last == alertID ? std::min(stage + 1, kLastStage) : 0;
    last = alertID;
    return stage;
  }

 private:
  static constexpr std::size_t kLastStage = 3;
  std::optional<ResID> last;
  std::size_t stage = 0;
};

StageCounter& stageCounter() {
  static StageCounter counter;
  return counter;
}

/// An alert that is up. What the loop serves during an inner alert may be the outer one's answer,
/// so the outer one looks again when the inner one is over.
class OpenAlert final {
 public:
  explicit OpenAlert(CFRunLoopRef loop) : answered(loop), outer(innermost) { innermost = this; }
  ~OpenAlert() {
    innermost = outer;
    if (outer != nullptr) outer->answered.raise();
  }
  OpenAlert(const OpenAlert&) = delete;
  OpenAlert& operator=(const OpenAlert&) = delete;

  RunLoopSignal answered;

 private:
  OpenAlert* outer;
  static thread_local OpenAlert* innermost;
};

thread_local OpenAlert* OpenAlert::innermost = nullptr;

/// Whether the program's filter ends the alert, with the item that it stored.
bool endedByFilter(ModalFilterUPP filter, DialogItemIndex& item) {
  if (filter == nullptr) return false;
  EventRecord event{};
  event.what = nullEvent;
  return filter(nullptr, &event, &item) != 0;
}

/// The answer that one presenter gets, kNotShown if it reaches nobody.
DialogItemIndex askOne(Presenter& presenter, const AlertContents& alert, ModalFilterUPP filter) {
  CFRunLoopRef loop = CFRunLoopGetCurrent();
  constexpr DialogItemIndex kOpen = -1;
  std::atomic<DialogItemIndex> answer{kOpen};
  OpenAlert open(loop);
  if (!open.answered) return Presenter::kNotShown;
  auto showing = presenter.showAlert(alert, [&](DialogItemIndex item) {
    answer = item;
    open.answered.raise();
  });
  if (showing == nullptr) return Presenter::kNotShown;

  // A stop is meant for the run that the alert interrupts: it is passed on when the alert is over.
  bool stopped = false;
  DialogItemIndex item = alert.defaultItem;
  while (answer == kOpen && !endedByFilter(filter, item)) {
    const SInt32 why = CFRunLoopRunInMode(kCFRunLoopDefaultMode, kAYear, 1);
    stopped = stopped || why == kCFRunLoopRunStopped;
  }
  showing.reset();
  if (stopped) CFRunLoopStop(loop);
  return answer == kOpen ? item : answer.load();
}

DialogItemIndex showAlert(ResID alertID, ModalFilterUPP filter) {
  auto alert = findAlert(alertID);
  if (!alert) return kNoAlert;
  const AlertStage& stage = alert->form.stages[stageCounter().next(alertID)];
  if (!stage.isDrawn) return kNoAlert;

  const AlertContents contents = contentsOf(*alert, stage);
  const std::vector<Presenter*> presenters = presentersToTry();
  // What only the log is told keeps nobody from anything.
  const bool mayReachAPerson = presenters.size() > 1;
  DialogItemIndex given = contents.defaultItem;
  auto isEnded = [&] { return endedByFilter(filter, given); };
  if (mayReachAPerson && !events::awaitTurn(isEnded)) return given;
  const events::Presentation turn;
  for (Presenter* presenter : presenters) {
    const DialogItemIndex item = askOne(*presenter, contents, filter);
    if (item != Presenter::kNotShown) return item;
  }
  return contents.defaultItem;
}

}  // namespace
}  // namespace platform::userinterface

DialogItemIndex Alert(SInt16 alertID, ModalFilterUPP filter) try {
  return platform::userinterface::showAlert(alertID, filter);
} catch (const std::bad_alloc&) {
  return platform::userinterface::kNoAlert;
}
