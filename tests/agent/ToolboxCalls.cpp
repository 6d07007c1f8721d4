// Licence: MIT, see LICENSE.
#include "tests/agent/ToolboxCalls.h"

#include <cstdlib>

extern "C" void __real_RunApplicationEventLoop();

namespace {

tests::ToolboxCalls* gCalls = nullptr;

void note(const std::string& text) {
  if (gCalls != nullptr) gCalls->log.push_back(text);
}

// Notes a call that may be made to fail.
bool noteAndFail(const std::string& text) {
  note(text);
  return gCalls != nullptr && !gCalls->failing.empty() && text.starts_with(gCalls->failing);
}

std::string textOf(FourCharCode code) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(code >> shift);
  return text;
}

}  // namespace

namespace tests {

ToolboxCalls::ToolboxCalls() {
  if (gCalls != nullptr) std::abort();
  gCalls = this;
}

ToolboxCalls::~ToolboxCalls() { gCalls = nullptr; }

void ToolboxCalls::runEventLoop() { __real_RunApplicationEventLoop(); }

}  // namespace tests

extern "C" {

void __real_InitCursor();
Boolean __real_EventAvail(EventMask mask, EventRecord* event);
void __real_QuitApplicationEventLoop();
OSErr __real_AEInstallEventHandler(AEEventClass eventClass, AEEventID eventID,
                                   AEEventHandlerUPP handler, SInt32 refcon,
                                   Boolean isSystemHandler);
OSErr __real_AESetInteractionAllowed(AEInteractAllowed level);
OSErr __real_AEProcessAppleEvent(const EventRecord* event);

void __wrap_InitCursor() {
  note("InitCursor");
  __real_InitCursor();
}

Boolean __wrap_EventAvail(EventMask mask, EventRecord* event) {
  note("EventAvail " + std::to_string(mask));
  if (gCalls != nullptr && gCalls->eventWaits) return *gCalls->eventWaits;
  return __real_EventAvail(mask, event);
}

void __wrap_RunApplicationEventLoop() {
  note("run");
  if (gCalls != nullptr && gCalls->run) return gCalls->run();
  tests::ToolboxCalls::runEventLoop();
}

void __wrap_QuitApplicationEventLoop() {
  note("quit");
  if (gCalls == nullptr || gCalls->quits) __real_QuitApplicationEventLoop();
}

OSErr __wrap_AEInteractWithUser(SInt32 timeOut, NMRecPtr notification, AEIdleUPP idle) {
  note("interact " + std::to_string(timeOut) + (notification != nullptr ? " with notice" : ""));
  gCalls->idle = idle;
  return gCalls->interact();
}

DialogItemIndex __wrap_Alert(SInt16 alertID, ModalFilterUPP filter) {
  note("alert " + std::to_string(alertID) + (filter != nullptr ? " with filter" : ""));
  return gCalls->alertAnswer;
}

OSErr __wrap_AEInstallEventHandler(AEEventClass eventClass, AEEventID eventID,
                                   AEEventHandlerUPP handler, SInt32 refcon,
                                   Boolean isSystemHandler) {
  if (noteAndFail("install " + textOf(eventClass) + ' ' + textOf(eventID) + ' ' +
                  std::to_string(refcon) + (isSystemHandler ? " system" : ""))) {
    return gCalls->failure;
  }
  return __real_AEInstallEventHandler(eventClass, eventID, handler, refcon, isSystemHandler);
}

OSErr __wrap_AESetInteractionAllowed(AEInteractAllowed level) {
  if (noteAndFail("allow " + std::to_string(level))) return gCalls->failure;
  return __real_AESetInteractionAllowed(level);
}

OSErr __wrap_AEProcessAppleEvent(const EventRecord* event) {
  note("process " + textOf(event->message));
  return __real_AEProcessAppleEvent(event);
}

}  // extern "C"
