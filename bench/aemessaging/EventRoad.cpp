// Licence: MIT, see LICENSE.
#include <AE/AEMach.h>
#include <HIToolbox/CarbonEventsCore.h>
#include <quorvant/aemessaging/aemessaging.h>

#include "bench/aemessaging/Roads.h"

namespace bench {

namespace {

constexpr AEEventClass kClass = 'BncH';
constexpr AEEventID kAsk = 'Ask ';
constexpr DescType kContents = 'bytz';  // of no type that anybody converts
constexpr SInt32 kPatience = 60 * 60;   // ticks

// The client

void addContents(AppleEvent& event, const std::vector<char>& contents) {
  require(AEPutParamPtr(&event, keyDirectObject, kContents, contents.data(),
                        static_cast<Size>(contents.size())) == noErr,
          "no parameter");
}

void fill(QRLPortAppleEvent& wrapper, QRLPortDestinationAddress& server,
          const std::vector<char>& contents) {
  wrapper.eventClass = kClass;
  wrapper.eventID = kAsk;
  wrapper.replyMode = kAEWaitReply;
  wrapper.returnID = kAutoGenerateReturnID;
  wrapper.transactionID = kAnyTransactionID;
  wrapper.destination = &server;
  require(wrapper.createEvent() == noErr, "no event");
  addContents(wrapper.event, contents);
}

void ask(QRLPortAppleEvent& wrapper, std::size_t size) {
  require(wrapper.sendEvent(kAEWaitReply, kPatience, kAENormalPriority) == noErr, "no answer");
  DescType type = typeNull;
  Size answered = 0;
  require(AESizeOfParam(&wrapper.reply, keyDirectObject, &type, &answered) == noErr &&
              static_cast<std::size_t>(answered) == size,
          "the answer is not the request");
}

class EventClient : public Client {
 public:
  explicit EventClient(const Road& road) : contents(contentsOf(road.size)) {
    require(road.address.size() < sizeof server.name, "the port's name is too long");
    road.address.copy(server.name, road.address.size());
    require(server.initialize() == 0, "nobody has the port's name");
  }
  ~EventClient() override { mach_port_deallocate(mach_task_self(), server.port); }

 protected:
  QRLPortDestinationAddress server;
  const std::vector<char> contents;
};

/// Sends the same event again and again.
class RepeatingClient final : public EventClient {
 public:
  explicit RepeatingClient(const Road& road) : EventClient(road) {
    fill(wrapper, server, contents);
  }
  ~RepeatingClient() override { wrapper.finalizeEvent(); }

  void roundTrip() override {
    ask(wrapper, contents.size());
    AEDisposeDesc(&wrapper.reply);
    wrapper.replyReceived = false;
  }

 private:
  QRLPortAppleEvent wrapper;
};

/// Makes an event for each request.
class RequestingClient final : public EventClient {
 public:
  using EventClient::EventClient;

  void roundTrip() override {
    QRLPortAppleEvent wrapper;
    fill(wrapper, server, contents);
    ask(wrapper, contents.size());
    wrapper.finalizeEvent();
  }
};

// The server

/// Answers with as many bytes of its own as it was sent, as the sockets' servers do.
OSErr answer(const AppleEvent* event, AppleEvent* reply, SInt32) {
  static std::vector<char> contents;
  DescType type = typeNull;
  Size size = 0;
  const OSErr error = AESizeOfParam(event, keyDirectObject, &type, &size);
  if (error != noErr) return error;
  if (contents.size() != static_cast<std::size_t>(size)) {
    contents = contentsOf(static_cast<std::size_t>(size));
  }
  return AEPutParamPtr(reply, keyDirectObject, kContents, contents.data(), size);
}

SInt32 dispatch(UInt32 eventClass, UInt32 eventID, const AEDesc* event, AEDesc* reply, void*) {
  if (eventClass != kClass || eventID != kAsk) return errAEEventNotHandled;
  return answer(event, reply, 0);
}

/// Has the Apple Event Manager dispatch what arrives, which keeps nothing of it: fit for a program
/// that runs for long.
class DispatchingListener final : public QRLPortAEMachPortListener {
 public:
  void PortCallback(CFMachPortRef, void* message, CFIndex) override {
    AEProcessMessage(static_cast<mach_msg_header_t*>(message));
  }
};

}  // namespace

std::unique_ptr<Client> openEventClient(const Road& road) {
  if (road.way == "request") return std::make_unique<RequestingClient>(road);
  return std::make_unique<RepeatingClient>(road);
}

void serveEvents(const Road& road) {
  require(AEInstallEventHandler(kClass, kAsk, NewAEEventHandlerUPP(answer), 0, false) == noErr,
          "no handler");
  QRLPortAEMachPortListener plain;
  DispatchingListener dispatching;
  QRLPortAEMachPortListener& listener = road.way == "listener" ? plain : dispatching;
  require(listener.ListenOnPort(road.address.c_str(), CFRunLoopGetCurrent(), dispatch, nullptr) ==
              noErr,
          "no port");
  sayReady();
  RunApplicationEventLoop();
}

}  // namespace bench
