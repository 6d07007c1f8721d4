// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFRunLoop.h>
#include <CoreFoundation/CFString.h>

#include <string>
#include <vector>

#include "tests/platform/corefoundation/RunLoopTesting.h"

namespace {

using namespace tests;
using Names = std::vector<std::string>;

class RunLoopSource : public RunLoopTest {};

// Counts what happens to an info.
struct Info {
  int retained = 0;
  int released = 0;
  int value = 0;
  Names scheduled = {};
  Names cancelled = {};
};

Info& infoAt(const void* info) { return *static_cast<Info*>(const_cast<void*>(info)); }

std::string text(CFStringRef string) {
  char buffer[200] = "";
  EXPECT_TRUE(CFStringGetCString(string, buffer, sizeof buffer, kCFStringEncodingUTF8));
  return buffer;
}

CFRunLoopSourceContext contextOf(Info* info) {
  CFRunLoopSourceContext context{};
  context.info = info;
  context.retain = [](const void* each) -> const void* {
    ++infoAt(each).retained;
    return each;
  };
  context.release = [](const void* each) { ++infoAt(each).released; };
  context.copyDescription = [](const void*) -> CFStringRef {
    return static_cast<CFStringRef>(CFRetain(CFSTR("an info")));
  };
  context.equal = [](const void* a, const void* b) -> Boolean {
    return infoAt(a).value == infoAt(b).value;
  };
  context.hash = [](const void* each) { return static_cast<CFHashCode>(infoAt(each).value); };
  context.schedule = [](void* each, CFRunLoopRef, CFStringRef mode) {
    infoAt(each).scheduled.push_back(text(mode));
  };
  context.cancel = [](void* each, CFRunLoopRef, CFStringRef mode) {
    infoAt(each).cancelled.push_back(text(mode));
  };
  context.perform = [](void*) {};
  return context;
}

CFRunLoopSourceRef createFrom(Info& info) {
  CFRunLoopSourceContext context = contextOf(&info);
  return CFRunLoopSourceCreate(nullptr, 3, &context);
}

TEST_F(RunLoopSource, NeedsAContextOfAKnownVersionWithItsCallBacks) {
  EXPECT_EQ(CFRunLoopSourceCreate(nullptr, 0, nullptr), nullptr);
  CFRunLoopSourceContext context{};
  EXPECT_EQ(CFRunLoopSourceCreate(nullptr, 0, &context), nullptr);
  context.perform = [](void*) {};
  context.version = 2;
  EXPECT_EQ(CFRunLoopSourceCreate(nullptr, 0, &context), nullptr);
  CFRunLoopSourceContext1 portContext{};
  portContext.version = 1;
  EXPECT_EQ(
      CFRunLoopSourceCreate(nullptr, 0, reinterpret_cast<CFRunLoopSourceContext*>(&portContext)),
      nullptr);
}

TEST_F(RunLoopSource, IsNotMadeWithoutMemoryAndLeavesTheInfoAlone) {
  Info info;
  CFRunLoopSourceContext context = contextOf(&info);
  EXPECT_EQ(CFRunLoopSourceCreate(kCFAllocatorNull, 0, &context), nullptr);
  EXPECT_EQ(info.retained, 0);
  EXPECT_EQ(info.released, 0);
}

TEST_F(RunLoopSource, TellsItsTypeOrderAndValidity) {
  Source source([] {}, -4);
  EXPECT_EQ(CFGetTypeID(source), CFRunLoopSourceGetTypeID());
  EXPECT_EQ(CFRunLoopSourceGetOrder(source), -4);
  EXPECT_TRUE(CFRunLoopSourceIsValid(source));
  CFRunLoopSourceInvalidate(source);
  EXPECT_FALSE(CFRunLoopSourceIsValid(source));
}

TEST_F(RunLoopSource, GivesItsContextForItsVersionOnly) {
  Info info;
  const CFRunLoopSourceRef source = createFrom(info);
  CFRunLoopSourceContext context{};
  CFRunLoopSourceGetContext(source, &context);
  EXPECT_EQ(context.info, &info);
  EXPECT_EQ(context.perform, contextOf(&info).perform);
  CFRunLoopSourceContext other{};
  other.version = 1;
  CFRunLoopSourceGetContext(source, &other);
  EXPECT_EQ(other.info, nullptr);
  CFRelease(source);
}

TEST_F(RunLoopSource, KeepsItsInfoUntilItsLastReferenceGoes) {
  Info info;
  const CFRunLoopSourceRef source = createFrom(info);
  EXPECT_EQ(info.retained, 1);
  CFRunLoopSourceInvalidate(source);
  EXPECT_EQ(info.released, 0);
  CFRelease(source);
  EXPECT_EQ(info.retained, 1);
  EXPECT_EQ(info.released, 1);
}

TEST_F(RunLoopSource, UsesTheInfoThatRetainAnswers) {
  static int other;
  other = 0;
  CFRunLoopSourceContext context{};
  context.retain = [](const void*) -> const void* { return &other; };
  context.perform = [](void* info) { ++*static_cast<int*>(info); };
  const CFRunLoopSourceRef source = CFRunLoopSourceCreate(nullptr, 0, &context);
  CFRunLoopAddSource(loop, source, kCFRunLoopDefaultMode);
  CFRunLoopSourceSignal(source);
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(other, 1);
  CFRunLoopSourceInvalidate(source);
  CFRelease(source);
}

TEST_F(RunLoopSource, DescribesItsInfo) {
  Info info;
  const CFRunLoopSourceRef source = createFrom(info);
  const CFStringRef description = CFCopyDescription(source);
  const std::string shown = text(description);
  EXPECT_EQ(shown.find("<CFRunLoopSource "), 0u) << shown;
  EXPECT_NE(shown.find("{an info}>"), std::string::npos) << shown;
  CFRelease(description);
  CFRelease(source);
}

TEST_F(RunLoopSource, IsEqualToAnotherByItsContext) {
  Info one{.value = 1};
  Info alsoOne{.value = 1};
  Info two{.value = 2};
  const CFRunLoopSourceRef a = createFrom(one);
  const CFRunLoopSourceRef b = createFrom(alsoOne);
  const CFRunLoopSourceRef c = createFrom(two);
  EXPECT_TRUE(CFEqual(a, b));
  EXPECT_EQ(CFHash(a), 1u);
  EXPECT_EQ(CFHash(b), 1u);
  EXPECT_FALSE(CFEqual(a, c));
  for (const CFRunLoopSourceRef each : {a, b, c}) CFRelease(each);
}

TEST_F(RunLoopSource, WithoutEqualFunctionIsEqualByInfoAndPerform) {
  const auto make = [](void* info, void (*perform)(void*)) {
    CFRunLoopSourceContext context{};
    context.info = info;
    context.perform = perform;
    return CFRunLoopSourceCreate(nullptr, 0, &context);
  };
  int x = 0;
  void (*first)(void*) = [](void*) {};
  void (*second)(void*) = [](void* info) { ++*static_cast<int*>(info); };
  const CFRunLoopSourceRef sources[] = {make(&x, first), make(&x, first), make(nullptr, first),
                                        make(&x, second)};
  EXPECT_TRUE(CFEqual(sources[0], sources[1]));
  EXPECT_EQ(CFHash(sources[0]), CFHash(sources[1]));
  EXPECT_FALSE(CFEqual(sources[0], sources[2]));
  EXPECT_FALSE(CFEqual(sources[0], sources[3]));
  for (const CFRunLoopSourceRef each : sources) CFRelease(each);
}

TEST_F(RunLoopSource, IsToldOfEachModeThatItJoinsAndLeaves) {
  Info info;
  const CFRunLoopSourceRef source = createFrom(info);
  CFRunLoopAddSource(loop, source, CFSTR("a"));
  CFRunLoopAddSource(loop, source, CFSTR("a"));
  CFRunLoopAddSource(loop, source, CFSTR("b"));
  EXPECT_EQ(info.scheduled, (Names{"a", "b"}));
  CFRunLoopRemoveSource(loop, source, CFSTR("a"));
  CFRunLoopRemoveSource(loop, source, CFSTR("a"));
  EXPECT_EQ(info.cancelled, (Names{"a"}));
  CFRunLoopSourceInvalidate(source);
  EXPECT_EQ(info.cancelled, (Names{"a", "b"}));
  CFRelease(source);
}

TEST_F(RunLoopSource, IsRetainedOnceByEachMode) {
  Source source([] {});
  add(source);
  add(source);
  EXPECT_EQ(CFGetRetainCount(source), 2);
  add(source, CFSTR("another"));
  EXPECT_EQ(CFGetRetainCount(source), 3);
  CFRunLoopRemoveSource(loop, source, kCFRunLoopDefaultMode);
  EXPECT_EQ(CFGetRetainCount(source), 2);
  CFRunLoopSourceInvalidate(source);
  EXPECT_EQ(CFGetRetainCount(source), 1);
}

TEST_F(RunLoopSource, PerformsOnceForAnyNumberOfSignals) {
  Source source(note("performed"));
  add(source);
  for (int i = 0; i < 3; ++i) source.signal();
  EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  EXPECT_EQ(log.size(), 1u);
}

TEST_F(RunLoopSource, SignalledBeforeItIsAddedPerformsOnceItIs) {
  Source source(note("performed"));
  source.signal();
  add(source);
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log.size(), 1u);
}

TEST_F(RunLoopSource, SignalledInAnotherModeStaysSignalled) {
  Source source(note("performed"));
  Source other([] {});
  add(source);
  add(other, CFSTR("other"));
  source.signal();
  EXPECT_EQ(turn(CFSTR("other")), kCFRunLoopRunTimedOut);
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
}

TEST_F(RunLoopSource, RemovedByAnotherOfTheSameTurnDoesNotPerform) {
  Source second(note("second"), 2);
  Source first([&] { CFRunLoopRemoveSource(loop, second, kCFRunLoopDefaultMode); }, 1);
  add(first);
  add(second);
  first.signal();
  second.signal();
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.001, false);
  EXPECT_TRUE(log.empty());
}

TEST_F(RunLoopSource, InvalidatedInItsOwnPerformIsGoneAfterIt) {
  Source source([&] {
    CFRunLoopSourceInvalidate(source);
    log.push_back("performed");
    CFRunLoopSourceSignal(source);
  });
  add(source);
  source.signal();
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_EQ(log.size(), 1u);
  EXPECT_EQ(CFGetRetainCount(source), 1);
}

TEST_F(RunLoopSource, ReleasedForTheLastTimeInItsOwnPerformLivesUntilItsEnd) {
  static Info info;
  static CFRunLoopSourceRef source;
  info = Info{};
  CFRunLoopSourceContext context = contextOf(&info);
  context.perform = [](void* each) {
    CFRunLoopSourceInvalidate(source);
    CFRelease(source);
    EXPECT_EQ(infoAt(each).released, 0);
  };
  source = CFRunLoopSourceCreate(nullptr, 0, &context);
  CFRunLoopAddSource(loop, source, kCFRunLoopDefaultMode);
  CFRunLoopSourceSignal(source);
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_EQ(info.released, 1);
}

TEST_F(RunLoopSource, InvalidCannotBeAdded) {
  Source source([] {});
  CFRunLoopSourceInvalidate(source);
  add(source);
  add(source, kCFRunLoopCommonModes);
  EXPECT_FALSE(CFRunLoopContainsSource(loop, source, kCFRunLoopDefaultMode));
  EXPECT_FALSE(CFRunLoopContainsSource(loop, source, kCFRunLoopCommonModes));
}

TEST_F(RunLoopSource, IgnoresNullAndForeignReferences) {
  const auto foreign = reinterpret_cast<CFRunLoopSourceRef>(loop);
  for (const CFRunLoopSourceRef wrong : {CFRunLoopSourceRef{nullptr}, foreign}) {
    CFRunLoopSourceSignal(wrong);
    CFRunLoopSourceInvalidate(wrong);
    CFRunLoopAddSource(loop, wrong, kCFRunLoopDefaultMode);
    CFRunLoopRemoveSource(loop, wrong, kCFRunLoopDefaultMode);
    EXPECT_FALSE(CFRunLoopSourceIsValid(wrong));
    EXPECT_EQ(CFRunLoopSourceGetOrder(wrong), 0);
    CFRunLoopSourceContext context{};
    CFRunLoopSourceGetContext(wrong, &context);
    EXPECT_EQ(context.perform, nullptr);
  }
}

}  // namespace
