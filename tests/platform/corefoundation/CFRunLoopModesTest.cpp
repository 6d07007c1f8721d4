// Licence: MIT, see LICENSE.
// Modes and the common set. What is added to the common set of a loop stays in it, so that each
// test works on a thread, and with it a loop, of its own.
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFRunLoop.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/corefoundation/RunLoopTesting.h"

namespace {

using namespace tests;

const auto onOwnLoop = [](const std::function<void(CFRunLoopRef)>& test) {
  std::thread([&] { test(CFRunLoopGetCurrent()); }).join();
};

bool hasMode(CFRunLoopRef loop, CFStringRef mode) {
  const CFArrayRef modes = CFRunLoopCopyAllModes(loop);
  const bool found = CFArrayContainsValue(modes, CFRangeMake(0, CFArrayGetCount(modes)), mode);
  CFRelease(modes);
  return found;
}

CFIndex modeCount(CFRunLoopRef loop) {
  const CFArrayRef modes = CFRunLoopCopyAllModes(loop);
  const CFIndex count = CFArrayGetCount(modes);
  CFRelease(modes);
  return count;
}

TEST(RunLoopModes, AreTheDefaultOneAtFirst) {
  onOwnLoop([](CFRunLoopRef loop) {
    EXPECT_EQ(modeCount(loop), 1);
    EXPECT_TRUE(hasMode(loop, kCFRunLoopDefaultMode));
  });
}

TEST(RunLoopModes, AreMadeByAddingToThem) {
  onOwnLoop([](CFRunLoopRef loop) {
    Source source([] {});
    CFRunLoopAddSource(loop, source, CFSTR("new"));
    CFRunLoopAddSource(loop, source, kCFRunLoopCommonModes);
    CFRunLoopContainsSource(loop, source, CFSTR("asked for"));
    CFRunLoopRunInMode(CFSTR("run in"), 0, false);
    EXPECT_EQ(modeCount(loop), 2);
    EXPECT_TRUE(hasMode(loop, CFSTR("new")));
  });
}

TEST(RunLoopModes, AreKnownByTheirNamesAsTheyWereWhenTheyWereMade) {
  onOwnLoop([](CFRunLoopRef loop) {
    Source source([] {});
    const CFMutableStringRef name = CFStringCreateMutable(nullptr, 0);
    CFStringAppendCString(name, "mode", kCFStringEncodingASCII);
    CFRunLoopAddSource(loop, source, name);
    CFStringAppendCString(name, " changed", kCFStringEncodingASCII);
    EXPECT_TRUE(CFRunLoopContainsSource(loop, source, CFSTR("mode")));
    EXPECT_FALSE(CFRunLoopContainsSource(loop, source, name));
    CFRelease(name);
  });
}

TEST(RunLoopModes, KeepWhatWasAddedApart) {
  onOwnLoop([](CFRunLoopRef loop) {
    Source source([] {});
    CFRunLoopAddSource(loop, source, CFSTR("one"));
    EXPECT_TRUE(CFRunLoopContainsSource(loop, source, CFSTR("one")));
    EXPECT_FALSE(CFRunLoopContainsSource(loop, source, kCFRunLoopDefaultMode));
    CFRunLoopRemoveSource(loop, source, kCFRunLoopDefaultMode);
    EXPECT_TRUE(CFRunLoopContainsSource(loop, source, CFSTR("one")));
  });
}

TEST(RunLoopModes, OfTheCommonSetGetWhatIsAddedToIt) {
  onOwnLoop([](CFRunLoopRef loop) {
    Source source([] {});
    CFRunLoopAddCommonMode(loop, CFSTR("member"));
    CFRunLoopAddSource(loop, source, kCFRunLoopCommonModes);
    EXPECT_TRUE(CFRunLoopContainsSource(loop, source, kCFRunLoopCommonModes));
    EXPECT_TRUE(CFRunLoopContainsSource(loop, source, kCFRunLoopDefaultMode));
    EXPECT_TRUE(CFRunLoopContainsSource(loop, source, CFSTR("member")));
    EXPECT_FALSE(CFRunLoopContainsSource(loop, source, CFSTR("other")));
  });
}

TEST(RunLoopModes, ThatJoinTheCommonSetGetWhatIsInItAlready) {
  onOwnLoop([](CFRunLoopRef loop) {
    Source source([] {});
    Timer timer(muchLater(), 0, [] {});
    Observer observer(kCFRunLoopExit, [](CFRunLoopActivity) {});
    CFRunLoopAddSource(loop, source, kCFRunLoopCommonModes);
    CFRunLoopAddTimer(loop, timer, kCFRunLoopCommonModes);
    CFRunLoopAddObserver(loop, observer, kCFRunLoopCommonModes);
    CFRunLoopAddCommonMode(loop, CFSTR("late"));
    CFRunLoopAddCommonMode(loop, CFSTR("late"));
    EXPECT_TRUE(CFRunLoopContainsSource(loop, source, CFSTR("late")));
    EXPECT_TRUE(CFRunLoopContainsTimer(loop, timer, CFSTR("late")));
    EXPECT_TRUE(CFRunLoopContainsObserver(loop, observer, CFSTR("late")));
    EXPECT_EQ(CFGetRetainCount(source), 4);  // ours, the common set's and two modes'
  });
}

TEST(RunLoopModes, OfTheCommonSetLoseWhatIsRemovedFromIt) {
  onOwnLoop([](CFRunLoopRef loop) {
    Source source([] {});
    CFRunLoopAddCommonMode(loop, CFSTR("member"));
    CFRunLoopAddSource(loop, source, kCFRunLoopCommonModes);
    CFRunLoopAddSource(loop, source, CFSTR("other"));
    CFRunLoopRemoveSource(loop, source, kCFRunLoopCommonModes);
    EXPECT_FALSE(CFRunLoopContainsSource(loop, source, kCFRunLoopCommonModes));
    EXPECT_FALSE(CFRunLoopContainsSource(loop, source, kCFRunLoopDefaultMode));
    EXPECT_FALSE(CFRunLoopContainsSource(loop, source, CFSTR("member")));
    EXPECT_TRUE(CFRunLoopContainsSource(loop, source, CFSTR("other")));
    EXPECT_EQ(CFGetRetainCount(source), 2);
  });
}

TEST(RunLoopModes, GiveAnInvalidItemUpEverywhere) {
  onOwnLoop([](CFRunLoopRef loop) {
    Timer timer(muchLater(), 0, [] {});
    CFRunLoopAddCommonMode(loop, CFSTR("member"));
    CFRunLoopAddTimer(loop, timer, kCFRunLoopCommonModes);
    CFRunLoopAddTimer(loop, timer, CFSTR("other"));
    EXPECT_EQ(CFGetRetainCount(timer), 5);
    CFRunLoopTimerInvalidate(timer);
    EXPECT_EQ(CFGetRetainCount(timer), 1);
    CFRunLoopAddCommonMode(loop, CFSTR("later"));
    EXPECT_FALSE(CFRunLoopContainsTimer(loop, timer, CFSTR("later")));
  });
}

TEST(RunLoopModes, NullIsNone) {
  onOwnLoop([](CFRunLoopRef loop) {
    Source source([] {});
    CFRunLoopAddSource(loop, source, nullptr);
    CFRunLoopRemoveSource(loop, source, nullptr);
    CFRunLoopAddCommonMode(loop, nullptr);
    CFRunLoopAddCommonMode(loop, kCFRunLoopCommonModes);
    EXPECT_FALSE(CFRunLoopContainsSource(loop, source, nullptr));
    EXPECT_EQ(CFRunLoopGetNextTimerFireDate(loop, nullptr), 0);
    EXPECT_EQ(modeCount(loop), 1);
    EXPECT_EQ(CFGetRetainCount(source), 1);
  });
}

}  // namespace
