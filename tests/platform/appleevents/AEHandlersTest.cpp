// Licence: MIT, see LICENSE.
#include <AE/AppleEvents.h>

#include <gtest/gtest.h>

#include <iterator>
#include <vector>

#include "platform/appleevents/Dispatch.h"
#include "tests/platform/appleevents/Descriptors.h"

namespace {

using platform::appleevents::currentEvent;
using platform::appleevents::CurrentEvent;
using platform::appleevents::dispatchEvent;
using tests::Desc;

/// What the handler was called with, and what it shall answer.
struct Script {
  std::vector<SInt32> refcons;
  OSErr result = noErr;
  std::optional<SInt32> errorNumber;
  const AppleEvent* current = nullptr;
  AESendMode interactionLevel = 0;
  AEEventSource source = 0;
};
Script gScript;

OSErr handle(const AppleEvent* event, AppleEvent* reply, SInt32 refcon) {
  gScript.refcons.push_back(refcon);
  if (const CurrentEvent* current = currentEvent()) {
    EXPECT_EQ(current->event, event);
    gScript.current = current->event;
    gScript.interactionLevel = current->interactionLevel;
    gScript.source = current->source;
  }
  if (gScript.errorNumber) {
    AEPutParamPtr(reply, keyErrorNumber, typeSInt32, &*gScript.errorNumber, 4);
  }
  return gScript.result;
}

OSErr handleOtherwise(const AppleEvent*, AppleEvent*, SInt32) { return noErr; }

class Handlers : public testing::Test {
 protected:
  ~Handlers() override {
    for (const auto& [eventClass, eventID, isSystem] : installed) {
      AERemoveEventHandler(eventClass, eventID, nullptr, isSystem);
    }
    gScript = {};
  }

  void install(AEEventClass eventClass, AEEventID eventID, SInt32 refcon,
               Boolean isSystem = false) {
    ASSERT_EQ(
        AEInstallEventHandler(eventClass, eventID, NewAEEventHandlerUPP(handle), refcon, isSystem),
        noErr);
    installed.push_back({eventClass, eventID, isSystem});
  }

  struct Installed {
    AEEventClass eventClass;
    AEEventID eventID;
    Boolean isSystem;
  };
  std::vector<Installed> installed;
  Desc event = tests::makeEvent('test', 'case');
  Desc reply = tests::makeEvent(kCoreEventClass, kAEAnswer);
};

using Refcons = std::vector<SInt32>;

TEST_F(Handlers, GetTheEventOfTheirClassAndID) {
  install('test', 'case', 77);
  EXPECT_EQ(dispatchEvent(*&event, *&reply), noErr);
  EXPECT_EQ(gScript.refcons, Refcons{77});
  EXPECT_EQ(AESizeOfParam(&reply, keyErrorNumber, nullptr, nullptr), errAEDescNotFound);
}

TEST_F(Handlers, AreFoundFromTheMostToTheLeastExact) {
  const Installed ranks[] = {{'test', 'case', false},       {'test', typeWildCard, false},
                             {typeWildCard, 'case', false}, {typeWildCard, typeWildCard, false},
                             {'test', 'case', true},        {'test', typeWildCard, true},
                             {typeWildCard, 'case', true},  {typeWildCard, typeWildCard, true}};
  for (SInt32 rank = static_cast<SInt32>(std::size(ranks)) - 1; rank >= 0; --rank) {
    install(ranks[rank].eventClass, ranks[rank].eventID, rank, ranks[rank].isSystem);
    gScript.refcons.clear();
    EXPECT_EQ(dispatchEvent(*&event, *&reply), noErr);
    EXPECT_EQ(gScript.refcons, Refcons{rank});
  }
}

TEST_F(Handlers, DoNotGetOtherEvents) {
  install('test', 'othr', 1);
  install('othr', 'case', 2);
  install('othr', typeWildCard, 3);
  EXPECT_EQ(dispatchEvent(*&event, *&reply), errAEEventNotHandled);
  EXPECT_EQ(gScript.refcons, Refcons{});
  EXPECT_EQ(tests::parameter<SInt32>(reply, keyErrorNumber, typeSInt32), errAEEventNotHandled);
}

TEST_F(Handlers, TakeEachOthersPlace) {
  install('test', 'case', 1);
  install('test', 'case', 2);
  EXPECT_EQ(dispatchEvent(*&event, *&reply), noErr);
  EXPECT_EQ(gScript.refcons, Refcons{2});
  EXPECT_EQ(AERemoveEventHandler('test', 'case', nullptr, false), noErr);
  EXPECT_EQ(dispatchEvent(*&event, *&reply), errAEEventNotHandled);
}

TEST_F(Handlers, AnswerWithTheirResult) {
  install('test', 'case', 1);
  gScript.result = fnfErr;
  EXPECT_EQ(dispatchEvent(*&event, *&reply), fnfErr);
  EXPECT_EQ(tests::parameter<SInt32>(reply, keyErrorNumber, typeSInt32), fnfErr);
}

TEST_F(Handlers, MayPutAnErrorNumberOfTheirOwn) {
  install('test', 'case', 1);
  gScript.result = fnfErr;
  gScript.errorNumber = 12345;
  EXPECT_EQ(dispatchEvent(*&event, *&reply), fnfErr);
  EXPECT_EQ(tests::parameter<SInt32>(reply, keyErrorNumber, typeSInt32), 12345);
}

TEST_F(Handlers, NeedNoReply) {
  install('test', 'case', 1);
  gScript.result = fnfErr;
  AppleEvent none = {typeNull, nullptr};
  EXPECT_EQ(dispatchEvent(*&event, none), fnfErr);
  EXPECT_EQ(none.dataHandle, nullptr);
}

TEST_F(Handlers, AreAskedForEventsAlone) {
  Desc record = tests::makeRecord();
  EXPECT_EQ(dispatchEvent(*&record, *&reply), errAENotAppleEvent);
}

TEST_F(Handlers, SeeTheirEventAsTheCurrentOne) {
  install('test', 'case', 1);
  const SInt32 level = kAEAlwaysInteract;
  const SInt16 source = kAESameProcess;
  ASSERT_EQ(AEPutAttributePtr(&event, keyInteractLevelAttr, typeSInt32, &level, 4), noErr);
  ASSERT_EQ(AEPutAttributePtr(&event, keyEventSourceAttr, typeSInt16, &source, 2), noErr);
  EXPECT_EQ(currentEvent(), nullptr);
  EXPECT_EQ(dispatchEvent(*&event, *&reply), noErr);
  EXPECT_EQ(gScript.current, &event);
  EXPECT_EQ(gScript.interactionLevel, level);
  EXPECT_EQ(gScript.source, source);
  EXPECT_EQ(currentEvent(), nullptr);
}

TEST_F(Handlers, AreGivenBackAsInstalled) {
  install('test', 'case', 77);
  install('test', 'case', 88, true);
  install('test', typeWildCard, 99);
  AEEventHandlerUPP handler = nullptr;
  SInt32 refcon = 0;
  EXPECT_EQ(AEGetEventHandler('test', 'case', &handler, &refcon, false), noErr);
  EXPECT_EQ(handler, &handle);
  EXPECT_EQ(refcon, 77);
  EXPECT_EQ(AEGetEventHandler('test', 'case', &handler, &refcon, true), noErr);
  EXPECT_EQ(refcon, 88);
  EXPECT_EQ(AEGetEventHandler('test', typeWildCard, &handler, &refcon, false), noErr);
  EXPECT_EQ(refcon, 99);
  EXPECT_EQ(AEGetEventHandler('test', 'othr', &handler, &refcon, false), errAEHandlerNotFound);
  EXPECT_EQ(AEGetEventHandler('test', typeWildCard, &handler, &refcon, true), errAEHandlerNotFound);
}

TEST_F(Handlers, AreRemovedOnlyAsNamed) {
  install('test', 'case', 1);
  const AEEventHandlerUPP other = NewAEEventHandlerUPP(handleOtherwise);
  EXPECT_EQ(AERemoveEventHandler('test', 'case', other, false), errAEHandlerNotFound);
  EXPECT_EQ(AERemoveEventHandler('test', 'case', nullptr, true), errAEHandlerNotFound);
  EXPECT_EQ(AERemoveEventHandler('test', typeWildCard, nullptr, false), errAEHandlerNotFound);
  EXPECT_EQ(dispatchEvent(*&event, *&reply), noErr);
  EXPECT_EQ(AERemoveEventHandler('test', 'case', NewAEEventHandlerUPP(handle), false), noErr);
  EXPECT_EQ(AERemoveEventHandler('test', 'case', nullptr, false), errAEHandlerNotFound);
  DisposeAEEventHandlerUPP(other);
}

TEST_F(Handlers, AreNotInstalledWithoutAProcedure) {
  EXPECT_EQ(AEInstallEventHandler('test', 'case', nullptr, 0, false), paramErr);
  AEEventHandlerUPP handler = nullptr;
  SInt32 refcon = 0;
  EXPECT_EQ(AEGetEventHandler('test', 'case', nullptr, &refcon, false), paramErr);
  EXPECT_EQ(AEGetEventHandler('test', 'case', &handler, nullptr, false), paramErr);
}

TEST_F(Handlers, AreCalledThroughTheirPointers) {
  EXPECT_EQ(InvokeAEEventHandlerUPP(&event, &reply, 5, NewAEEventHandlerUPP(handle)), noErr);
  EXPECT_EQ(gScript.refcons, Refcons{5});
}

}  // namespace
