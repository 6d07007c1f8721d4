// Licence: MIT, see LICENSE.
// A server to be killed, stopped, flooded and starved of what it needs. It listens on the port that
// its first argument names for events of the class TesT:
//
//   numb  notes the event's number and answers with it
//   data  answers with the event's data
//   pour  answers with as many bytes as the number says
//   hold  prints "holding" and answers like numb when it is given a line of input
//   mark  prints "marked" and how many events had been handled before it
//   lstn  listens again under the name
//   sums  answers with the count of different numbers noted, and of those noted more than once
//
// Every answer tells under "hand" how many events had been handled before it. With "tidy" for a
// second argument the server disposes of each event, which a listener leaves to its callback, so
// that whatever memory stays behind is a leak.
#include <quorvant/aemessaging/aemessaging.h>

#include <iostream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr AEEventClass kTestClass = 'TesT';

void say(const std::string& line) { std::cout << line << std::endl; }

SInt32 numberOf(const AppleEvent& event) {
  SInt32 number = 0;
  AEGetParamPtr(&event, keyDirectObject, typeSInt32, nullptr, &number, sizeof number, nullptr);
  return number;
}

OSErr putNumber(AppleEvent& reply, AEKeyword key, SInt32 number) {
  return AEPutParamPtr(&reply, key, typeSInt32, &number, sizeof number);
}

class Server {
 public:
  OSErr handle(AEEventID eventID, const AppleEvent& event, AppleEvent& reply) {
    const SInt32 handledBefore = handled++;
    if (eventID == 'mark') say("marked " + std::to_string(handledBefore));
    const OSErr error = answer(eventID, event, reply);
    if (error != noErr || reply.descriptorType == typeNull) return error;
    return putNumber(reply, 'hand', handledBefore);
  }

 private:
  OSErr answer(AEEventID eventID, const AppleEvent& event, AppleEvent& reply) {
    switch (eventID) {
      case 'hold':
        hold();
        [[fallthrough]];
      case 'mark':
      case 'numb':
        return note(numberOf(event), reply);
      case 'data':
        return giveBack(event, reply);
      case 'pour':
        return pour(numberOf(event), reply);
      case 'sums':
        return sum(reply);
      default:
        return errAEEventNotHandled;
    }
  }

  static void hold() {
    say("holding");
    std::string line;
    std::getline(std::cin, line);
  }

  OSErr note(SInt32 number, AppleEvent& reply) {
    ++noted[number];
    return reply.descriptorType == typeNull ? OSErr{noErr}
                                            : putNumber(reply, keyDirectObject, number);
  }

  static OSErr giveBack(const AppleEvent& event, AppleEvent& reply) {
    AEDesc data = {typeNull, nullptr};
    OSErr error = AEGetParamDesc(&event, keyDirectObject, typeWildCard, &data);
    if (error == noErr) error = AEPutParamDesc(&reply, keyDirectObject, &data);
    AEDisposeDesc(&data);
    return error;
  }

  static OSErr pour(SInt32 size, AppleEvent& reply) {
    const std::vector<char> bytes(static_cast<std::size_t>(size), 'x');
    return AEPutParamPtr(&reply, keyDirectObject, 'DATA', bytes.data(), size);
  }

  OSErr sum(AppleEvent& reply) const {
    SInt32 twice = 0;
    for (const auto& [number, times] : noted) twice += times > 1 ? 1 : 0;
    const OSErr error = putNumber(reply, keyDirectObject, static_cast<SInt32>(noted.size()));
    return error == noErr ? putNumber(reply, 'twic', twice) : error;
  }

  SInt32 handled = 0;
  std::map<SInt32, int> noted;
};

Server server;

/// Answers and disposes of everything by itself.
class TidyListener final : public QRLPortAEMachPortListener {
 public:
  void PortCallback(CFMachPortRef, void* msg, CFIndex) override {
    AEProcessMessage(static_cast<mach_msg_header_t*>(msg));
  }
};

QRLPortAEMachPortListener* listener;
const char* portName;

SInt32 dispatch(UInt32 eventClass, UInt32 eventID, const AEDesc* event, AEDesc* reply, void*) {
  if (eventClass != kTestClass) return errAEEventNotHandled;
  if (eventID == 'lstn') {
    return listener->ListenOnPort(portName, CFRunLoopGetCurrent(), dispatch, nullptr);
  }
  return server.handle(eventID, *event, *reply);
}

OSErr handleEvent(const AppleEvent* event, AppleEvent* reply, SInt32) {
  UInt32 eventID = 0;
  const OSErr error = QRLGetAEDispatchAttributes(*event, nullptr, &eventID, nullptr);
  return error == noErr ? server.handle(eventID, *event, *reply) : error;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  const bool isTidy = argc > 2 && std::string_view(argv[2]) == "tidy";
  QRLPortAEMachPortListener plain;
  TidyListener tidy;
  listener = isTidy ? &tidy : &plain;
  portName = argv[1];
  SInt32 result = listener->ListenOnPort(portName, CFRunLoopGetCurrent(), dispatch, nullptr);
  if (result == noErr) {
    result = AEInstallEventHandler(kTestClass, typeWildCard, NewAEEventHandlerUPP(handleEvent), 0,
                                   false);
  }
  say(std::to_string(result));
  if (result != noErr) return 1;
  RunApplicationEventLoop();
  return 0;
}
