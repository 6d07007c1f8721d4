// Licence: MIT, see LICENSE.
// The agent's life: command line, start, event loop, end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <quorvant/aemessaging/aemessaging.h>
#include <quorvant/agent/AgentApplication.h>
#include <quorvant/debug/QRLAppErrorUtils.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/agent/AgentFixture.h"

namespace {

using testing::ElementsAre;

class ListenerFields : public QRLPortAEMachPortListener {
 public:
  using QRLPortAEMachPortListener::callback;
  using QRLPortAEMachPortListener::portName;
  using QRLPortAEMachPortListener::refcon;
  using QRLPortAEMachPortListener::runLoopSource;
};

class Agent : public tests::AgentFixture {
 protected:
  // Runs the agent with arguments that end exactly where their memory ends.
  int runAgent(const std::vector<std::string>& arguments) {
    std::vector<std::unique_ptr<char[]>> copies;
    std::vector<char*> argv;
    for (const std::string& argument : arguments) {
      copies.push_back(std::make_unique<char[]>(argument.size() + 1));
      std::memcpy(copies.back().get(), argument.c_str(), argument.size() + 1);
      argv.push_back(copies.back().get());
    }
    argv.push_back(nullptr);
    const int status = AgentMain(static_cast<int>(arguments.size()), argv.data());
    QRLAppErrorUtils::setAppName("agent");
    return status;
  }

  // The same without an event loop, to see what the command line does.
  Boolean32 quitWhenDoneAfter(const std::vector<std::string>& arguments) {
    gQuitWhenDone = true;
    calls.run = [] {};
    EXPECT_EQ(runAgent(arguments), 0);
    return gQuitWhenDone;
  }

  static bool hasHandler(AEEventClass eventClass, AEEventID eventID) {
    AEEventHandlerUPP handler = nullptr;
    SInt32 refcon = 0;
    return AEGetEventHandler(eventClass, eventID, &handler, &refcon, false) == noErr;
  }

  static SInt32 lookUp() {
    unsigned int port = 0;
    const SInt32 err = QRLPortAEMachPortListener::CheckPortRegistered(QRL_AGENT_PORT_NAME, port);
    if (port != MACH_PORT_NULL) mach_port_deallocate(mach_task_self(), port);
    return err;
  }
};

SInt32 ignoreEvent(UInt32, UInt32, const AEDesc*, AEDesc*, void*) { return 0; }

// -- Command line --

TEST_F(Agent, QuitsWhenDoneUnlessToldOtherwise) {
  EXPECT_EQ(quitWhenDoneAfter({"/bin/qrlagentd"}), 1u);
}

TEST_F(Agent, KeepsRunningForEitherOption) {
  const std::vector<std::string> cases[] = {
      {"a", "-keepRunning"},       {"a", "-r"},
      {"a", "-keepRunning", "-r"}, {"a", "-r", "-keepRunning"},
      {"a", "-r", "-r"},           {"a", "-keepRunning", "-keepRunning"},
      {"a", "-x", "file", "-r"},   {"a", "-r", "-rx", "other"},
  };
  for (const auto& arguments : cases) {
    EXPECT_EQ(quitWhenDoneAfter(arguments), 0u) << testing::PrintToString(arguments);
  }
}

TEST_F(Agent, IgnoresArgumentsThatOnlyLookLikeItsOptions) {
  for (const char* argument :
       {"-keepRunningX", "-keepRunningNow", "-keepRunnin", "-keeprunning", "keepRunning",
        "--keepRunning", "-k", "-r2", "-rx", "-R", "r", "--r", "-", "", " -r", "-r ", "-help"}) {
    EXPECT_EQ(quitWhenDoneAfter({"a", argument}), 1u) << argument;
  }
}

TEST_F(Agent, DoesNotTakeItsOwnPathForAnOption) { EXPECT_EQ(quitWhenDoneAfter({"-r"}), 1u); }

TEST_F(Agent, StartsWithoutEvenAPath) {
  char* none[] = {nullptr};
  calls.run = [] {};
  EXPECT_EQ(AgentMain(0, none), 0);
  EXPECT_EQ(gQuitWhenDone, 1u);
}

TEST_F(Agent, GivesItsPathToTheErrorReporter) {
  char path[] = "/somewhere/qrlagentd";
  char* argv[] = {path, nullptr};
  calls.run = [] {};
  EXPECT_EQ(AgentMain(1, argv), 0);
  EXPECT_EQ(QRLAppErrorUtils::sExecutableName, path);
  EXPECT_STREQ(QRLAppErrorUtils::sExecutableShortName, "qrlagentd");
  QRLAppErrorUtils::setAppName("agent");
}

// -- Start --

TEST_F(Agent, LooksAtNoEventsThreeTimesWhenItStarts) {
  Initialize();
  EXPECT_THAT(calls.log, ElementsAre("InitCursor", "EventAvail 0", "EventAvail 0", "EventAvail 0"));
}

TEST_F(Agent, DoesEverythingInItsOrder) {
  calls.run = [] {
    EXPECT_NE(cmPortAEListener, nullptr);
    EXPECT_EQ(lookUp(), BOOTSTRAP_SUCCESS);
  };
  EXPECT_EQ(runAgent({"a"}), 0);
  EXPECT_THAT(calls.log,
              ElementsAre("InitCursor", "EventAvail 0", "EventAvail 0", "EventAvail 0",
                          "install aevt quit 0", "install QrlP Mcam 1298358637", "allow 1", "run"));
}

TEST_F(Agent, HasAPortNameOfItsFamily) {
  const std::string name = QRL_AGENT_PORT_NAME;
  EXPECT_TRUE(name.starts_with("com.quorvant."));
  EXPECT_TRUE(name.ends_with(".1.1"));
  EXPECT_LT(name.size(), 128u);
}

TEST_F(Agent, ListensOnItsPortInTheCurrentRunLoop) {
  EXPECT_EQ(installAEHandlers(), noErr);
  ASSERT_NE(cmPortAEListener, nullptr);
  EXPECT_STREQ(cmPortAEListener->*(&ListenerFields::portName), QRL_AGENT_PORT_NAME);
  EXPECT_EQ(cmPortAEListener->*(&ListenerFields::callback), AgentAEDispatchCallback);
  EXPECT_EQ(cmPortAEListener->*(&ListenerFields::refcon), nullptr);
  EXPECT_TRUE(CFRunLoopContainsSource(CFRunLoopGetCurrent(),
                                      cmPortAEListener->*(&ListenerFields::runLoopSource),
                                      kCFRunLoopDefaultMode));
  EXPECT_EQ(lookUp(), BOOTSTRAP_SUCCESS);
}

TEST_F(Agent, InstallsItsHandlersForTheApplication) {
  EXPECT_EQ(installNormalAEHandlers(), noErr);
  AEEventHandlerUPP handler = nullptr;
  SInt32 refcon = -1;
  EXPECT_EQ(AEGetEventHandler('aevt', 'quit', &handler, &refcon, false), noErr);
  EXPECT_EQ(handler, NewAEEventHandlerUPP(AEQuitHandler));
  EXPECT_EQ(refcon, 0);
  EXPECT_EQ(AEGetEventHandler('QrlP', 'Mcam', &handler, &refcon, false), noErr);
  EXPECT_EQ(handler, NewAEEventHandlerUPP(AEMacamHandler));
  EXPECT_EQ(refcon, SInt32('Mcam'));
  EXPECT_EQ(AEGetEventHandler('aevt', 'quit', &handler, &refcon, true), errAEHandlerNotFound);
}

TEST_F(Agent, AllowsInteractionForLocalClients) {
  ASSERT_EQ(AESetInteractionAllowed(kAEInteractWithAll), noErr);
  EXPECT_EQ(installNormalAEHandlers(), noErr);
  AEInteractAllowed level = 0;
  EXPECT_EQ(AEGetInteractionAllowed(&level), noErr);
  EXPECT_EQ(level, kAEInteractWithLocal);
}

// -- Failures --

TEST_F(Agent, EndsWithThePortsErrorAndNoHandlersWhenItsNameIsTaken) {
  QRLPortAEMachPortListener first;
  ASSERT_EQ(first.ListenOnPort(QRL_AGENT_PORT_NAME, CFRunLoopGetCurrent(), ignoreEvent, nullptr),
            0);
  EXPECT_EQ(runAgent({"a"}), -97);
  EXPECT_FALSE(hasHandler('aevt', 'quit'));
  EXPECT_FALSE(hasHandler('QrlP', 'Mcam'));
  EXPECT_THAT(calls.log, ElementsAre("InitCursor", "EventAvail 0", "EventAvail 0", "EventAvail 0"));
}

TEST_F(Agent, KeepsAListenerThatFailedUntilTheHandlersAreRemoved) {
  QRLPortAEMachPortListener first;
  ASSERT_EQ(first.ListenOnPort(QRL_AGENT_PORT_NAME, CFRunLoopGetCurrent(), ignoreEvent, nullptr),
            0);
  EXPECT_EQ(installAEHandlers(), -97);
  ASSERT_NE(cmPortAEListener, nullptr);
  EXPECT_STREQ(cmPortAEListener->*(&ListenerFields::portName), QRL_AGENT_PORT_NAME);
  EXPECT_EQ(removeAEHandlers(), 0);
  EXPECT_EQ(cmPortAEListener, nullptr);
}

TEST_F(Agent, StopsAtTheFirstHandlerThatCannotBeInstalled) {
  calls.failing = "install aevt";
  calls.failure = memFullErr;
  EXPECT_EQ(installNormalAEHandlers(), memFullErr);
  EXPECT_THAT(calls.log, ElementsAre("install aevt quit 0"));
  EXPECT_FALSE(hasHandler('QrlP', 'Mcam'));
}

TEST_F(Agent, StopsAtTheSecondHandlerThatCannotBeInstalled) {
  calls.failing = "install QrlP";
  calls.failure = memFullErr;
  EXPECT_EQ(installNormalAEHandlers(), memFullErr);
  EXPECT_THAT(calls.log, ElementsAre("install aevt quit 0", "install QrlP Mcam 1298358637"));
  EXPECT_TRUE(hasHandler('aevt', 'quit'));
}

TEST_F(Agent, PassesOnThatInteractionCannotBeAllowed) {
  calls.failing = "allow";
  calls.failure = paramErr;
  EXPECT_EQ(installNormalAEHandlers(), paramErr);
}

TEST_F(Agent, NeverRunsWhenAHandlerCannotBeInstalled) {
  calls.failing = "install QrlP";
  calls.failure = memFullErr;
  EXPECT_EQ(runAgent({"a", "-r"}), memFullErr);
  EXPECT_EQ(std::count(calls.log.begin(), calls.log.end(), "run"), 0);
  EXPECT_NE(cmPortAEListener, nullptr);
}

// -- The end --

TEST_F(Agent, DestroysItsListenerWhenTheLoopHasEnded) {
  calls.run = [] {};
  EXPECT_EQ(runAgent({"a"}), 0);
  EXPECT_EQ(cmPortAEListener, nullptr);
  EXPECT_EQ(lookUp(), BOOTSTRAP_UNKNOWN_SERVICE);
}

TEST_F(Agent, LeavesTheHandlersInstalledAtItsEnd) {
  calls.run = [] {};
  EXPECT_EQ(runAgent({"a"}), 0);
  EXPECT_TRUE(hasHandler('aevt', 'quit'));
  EXPECT_TRUE(hasHandler('QrlP', 'Mcam'));
}

TEST_F(Agent, HasNothingToRemoveWithoutAListener) {
  EXPECT_EQ(removeAEHandlers(), 0);
  EXPECT_EQ(cmPortAEListener, nullptr);
}

TEST_F(Agent, DestroysTheListenerForWhatItIs) {
  class Counted : public QRLPortAEMachPortListener {
   public:
    explicit Counted(int& end) : ends(end) {}
    ~Counted() override { ++ends; }
    int& ends;
  };
  int ends = 0;
  cmPortAEListener = new Counted(ends);
  EXPECT_EQ(removeAEHandlers(), 0);
  EXPECT_EQ(ends, 1);
  EXPECT_EQ(cmPortAEListener, nullptr);
}

// -- Whole lives, with a real event loop --

class AgentLife : public Agent {
 protected:
  // Sends requests to the agent's port from another thread while the agent runs, and keeps the
  // results.
  int live(const std::vector<std::string>& arguments, const std::vector<AEEventID>& requests) {
    std::thread client;
    calls.quits = true;
    calls.run = [&] {
      client = std::thread([&] {
        for (AEEventID request : requests) results.push_back(send(request));
      });
      tests::ToolboxCalls::runEventLoop();
    };
    const int status = runAgent(arguments);
    client.join();
    return status;
  }

  static SInt32 send(AEEventID eventID) {
    QRLPortDestinationAddress address;
    std::strcpy(address.name, QRL_AGENT_PORT_NAME);
    QRLPortAppleEvent event;
    event.eventClass = eventID == AEEventID('quit') ? 'aevt' : 'QrlP';
    event.eventID = eventID;
    event.replyMode = kAEWaitReply;
    event.destination = &address;
    SInt32 err = address.initialize();
    if (err == 0) err = event.createEvent();
    if (err == 0) err = event.sendEvent(kAECanInteract, 60 * 60, 0);
    event.finalizeEvent();
    return err;
  }

  int count(const char* note) {
    return static_cast<int>(std::count(calls.log.begin(), calls.log.end(), note));
  }

  std::vector<SInt32> results;
};

TEST_F(AgentLife, EndsAfterItsFirstAlert) {
  EXPECT_EQ(live({"a"}, {'Mcam'}), 0);
  EXPECT_THAT(results, ElementsAre(0));
  EXPECT_EQ(count("alert 138"), 1);
  EXPECT_EQ(gQuit, 0u);
}

TEST_F(AgentLife, EndsAtAQuitOnlyWhenItKeepsRunning) {
  EXPECT_EQ(live({"a", "-keepRunning"}, {'Mcam', 'Mcam', 'quit'}), 0);
  EXPECT_THAT(results, ElementsAre(0, 0, 0));
  EXPECT_EQ(count("alert 138"), 2);
  EXPECT_EQ(count("quit"), 1);
  EXPECT_EQ(gQuit, 1u);
}

TEST_F(AgentLife, AnswersNotHandledToWhatItDoesNotKnow) {
  EXPECT_EQ(live({"a"}, {'oops', 'quit'}), 0);
  EXPECT_THAT(results, ElementsAre(errAEEventNotHandled, 0));
  EXPECT_EQ(count("alert 138"), 0);
}

}  // namespace
