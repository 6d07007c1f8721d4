// Licence: MIT, see LICENSE.
// Sending to ports and processes, with servers on threads of their own.
#include <AE/AEMach.h>
#include <AE/AppleEvents.h>
#include <HIServices/Processes.h>
#include <HIToolbox/Events.h>
#include <mach/mach.h>

#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "platform/host/Clock.h"
#include "platform/mach/MessageBlock.h"
#include "platform/mach/PortSpace.h"
#include "platform/processes/ProcessTable.h"
#include "tests/platform/appleevents/Descriptors.h"
#include "tests/platform/appleevents/Messages.h"
#include "tests/support/PrivateRoot.h"

namespace {

namespace mach = platform::mach;
using platform::host::Deadline;
using tests::attribute;
using tests::Desc;
using tests::parameter;

constexpr platform::host::Nanoseconds kPatience = 30'000'000'000;
constexpr SInt32 kPatienceInTicks = 30 * 60;

mach_port_t allocatePort() {
  mach_port_t port = MACH_PORT_NULL;
  EXPECT_EQ(mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &port), KERN_SUCCESS);
  return port;
}

/// A receive right that goes with its owner.
class OwnPort final {
 public:
  OwnPort() : port(allocatePort()) {}
  ~OwnPort() { destroy(); }
  OwnPort(const OwnPort&) = delete;
  OwnPort& operator=(const OwnPort&) = delete;

  mach_port_t name() const { return port; }
  void destroy() {
    if (port != MACH_PORT_NULL) mach_port_destroy(mach_task_self(), port);
    port = MACH_PORT_NULL;
  }

 private:
  mach_port_t port;
};

struct Request {
  Desc event;
  Desc reply;
};

/// The next event of a port, decoded.
OSStatus takeRequest(mach_port_t port, Request& request, Deadline deadline) {
  mach::Message message;
  const kern_return_t result = mach::receive(port, message, deadline);
  if (result != KERN_SUCCESS) return result;
  mach::MessageBlock block = mach::makeBlock(std::move(message));
  const OSStatus status = AEDecodeMessage(&block.header, &request.event, &request.reply);
  mach::destroyBlock(block);
  return status;
}

OSStatus answer(const Desc& reply) {
  return AESendMessage(reply.get(), nullptr, kAENoReply, kAEDefaultTimeout);
}

class Sending : public testing::Test {
 protected:
  /// An event to the server's port.
  Desc makeRequest() {
    const Desc target = tests::makeValue<mach_port_t>(typeMachPort, server.name());
    Desc event;
    EXPECT_EQ(AECreateAppleEvent('test', 'case', &target, kAutoGenerateReturnID, 9, &event), noErr);
    return event;
  }

  /// Runs `serve` with the next request on another thread.
  std::thread serveOnce(std::function<void(Request&)> serve) {
    return std::thread([this, serve = std::move(serve)] {
      Request request;
      ASSERT_EQ(takeRequest(server.name(), request, Deadline::after(kPatience)), noErr);
      serve(request);
    });
  }

  void putReplyPort(Desc& event, mach_port_t port) {
    ASSERT_EQ(AEPutAttributePtr(&event, keyReplyPortAttr, typeMachPort, &port, sizeof port), noErr);
  }

  /// What still waits at a port.
  bool isEmpty(mach_port_t port) {
    mach::Message message;
    return mach::receive(port, message, Deadline::immediate()) == MACH_RCV_TIMED_OUT;
  }

  tests::PrivateRoot root;
  OwnPort server;
};

void answerWithDouble(Request& request) {
  const auto value = parameter<SInt32>(request.event, keyDirectObject, typeSInt32);
  ASSERT_TRUE(value);
  ASSERT_EQ(tests::putParameter<SInt32>(request.reply, keyDirectObject, typeSInt32, *value * 2),
            noErr);
  EXPECT_EQ(answer(request.reply), noErr);
}

TEST_F(Sending, BringsTheReplyThatTheServerFilledIn) {
  std::thread thread = serveOnce(answerWithDouble);
  Desc event = makeRequest();
  ASSERT_EQ(tests::putParameter<SInt32>(event, keyDirectObject, typeSInt32, 21), noErr);
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kPatienceInTicks), noErr);
  thread.join();
  EXPECT_EQ(parameter<SInt32>(reply, keyDirectObject, typeSInt32), 42);
  EXPECT_EQ(attribute<OSType>(reply, keyEventClassAttr, typeType), OSType{kCoreEventClass});
  EXPECT_EQ(attribute<OSType>(reply, keyEventIDAttr, typeType), OSType{kAEAnswer});
  EXPECT_EQ(attribute<SInt16>(reply, keyReturnIDAttr, typeSInt16),
            attribute<SInt16>(event, keyReturnIDAttr, typeSInt16));
  EXPECT_EQ(attribute<SInt32>(reply, keyTransactionIDAttr, typeSInt32), 9);
}

TEST_F(Sending, TellsTheServerHowItWasSent) {
  std::thread thread = serveOnce([this](Request& request) {
    EXPECT_EQ(attribute<Boolean>(request.event, keyReplyRequestedAttr, typeBoolean), 1);
    EXPECT_EQ(attribute<SInt32>(request.event, keyTimeoutAttr, typeSInt32), kPatienceInTicks);
    EXPECT_EQ(attribute<SInt32>(request.event, keyInteractLevelAttr, typeSInt32),
              SInt32{kAENeverInteract});
    EXPECT_EQ(attribute<SInt16>(request.event, keyEventSourceAttr, typeSInt16),
              SInt16{kAESameProcess});
    EXPECT_EQ(attribute<UInt32>(request.event, keyAddressAttr, typeMachPort), server.name());
    EXPECT_EQ(answer(request.reply), noErr);
  });
  Desc event = makeRequest();
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply | kAENeverInteract, kPatienceInTicks),
            noErr);
  thread.join();
}

TEST_F(Sending, NamesItsProcessOnceItHasCheckedIn) {
  ProcessSerialNumber self;
  ASSERT_EQ(GetCurrentProcess(&self), noErr);
  Desc event = makeRequest();
  ASSERT_EQ(AESendMessage(&event, nullptr, kAENoReply, kPatienceInTicks), noErr);
  Request request;
  ASSERT_EQ(takeRequest(server.name(), request, Deadline::after(kPatience)), noErr);
  const auto sender = attribute<ProcessSerialNumber>(request.event, keyOriginalAddressAttr,
                                                     typeProcessSerialNumber);
  ASSERT_TRUE(sender);
  EXPECT_EQ(sender->lowLongOfPSN, self.lowLongOfPSN);
}

TEST_F(Sending, WithoutAReplyAsksForNone) {
  Desc event = makeRequest();
  Desc reply = tests::makeText("old");
  AEDisposeDesc(&reply);
  ASSERT_EQ(AESendMessage(&event, &reply, kAENoReply, kPatienceInTicks), noErr);
  EXPECT_TRUE(reply.isNull());
  Request request;
  ASSERT_EQ(takeRequest(server.name(), request, Deadline::after(kPatience)), noErr);
  EXPECT_EQ(attribute<Boolean>(request.event, keyReplyRequestedAttr, typeBoolean), 0);
  EXPECT_TRUE(request.reply.isNull());
  EXPECT_EQ(answer(request.reply), errAENotAppleEvent);
}

TEST_F(Sending, UsesTheEventsReplyPort) {
  OwnPort replyPort;
  std::thread thread = serveOnce(answerWithDouble);
  Desc event = makeRequest();
  putReplyPort(event, replyPort.name());
  ASSERT_EQ(tests::putParameter<SInt32>(event, keyDirectObject, typeSInt32, 4), noErr);
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kPatienceInTicks), noErr);
  thread.join();
  EXPECT_EQ(parameter<SInt32>(reply, keyDirectObject, typeSInt32), 8);
  EXPECT_EQ(attribute<UInt32>(reply, keyAddressAttr, typeMachPort), replyPort.name());
  EXPECT_TRUE(isEmpty(replyPort.name()));
}

TEST_F(Sending, QueuesTheReplyAtTheEventsReplyPort) {
  OwnPort replyPort;
  Desc event = makeRequest();
  putReplyPort(event, replyPort.name());
  Desc reply;
  ASSERT_EQ(AESendMessage(&event, &reply, kAEQueueReply, kPatienceInTicks), noErr);
  EXPECT_TRUE(reply.isNull());
  Request request;
  ASSERT_EQ(takeRequest(server.name(), request, Deadline::after(kPatience)), noErr);
  EXPECT_EQ(attribute<Boolean>(request.event, keyReplyRequestedAttr, typeBoolean), 1);
  ASSERT_EQ(answer(request.reply), noErr);
  Request arrived;
  ASSERT_EQ(takeRequest(replyPort.name(), arrived, Deadline::after(kPatience)), noErr);
  EXPECT_EQ(attribute<OSType>(arrived.event, keyEventIDAttr, typeType), OSType{kAEAnswer});
}

TEST_F(Sending, RefusesAReplyPortThatIsNotOurs) {
  OwnPort gone;
  const mach_port_t name = gone.name();
  gone.destroy();
  Desc event = makeRequest();
  putReplyPort(event, name);
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kPatienceInTicks), paramErr);
  EXPECT_TRUE(isEmpty(server.name()));
}

TEST_F(Sending, TimesOutAndDropsTheLateReply) {
  OwnPort replyPort;
  Desc event = makeRequest();
  putReplyPort(event, replyPort.name());
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, 1), errAETimeout);
  EXPECT_TRUE(reply.isNull());
  Request first;
  ASSERT_EQ(takeRequest(server.name(), first, Deadline::after(kPatience)), noErr);
  answer(first.reply);
  EXPECT_TRUE(isEmpty(replyPort.name()));

  // The same event again, with the same return ID: its reply is its own.
  std::thread thread = serveOnce([](Request& request) {
    tests::putParameter<SInt32>(request.reply, 'mark', typeSInt32, 2);
    EXPECT_EQ(answer(request.reply), noErr);
  });
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kPatienceInTicks), noErr);
  thread.join();
  EXPECT_EQ(parameter<SInt32>(reply, 'mark', typeSInt32), 2);
}

TEST_F(Sending, DoesNotWaitForAReplyWithATimeOutOfZero) {
  Desc event = makeRequest();
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, 0), errAETimeout);
  EXPECT_TRUE(reply.isNull());
}

TEST_F(Sending, TimesOutWhenTheServersQueueStaysFull) {
  Desc event = makeRequest();
  const std::string text(100'000, 'x');
  ASSERT_EQ(AEPutParamPtr(&event, keyDirectObject, typeChar, text.data(), 100'000), noErr);
  OSStatus status = noErr;
  for (int i = 0; i < 10'000 && status == noErr; ++i) {
    status = AESendMessage(&event, nullptr, kAENoReply, 1);
  }
  EXPECT_EQ(status, errAETimeout);
  Request request;
  EXPECT_EQ(takeRequest(server.name(), request, Deadline::after(kPatience)), noErr);
  EXPECT_EQ(AESendMessage(&event, nullptr, kAENoReply, kPatienceInTicks), noErr);
}

TEST_F(Sending, DropsTheReplyToAnotherRequest) {
  OwnPort replyPort;
  Desc other = makeRequest();
  Desc event = makeRequest();
  putReplyPort(other, replyPort.name());
  putReplyPort(event, replyPort.name());
  ASSERT_EQ(AESendMessage(&other, nullptr, kAEQueueReply, kPatienceInTicks), noErr);
  Request first;
  ASSERT_EQ(takeRequest(server.name(), first, Deadline::after(kPatience)), noErr);
  ASSERT_EQ(answer(first.reply), noErr);
  std::thread thread = serveOnce([](Request& request) { answer(request.reply); });
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kPatienceInTicks), noErr);
  thread.join();
  EXPECT_EQ(attribute<SInt16>(reply, keyReturnIDAttr, typeSInt16),
            attribute<SInt16>(event, keyReturnIDAttr, typeSInt16));
}

TEST_F(Sending, ToADeadPortFailsAtOnce) {
  Desc event = makeRequest();
  server.destroy();
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kNoTimeOut), connectionInvalid);
  EXPECT_EQ(AESendMessage(&event, nullptr, kAENoReply, kNoTimeOut), connectionInvalid);
  EXPECT_EQ(AESend(&event, &reply, kAEWaitReply, kAENormalPriority, kNoTimeOut, nullptr, nullptr),
            connectionInvalid);
}

TEST_F(Sending, FailsWhenTheServerDiesBeforeItAnswers) {
  std::thread thread([this] {
    mach::Message message;
    ASSERT_EQ(mach::receive(server.name(), message, Deadline::after(kPatience)), KERN_SUCCESS);
    mach_port_deallocate(mach_task_self(), message.reply);
  });
  Desc event = makeRequest();
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kNoTimeOut), connectionInvalid);
  EXPECT_TRUE(reply.isNull());
  thread.join();
}

TEST_F(Sending, FailsWhenTheServersPortDiesWithTheRequestInItsQueue) {
  OwnPort replyPort;
  Desc event = makeRequest();
  putReplyPort(event, replyPort.name());
  ASSERT_EQ(AESendMessage(&event, nullptr, kAEQueueReply, kPatienceInTicks), noErr);
  server.destroy();
  mach::Message notice;
  ASSERT_EQ(mach::receive(replyPort.name(), notice, Deadline::after(kPatience)), KERN_SUCCESS);
  EXPECT_EQ(notice.id, MACH_NOTIFY_SEND_ONCE);
}

TEST_F(Sending, FailsWhenTheReplyIsDisposedOfUnsent) {
  std::thread thread = serveOnce([](Request& request) {
    Desc copy;
    ASSERT_EQ(AEDuplicateDesc(&request.reply, &copy), noErr);
    AEDisposeDesc(&request.reply);  // the copy keeps the right
    AEDisposeDesc(&copy);
  });
  Desc event = makeRequest();
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kNoTimeOut), connectionInvalid);
  thread.join();
}

TEST_F(Sending, AnswersOnce) {
  std::thread thread = serveOnce([](Request& request) {
    EXPECT_EQ(answer(request.reply), noErr);
    EXPECT_EQ(answer(request.reply), connectionInvalid);
  });
  Desc event = makeRequest();
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kPatienceInTicks), noErr);
  thread.join();
}

TEST_F(Sending, RefusesAReplyThatIsNoEvent) {
  std::thread thread([this] {
    mach::Message message;
    ASSERT_EQ(mach::receive(server.name(), message, Deadline::after(kPatience)), KERN_SUCCESS);
    const std::byte junk[8] = {};
    EXPECT_EQ(mach::send(message.reply, MACH_PORT_NULL, mach::kAppleEventMessageID, junk,
                         Deadline::after(kPatience)),
              KERN_SUCCESS);
  });
  Desc event = makeRequest();
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kPatienceInTicks), errAECorruptData);
  EXPECT_TRUE(reply.isNull());
  thread.join();
}

TEST_F(Sending, CarriesAMegabyteBothWays) {
  const std::string text(1 << 20, 'x');
  std::thread thread = serveOnce([](Request& request) {
    Desc found;
    ASSERT_EQ(AEGetParamDesc(&request.event, keyDirectObject, typeChar, &found), noErr);
    ASSERT_EQ(AEPutParamDesc(&request.reply, keyDirectObject, &found), noErr);
    EXPECT_EQ(answer(request.reply), noErr);
  });
  Desc event = makeRequest();
  ASSERT_EQ(AEPutParamPtr(&event, keyDirectObject, typeChar, text.data(), 1 << 20), noErr);
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kPatienceInTicks), noErr);
  thread.join();
  Desc found;
  ASSERT_EQ(AEGetParamDesc(&reply, keyDirectObject, typeChar, &found), noErr);
  EXPECT_EQ(tests::textOf(found), text);
}

TEST_F(Sending, RefusesBadArguments) {
  Desc event = makeRequest();
  Desc reply;
  Desc record = tests::makeRecord();
  EXPECT_EQ(AESendMessage(nullptr, &reply, kAEWaitReply, 1), paramErr);
  EXPECT_EQ(AESendMessage(&event, nullptr, kAEWaitReply, 1), paramErr);
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, -3), paramErr);
  EXPECT_EQ(AESendMessage(&event, &reply, 0, 1), errAEUnknownSendMode);
  EXPECT_EQ(AESendMessage(&event, &reply, kAECanInteract, 1), errAEUnknownSendMode);
  EXPECT_EQ(AESendMessage(&record, &reply, kAEWaitReply, 1), errAENotAppleEvent);
  EXPECT_EQ(AESendMessage(Desc().get(), &reply, kAEWaitReply, 1), errAENotAppleEvent);
  EXPECT_TRUE(isEmpty(server.name()));
}

TEST_F(Sending, NeedsAnAddressThatItKnows) {
  const Desc text = tests::makeText("somewhere");
  const Desc none;
  for (const AEDesc* target : {text.get(), none.get()}) {
    Desc event;
    ASSERT_EQ(AECreateAppleEvent('test', 'case', target, 1, 0, &event), noErr);
    Desc reply;
    EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, 1), errAEUnknownAddressType);
    EXPECT_EQ(AESend(&event, &reply, kAEWaitReply, kAENormalPriority, 1, nullptr, nullptr),
              errAEUnknownAddressType);
  }
}

TEST_F(Sending, KnowsWhenThereIsNoSuchProcess) {
  const Desc target =
      tests::makeValue<ProcessSerialNumber>(typeProcessSerialNumber, {0, 0x7654321});
  Desc event;
  ASSERT_EQ(AECreateAppleEvent('test', 'case', &target, 1, 0, &event), noErr);
  Desc reply;
  EXPECT_EQ(AESend(&event, &reply, kAEWaitReply, kAENormalPriority, 1, nullptr, nullptr),
            procNotFound);
}

TEST_F(Sending, ReachesTheQueueOfAProcess) {
  ProcessSerialNumber self;
  ASSERT_EQ(GetCurrentProcess(&self), noErr);
  const Desc target = tests::makeValue(typeProcessSerialNumber, self);
  Desc event;
  ASSERT_EQ(AECreateAppleEvent('test', 'case', &target, 1, 0, &event), noErr);
  ASSERT_EQ(
      AESend(&event, nullptr, kAEQueueReply, kAENormalPriority, kPatienceInTicks, nullptr, nullptr),
      noErr);
  const mach_port_t queue = platform::processes::privatePort();
  Request request;
  ASSERT_EQ(takeRequest(queue, request, Deadline::after(kPatience)), noErr);
  EXPECT_EQ(attribute<OSType>(request.event, keyEventIDAttr, typeType), OSType{'case'});
  ASSERT_EQ(answer(request.reply), noErr);
  Request queued;
  ASSERT_EQ(takeRequest(queue, queued, Deadline::after(kPatience)), noErr);
  EXPECT_EQ(attribute<OSType>(queued.event, keyEventIDAttr, typeType), OSType{kAEAnswer});
}

/// What the idle procedures below do and count.
struct Idling {
  int calls = 0;
  int cancelAt = 0;
  std::function<void()> act;
};
Idling gIdling;

Boolean idle(EventRecord* event, SInt32* sleepTime, RgnHandle*) {
  EXPECT_EQ(event->what, nullEvent);
  *sleepTime = 1;
  ++gIdling.calls;
  if (gIdling.act) gIdling.act();
  return gIdling.calls == gIdling.cancelAt;
}

TEST_F(Sending, CallsTheIdleProcedureUntilItEndsTheWait) {
  gIdling = {0, 3, nullptr};
  Desc event = makeRequest();
  Desc reply;
  const AEIdleUPP procedure = NewAEIdleUPP(idle);
  EXPECT_EQ(AESend(&event, &reply, kAEWaitReply, kAENormalPriority, kNoTimeOut, procedure, nullptr),
            errAEWaitCanceled);
  DisposeAEIdleUPP(procedure);
  EXPECT_EQ(gIdling.calls, 3);
  EXPECT_TRUE(reply.isNull());
}

TEST_F(Sending, TakesAReplyThatComesWhileIdling) {
  gIdling = {0, 0, [this] {
               Request request;
               if (takeRequest(server.name(), request, Deadline::immediate()) == noErr) {
                 answerWithDouble(request);
               }
             }};
  Desc event = makeRequest();
  ASSERT_EQ(tests::putParameter<SInt32>(event, keyDirectObject, typeSInt32, 6), noErr);
  Desc reply;
  EXPECT_EQ(AESend(&event, &reply, kAEWaitReply, kAEHighPriority, kPatienceInTicks, idle, nullptr),
            noErr);
  EXPECT_EQ(gIdling.calls, 1);
  EXPECT_EQ(parameter<SInt32>(reply, keyDirectObject, typeSInt32), 12);
  gIdling = {};
}

TEST_F(Sending, TimesOutWhileIdling) {
  gIdling = {};
  Desc event = makeRequest();
  Desc reply;
  EXPECT_EQ(AESend(&event, &reply, kAEWaitReply, kAENormalPriority, 3, idle, nullptr),
            errAETimeout);
  EXPECT_GE(gIdling.calls, 1);
}

TEST_F(Sending, ServesManyThreadsAtOnce) {
  constexpr int kThreads = 4;
  constexpr SInt32 kRequests = 50;
  std::thread serving([this] {
    for (SInt32 left = kThreads * kRequests; left > 0; --left) {
      Request request;
      ASSERT_EQ(takeRequest(server.name(), request, Deadline::after(kPatience)), noErr);
      answerWithDouble(request);
    }
  });
  std::vector<std::thread> clients;
  for (int client = 0; client < kThreads; ++client) {
    clients.emplace_back([this, client] {
      for (SInt32 number = 0; number < kRequests; ++number) {
        Desc event = makeRequest();
        const SInt32 value = client * 1000 + number;
        tests::putParameter<SInt32>(event, keyDirectObject, typeSInt32, value);
        Desc reply;
        ASSERT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kPatienceInTicks), noErr);
        EXPECT_EQ(parameter<SInt32>(reply, keyDirectObject, typeSInt32), value * 2);
      }
    });
  }
  for (std::thread& client : clients) client.join();
  serving.join();
}

OSErr doubleIt(const AppleEvent* event, AppleEvent* reply, SInt32 refcon) {
  SInt32 value = 0;
  const OSErr status =
      AEGetParamPtr(event, keyDirectObject, typeSInt32, nullptr, &value, sizeof value, nullptr);
  if (status != noErr) return status;
  value *= refcon;
  return reply->dataHandle == nullptr
             ? OSErr{noErr}
             : AEPutParamPtr(reply, keyDirectObject, typeSInt32, &value, sizeof value);
}

class Handled : public Sending {
 protected:
  Handled() {
    EXPECT_EQ(AEInstallEventHandler('test', 'case', NewAEEventHandlerUPP(doubleIt), 2, false),
              noErr);
  }
  ~Handled() override { AERemoveEventHandler('test', 'case', nullptr, false); }

  Desc makeCall() {
    const Desc target =
        tests::makeValue<ProcessSerialNumber>(typeProcessSerialNumber, {0, kCurrentProcess});
    Desc event;
    EXPECT_EQ(AECreateAppleEvent('test', 'case', &target, 5, 0, &event), noErr);
    return event;
  }

  OSErr call(Desc& event, Desc& reply, AESendMode mode) {
    return AESend(&event, &reply, mode, kAENormalPriority, kPatienceInTicks, nullptr, nullptr);
  }
};

TEST_F(Handled, ServesACallToItsOwnProcessDirectly) {
  Desc event = makeCall();
  ASSERT_EQ(tests::putParameter<SInt32>(event, keyDirectObject, typeSInt32, 8), noErr);
  Desc reply;
  EXPECT_EQ(call(event, reply, kAEWaitReply), noErr);
  EXPECT_EQ(parameter<SInt32>(reply, keyDirectObject, typeSInt32), 16);
  EXPECT_EQ(attribute<SInt16>(reply, keyReturnIDAttr, typeSInt16), 5);
  EXPECT_EQ(attribute<SInt16>(event, keyEventSourceAttr, typeSInt16), SInt16{kAEDirectCall});
}

TEST_F(Handled, PutsItsErrorIntoTheReplyOfADirectCall) {
  Desc event = makeCall();
  Desc reply;
  EXPECT_EQ(call(event, reply, kAEWaitReply), noErr);
  EXPECT_EQ(parameter<SInt32>(reply, keyErrorNumber, typeSInt32), errAEDescNotFound);
  Desc none;
  EXPECT_EQ(call(event, none, kAENoReply), noErr);
  EXPECT_TRUE(none.isNull());
}

TEST_F(Handled, QueuesTheReplyOfADirectCall) {
  Desc event = makeCall();
  ASSERT_EQ(tests::putParameter<SInt32>(event, keyDirectObject, typeSInt32, 8), noErr);
  Desc none;
  ASSERT_EQ(call(event, none, kAEQueueReply), noErr);
  Request queued;
  ASSERT_EQ(takeRequest(platform::processes::privatePort(), queued, Deadline::after(kPatience)),
            noErr);
  EXPECT_EQ(parameter<SInt32>(queued.event, keyDirectObject, typeSInt32), 16);
}

TEST_F(Handled, TellsADirectCallThatNobodyHandlesIt) {
  ASSERT_EQ(AERemoveEventHandler('test', 'case', nullptr, false), noErr);
  Desc event = makeCall();
  Desc reply;
  EXPECT_EQ(call(event, reply, kAENoReply), errAEEventNotHandled);
  EXPECT_EQ(call(event, reply, kAEWaitReply), noErr);
  EXPECT_EQ(parameter<SInt32>(reply, keyErrorNumber, typeSInt32), errAEEventNotHandled);
}

/// Gives the next message of a port to AEProcessMessage.
OSStatus process(mach_port_t port) {
  mach::Message message;
  EXPECT_EQ(mach::receive(port, message, Deadline::after(kPatience)), KERN_SUCCESS);
  mach::MessageBlock block = mach::makeBlock(std::move(message));
  const OSStatus status = AEProcessMessage(&block.header);
  mach::destroyBlock(block);
  return status;
}

TEST_F(Handled, ServesAMessageAndAnswers) {
  std::thread thread([this] { EXPECT_EQ(process(server.name()), noErr); });
  Desc event = makeRequest();
  ASSERT_EQ(tests::putParameter<SInt32>(event, keyDirectObject, typeSInt32, 8), noErr);
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kPatienceInTicks), noErr);
  thread.join();
  EXPECT_EQ(parameter<SInt32>(reply, keyDirectObject, typeSInt32), 16);
}

TEST_F(Handled, ServesAMessageWithoutAReply) {
  Desc event = makeRequest();
  ASSERT_EQ(AESendMessage(&event, nullptr, kAENoReply, kPatienceInTicks), noErr);
  EXPECT_EQ(process(server.name()), errAEDescNotFound);
}

TEST_F(Handled, AnswersAMessageThatNobodyHandles) {
  ASSERT_EQ(AERemoveEventHandler('test', 'case', nullptr, false), noErr);
  std::thread thread([this] { EXPECT_EQ(process(server.name()), errAEEventNotHandled); });
  Desc event = makeRequest();
  Desc reply;
  EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kPatienceInTicks), noErr);
  thread.join();
  EXPECT_EQ(parameter<SInt32>(reply, keyErrorNumber, typeSInt32), errAEEventNotHandled);
}

}  // namespace
