// Licence: MIT, see LICENSE.
#include <quorvant/agent/AgentApplication.h>
#include <quorvant/debug/QRLAppErrorUtils.h>

#include <cstring>
#include <new>

namespace {

constexpr SInt32 kSleepForever = 0x7fffffff;

bool keepsRunning(const char* argument) {
  return std::strcmp(argument, "-keepRunning") == 0 || std::strcmp(argument, "-r") == 0;
}

struct Handler {
  AEEventClass eventClass;
  AEEventID eventID;
  AEEventHandlerProcPtr procedure;
  SInt32 refcon;
};

constexpr Handler kHandlers[] = {
    {kCoreEventClass, kAEQuitApplication, AEQuitHandler, 0},
    {kAgentEventClass, kAgentShowAlert, AEMacamHandler, kAgentShowAlert},
};

}  // namespace

Boolean32 gQuit = false;
Boolean32 gQuitWhenDone = true;
QRLPortAEMachPortListener* cmPortAEListener = nullptr;

int AgentMain(int argc, char** argv) {
  QRLAppErrorUtils::setAppName(argv[0]);
  for (int i = 1; i < argc; ++i) {
    if (keepsRunning(argv[i])) gQuitWhenDone = false;
  }
  Initialize();
  const OSStatus err = installAEHandlers();
  if (err != noErr) return err;
  RunApplicationEventLoop();
  return removeAEHandlers();
}

void Initialize() {
  InitCursor();
  EventRecord scratch;
  for (int i = 0; i < 3; ++i) EventAvail(0, &scratch);
}

OSStatus installAEHandlers() {
  cmPortAEListener = new (std::nothrow) QRLPortAEMachPortListener;
  if (cmPortAEListener == nullptr) return memFullErr;
  const OSStatus err = cmPortAEListener->ListenOnPort(QRL_AGENT_PORT_NAME, CFRunLoopGetCurrent(),
                                                      AgentAEDispatchCallback, nullptr);
  return err != noErr ? err : installNormalAEHandlers();
}

OSStatus installNormalAEHandlers() {
  for (const Handler& handler : kHandlers) {
    const OSErr err =
        AEInstallEventHandler(handler.eventClass, handler.eventID,
                              NewAEEventHandlerUPP(handler.procedure), handler.refcon, false);
    if (err != noErr) return err;
  }
  return AESetInteractionAllowed(kAEInteractWithLocal);
}

OSStatus removeAEHandlers() {
  delete cmPortAEListener;
  cmPortAEListener = nullptr;
  return noErr;
}

SInt32 AgentAEDispatchCallback(UInt32 eventClass, UInt32 eventID, const AEDesc* event,
                               AEDesc* reply, void*) {
  if (eventClass == kCoreEventClass && eventID == kAEQuitApplication) {
    return AEQuitHandler(event, reply, 0);
  }
  if (eventClass == kAgentEventClass && eventID == kAgentShowAlert) {
    return AEMacamHandler(event, reply, kAgentShowAlert);
  }
  return errAEEventNotHandled;
}

OSErr AEQuitHandler(const AppleEvent*, AppleEvent*, SInt32) {
  QuitApplicationEventLoop();
  gQuit = true;
  return noErr;
}

OSErr AEMacamHandler(const AppleEvent*, AppleEvent*, SInt32) {
  static const AEIdleUPP idleProcedure = NewAEIdleUPP(MyAEIdleCallback);
  AEInteractWithUser(kNoTimeOut, nullptr, idleProcedure);
  Alert(kAgentAlertID, nullptr);
  QuitIfNoEventsPending();
  return noErr;
}

Boolean MyHandleEvent(EventRecord& event, SInt32& sleep, RgnHandle&) {
  if (event.what == kHighLevelEvent) AEProcessAppleEvent(&event);
  sleep = kSleepForever;
  return gQuit != 0;
}

Boolean MyAEIdleCallback(EventRecord* event, SInt32* sleep, RgnHandle* mouseRegion) {
  return MyHandleEvent(*event, *sleep, *mouseRegion);
}

OSStatus QuitIfNoEventsPending() {
  if (!gQuitWhenDone) return noErr;
  EventRecord scratch;
  if (!EventAvail(highLevelEventMask, &scratch)) QuitApplicationEventLoop();
  return noErr;
}
