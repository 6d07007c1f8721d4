// Licence: MIT, see LICENSE.
// What the listener does with the messages that arrive at its port.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <quorvant/aemessaging/QRLPortAEMachPortListener.h>

#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/appleevents/Dispatch.h"
#include "platform/mach/MessageBlock.h"
#include "tests/aemessaging/FrameworkCalls.h"
#include "tests/aemessaging/TestListener.h"
#include "tests/support/PrivateRoot.h"

extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

namespace {

using platform::mach::Deadline;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::OtherPort;
using tests::TestListener;

using tests::kListenerName;

struct Dispatched {
  UInt32 eventClass, eventID;
  void* refcon;
  bool operator==(const Dispatched&) const = default;
};

// What one allocation takes at the least.
constexpr std::size_t kSmallestAllocation = 16;

// Memory in use, as the allocator of this build counts it.
std::size_t allocatedBytes() {
  if (__sanitizer_get_current_allocated_bytes != nullptr) {
    return __sanitizer_get_current_allocated_bytes();
  }
  return mallinfo2().uordblks;
}

class PortListenerMessages : public testing::Test {
 protected:
  PortListenerMessages() : listener(std::make_unique<TestListener>()) {
    current = this;
    EXPECT_EQ(listener->ListenOnPort(kListenerName, CFRunLoopGetCurrent(), dispatch, this), 0);
    port = listener->registeredPort;
    kept.reserve(200);
    dispatched.reserve(200);
  }
  ~PortListenerMessages() override { disposeKept(); }

  // Notes the event, does what the test wants, and keeps the descriptors.
  static SInt32 dispatch(UInt32 eventClass, UInt32 eventID, const AEDesc* event, AEDesc* reply,
                         void* refcon) {
    current->dispatched.push_back({eventClass, eventID, refcon});
    const SInt32 result = current->behaviour(reply);
    current->kept.push_back(*event);
    current->kept.push_back(*reply);
    return result;
  }

  // Sends an event that wants its answer at `answers`, or none.
  void post(AEEventClass eventClass, AEEventID eventID, AESendMode mode, mach_port_t to) {
    AEAddressDesc target;
    AppleEvent event;
    ASSERT_EQ(AECreateDesc(typeMachPort, &to, sizeof to, &target), noErr);
    ASSERT_EQ(AECreateAppleEvent(eventClass, eventID, &target, 1, 0, &event), noErr);
    ASSERT_EQ(AEPutAttributePtr(&event, keyReplyPortAttr, typeMachPort, &answers.port,
                                sizeof answers.port),
              noErr);
    ASSERT_EQ(AESendMessage(&event, nullptr, mode, 60 * 60), noErr);
    AEDisposeDesc(&event);
    AEDisposeDesc(&target);
  }
  void ask() { post('QrlP', 'Mcam', kAEQueueReply, port); }
  void tell() { post('QrlP', 'Mcam', kAENoReply, port); }

  void postRaw(mach_msg_id_t id, std::string_view bytes) {
    ASSERT_EQ(platform::mach::send(port, answers.port, id, std::as_bytes(std::span(bytes)),
                                   Deadline::immediate()),
              KERN_SUCCESS);
  }

  void serve() {
    ASSERT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 60, true), kCFRunLoopRunHandledSource);
  }

  // The next message at the port for answers: its ID, or nothing.
  std::optional<platform::mach::Message> answer() {
    platform::mach::Message message;
    if (platform::mach::receive(answers.port, message, Deadline::immediate()) != KERN_SUCCESS) {
      return std::nullopt;
    }
    return message;
  }

  // The "errn" of the answer that has come: nothing if there is none.
  struct Answer {
    bool came = false;
    std::optional<SInt32> error;
    DescType errorType = 0;
  };
  Answer readAnswer() {
    Answer read;
    auto message = answer();
    AppleEvent reply;
    if (!message || platform::appleevents::decodeMessage(std::move(*message), &reply, nullptr)) {
      return read;
    }
    read.came = true;
    SInt32 number = 0;
    if (AEGetParamPtr(&reply, keyErrorNumber, typeSInt32, &read.errorType, &number, sizeof number,
                      nullptr) == noErr) {
      Size size = 0;
      EXPECT_EQ(AESizeOfParam(&reply, keyErrorNumber, &read.errorType, &size), noErr);
      EXPECT_EQ(size, 4);
      read.error = number;
    }
    AEDisposeDesc(&reply);
    return read;
  }

  void disposeKept() {
    for (AEDesc& desc : kept) AEDisposeDesc(&desc);
    kept.clear();
  }

  static PortListenerMessages* current;
  tests::PrivateRoot root;
  tests::FrameworkCalls calls;
  OtherPort answers;
  std::unique_ptr<TestListener> listener;
  mach_port_t port;
  std::function<SInt32(AEDesc* reply)> behaviour = [](AEDesc*) { return 0; };
  std::vector<Dispatched> dispatched;
  std::vector<AEDesc> kept;
};

PortListenerMessages* PortListenerMessages::current = nullptr;

TEST_F(PortListenerMessages, AreDispatchedWithClassIDAndRefcon) {
  post('AbCd', 'efgh', kAENoReply, port);
  serve();
  EXPECT_THAT(dispatched, ElementsAre(Dispatched{'AbCd', 'efgh', this}));
}

TEST_F(PortListenerMessages, AreDispatchedInTheOrderOfTheirArrival) {
  post('QrlP', 'aaaa', kAENoReply, port);
  post('QrlP', 'bbbb', kAENoReply, port);
  serve();
  serve();
  EXPECT_THAT(dispatched,
              ElementsAre(Dispatched{'QrlP', 'aaaa', this}, Dispatched{'QrlP', 'bbbb', this}));
}

TEST_F(PortListenerMessages, AreAnsweredWithoutErrorForAZeroResult) {
  ask();
  serve();
  const Answer answer = readAnswer();
  EXPECT_TRUE(answer.came);
  EXPECT_EQ(answer.error, std::nullopt);
}

TEST_F(PortListenerMessages, AreAnsweredWithTheCallbacksResult) {
  for (SInt32 result :
       std::initializer_list<SInt32>{-1, 1, -1708, SInt32(0xE00002BE), 0x12345678}) {
    behaviour = [result](AEDesc*) { return result; };
    ask();
    serve();
    const Answer answer = readAnswer();
    EXPECT_EQ(answer.error, result);
    EXPECT_EQ(answer.errorType, DescType('long'));
  }
}

TEST_F(PortListenerMessages, AreAnsweredWithWhatTheCallbackPutIntoTheReply) {
  behaviour = [](AEDesc* reply) {
    const SInt32 own = 5;
    EXPECT_EQ(AEPutParamPtr(reply, keyErrorNumber, typeSInt32, &own, sizeof own), noErr);
    return 0;
  };
  ask();
  serve();
  EXPECT_EQ(readAnswer().error, 5);
}

TEST_F(PortListenerMessages, AreAnsweredWithTheResultInPlaceOfTheCallbacksOwnNumber) {
  behaviour = [](AEDesc* reply) {
    const SInt32 own = 5;
    EXPECT_EQ(AEPutParamPtr(reply, keyErrorNumber, typeSInt32, &own, sizeof own), noErr);
    return -7;
  };
  ask();
  serve();
  EXPECT_EQ(readAnswer().error, -7);
}

TEST_F(PortListenerMessages, AreAnsweredNotHandledWithoutACallback) {
  listener->callback = nullptr;
  ask();
  serve();
  EXPECT_THAT(dispatched, IsEmpty());
  EXPECT_EQ(readAnswer().error, errAEEventNotHandled);
}

TEST_F(PortListenerMessages, AreNotAnsweredWhenTheSenderWantsNoReply) {
  for (SInt32 result : {0, -1708}) {
    behaviour = [result](AEDesc* reply) {
      EXPECT_EQ(reply->descriptorType, DescType(typeNull));
      return result;
    };
    tell();
    const int sent = calls.sendMessage.count;
    serve();
    EXPECT_EQ(calls.sendMessage.count, sent);
  }
  EXPECT_EQ(dispatched.size(), 2u);
  EXPECT_FALSE(answer());
}

TEST_F(PortListenerMessages, AreNotAnsweredWhenTheResultCannotBePut) {
  behaviour = [](AEDesc*) { return -1; };
  calls.putParam.instead = [](AEKeyword keyword) {
    return keyword == keyErrorNumber ? OSErr(memFullErr) : OSErr(noErr);
  };
  ask();
  const int sent = calls.sendMessage.count;
  serve();
  EXPECT_EQ(dispatched.size(), 1u);
  EXPECT_EQ(calls.sendMessage.count, sent);
}

TEST_F(PortListenerMessages, AreAnsweredOnceWithoutWaiting) {
  struct {
    SInt32 mode, timeout;
    const AppleEvent* reply;
  } used{0, 0, nullptr};
  ask();
  calls.sendMessage.instead = [&](const AppleEvent*, AppleEvent* reply, AESendMode mode,
                                  SInt32 timeout) {
    used = {mode, timeout, reply};
    return OSStatus(connectionInvalid);
  };
  const int sent = calls.sendMessage.count;
  serve();
  EXPECT_EQ(calls.sendMessage.count, sent + 1);
  EXPECT_EQ(used.mode, kAENoReply);
  EXPECT_EQ(used.timeout, kAEDefaultTimeout);
  EXPECT_EQ(used.reply, nullptr);
}

TEST_F(PortListenerMessages, AreIgnoredWhenTheyComeFromAnotherPort) {
  CFMachPortContext context{};
  context.info = listener.get();
  const CFMachPortRef foreign =
      CFMachPortCreate(nullptr, TestListener::_PortCallback, &context, nullptr);
  const CFRunLoopSourceRef source = CFMachPortCreateRunLoopSource(nullptr, foreign, 0);
  CFRunLoopAddSource(CFRunLoopGetCurrent(), source, kCFRunLoopDefaultMode);
  post('QrlP', 'Mcam', kAEQueueReply, CFMachPortGetPort(foreign));
  serve();
  EXPECT_THAT(dispatched, IsEmpty());
  EXPECT_FALSE(readAnswer().came);
  CFMachPortInvalidate(foreign);
  CFRelease(source);
  CFRelease(foreign);
}

TEST_F(PortListenerMessages, AreIgnoredWhenTheyAreNoAppleEvents) {
  const std::string_view bodies[] = {"", "a", "not an event at all",
                                     std::string_view("ae\0\1\0\0\0\0\0\0\0\0\0\0\0\0", 16)};
  for (std::string_view body : bodies) {
    postRaw(platform::mach::kAppleEventMessageID, body);
    serve();
    const auto notice = answer();
    ASSERT_TRUE(notice);
    EXPECT_EQ(notice->id, MACH_NOTIFY_SEND_ONCE) << body;
  }
  EXPECT_THAT(dispatched, IsEmpty());
  ask();
  serve();
  EXPECT_EQ(dispatched.size(), 1u);
}

TEST_F(PortListenerMessages, AreIgnoredWithoutAMessage) {
  listener->PortCallback(listener->machPort, nullptr, 0);
  EXPECT_THAT(dispatched, IsEmpty());
}

TEST_F(PortListenerMessages, AreIgnoredWhenAnAttributeIsMissing) {
  for (AEKeyword missing : {keyEventClassAttr, keyEventIDAttr, keyReplyRequestedAttr}) {
    calls.getAttribute.instead = [missing](AEKeyword keyword) {
      return keyword == missing ? OSErr(errAEDescNotFound) : OSErr(noErr);
    };
    ask();
    const int sent = calls.sendMessage.count;
    serve();
    EXPECT_EQ(calls.sendMessage.count, sent);
  }
  EXPECT_THAT(dispatched, IsEmpty());
  EXPECT_FALSE(answer());
}

TEST_F(PortListenerMessages, MayEndTheListener) {
  behaviour = [this](AEDesc*) {
    listener.reset();
    return -5;
  };
  ask();
  serve();
  EXPECT_EQ(readAnswer().error, -5);
  EXPECT_EQ(tests::portBehind(kListenerName), MACH_PORT_NULL);
}

// -- The descriptors that are left behind --

TEST_F(PortListenerMessages, LeaveTheEventAndTheReplyBehindAndNothingElse) {
  const auto roundTrip = [this] {
    ask();
    serve();
    EXPECT_TRUE(readAnswer().came);
    ASSERT_EQ(kept.size(), 2u);
    EXPECT_EQ(kept[0].descriptorType, DescType(typeAppleEvent));
    EXPECT_EQ(kept[1].descriptorType, DescType(typeAppleEvent));
    dispatched.clear();
  };
  const auto roundTrips = [&](int count) {
    for (int i = 0; i < count; ++i) {
      roundTrip();
      disposeKept();
    }
  };
  roundTrips(100);  // the allocator's own caches fill up
  const std::ptrdiff_t descriptors = tests::openDescriptors();
  const std::size_t before = allocatedBytes();
  roundTrips(500);
  EXPECT_LT(allocatedBytes(), before + 500 * kSmallestAllocation);
  EXPECT_EQ(tests::openDescriptors(), descriptors);
  // So many that the allocator cannot keep all of them in its caches.
  constexpr std::size_t kMany = 20;
  for (std::size_t i = 0; i < kMany; ++i) {
    ask();
    serve();
    EXPECT_TRUE(readAnswer().came);
  }
  ASSERT_EQ(kept.size(), 2 * kMany);
  const std::size_t withAll = allocatedBytes();
  disposeKept();
  EXPECT_LT(allocatedBytes(), withAll - 2 * kMany * kSmallestAllocation);
}

TEST_F(PortListenerMessages, LeaveOnlyTheEventBehindWhenNoReplyIsWanted) {
  tell();
  serve();
  ASSERT_EQ(kept.size(), 2u);
  EXPECT_EQ(kept[0].descriptorType, DescType(typeAppleEvent));
  EXPECT_EQ(kept[1].descriptorType, DescType(typeNull));
  EXPECT_EQ(kept[1].dataHandle, nullptr);
}

// -- QRLGetAEDispatchAttributes --

class DispatchAttributes : public testing::Test {
 protected:
  DispatchAttributes() {
    EXPECT_EQ(AECreateAppleEvent('QrlP', 'Mcam', nullptr, 1, 0, &event), noErr);
  }
  ~DispatchAttributes() override { AEDisposeDesc(&event); }
  void wantReply(Boolean wanted) {
    EXPECT_EQ(AEPutAttributePtr(&event, keyReplyRequestedAttr, typeBoolean, &wanted, 1), noErr);
  }
  AppleEvent event;
};

TEST_F(DispatchAttributes, AreRead) {
  for (Boolean wanted : {0, 1}) {
    wantReply(wanted);
    UInt32 eventClass = 0, eventID = 0;
    unsigned char wantsReply = 9;
    EXPECT_EQ(QRLGetAEDispatchAttributes(event, &eventClass, &eventID, &wantsReply), noErr);
    EXPECT_EQ(eventClass, UInt32('QrlP'));
    EXPECT_EQ(eventID, UInt32('Mcam'));
    EXPECT_EQ(wantsReply, wanted);
  }
}

TEST_F(DispatchAttributes, AreReadOnlyWhereWanted) {
  wantReply(true);
  UInt32 eventID = 0;
  EXPECT_EQ(QRLGetAEDispatchAttributes(event, nullptr, nullptr, nullptr), noErr);
  EXPECT_EQ(QRLGetAEDispatchAttributes(event, nullptr, &eventID, nullptr), noErr);
  EXPECT_EQ(eventID, UInt32('Mcam'));
}

TEST_F(DispatchAttributes, EndAtTheFirstThatIsMissing) {
  wantReply(true);
  for (AEKeyword missing : {keyEventClassAttr, keyEventIDAttr, keyReplyRequestedAttr}) {
    tests::FrameworkCalls calls;
    calls.getAttribute.instead = [missing](AEKeyword keyword) {
      return keyword == missing ? OSErr(errAEDescNotFound) : OSErr(noErr);
    };
    UInt32 eventClass = 0, eventID = 0;
    unsigned char wantsReply = 9;
    EXPECT_EQ(QRLGetAEDispatchAttributes(event, &eventClass, &eventID, &wantsReply),
              errAEDescNotFound);
    EXPECT_EQ(eventClass, missing == keyEventClassAttr ? 0 : UInt32('QrlP'));
    EXPECT_EQ(eventID, missing == keyReplyRequestedAttr ? UInt32('Mcam') : 0);
    EXPECT_EQ(wantsReply, 9);
  }
}

TEST_F(DispatchAttributes, CannotBeReadFromSomethingElse) {
  AEDesc text;
  ASSERT_EQ(AECreateDesc(typeChar, "text", 4, &text), noErr);
  UInt32 eventClass = 1;
  EXPECT_EQ(QRLGetAEDispatchAttributes(text, &eventClass, nullptr, nullptr), errAENotAppleEvent);
  EXPECT_EQ(eventClass, 1u);
  AEDisposeDesc(&text);
}

}  // namespace
