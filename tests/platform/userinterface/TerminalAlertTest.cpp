// Licence: MIT, see LICENSE.
// Alerts and notices on a terminal, with a person who types.
#include <gtest/gtest.h>

#include <optional>

#include "tests/platform/userinterface/AlertFile.h"
#include "tests/support/LogListener.h"
#include "tests/support/PrivateRoot.h"
#include "tests/support/PseudoTerminal.h"

namespace {

class AlertOnATerminal : public testing::Test {
 protected:
  tests::PseudoTerminal& show(const std::string& scene, const std::string& choice = "terminal") {
    tests::ChildOptions options{
        .environment = {{"QRL_UI", choice},
                        {"QRL_RESOURCE_FILE", tests::writeAlertFile(root.path())},
                        {"DISPLAY", ""},
                        {"WAYLAND_DISPLAY", ""}}};
    terminal.emplace(std::vector<std::string>{QRL_ALERT_PROGRAM, scene}, options);
    return *terminal;
  }

  tests::PrivateRoot root;
  std::optional<tests::PseudoTerminal> terminal;
};

TEST_F(AlertOnATerminal, ShowsTitleTextAndButtonAndWaitsForReturn) {
  auto& screen = show("one");
  auto shown = screen.readUntil("Press Return: ");
  ASSERT_TRUE(shown);
  EXPECT_EQ(*shown, "\a\r\n  The title\r\n  The\r\n  text \xC3\xA4h\r\n  [OK] Press Return: ");
  EXPECT_EQ(screen.screen(), "");
  EXPECT_EQ(screen.wait(std::chrono::milliseconds(0)), std::nullopt);
  screen.type("\r");
  EXPECT_TRUE(screen.readUntil("alert 138: item 1."));
  EXPECT_EQ(screen.wait(), 0);
}

TEST_F(AlertOnATerminal, IsWhatAutoMeansWithoutADesktop) {
  for (const char* choice : {"auto", "desktop", "anything else"}) {
    auto& screen = show("one", choice);
    ASSERT_TRUE(screen.readUntil("Press Return: ")) << choice;
    screen.type("\n");
    EXPECT_TRUE(screen.readUntil("alert 138: item 1.")) << choice;
  }
}

TEST_F(AlertOnATerminal, NumbersItsButtonsAndTakesReturnForTheDefault) {
  auto& screen = show("choice");
  auto shown = screen.readUntil("choice: ");
  ASSERT_TRUE(shown);
  EXPECT_EQ(*shown, "\r\n  A question\r\n  [1] Yes (Return)  [2] No  [3] Maybe  Your choice: ");
  screen.type("\r");
  EXPECT_TRUE(screen.readUntil("alert 139: item 1."));
}

TEST_F(AlertOnATerminal, TakesTheNumberOfAButton) {
  auto& screen = show("choice");
  ASSERT_TRUE(screen.readUntil("choice: "));
  screen.type(" 3 \r");
  EXPECT_TRUE(screen.readUntil("alert 139: item 4."));
}

TEST_F(AlertOnATerminal, AsksAgainWhenTheAnswerIsNoButton) {
  auto& screen = show("choice");
  for (const char* wrong : {"0", "4", "x", "2x", "-1"}) {
    ASSERT_TRUE(screen.readUntil("choice: ")) << wrong;
    screen.type(std::string(wrong) + "\r");
  }
  ASSERT_TRUE(screen.readUntil("choice: "));
  screen.type("2\r");
  EXPECT_TRUE(screen.readUntil("alert 139: item 2."));
}

TEST_F(AlertOnATerminal, TakesWhatWasTypedAhead) {
  auto& screen = show("one");
  screen.type("\r");
  EXPECT_TRUE(screen.readUntil("alert 138: item 1."));
}

TEST_F(AlertOnATerminal, LetsTheRunLoopServeTimersAndPorts) {
  auto& screen = show("served");
  EXPECT_TRUE(screen.readUntil("timer served."));
  EXPECT_TRUE(screen.readUntil("port served."));
  EXPECT_EQ(screen.wait(std::chrono::milliseconds(0)), std::nullopt);
  screen.type("\r");
  EXPECT_TRUE(screen.readUntil("alert 138: item 1."));
}

TEST_F(AlertOnATerminal, IsAnsweredAfterTheOneThatInterruptsIt) {
  auto& screen = show("nested");
  ASSERT_TRUE(screen.readUntil("choice: "));
  screen.type("2\r");
  ASSERT_TRUE(screen.readUntilAll({"alert 139: item 2.", "[OK] Press Return: "}));  // shown again
  screen.type("\r");
  EXPECT_TRUE(screen.readUntil("alert 138: item 1."));
}

TEST_F(AlertOnATerminal, PassesAStopOnToTheRunThatItInterrupts) {
  auto& screen = show("stopped");
  ASSERT_TRUE(screen.readUntil("Press Return: "));
  screen.type("\r");
  EXPECT_TRUE(screen.readUntil("alert 138: item 1."));
  EXPECT_TRUE(screen.readUntil("loop stopped."));
}

TEST_F(AlertOnATerminal, IsTakenDownWhenTheFilterEndsIt) {
  auto& screen = show("filtered");
  EXPECT_TRUE(screen.readUntil("item 4."));
  EXPECT_EQ(screen.wait(), 0);
}

TEST_F(AlertOnATerminal, IsAnsweredWithItsDefaultWhenTheTerminalIsClosed) {
  tests::LogListener log(root.path());
  auto& screen = show("hangup");
  ASSERT_TRUE(screen.readUntil("choice: "));
  screen.hangUp();
  EXPECT_EQ(log.readLine(), "alert: A question [answered with \"Yes\"]");
  EXPECT_EQ(screen.wait(), 1);
}

TEST_F(AlertOnATerminal, WithoutOneIsLogged) {
  tests::LogListener log(root.path());
  tests::ChildProcess program(
      {QRL_ALERT_PROGRAM, "alone"},
      {.environment = {{"QRL_UI", "terminal"},
                       {"QRL_RESOURCE_FILE", tests::writeAlertFile(root.path())}}});
  EXPECT_EQ(program.readLine(), "alert 138: item 1.");
  EXPECT_EQ(log.readLine(), "alert: The title: The text \xC3\xA4h [answered with \"OK\"]");
}

TEST_F(AlertOnATerminal, FromABackgroundJobWaitsForTheForeground) {
  auto& screen = show("background");
  ASSERT_TRUE(screen.readUntil("Press Return: "));  // not stopped by writing, nor by waiting
  screen.type("go\r");                              // goes to the job in the foreground
  ASSERT_TRUE(screen.readUntil("in the foreground."));
  screen.type("\r");
  EXPECT_TRUE(screen.readUntil("alert 138: item 1."));
}

/// What a person sees who dismisses the notices of a scene, one after the other, having awaited
/// some texts first. A notice may come up before the response of the last one was called.
class NoticeOnATerminal : public AlertOnATerminal {
 protected:
  std::string dismissAll(tests::PseudoTerminal& screen, const std::vector<std::string>& texts,
                         std::vector<std::string> awaited = {}) {
    std::string seen;
    for (const std::string& text : texts) {
      awaited.push_back("  " + text + "\r\n  Press Return: ");
      seen += screen.readUntilAll(awaited).value_or("[nothing]");
      screen.type("\r");
      awaited = {"dismissed " + text + "."};
    }
    return seen + screen.readUntilAll(awaited).value_or("[nothing]");
  }
};

TEST_F(NoticeOnATerminal, WaitsForReturnAndIsFollowedByTheNext) {
  auto& screen = show("notices");
  const std::string seen = dismissAll(screen, {"one", "two", "three"});
  EXPECT_EQ(seen.find("[nothing]"), std::string::npos) << seen;
  EXPECT_EQ(screen.wait(), 0);
}

TEST_F(NoticeOnATerminal, ThatWasRemovedIsNotShown) {
  auto& screen = show("fewer");
  const std::string seen = dismissAll(screen, {"one", "three"}, {"removed the one in the middle."});
  EXPECT_EQ(seen.find("[nothing]"), std::string::npos) << seen;
  EXPECT_EQ(seen.find("two"), std::string::npos) << seen;
}

TEST_F(NoticeOnATerminal, GivesWayToAnAlert) {
  auto& screen = show("over");
  ASSERT_TRUE(screen.readUntil("[OK] Press Return: "));
  screen.type("\r");
  // The alert's caller goes on while the notices are shown already, so its line comes anywhere.
  std::string seen = dismissAll(screen, {"one", "two", "three"});
  const std::string answer = "alert 138: item 1.";
  if (seen.find(answer) == std::string::npos) {
    seen += screen.readUntil(answer).value_or("[nothing]");
  }
  EXPECT_EQ(seen.find("[nothing]"), std::string::npos) << seen;
  EXPECT_EQ(screen.wait(), 0);
}

}  // namespace
