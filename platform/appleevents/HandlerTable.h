// Licence: MIT, see LICENSE.
// The process's Apple event handlers.
#ifndef PLATFORM_APPLEEVENTS_HANDLERTABLE_H
#define PLATFORM_APPLEEVENTS_HANDLERTABLE_H

#include <AE/AppleEvents.h>

#include <optional>

namespace platform::appleevents {

struct Handler {
  AEEventHandlerUPP procedure;
  SInt32 refcon;
};

/// The handler that an event of a class and ID goes to, of both tables and with wild cards.
std::optional<Handler> findHandler(AEEventClass eventClass, AEEventID eventID);

}  // namespace platform::appleevents

#endif
