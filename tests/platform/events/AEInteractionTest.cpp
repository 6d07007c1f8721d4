// Licence: MIT, see LICENSE.
// One process alone, and what may interact at all. The turn between processes is in
// InteractionTurnTest.cpp.
#include <HIToolbox/AEInteraction.h>

#include <CarbonCore/MacErrors.h>
#include <HIServices/Processes.h>

#include <optional>
#include <ostream>

#include "tests/platform/events/EventFixture.h"
#include "tests/support/ChildProcess.h"

namespace {

using tests::kTestClass;

class Interaction : public tests::EventFixture {
 protected:
  Interaction() {
    handle('ask ', [this] {
      result = AEInteractWithUser(kNoTimeOut, nullptr, nullptr);
      return OSErr{noErr};
    });
  }

  /// What AEInteractWithUser returns to a handler that this process itself has called.
  OSErr askedDirectly(AESendMode mode) {
    const ProcessSerialNumber self = {0, kCurrentProcess};
    AEAddressDesc target;
    AppleEvent event;
    EXPECT_EQ(AECreateDesc(typeProcessSerialNumber, &self, sizeof self, &target), noErr);
    EXPECT_EQ(AECreateAppleEvent(kTestClass, 'ask ', &target, 1, 0, &event), noErr);
    EXPECT_EQ(AESend(&event, nullptr, kAENoReply | mode, kAENormalPriority, kAEDefaultTimeout,
                     nullptr, nullptr),
              noErr);
    AEDisposeDesc(&event);
    AEDisposeDesc(&target);
    return result.value_or(1);
  }

  /// What it returns to a handler of an event that has waited in the queue.
  OSErr askedByQueue() {
    EventRecord record;
    EXPECT_TRUE(WaitNextEvent(everyEvent, &record, 60 * 60, nullptr));
    EXPECT_EQ(AEProcessAppleEvent(&record), noErr);
    return result.value_or(1);
  }

  /// What it returns for an event of another process.
  OSErr askedByOther(AESendMode mode) {
    ProcessSerialNumber self;
    EXPECT_EQ(GetCurrentProcess(&self), noErr);
    tests::ChildProcess child({QRL_EVENT_PROCESS});
    EXPECT_TRUE(child.writeLine("send " + std::to_string(self.lowLongOfPSN) + " " +
                                std::to_string(AEEventID{'ask '}) + " " +
                                std::to_string(kAENoReply | mode)));
    const OSErr asked = askedByQueue();
    EXPECT_EQ(child.readLine(), "0");
    return asked;
  }

  std::optional<OSErr> result;
};

TEST_F(Interaction, IsAllowedForThisMachineUnlessSaidOtherwise) {
  AEInteractAllowed level = 9;
  EXPECT_EQ(AEGetInteractionAllowed(&level), noErr);
  EXPECT_EQ(level, kAEInteractWithLocal);
}

TEST_F(Interaction, KeepsTheLevelThatWasSet) {
  for (const AEInteractAllowed each :
       {AEInteractAllowed{kAEInteractWithAll}, AEInteractAllowed{kAEInteractWithSelf},
        AEInteractAllowed{kAEInteractWithLocal}}) {
    AEInteractAllowed level = 9;
    EXPECT_EQ(AESetInteractionAllowed(each), noErr);
    EXPECT_EQ(AEGetInteractionAllowed(&level), noErr);
    EXPECT_EQ(level, each);
  }
}

TEST_F(Interaction, RefusesALevelThatDoesNotExist) {
  AEInteractAllowed level = 9;
  EXPECT_EQ(AESetInteractionAllowed(3), paramErr);
  EXPECT_EQ(AEGetInteractionAllowed(nullptr), paramErr);
  EXPECT_EQ(AEGetInteractionAllowed(&level), noErr);
  EXPECT_EQ(level, kAEInteractWithLocal);
}

TEST_F(Interaction, IsTheServersOwnAffairOutsideAHandler) {
  AESetInteractionAllowed(kAEInteractWithSelf);
  EXPECT_EQ(AEInteractWithUser(kNoTimeOut, nullptr, nullptr), noErr);
}

TEST_F(Interaction, RefusesATimeOutThatDoesNotExist) {
  EXPECT_EQ(AEInteractWithUser(-3, nullptr, nullptr), paramErr);
}

struct LevelCase {
  AEInteractAllowed level;
  AESendMode mode;
  OSErr direct, local;

  friend void PrintTo(const LevelCase& each, std::ostream* out) {
    *out << "level " << int{each.level} << ", mode " << each.mode;
  }
};

class InteractionLevel : public Interaction, public testing::WithParamInterface<LevelCase> {};

TEST_P(InteractionLevel, DecidesForAnEventThatThisProcessHandlesDirectly) {
  AESetInteractionAllowed(GetParam().level);
  EXPECT_EQ(askedDirectly(GetParam().mode), GetParam().direct);
}

TEST_P(InteractionLevel, DecidesForAnEventOfAnotherProcess) {
  AESetInteractionAllowed(GetParam().level);
  EXPECT_EQ(askedByOther(GetParam().mode), GetParam().local);
}

constexpr OSErr kNo = errAENoUserInteraction;

INSTANTIATE_TEST_SUITE_P(
    All, InteractionLevel,
    testing::Values(LevelCase{kAEInteractWithSelf, kAECanInteract, noErr, kNo},
                    LevelCase{kAEInteractWithLocal, kAECanInteract, noErr, noErr},
                    LevelCase{kAEInteractWithAll, kAECanInteract, noErr, noErr},
                    LevelCase{kAEInteractWithSelf, kAEAlwaysInteract, noErr, kNo},
                    LevelCase{kAEInteractWithLocal, kAEAlwaysInteract, noErr, noErr},
                    LevelCase{kAEInteractWithLocal, 0, noErr, noErr},
                    LevelCase{kAEInteractWithLocal, kAENeverInteract, kNo, kNo},
                    LevelCase{kAEInteractWithAll, kAENeverInteract, kNo, kNo}));

TEST_F(Interaction, IsAllowedForAnEventThatThisProcessSentToItsQueue) {
  AESetInteractionAllowed(kAEInteractWithSelf);
  tests::post('ask ');
  EXPECT_EQ(askedByQueue(), noErr);
}

}  // namespace
