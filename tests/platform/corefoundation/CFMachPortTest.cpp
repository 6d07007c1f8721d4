// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFMachPort.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/corefoundation/PortTesting.h"
#include "tests/support/StressCount.h"

namespace {

using namespace tests;
using Names = std::vector<std::string>;

// What was done to an info, by whom.
struct Info {
  int retained = 0;
  int released = 0;
  int invalidated = 0;
  Names log;
};

Info& infoAt(const void* info) { return *static_cast<Info*>(const_cast<void*>(info)); }

CFMachPortContext contextOf(Info* info) {
  CFMachPortContext context{};
  context.info = info;
  context.retain = [](const void* each) -> const void* {
    ++infoAt(each).retained;
    return each;
  };
  context.release = [](const void* each) {
    ++infoAt(each).released;
    infoAt(each).log.push_back("released");
  };
  context.copyDescription = [](const void*) -> CFStringRef {
    return static_cast<CFStringRef>(CFRetain(CFSTR("an info")));
  };
  return context;
}

void ignoreMessage(CFMachPortRef, void*, CFIndex, void*) {}

void noteInvalidation(CFMachPortRef port, void* info) {
  EXPECT_FALSE(CFMachPortIsValid(port));
  ++infoAt(info).invalidated;
  infoAt(info).log.push_back("invalidated");
}

class MachPort : public PortTest {
 protected:
  CFMachPortRef create() {
    CFMachPortContext context = contextOf(&info);
    return CFMachPortCreate(nullptr, ignoreMessage, &context, nullptr);
  }
  CFMachPortRef createWith(mach_port_t port) {
    CFMachPortContext context = contextOf(&info);
    return CFMachPortCreateWithPort(nullptr, port, ignoreMessage, &context, &shouldFreeInfo);
  }
  static mach_port_t allocate() {
    mach_port_t port = MACH_PORT_NULL;
    EXPECT_EQ(mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &port), KERN_SUCCESS);
    return port;
  }
  static void destroy(mach_port_t port) {
    EXPECT_EQ(mach_port_destroy(mach_task_self(), port), KERN_SUCCESS);
  }

  Info info;
  Boolean shouldFreeInfo = 2;
};

TEST_F(MachPort, IsCreatedWithAReceiveRightOfItsOwn) {
  Boolean shouldFree = true;
  const CFMachPortRef port = CFMachPortCreate(nullptr, ignoreMessage, nullptr, &shouldFree);
  EXPECT_EQ(CFGetTypeID(port), CFMachPortGetTypeID());
  EXPECT_TRUE(isReceiveRight(CFMachPortGetPort(port)));
  EXPECT_TRUE(CFMachPortIsValid(port));
  EXPECT_FALSE(shouldFree);
  EXPECT_EQ(CFGetRetainCount(port), 1);
  CFRelease(port);
}

TEST_F(MachPort, DestroysTheRightOfItsOwnWithItsLastReference) {
  const CFMachPortRef port = create();
  const mach_port_t name = CFMachPortGetPort(port);
  CFRetain(port);
  CFRelease(port);
  EXPECT_TRUE(isReceiveRight(name));
  CFRelease(port);
  EXPECT_FALSE(isReceiveRight(name));
}

TEST_F(MachPort, WrapsAReceiveRightThatStaysItsOwners) {
  const mach_port_t name = allocate();
  const CFMachPortRef port = createWith(name);
  EXPECT_EQ(CFMachPortGetPort(port), name);
  EXPECT_FALSE(shouldFreeInfo);
  CFRelease(port);
  EXPECT_TRUE(isReceiveRight(name));
  destroy(name);
}

TEST_F(MachPort, IsTheOneThatAPortHasAlready) {
  const CFMachPortRef port = create();
  const CFMachPortRef again = createWith(CFMachPortGetPort(port));
  EXPECT_EQ(again, port);
  EXPECT_TRUE(shouldFreeInfo);
  EXPECT_EQ(CFGetRetainCount(port), 2);
  EXPECT_EQ(info.retained, 1);
  CFRelease(again);
  CFRelease(port);
  EXPECT_EQ(info.released, 1);
}

TEST_F(MachPort, IsMadeAnewForAPortWhoseObjectIsInvalid) {
  const mach_port_t name = allocate();
  const CFMachPortRef port = createWith(name);
  CFMachPortInvalidate(port);
  const CFMachPortRef another = createWith(name);
  EXPECT_NE(another, port);
  EXPECT_TRUE(CFMachPortIsValid(another));
  EXPECT_FALSE(shouldFreeInfo);
  CFRelease(port);
  EXPECT_TRUE(CFMachPortIsValid(another));
  CFRelease(another);
  destroy(name);
}

TEST_F(MachPort, IsNotMadeForWhatIsNoReceiveRightOfOurs) {
  for (const mach_port_t name : {MACH_PORT_NULL, MACH_PORT_DEAD, mach_port_t{0x7ffffff0}}) {
    shouldFreeInfo = false;
    EXPECT_EQ(createWith(name), nullptr);
    EXPECT_TRUE(shouldFreeInfo);
  }
  EXPECT_EQ(info.retained, info.released);
}

TEST_F(MachPort, WithoutMemoryIsNotMadeAndLeavesTheInfoAlone) {
  CFMachPortContext context = contextOf(&info);
  EXPECT_EQ(CFMachPortCreate(kCFAllocatorNull, ignoreMessage, &context, &shouldFreeInfo), nullptr);
  EXPECT_TRUE(shouldFreeInfo);
  const mach_port_t name = allocate();
  shouldFreeInfo = false;
  EXPECT_EQ(
      CFMachPortCreateWithPort(kCFAllocatorNull, name, ignoreMessage, &context, &shouldFreeInfo),
      nullptr);
  EXPECT_TRUE(shouldFreeInfo);
  EXPECT_TRUE(isReceiveRight(name));
  EXPECT_EQ(info.retained, 0);
  EXPECT_EQ(info.released, 0);
  destroy(name);
}

TEST_F(MachPort, WithoutMemoryForASourceHasNone) {
  const CFMachPortRef port = create();
  EXPECT_EQ(CFMachPortCreateRunLoopSource(kCFAllocatorNull, port, 0), nullptr);
  EXPECT_EQ(CFGetRetainCount(port), 1);
  CFRelease(port);
}

TEST_F(MachPort, GivesItsContext) {
  const CFMachPortRef port = create();
  CFMachPortContext context{};
  CFMachPortGetContext(port, &context);
  EXPECT_EQ(context.version, 0);
  EXPECT_EQ(context.info, &info);
  EXPECT_EQ(context.release, contextOf(&info).release);
  CFRelease(port);
}

TEST_F(MachPort, DescribesItsInfo) {
  const CFMachPortRef port = create();
  const CFStringRef description = CFCopyDescription(port);
  char text[100] = "";
  EXPECT_TRUE(CFStringGetCString(description, text, sizeof text, kCFStringEncodingUTF8));
  EXPECT_EQ(std::string(text).find("<CFMachPort "), 0u) << text;
  EXPECT_NE(std::string(text).find("{an info}>"), std::string::npos) << text;
  CFRelease(description);
  CFRelease(port);
}

TEST_F(MachPort, ReleasesItsInfoWithItsLastReference) {
  const CFMachPortRef port = create();
  EXPECT_EQ(info.retained, 1);
  EXPECT_EQ(info.released, 0);
  CFRelease(port);
  EXPECT_EQ(info.released, 1);
  EXPECT_EQ(info.invalidated, 0);
}

TEST_F(MachPort, InvalidatedCallsBackOnceThenReleasesItsInfo) {
  const CFMachPortRef port = create();
  CFMachPortSetInvalidationCallBack(port, noteInvalidation);
  EXPECT_EQ(CFMachPortGetInvalidationCallBack(port), &noteInvalidation);
  CFMachPortInvalidate(port);
  CFMachPortInvalidate(port);
  EXPECT_EQ(info.log, (Names{"invalidated", "released"}));
  EXPECT_FALSE(CFMachPortIsValid(port));
  CFMachPortContext context{};
  CFMachPortGetContext(port, &context);
  EXPECT_EQ(context.info, nullptr);
  CFRelease(port);
  EXPECT_EQ(info.released, 1);
}

TEST_F(MachPort, InvalidatedKeepsItsReceiveRight) {
  const CFMachPortRef port = create();
  const mach_port_t name = CFMachPortGetPort(port);
  CFMachPortInvalidate(port);
  EXPECT_EQ(CFMachPortGetPort(port), name);
  EXPECT_TRUE(isReceiveRight(name));
  CFRelease(port);
  EXPECT_FALSE(isReceiveRight(name));
}

TEST_F(MachPort, InvalidatedInvalidatesItsSource) {
  const CFMachPortRef port = create();
  const CFRunLoopSourceRef source = CFMachPortCreateRunLoopSource(nullptr, port, 0);
  CFRunLoopAddSource(loop, source, kCFRunLoopDefaultMode);
  CFMachPortInvalidate(port);
  EXPECT_FALSE(CFRunLoopSourceIsValid(source));
  EXPECT_FALSE(CFRunLoopContainsSource(loop, source, kCFRunLoopDefaultMode));
  EXPECT_EQ(CFMachPortCreateRunLoopSource(nullptr, port, 0), nullptr);
  CFRelease(source);
  CFRelease(port);
}

TEST_F(MachPort, InvalidAlreadyCallsAnInvalidationCallBackAtOnce) {
  CFMachPortContext context{0, &info, nullptr, nullptr, nullptr};
  const CFMachPortRef port = CFMachPortCreate(nullptr, ignoreMessage, &context, nullptr);
  CFMachPortInvalidate(port);
  EXPECT_EQ(info.invalidated, 0);
  CFMachPortSetInvalidationCallBack(port, noteInvalidation);
  EXPECT_EQ(info.invalidated, 1);
  CFMachPortSetInvalidationCallBack(port, nullptr);
  EXPECT_EQ(CFMachPortGetInvalidationCallBack(port), nullptr);
  CFRelease(port);
}

TEST_F(MachPort, WhoseInvalidationCallBackIsTakenBackCallsNobody) {
  const CFMachPortRef port = create();
  CFMachPortSetInvalidationCallBack(port, noteInvalidation);
  CFMachPortSetInvalidationCallBack(port, nullptr);
  CFMachPortInvalidate(port);
  EXPECT_EQ(info.log, Names{"released"});
  CFRelease(port);
}

TEST_F(MachPort, IsInvalidatedByTheDeathOfItsRight) {
  const CFMachPortRef port = create();
  CFMachPortSetInvalidationCallBack(port, noteInvalidation);
  const CFRunLoopSourceRef source = CFMachPortCreateRunLoopSource(nullptr, port, 0);
  CFRunLoopAddSource(loop, source, kCFRunLoopDefaultMode);
  destroy(CFMachPortGetPort(port));
  EXPECT_FALSE(CFMachPortIsValid(port));
  EXPECT_FALSE(CFRunLoopSourceIsValid(source));
  EXPECT_EQ(info.log, (Names{"invalidated", "released"}));
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  CFRelease(source);
  CFRelease(port);
}

TEST_F(MachPort, WhoseRightDiedDestroysNoOtherOfTheSameName) {
  const CFMachPortRef port = create();
  const mach_port_t name = CFMachPortGetPort(port);
  destroy(name);
  std::vector<mach_port_t> others;
  for (int i = 0; i < 200; ++i) others.push_back(allocate());
  CFRelease(port);
  for (const mach_port_t other : others) {
    EXPECT_TRUE(isReceiveRight(other));
    destroy(other);
  }
}

TEST_F(MachPort, MayHaveItsRightDestroyedByItsInvalidationCallBack) {
  const CFMachPortRef port = create();
  const mach_port_t name = CFMachPortGetPort(port);
  CFMachPortSetInvalidationCallBack(port, [](CFMachPortRef self, void* each) {
    noteInvalidation(self, each);
    destroy(CFMachPortGetPort(self));
  });
  CFMachPortInvalidate(port);
  EXPECT_FALSE(isReceiveRight(name));
  EXPECT_EQ(info.log, (Names{"invalidated", "released"}));
  CFRelease(port);
}

TEST_F(MachPort, MayBeReleasedByItsInvalidationCallBack) {
  const CFMachPortRef port = create();
  const mach_port_t name = CFMachPortGetPort(port);
  CFMachPortSetInvalidationCallBack(port, [](CFMachPortRef self, void*) { CFRelease(self); });
  CFMachPortInvalidate(port);
  EXPECT_FALSE(isReceiveRight(name));
  EXPECT_EQ(info.released, 1);
}

TEST_F(MachPort, HasOneSourceForAllCallers) {
  const CFMachPortRef port = create();
  const CFRunLoopSourceRef source = CFMachPortCreateRunLoopSource(nullptr, port, 5);
  EXPECT_EQ(CFGetRetainCount(port), 2);
  EXPECT_EQ(CFMachPortCreateRunLoopSource(nullptr, port, 8), source);
  EXPECT_EQ(CFGetRetainCount(source), 2);
  EXPECT_EQ(CFRunLoopSourceGetOrder(source), 5);
  CFRelease(source);
  CFRelease(source);
  EXPECT_EQ(CFGetRetainCount(port), 1);
  CFRelease(port);
}

TEST_F(MachPort, GetsANewSourceWhenTheOldOneIsInvalidOrGone) {
  const CFMachPortRef port = create();
  const CFRunLoopSourceRef old = CFMachPortCreateRunLoopSource(nullptr, port, 0);
  CFRunLoopSourceInvalidate(old);
  EXPECT_TRUE(CFMachPortIsValid(port));
  const CFRunLoopSourceRef source = CFMachPortCreateRunLoopSource(nullptr, port, 1);
  EXPECT_NE(source, old);
  CFRelease(old);
  EXPECT_EQ(CFMachPortCreateRunLoopSource(nullptr, port, 2), source);
  CFRelease(source);
  CFRelease(source);
  const CFRunLoopSourceRef last = CFMachPortCreateRunLoopSource(nullptr, port, 3);
  EXPECT_EQ(CFRunLoopSourceGetOrder(last), 3);
  CFRelease(last);
  CFRelease(port);
}

TEST_F(MachPort, LivesAsLongAsItsSourceIsInALoop) {
  const CFMachPortRef port = create();
  const mach_port_t name = CFMachPortGetPort(port);
  const CFRunLoopSourceRef source = CFMachPortCreateRunLoopSource(nullptr, port, 0);
  CFRunLoopAddSource(loop, source, kCFRunLoopDefaultMode);
  CFRelease(source);
  CFRelease(port);
  EXPECT_TRUE(isReceiveRight(name));
  CFRunLoopRemoveSource(loop, source, kCFRunLoopDefaultMode);
  EXPECT_FALSE(isReceiveRight(name));
  EXPECT_EQ(info.released, 1);
}

TEST_F(MachPort, MayDieWhileItIsReleasedOnAnotherThread) {
  const int rounds = stressCount(500);
  for (int round = 0; round < rounds; ++round) {
    const mach_port_t name = allocate();
    const CFMachPortRef port = createWith(name);
    std::thread killer([&] { destroy(name); });
    CFRelease(port);
    killer.join();
  }
  EXPECT_EQ(info.retained, rounds);
  EXPECT_EQ(info.released, rounds);
}

TEST_F(MachPort, MayBeSharedAndReleasedOnManyThreads) {
  const int rounds = stressCount(1000);
  const mach_port_t name = allocate();
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < rounds; ++round) {
        const CFMachPortRef port =
            CFMachPortCreateWithPort(nullptr, name, ignoreMessage, nullptr, nullptr);
        const CFRunLoopSourceRef source = CFMachPortCreateRunLoopSource(nullptr, port, 0);
        EXPECT_TRUE(CFRunLoopSourceIsValid(source));
        CFRelease(port);
        CFRelease(source);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  destroy(name);
}

TEST_F(MachPort, IgnoresNullAndForeignReferences) {
  const auto foreign = reinterpret_cast<CFMachPortRef>(loop);
  for (const CFMachPortRef wrong : {CFMachPortRef{nullptr}, foreign}) {
    CFMachPortInvalidate(wrong);
    CFMachPortSetInvalidationCallBack(wrong, noteInvalidation);
    EXPECT_EQ(CFMachPortGetInvalidationCallBack(wrong), nullptr);
    EXPECT_FALSE(CFMachPortIsValid(wrong));
    EXPECT_EQ(CFMachPortGetPort(wrong), MACH_PORT_NULL);
    EXPECT_EQ(CFMachPortCreateRunLoopSource(nullptr, wrong, 0), nullptr);
  }
}

}  // namespace
