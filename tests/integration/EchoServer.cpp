// Licence: MIT, see LICENSE.
// A server for the integration tests. It listens on the port that its argument names, and its event
// queue likewise, for events of the class TesT:
//
//   echo  prints the event's parameters, so that a test sees what arrived, and sends them back
//   list  answers with a list that holds a record
//   fail  answers with a parameter and the error procNotFound
//   hold  prints "holding" and answers when it is given a line of input, or dies
#include <quorvant/aemessaging/aemessaging.h>

#include <iostream>
#include <string>

#include "tools/qrl/Reply.h"

namespace {

constexpr AEEventClass kTestClass = 'TesT';

void say(const std::string& line) { std::cout << line << std::endl; }

OSErr echo(const AppleEvent& event, AppleEvent& reply) {
  for (const std::string& line : qrl::linesOf(event)) say(line);
  say("end");
  SInt32 count = 0;
  OSErr error = AECountItems(&event, &count);
  for (SInt32 index = 1; index <= count && error == noErr; ++index) {
    AEKeyword keyword = 0;
    AEDesc parameter;
    error = AEGetNthDesc(&event, index, typeWildCard, &keyword, &parameter);
    if (error != noErr) break;
    error = AEPutParamDesc(&reply, keyword, &parameter);
    AEDisposeDesc(&parameter);
  }
  return error;
}

OSErr list(AppleEvent& reply) {
  const SInt32 number = -2;
  AEDescList items;
  AERecord record;
  OSErr error = AECreateList(nullptr, 0, false, &items);
  if (error == noErr) error = AECreateList(nullptr, 0, true, &record);
  if (error == noErr) error = AEPutKeyPtr(&record, 'numb', typeSInt32, &number, sizeof number);
  if (error == noErr) error = AEPutPtr(&items, 0, typeChar, "first", 5);
  if (error == noErr) error = AEPutDesc(&items, 0, &record);
  if (error == noErr) error = AEPutParamDesc(&reply, keyDirectObject, &items);
  AEDisposeDesc(&record);
  AEDisposeDesc(&items);
  return error;
}

OSErr fail(AppleEvent& reply) {
  OSErr error = AEPutParamPtr(&reply, 'errs', typeChar, "no luck", 7);
  return error == noErr ? OSErr{procNotFound} : error;
}

OSErr hold() {
  say("holding");
  std::string line;
  std::getline(std::cin, line);
  return noErr;
}

OSErr handle(AEEventID eventID, const AppleEvent& event, AppleEvent& reply) {
  switch (eventID) {
    case 'echo':
      return echo(event, reply);
    case 'list':
      return list(reply);
    case 'fail':
      return fail(reply);
    case 'hold':
      return hold();
    default:
      return errAEEventNotHandled;
  }
}

SInt32 dispatch(UInt32 eventClass, UInt32 eventID, const AEDesc* event, AEDesc* reply, void*) {
  if (eventClass != kTestClass) return errAEEventNotHandled;
  return handle(eventID, *event, *reply);
}

OSErr handleHighLevelEvent(const AppleEvent* event, AppleEvent* reply, SInt32) {
  UInt32 eventID = 0;
  OSErr error = QRLGetAEDispatchAttributes(*event, nullptr, &eventID, nullptr);
  return error == noErr ? handle(eventID, *event, *reply) : error;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  EventRecord scratch;
  EventAvail(0, &scratch);
  QRLPortAEMachPortListener listener;
  SInt32 result = listener.ListenOnPort(argv[1], CFRunLoopGetCurrent(), dispatch, nullptr);
  if (result == noErr) {
    result = AEInstallEventHandler(kTestClass, typeWildCard,
                                   NewAEEventHandlerUPP(handleHighLevelEvent), 0, false);
  }
  if (result != noErr) return 1;
  say("listening");
  RunApplicationEventLoop();
  return 0;
}
