// Licence: MIT, see LICENSE.
#include <AE/AppleEvents.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <vector>

#include "platform/appleevents/HandlerTable.h"

namespace platform::appleevents {
namespace {

struct Entry {
  AEEventClass eventClass;
  AEEventID eventID;
  Handler handler;
};
using Table = std::vector<Entry>;

struct Tables {
  std::mutex mutex;
  Table application;
  Table system;

  Table& of(Boolean isSystem) { return isSystem ? system : application; }
};

Tables& tables() {
  static Tables& instance = *new Tables;  // threads may use it while the process exits
  return instance;
}

Table::iterator findEntry(Table& table, AEEventClass eventClass, AEEventID eventID) {
  return std::ranges::find_if(table, [=](const Entry& entry) {
    return entry.eventClass == eventClass && entry.eventID == eventID;
  });
}

std::optional<Handler> findIn(Table& table, AEEventClass eventClass, AEEventID eventID) {
  const AEEventClass wildCard = typeWildCard;
  const std::pair<AEEventClass, AEEventID> kinds[] = {
      {eventClass, eventID}, {eventClass, wildCard}, {wildCard, eventID}, {wildCard, wildCard}};
  for (const auto& [classWanted, idWanted] : kinds) {
    const auto entry = findEntry(table, classWanted, idWanted);
    if (entry != table.end()) return entry->handler;
  }
  return std::nullopt;
}

}  // namespace

std::optional<Handler> findHandler(AEEventClass eventClass, AEEventID eventID) {
  Tables& all = tables();
  const std::lock_guard lock(all.mutex);
  if (const auto handler = findIn(all.application, eventClass, eventID)) return handler;
  return findIn(all.system, eventClass, eventID);
}

}  // namespace platform::appleevents

using namespace platform::appleevents;

OSErr AEInstallEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                            SInt32 refcon, Boolean isSystemHandler) {
  if (handler == nullptr) return paramErr;
  Tables& all = tables();
  const std::lock_guard lock(all.mutex);
  Table& table = all.of(isSystemHandler);
  const auto entry = findEntry(table, eventClass, eventID);
  if (entry != table.end()) {
    entry->handler = {handler, refcon};
    return noErr;
  }
  try {
    table.push_back({eventClass, eventID, {handler, refcon}});
  } catch (const std::bad_alloc&) {
    return memFullErr;
  }
  return noErr;
}

OSErr AERemoveEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP handler,
                           Boolean isSystemHandler) {
  Tables& all = tables();
  const std::lock_guard lock(all.mutex);
  Table& table = all.of(isSystemHandler);
  const auto entry = findEntry(table, eventClass, eventID);
  if (entry == table.end()) return errAEHandlerNotFound;
  if (handler != nullptr && handler != entry->handler.procedure) return errAEHandlerNotFound;
  table.erase(entry);
  return noErr;
}

OSErr AEGetEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandlerUPP* handler,
                        SInt32* refcon, Boolean isSystemHandler) {
  if (handler == nullptr || refcon == nullptr) return paramErr;
  Tables& all = tables();
  const std::lock_guard lock(all.mutex);
  Table& table = all.of(isSystemHandler);
  const auto entry = findEntry(table, eventClass, eventID);
  if (entry == table.end()) return errAEHandlerNotFound;
  *handler = entry->handler.procedure;
  *refcon = entry->handler.refcon;
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
