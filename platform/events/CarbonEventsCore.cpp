// Licence: MIT, see LICENSE.
#include <HIToolbox/CarbonEventsCore.h>

#include <new>

#include "platform/events/EventLoop.h"
#include "platform/events/EventSource.h"

namespace platform::events {
namespace {

/// Handles the events that wait: they came before whatever the run loop will serve next. A handler
/// that has ever more of them come cannot keep the loop from its turn for longer than a full queue
/// takes.
void processWaiting(EventSource& source, const EventLoop& loop) {
  for (std::size_t left = EventQueue::kCapacity; left > 0; --left) {
    if (loop.isQuitting() || source.events().size() == 0) return;
    source.processOldest();
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
