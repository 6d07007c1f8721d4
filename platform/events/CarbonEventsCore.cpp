// Licence: MIT, see LICENSE.
#include <HIToolbox/CarbonEventsCore.h>

#include <HIToolbox/AEInteraction.h>

#include <new>

#include "platform/events/EventLoop.h"
#include "platform/events/EventSource.h"

namespace platform::events {
namespace {

/// Handles the events that wait at this moment. Those that come meanwhile wait until the run loop
/// has had its turn; those that are here came before whatever the loop will serve next.
void processWaiting(EventSource& source, const EventLoop& loop) {
  for (std::size_t count = source.events().size(); count > 0 && !loop.isQuitting(); --count) {
    const EventQueue::Entry* entry = source.events().oldest(highLevelEventMask);
    if (entry == nullptr) return;  // a handler took some itself
    const EventRecord record = entry->record;
    AEProcessAppleEvent(&record);
  }
}

void runApplication() {
  EventSource& source = EventSource::prepared();
  EventLoop& loop = EventLoop::main();
  while (!loop.isQuitting()) {
    processWaiting(source, loop);
    if (loop.isQuitting()) break;
    const bool moreWait = source.events().size() > 0;
    loop.pass(moreWait ? 0 : kForever, EventLoop::OnQuit::kReturn);
  }
  loop.quitDone();
}

}  // namespace
}  // namespace platform::events

void RunApplicationEventLoop(void) {
  try {
    platform::events::runApplication();
  } catch (const std::bad_alloc&) {
    // Without memory to enter the loop with there is no application to run.
  }
}

void QuitApplicationEventLoop(void) { platform::events::EventLoop::main().quit(); }
