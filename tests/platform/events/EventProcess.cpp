// Licence: MIT, see LICENSE.
// A process of its own for tests of events and of interaction with the user. It does what each line
// of its input says and answers with one line; the end of its input ends it.
//   take TICKS        AEInteractWithUser, and if it was successful something is presented
//   give              ends the presentation
//   ask TICKS         AEInteractWithUser alone
//   idle              runs the application's event loop until it is idle
//   send PSN ID MODE  sends an event of class 'TsT1' to a process: the error of AESendMessage
#include <AE/AEMach.h>
#include <AE/AppleEvents.h>
#include <CoreFoundation/CFRunLoop.h>
#include <HIToolbox/AEInteraction.h>
#include <HIToolbox/CarbonEventsCore.h>

#include <iostream>
#include <optional>
#include <sstream>
#include <string>

#include "platform/events/Interaction.h"

namespace {

std::optional<platform::events::Presentation> presentation;

OSErr take(SInt32 ticks) {
  const OSErr result = AEInteractWithUser(ticks, nullptr, nullptr);
  if (result == 0) presentation.emplace();
  return result;
}

void quit(CFRunLoopTimerRef, void*) { QuitApplicationEventLoop(); }

void runUntilIdle() {
  const CFRunLoopTimerRef timer =
      CFRunLoopTimerCreate(nullptr, CFAbsoluteTimeGetCurrent() + 0.05, 0, 0, 0, &quit, nullptr);
  CFRunLoopAddTimer(CFRunLoopGetMain(), timer, kCFRunLoopDefaultMode);
  RunApplicationEventLoop();
  CFRelease(timer);
}

SInt32 send(std::istream& arguments) {
  ProcessSerialNumber psn = {0, 0};
  AEEventID eventID = 0;
  AESendMode mode = 0;
  arguments >> psn.lowLongOfPSN >> eventID >> mode;
  AEAddressDesc target = {typeNull, nullptr};
  AppleEvent event = {typeNull, nullptr}, reply = {typeNull, nullptr};
  AECreateDesc(typeProcessSerialNumber, &psn, sizeof psn, &target);
  AECreateAppleEvent('TsT1', eventID, &target, kAutoGenerateReturnID, kAnyTransactionID, &event);
  const OSStatus result = AESendMessage(&event, &reply, mode, kAEDefaultTimeout);
  for (AEDesc* desc : {&target, &event, &reply}) AEDisposeDesc(desc);
  return result;
}

std::optional<SInt32> execute(const std::string& line) {
  std::istringstream arguments(line);
  std::string command;
  SInt32 ticks = 0;
  arguments >> command;
  if (command == "take" && arguments >> ticks) return take(ticks);
  if (command == "ask" && arguments >> ticks) return AEInteractWithUser(ticks, nullptr, nullptr);
  if (command == "send") return send(arguments);
  if (command == "give") {
    presentation.reset();
    return 0;
  }
  if (command == "idle") {
    runUntilIdle();
    return 0;
  }
  return std::nullopt;
}

}  // namespace

int main() {
  for (std::string line; std::getline(std::cin, line);) {
    const std::optional<SInt32> answer = execute(line);
    if (!answer) return 2;
    std::cout << *answer << std::endl;
  }
  return 0;
}
