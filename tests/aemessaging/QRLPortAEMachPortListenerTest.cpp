// Licence: MIT, see LICENSE.
// How the listener gets, keeps and loses its port and its name.
#include <IOKit/IOReturn.h>
#include <gtest/gtest.h>
#include <quorvant/aemessaging/QRLPortAEMachPortListener.h>

#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "tests/aemessaging/FrameworkCalls.h"
#include "tests/aemessaging/TestListener.h"
#include "tests/support/PrivateRoot.h"

extern "C" kern_return_t __real_mach_port_destroy(task_t task, mach_port_name_t name);

namespace {

using tests::OtherPort;
using tests::portBehind;
using tests::rightsOf;
using tests::sendRightsOf;
using tests::TestListener;

using tests::kListenerName;
constexpr mach_port_t kForeign = 0x7ffff7;  // a port name that this process does not have

class PortListener : public testing::Test {
 protected:
  PortListener() : listener(std::make_unique<TestListener>()) {}

  SInt32 listen(const char* name = kListenerName) {
    return listener->ListenOnPort(name, runLoop, tests::ignoreEvent, nullptr);
  }
  // Listens, and forgets which calls that took.
  void start() {
    ASSERT_EQ(listen(), 0);
    forgetCalls();
  }
  void forgetCalls() { calls.emplace(); }
  // Makes the next look-up find a certain port, and all others nothing.
  void findFirst(mach_port_t port) {
    calls->lookUp.instead = [port, first = true](const char*, mach_port_t* found) mutable {
      *found = std::exchange(first, false) ? port : MACH_PORT_NULL;
      return *found != MACH_PORT_NULL ? BOOTSTRAP_SUCCESS : BOOTSTRAP_UNKNOWN_SERVICE;
    };
  }
  bool isServed(CFRunLoopRef loop) {
    return CFRunLoopContainsSource(loop, listener->runLoopSource, kCFRunLoopDefaultMode);
  }
  mach_port_t ownPort() const { return CFMachPortGetPort(listener->machPort); }

  tests::PrivateRoot root;
  std::optional<tests::FrameworkCalls> calls{std::in_place};
  CFRunLoopRef runLoop = CFRunLoopGetCurrent();
  std::unique_ptr<TestListener> listener;
};

void expectIdle(const TestListener& listener) {
  EXPECT_EQ(listener.machPort, nullptr);
  EXPECT_EQ(listener.runLoopSource, nullptr);
  EXPECT_EQ(listener.registeredPort, MACH_PORT_NULL);
}

TEST_F(PortListener, StartsWithEveryFieldZero) {
  expectIdle(*listener);
  EXPECT_EQ(listener->callback, nullptr);
  EXPECT_EQ(listener->refcon, nullptr);
  for (char character : listener->portName) EXPECT_EQ(character, '\0');
}

TEST_F(PortListener, RegistersItsPortUnderTheName) {
  EXPECT_EQ(listen(), 0);
  EXPECT_STREQ(listener->portName, kListenerName);
  EXPECT_NE(listener->registeredPort, MACH_PORT_NULL);
  EXPECT_EQ(listener->registeredPort, ownPort());
  EXPECT_EQ(portBehind(kListenerName), ownPort());
  EXPECT_TRUE(isServed(runLoop));
}

TEST_F(PortListener, GivesItselfToCoreFoundation) {
  start();
  CFMachPortContext context{};
  CFMachPortGetContext(listener->machPort, &context);
  EXPECT_EQ(context.version, 0);
  EXPECT_EQ(context.info, listener.get());
  EXPECT_EQ(context.retain, nullptr);
  EXPECT_EQ(context.release, nullptr);
  EXPECT_EQ(context.copyDescription, nullptr);
  EXPECT_EQ(CFMachPortGetInvalidationCallBack(listener->machPort), TestListener::_PortInvalidated);
}

// -- Arguments --

TEST_F(PortListener, RejectsANullCallback) {
  EXPECT_EQ(listener->ListenOnPort(kListenerName, runLoop, nullptr, nullptr), paramErr);
  expectIdle(*listener);
  EXPECT_STREQ(listener->portName, "");
}

TEST_F(PortListener, RejectsANullOrEmptyName) {
  EXPECT_EQ(listen(nullptr), paramErr);
  EXPECT_EQ(listen(""), paramErr);
  expectIdle(*listener);
}

TEST_F(PortListener, AcceptsANameOf127Characters) {
  const std::string name(127, 'n');
  EXPECT_EQ(listen(name.c_str()), 0);
  EXPECT_EQ(listener->portName, name);
  EXPECT_EQ(portBehind(name.c_str()), ownPort());
}

TEST_F(PortListener, RejectsANameOf128Characters) {
  const std::string name(128, 'n');
  EXPECT_EQ(listen(name.c_str()), paramErr);
  expectIdle(*listener);
  EXPECT_STREQ(listener->portName, "");
}

TEST_F(PortListener, RejectsASecondNameAndKeepsTheFirst) {
  start();
  const mach_port_t port = ownPort();
  EXPECT_EQ(listen("com.quorvant.test.other"), paramErr);
  EXPECT_STREQ(listener->portName, kListenerName);
  EXPECT_EQ(portBehind(kListenerName), port);
  EXPECT_EQ(portBehind("com.quorvant.test.other"), MACH_PORT_NULL);
  EXPECT_TRUE(isServed(runLoop));
}

TEST_F(PortListener, LooksNothingUpForABadArgument) {
  start();
  EXPECT_EQ(listen(nullptr), paramErr);
  EXPECT_EQ(calls->lookUp.count, 0);
  EXPECT_EQ(calls->getSpecialPort.count, 0);
  EXPECT_EQ(calls->machPortCreate.count, 0);
  EXPECT_EQ(calls->createSource.count, 0);
  EXPECT_EQ(calls->registerName.count, 0);
}

TEST_F(PortListener, ReleasesInvalidObjectsEvenForABadArgument) {
  start();
  CFMachPortInvalidate(listener->machPort);
  EXPECT_EQ(listen(nullptr), paramErr);
  EXPECT_EQ(listener->machPort, nullptr);
  EXPECT_EQ(listener->runLoopSource, nullptr);
  EXPECT_STREQ(listener->portName, kListenerName);
  EXPECT_EQ(calls->lookUp.count, 0);
}

TEST_F(PortListener, KeepsValidObjectsOnABadArgument) {
  start();
  const CFMachPortRef port = listener->machPort;
  const CFRunLoopSourceRef source = listener->runLoopSource;
  EXPECT_EQ(listener->ListenOnPort(kListenerName, runLoop, nullptr, nullptr), paramErr);
  EXPECT_EQ(listener->machPort, port);
  EXPECT_EQ(listener->runLoopSource, source);
  EXPECT_EQ(listener->callback, tests::ignoreEvent);
}

// -- Clean-up --

TEST_F(PortListener, ReleasesAnInvalidPortWithItsSource) {
  start();
  const CFMachPortRef port = listener->machPort;
  const CFRunLoopSourceRef source = listener->runLoopSource;
  CFRetain(port);
  CFRetain(source);
  CFMachPortInvalidate(port);
  EXPECT_EQ(listen(nullptr), paramErr);
  EXPECT_FALSE(CFRunLoopSourceIsValid(source));
  EXPECT_EQ(CFGetRetainCount(source), 1);
  CFRelease(source);
  EXPECT_EQ(CFGetRetainCount(port), 1);
  CFRelease(port);
}

TEST_F(PortListener, InvalidatesAForeignSourceOfAnInvalidPort) {
  start();
  CFRunLoopSourceContext context{};
  context.perform = [](void*) {};
  CFRelease(listener->runLoopSource);
  listener->runLoopSource = CFRunLoopSourceCreate(nullptr, 0, &context);
  const CFRunLoopSourceRef source = listener->runLoopSource;
  CFRetain(source);
  CFMachPortInvalidate(listener->machPort);
  ASSERT_TRUE(CFRunLoopSourceIsValid(source));
  EXPECT_EQ(listen(nullptr), paramErr);
  EXPECT_FALSE(CFRunLoopSourceIsValid(source));
  EXPECT_EQ(CFGetRetainCount(source), 1);
  CFRelease(source);
}

TEST_F(PortListener, ReplacesASourceThatIsNoLongerValid) {
  start();
  const mach_port_t port = ownPort();
  CFRunLoopSourceInvalidate(listener->runLoopSource);
  EXPECT_EQ(listen(), 0);
  EXPECT_TRUE(CFRunLoopSourceIsValid(listener->runLoopSource));
  EXPECT_TRUE(isServed(runLoop));
  EXPECT_EQ(ownPort(), port);
  EXPECT_EQ(calls->registerName.count, 0);
}

TEST_F(PortListener, PassesOnThatThereIsNoBootstrapPort) {
  const mach_port_t known = std::exchange(TestListener::gBootstrapPort, MACH_PORT_NULL);
  calls->getSpecialPort.instead = [](mach_port_t*) { return KERN_INVALID_ARGUMENT; };
  EXPECT_EQ(listen(), KERN_INVALID_ARGUMENT);
  EXPECT_EQ(calls->lookUp.count, 0);
  expectIdle(*listener);
  EXPECT_STREQ(listener->portName, "");
  TestListener::gBootstrapPort = known;
}

TEST_F(PortListener, LooksAFreshNameUpOnce) {
  EXPECT_EQ(listen(), 0);
  EXPECT_EQ(calls->lookUp.count, 1);
  EXPECT_EQ(calls->registerName.count, 1);
}

TEST_F(PortListener, RegistersAnewWhenItsNameHasVanished) {
  start();
  const mach_port_t port = ownPort();
  calls->lookUp.instead = [](const char*, mach_port_t* found) {
    *found = MACH_PORT_NULL;
    return BOOTSTRAP_UNKNOWN_SERVICE;
  };
  calls->registerName.instead = [](const char*, mach_port_t) { return BOOTSTRAP_SUCCESS; };
  EXPECT_EQ(listen(), 0);
  EXPECT_EQ(calls->lookUp.count, 2);
  EXPECT_EQ(calls->registerName.count, 1);
  EXPECT_EQ(ownPort(), port);
  EXPECT_STREQ(listener->portName, kListenerName);
}

TEST_F(PortListener, TakesALookUpThatFindsNoPortForNoName) {
  calls->lookUp.instead = [](const char*, mach_port_t* found) {
    *found = MACH_PORT_NULL;
    return BOOTSTRAP_SUCCESS;
  };
  EXPECT_EQ(listen(), 0);
  EXPECT_EQ(listener->registeredPort, ownPort());
}

TEST_F(PortListener, FindsItselfRegisteredAtASecondCall) {
  start();
  const CFMachPortRef port = listener->machPort;
  const CFRunLoopSourceRef source = listener->runLoopSource;
  EXPECT_EQ(listen(), 0);
  EXPECT_EQ(listener->machPort, port);
  EXPECT_EQ(listener->runLoopSource, source);
  EXPECT_EQ(calls->lookUp.count, 1);
  EXPECT_EQ(calls->registerName.count, 0);
  EXPECT_EQ(calls->portDestroy.count, 0);
}

TEST_F(PortListener, CollectsNoSendRightsOverManyCalls) {
  start();
  const mach_port_urefs_t before = sendRightsOf(ownPort());
  for (int i = 0; i < 10; ++i) EXPECT_EQ(listen(), 0);
  EXPECT_EQ(sendRightsOf(ownPort()), before);
}

TEST_F(PortListener, GivesUpAForeignRegistrationOfItsName) {
  start();
  const mach_port_t old = ownPort();
  findFirst(kForeign);
  mach_port_t destroyed = MACH_PORT_NULL;
  calls->portDestroy.instead = [&](mach_port_name_t name) {
    if (name != kForeign) return __real_mach_port_destroy(mach_task_self(), name);
    destroyed = name;
    return KERN_SUCCESS;
  };
  EXPECT_EQ(listen(), 0);
  EXPECT_EQ(destroyed, kForeign);
  EXPECT_EQ(rightsOf(old), MACH_PORT_TYPE_NONE);
  EXPECT_EQ(listener->registeredPort, ownPort());
  EXPECT_EQ(calls->machPortCreate.count, 1);
  EXPECT_EQ(calls->registerName.count, 1);
}

TEST_F(PortListener, PassesOnThatAForeignRightCannotBeDestroyed) {
  start();
  const mach_port_t old = ownPort();
  findFirst(kForeign);
  EXPECT_EQ(listen(), KERN_INVALID_NAME);
  EXPECT_EQ(listener->machPort, nullptr);
  EXPECT_EQ(listener->runLoopSource, nullptr);
  EXPECT_EQ(rightsOf(old), MACH_PORT_TYPE_NONE);
  EXPECT_STREQ(listener->portName, "");
  EXPECT_EQ(calls->lookUp.count, 1);
}

TEST_F(PortListener, PassesOnThatAForeignSendRightCannotBeGivenUp) {
  start();
  const OtherPort other;
  findFirst(other.port);
  EXPECT_EQ(listen(), KERN_INVALID_RIGHT);
  EXPECT_EQ(rightsOf(other.port), MACH_PORT_TYPE_RECEIVE);
  EXPECT_STREQ(listener->portName, "");
}

// -- A name that somebody else has --

TEST_F(PortListener, LeavesANameToItsOwnerAndKeepsItInMind) {
  const OtherPort owner(kListenerName);
  EXPECT_EQ(listen(), -97);
  EXPECT_STREQ(listener->portName, kListenerName);
  expectIdle(*listener);
  EXPECT_EQ(listener->callback, nullptr);
  EXPECT_EQ(portBehind(kListenerName), owner.port);
  EXPECT_EQ(sendRightsOf(owner.port), 0u);
}

TEST_F(PortListener, LeavesANameToAnotherListener) {
  start();
  TestListener second;
  EXPECT_EQ(second.ListenOnPort(kListenerName, runLoop, tests::ignoreEvent, nullptr), -97);
  EXPECT_STREQ(second.portName, kListenerName);
  expectIdle(second);
  EXPECT_EQ(portBehind(kListenerName), ownPort());
}

TEST_F(PortListener, TriesAgainForANameThatIsTakenWithoutHarmToItsOwner) {
  const OtherPort owner(kListenerName);
  EXPECT_EQ(listen(), -97);
  EXPECT_EQ(listen(), -97);
  EXPECT_EQ(rightsOf(owner.port), MACH_PORT_TYPE_RECEIVE);
  EXPECT_EQ(portBehind(kListenerName), owner.port);
  EXPECT_STREQ(listener->portName, kListenerName);
}

TEST_F(PortListener, RejectsAnotherNameAfterOneThatWasTaken) {
  const OtherPort owner(kListenerName);
  EXPECT_EQ(listen(), -97);
  EXPECT_EQ(listen("com.quorvant.test.other"), paramErr);
}

TEST_F(PortListener, GetsANameOnceItsOwnerHasGone) {
  std::optional<OtherPort> owner(std::in_place, kListenerName);
  EXPECT_EQ(listen(), -97);
  owner.reset();
  EXPECT_EQ(listen(), 0);
  EXPECT_EQ(portBehind(kListenerName), ownPort());
}

// -- What has to be made --

TEST_F(PortListener, ReportsThatNoPortCanBeMade) {
  calls->machPortCreate.instead = [] { return CFMachPortRef(nullptr); };
  EXPECT_EQ(listen(), SInt32(0xE00002BE));
  expectIdle(*listener);
  EXPECT_STREQ(listener->portName, kListenerName);
  EXPECT_EQ(calls->createSource.count, 0);
}

TEST_F(PortListener, ReportsAPortWithoutAName) {
  calls->machPortGetPort.instead = [](CFMachPortRef) { return MACH_PORT_NULL; };
  EXPECT_EQ(listen(), SInt32(0xE00002BE));
  EXPECT_NE(listener->machPort, nullptr);
  EXPECT_EQ(listener->runLoopSource, nullptr);
}

TEST_F(PortListener, ReportsThatNoSourceCanBeMade) {
  calls->createSource.instead = [] { return CFRunLoopSourceRef(nullptr); };
  EXPECT_EQ(listen(), SInt32(0xE00002BE));
  EXPECT_EQ(listener->callback, nullptr);
  EXPECT_EQ(calls->registerName.count, 0);
}

TEST_F(PortListener, UsesThePortOfAnEarlierAttemptThatFailed) {
  calls->createSource.instead = [] { return CFRunLoopSourceRef(nullptr); };
  EXPECT_EQ(listen(), SInt32(0xE00002BE));
  const CFMachPortRef port = listener->machPort;
  calls->createSource.instead = nullptr;
  EXPECT_EQ(listen(), 0);
  EXPECT_EQ(listener->machPort, port);
  EXPECT_EQ(calls->machPortCreate.count, 1);
}

TEST_F(PortListener, PassesOnThatTheNameCannotBeRegistered) {
  calls->registerName.instead = [](const char*, mach_port_t) { return BOOTSTRAP_NOT_PRIVILEGED; };
  EXPECT_EQ(listen(), BOOTSTRAP_NOT_PRIVILEGED);
  EXPECT_EQ(listener->registeredPort, MACH_PORT_NULL);
  EXPECT_STREQ(listener->portName, kListenerName);
  EXPECT_EQ(listener->callback, tests::ignoreEvent);
  EXPECT_FALSE(isServed(runLoop));
}

TEST_F(PortListener, DoesNotRegisterWhatALookUpAlreadyFinds) {
  calls->registerName.instead = [](const char*, mach_port_t) { return BOOTSTRAP_NOT_PRIVILEGED; };
  EXPECT_EQ(listen(), BOOTSTRAP_NOT_PRIVILEGED);
  calls->registerName.instead = nullptr;
  mach_port_t bootstrap = MACH_PORT_NULL;
  task_get_special_port(mach_task_self(), TASK_BOOTSTRAP_PORT, &bootstrap);
  ASSERT_EQ(bootstrap_register(bootstrap, kListenerName, ownPort()), BOOTSTRAP_SUCCESS);
  forgetCalls();
  EXPECT_EQ(listen(), 0);
  EXPECT_EQ(calls->registerName.count, 0);
  EXPECT_EQ(listener->registeredPort, MACH_PORT_NULL);
  EXPECT_TRUE(isServed(runLoop));
}

TEST_F(PortListener, StoresANewCallbackAndRefconForTheSameName) {
  start();
  const auto other = [](UInt32, UInt32, const AEDesc*, AEDesc*, void*) -> SInt32 { return 1; };
  int refcon = 0;
  EXPECT_EQ(listener->ListenOnPort(kListenerName, runLoop, other, &refcon), 0);
  EXPECT_EQ(listener->callback, QRLAEDispatchCallback(other));
  EXPECT_EQ(listener->refcon, &refcon);
}

TEST_F(PortListener, MayBeGivenItsOwnNameAgain) {
  start();
  EXPECT_EQ(listen(listener->portName), 0);
  EXPECT_STREQ(listener->portName, kListenerName);
  CFMachPortInvalidate(listener->machPort);
  EXPECT_EQ(listen(listener->portName), 0);
  EXPECT_EQ(portBehind(kListenerName), ownPort());
}

TEST_F(PortListener, IsServedByASecondRunLoopToo) {
  start();
  CFRunLoopRef second = nullptr;
  EXPECT_TRUE(tests::whileServing([&] {
    second = CFRunLoopGetCurrent();
    EXPECT_FALSE(isServed(second));
    EXPECT_EQ(listener->ListenOnPort(kListenerName, second, tests::ignoreEvent, nullptr), 0);
    EXPECT_TRUE(isServed(second));
  }));
  EXPECT_TRUE(isServed(runLoop));
}

TEST_F(PortListener, ListensWithoutARunLoop) {
  EXPECT_EQ(listener->ListenOnPort(kListenerName, nullptr, tests::ignoreEvent, nullptr), 0);
  EXPECT_FALSE(isServed(runLoop));
  EXPECT_EQ(portBehind(kListenerName), ownPort());
  EXPECT_EQ(listen(), 0);
  EXPECT_TRUE(isServed(runLoop));
}

// -- A port that dies, and the end --

TEST_F(PortListener, RebuildsAnInvalidatedPort) {
  start();
  const mach_port_t old = ownPort();
  CFMachPortInvalidate(listener->machPort);
  EXPECT_EQ(rightsOf(old), MACH_PORT_TYPE_NONE);
  EXPECT_EQ(listener->registeredPort, MACH_PORT_NULL);
  EXPECT_EQ(portBehind(kListenerName), MACH_PORT_NULL);
  EXPECT_EQ(listen(), 0);
  EXPECT_EQ(listener->registeredPort, ownPort());
  EXPECT_EQ(portBehind(kListenerName), ownPort());
  EXPECT_TRUE(isServed(runLoop));
}

TEST_F(PortListener, RebuildsAPortThatWasDestroyedUnderneath) {
  start();
  ASSERT_EQ(mach_port_destroy(mach_task_self(), ownPort()), KERN_SUCCESS);
  EXPECT_EQ(listener->registeredPort, MACH_PORT_NULL);
  EXPECT_EQ(listen(), 0);
  EXPECT_EQ(portBehind(kListenerName), ownPort());
  EXPECT_EQ(rightsOf(ownPort()) & MACH_PORT_TYPE_RECEIVE, MACH_PORT_TYPE_RECEIVE);
}

TEST_F(PortListener, LosesItsNameToAnotherWhileItsPortIsDead) {
  start();
  CFMachPortInvalidate(listener->machPort);
  const OtherPort thief(kListenerName);
  EXPECT_EQ(listen(), -97);
  EXPECT_STREQ(listener->portName, kListenerName);
  EXPECT_EQ(listener->machPort, nullptr);
  EXPECT_EQ(rightsOf(thief.port), MACH_PORT_TYPE_RECEIVE);
  EXPECT_EQ(portBehind(kListenerName), thief.port);
}

TEST_F(PortListener, DestroysItsRegisteredPortOnly) {
  start();
  const mach_port_t port = ownPort();
  listener->PortInvalidated(nullptr);
  EXPECT_EQ(listener->registeredPort, port);

  const mach_port_t registered = std::exchange(listener->registeredPort, MACH_PORT_NULL);
  listener->PortInvalidated(listener->machPort);
  EXPECT_EQ(rightsOf(port) & MACH_PORT_TYPE_RECEIVE, MACH_PORT_TYPE_RECEIVE);

  listener->registeredPort = registered + 1;
  listener->PortInvalidated(listener->machPort);
  EXPECT_EQ(listener->registeredPort, registered + 1);
  EXPECT_EQ(calls->portDestroy.count, 0);
  listener->registeredPort = registered;
}

TEST_F(PortListener, DestroysItsRegisteredPortWhenToldOfItsEnd) {
  start();
  const mach_port_t port = ownPort();
  listener->PortInvalidated(listener->machPort);
  EXPECT_EQ(listener->registeredPort, MACH_PORT_NULL);
  EXPECT_EQ(rightsOf(port), MACH_PORT_TYPE_NONE);
}

TEST_F(PortListener, DeallocatesAllButItsName) {
  start();
  const mach_port_t port = ownPort();
  EXPECT_EQ(listener->Deallocate(-1234), -1234);
  expectIdle(*listener);
  EXPECT_STREQ(listener->portName, kListenerName);
  EXPECT_EQ(rightsOf(port), MACH_PORT_TYPE_NONE);
  EXPECT_EQ(portBehind(kListenerName), MACH_PORT_NULL);
}

TEST_F(PortListener, LooksItsNameUpOnceMoreWhenDeallocated) {
  start();
  std::string name;
  calls->lookUp.instead = [&](const char* wanted, mach_port_t*) {
    name = wanted;
    return BOOTSTRAP_UNKNOWN_SERVICE;
  };
  EXPECT_EQ(listener->Deallocate(0), 0);
  EXPECT_EQ(calls->lookUp.count, 1);
  EXPECT_EQ(name, kListenerName);
}

TEST_F(PortListener, HasNothingToDeallocateWhenIdle) {
  EXPECT_EQ(listener->Deallocate(7), 7);
  EXPECT_EQ(calls->lookUp.count, 0);
}

TEST_F(PortListener, ListensAgainAfterItWasDeallocated) {
  start();
  EXPECT_EQ(listener->Deallocate(0), 0);
  EXPECT_EQ(listen("com.quorvant.test.other"), paramErr);
  EXPECT_EQ(listen(), 0);
  EXPECT_EQ(portBehind(kListenerName), ownPort());
}

TEST_F(PortListener, FreesItsNameAndObjectsWithItself) {
  start();
  const mach_port_t port = ownPort();
  const CFMachPortRef kept = listener->machPort;
  const CFRunLoopSourceRef source = listener->runLoopSource;
  CFRetain(kept);
  CFRetain(source);
  listener.reset();
  EXPECT_EQ(portBehind(kListenerName), MACH_PORT_NULL);
  EXPECT_EQ(rightsOf(port), MACH_PORT_TYPE_NONE);
  EXPECT_FALSE(CFMachPortIsValid(kept));
  EXPECT_FALSE(CFRunLoopSourceIsValid(source));
  EXPECT_EQ(CFGetRetainCount(source), 1);
  CFRelease(source);
  EXPECT_EQ(CFGetRetainCount(kept), 1);
  CFRelease(kept);
}

TEST_F(PortListener, LeavesNoDescriptorsOpen) {
  const auto live = [this] {
    TestListener shortLived;
    EXPECT_EQ(shortLived.ListenOnPort(kListenerName, runLoop, tests::ignoreEvent, nullptr), 0);
    TestListener second;
    EXPECT_EQ(second.ListenOnPort(kListenerName, runLoop, tests::ignoreEvent, nullptr), -97);
    EXPECT_EQ(shortLived.ListenOnPort(kListenerName, runLoop, tests::ignoreEvent, nullptr), 0);
  };
  live();
  const std::ptrdiff_t before = tests::openDescriptors();
  for (int i = 0; i < 20; ++i) live();
  EXPECT_EQ(tests::openDescriptors(), before);
}

// -- The static operations --

TEST_F(PortListener, AsksForTheBootstrapPortOnce) {
  const mach_port_t known = std::exchange(TestListener::gBootstrapPort, MACH_PORT_NULL);
  unsigned int first = 0, second = 0;
  EXPECT_EQ(TestListener::GetBootstrapPort(first), KERN_SUCCESS);
  EXPECT_EQ(TestListener::gBootstrapPort, first);
  EXPECT_EQ(TestListener::GetBootstrapPort(second), KERN_SUCCESS);
  EXPECT_NE(first, MACH_PORT_NULL);
  EXPECT_EQ(second, first);
  EXPECT_EQ(calls->getSpecialPort.count, 1);
  if (known != MACH_PORT_NULL) {
    EXPECT_EQ(known, first);
  }
}

TEST_F(PortListener, DoesNotKeepABootstrapPortThatFailed) {
  const mach_port_t known = std::exchange(TestListener::gBootstrapPort, MACH_PORT_NULL);
  calls->getSpecialPort.instead = [](mach_port_t* port) {
    *port = 99;
    return KERN_FAILURE;
  };
  unsigned int port = 0;
  EXPECT_EQ(TestListener::GetBootstrapPort(port), KERN_FAILURE);
  EXPECT_EQ(TestListener::gBootstrapPort, MACH_PORT_NULL);
  TestListener::gBootstrapPort = known;
}

TEST_F(PortListener, ChecksNamesBeforeItLooksThemUp) {
  const std::string tooLong(128, 'n');
  for (const char* name : {static_cast<const char*>(nullptr), "", tooLong.c_str()}) {
    unsigned int port = 55;
    EXPECT_EQ(TestListener::CheckPortRegistered(name, port), paramErr);
    EXPECT_EQ(port, MACH_PORT_NULL);
  }
  EXPECT_EQ(calls->lookUp.count, 0);
}

TEST_F(PortListener, FindsARegisteredPort) {
  const std::string name(127, 'n');
  const OtherPort owner(name.c_str());
  unsigned int port = 0;
  EXPECT_EQ(TestListener::CheckPortRegistered(name.c_str(), port), BOOTSTRAP_SUCCESS);
  EXPECT_EQ(port, owner.port);
  EXPECT_EQ(sendRightsOf(port), 1u);
}

TEST_F(PortListener, PassesOnThatANameIsUnknown) {
  unsigned int port = 55;
  EXPECT_EQ(TestListener::CheckPortRegistered(kListenerName, port), BOOTSTRAP_UNKNOWN_SERVICE);
  EXPECT_EQ(port, MACH_PORT_NULL);
}

TEST_F(PortListener, CannotCheckANameWithoutABootstrapPort) {
  const mach_port_t known = std::exchange(TestListener::gBootstrapPort, MACH_PORT_NULL);
  calls->getSpecialPort.instead = [](mach_port_t*) { return KERN_FAILURE; };
  unsigned int port = 55;
  EXPECT_EQ(TestListener::CheckPortRegistered(kListenerName, port), KERN_FAILURE);
  EXPECT_EQ(port, MACH_PORT_NULL);
  TestListener::gBootstrapPort = known;
}

class Overridden : public TestListener {
 public:
  void PortCallback(CFMachPortRef, void* msg, CFIndex size) override {
    message = msg;
    bytes = size;
  }
  void PortInvalidated(CFMachPortRef port) override { invalidated = port; }
  void* message = nullptr;
  CFIndex bytes = 0;
  CFMachPortRef invalidated = nullptr;
};

TEST(PortListenerFunctions, CallTheVirtualOperations) {
  Overridden listener;
  int message = 0;
  CFMachPortRef port = reinterpret_cast<CFMachPortRef>(&message);
  TestListener::_PortCallback(port, &message, 40, &listener);
  EXPECT_EQ(listener.message, &message);
  EXPECT_EQ(listener.bytes, 40);
  TestListener::_PortInvalidated(port, &listener);
  EXPECT_EQ(listener.invalidated, port);
}

TEST(PortListenerFunctions, DoNothingWithoutAListener) {
  int message = 0;
  TestListener::_PortCallback(nullptr, &message, 40, nullptr);
  TestListener::_PortInvalidated(nullptr, nullptr);
  EXPECT_EQ(message, 0);
}

}  // namespace
