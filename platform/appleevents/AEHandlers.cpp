// Licence: MIT, see LICENSE.
#include <AE/AppleEvents.h>

#include "platform/appleevents/HandlerTable.h"
#include "platform/appleevents/PairTables.h"

namespace platform::appleevents {
namespace {

PairTables<Handler>& eventHandlers() {
  static auto& instance = *new PairTables<Handler>;  // threads may use it while the process exits
  return instance;
}

}  // namespace

std::optional<Handler> findHandler(AEEventClass eventClass, AEEventID eventID) {
  const auto matches = eventHandlers().matching(eventClass, eventID);
  if (matches.begin() == matches.end()) return std::nullopt;
  return *matches.begin();
}

}  // namespace platform::appleevents

using namespace platform::appleevents;

OSErr AEInstallEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                            SInt32 refcon, Boolean isSystemHandler) {
  if (handler == nullptr) return paramErr;
  return eventHandlers().install(eventClass, eventID, {handler, refcon}, isSystemHandler);
}

OSErr AERemoveEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                           Boolean isSystemHandler) {
  return eventHandlers().remove(eventClass, eventID, isSystemHandler,
                                [=](const Handler& installed) {
                                  return handler == nullptr || handler == installed.procedure;
                                });
}

OSErr AEGetEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP* handler,
                        SInt32* refcon, Boolean isSystemHandler) {
  if (handler == nullptr || refcon == nullptr) return paramErr;
  const auto installed = eventHandlers().at(eventClass, eventID, isSystemHandler);
  if (!installed) return errAEHandlerNotFound;
  *handler = installed->procedure;
  *refcon = installed->refcon;
  return noErr;
}

// A universal procedure pointer is the procedure's address: it takes no memory.

AEEventHandlerUPP NewAEEventHandlerUPP(AEEventHandlerProcPtr handler) { return handler; }
void DisposeAEEventHandlerUPP(AEEventHandlerUPP) {}
OSErr InvokeAEEventHandlerUPP(const AppleEvent* event, AppleEvent* reply, SInt32 refcon,
                              AEEventHandlerUPP handler) {
  return handler(event, reply, refcon);
}

AEIdleUPP NewAEIdleUPP(AEIdleProcPtr idle) { return idle; }
void DisposeAEIdleUPP(AEIdleUPP) {}
Boolean InvokeAEIdleUPP(EventRecord* event, SInt32* sleepTime, OpaqueRgnHandle** mouseRegion,
                        AEIdleUPP idle) {
  return idle(event, sleepTime, mouseRegion);
}

AEFilterUPP NewAEFilterUPP(AEFilterProcPtr filter) { return filter; }
void DisposeAEFilterUPP(AEFilterUPP) {}
