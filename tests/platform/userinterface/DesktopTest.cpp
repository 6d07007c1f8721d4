// Licence: MIT, see LICENSE.
// Alerts and notices on a desktop, in processes of their own where the death of one or the turn
// between two matters; scripts stand in for the desktop's programs.
#include <CoreFoundation/CFRunLoop.h>
#include <HIToolbox/Notification.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

#include "tests/platform/userinterface/AlertFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Deadline.h"
#include "tests/support/LogListener.h"
#include "tests/support/PrivateRoot.h"
#include "tests/support/StandIn.h"

namespace {

using testing::ElementsAre;
using Words = std::vector<std::string>;

class OnADesktop : public testing::Test {
 protected:
  std::unique_ptr<tests::ChildProcess> start(const std::string& scene) {
    const tests::ChildOptions options{
        .environment = {{"QRL_UI", "desktop"},
                        {"QRL_RESOURCE_FILE", tests::writeAlertFile(root.path())},
                        {"DISPLAY", ":77"},
                        {"XDG_CURRENT_DESKTOP", ""},
                        {"PATH", standIns.folder()}}};
    return std::make_unique<tests::ChildProcess>(Words{QRL_ALERT_PROGRAM, scene}, options);
  }
  static bool ends(int process) {
    const int watch = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
    if (watch == -1) return errno == ESRCH;
    pollfd ended{watch, POLLIN, 0};
    const auto end = std::chrono::steady_clock::now() + tests::kPatience;
    const bool isOver = poll(&ended, 1, tests::remainingMilliseconds(end)) == 1;
    close(watch);
    return isOver;
  }

  tests::PrivateRoot root;
  tests::StandIns standIns{root.path()};
  tests::Fifo shown{root.path() / "shown"};
  tests::Fifo answer{root.path() / "answer"};
  std::filesystem::path record = root.path() / "record";
};

TEST_F(OnADesktop, TwoProcessesAlertsComeOneAfterTheOther) {
  const std::string file = record;
  standIns.install("zenity", "echo up >> " + file + "; echo up > " + shown.path() + "; read x < " +
                                 answer.path() + "; echo down >> " + file + "\n");
  auto first = start("one");
  EXPECT_EQ(shown.readLine(), "up");
  auto second = start("served");  // tells what its loop serves, although it has no window yet
  EXPECT_EQ(second->readLine(), "timer served.");
  EXPECT_EQ(second->readLine(), "port served.");
  answer.writeLine("");
  EXPECT_EQ(first->readLine(), "alert 138: item 1.");
  EXPECT_EQ(shown.readLine(), "up");
  answer.writeLine("");
  EXPECT_EQ(second->readLine(), "alert 138: item 1.");
  EXPECT_THAT(tests::linesOf(record), ElementsAre("up", "down", "up", "down"));
}

TEST_F(OnADesktop, TheNextProcesssAlertComesWhenTheFirstOneDies) {
  standIns.install("zenity", "echo $$ > " + shown.path() + "; exec /bin/sleep 1000\n");
  auto first = start("one");
  const int window = std::stoi(shown.readLine());
  auto second = start("served");
  EXPECT_EQ(second->readLine(), "timer served.");
  first->signal(SIGKILL);
  EXPECT_NE(std::stoi(shown.readLine()), window);
  EXPECT_TRUE(ends(window));
}

TEST_F(OnADesktop, AFilterEndsAnAlertThatStillWaitsForItsTurn) {
  standIns.install("zenity", "echo up > " + shown.path() + "; exec /bin/sleep 1000\n");
  auto first = start("one");
  EXPECT_EQ(shown.readLine(), "up");
  auto second = start("filtered");
  EXPECT_EQ(second->readLine(), "item 4.");
  EXPECT_EQ(second->wait(), 0);
}

TEST_F(OnADesktop, AWindowEndsWithItsProcess) {
  standIns.install("zenity", "echo $$ > " + shown.path() + "; exec /bin/sleep 1000\n");
  auto process = start("one");
  const int window = std::stoi(shown.readLine());
  process->signal(SIGKILL);
  EXPECT_TRUE(ends(window));
}

TEST_F(OnADesktop, ANoticeEndsWithItsProcess) {
  standIns.install("notify-send", "echo $$ > " + shown.path() + "; exec /bin/sleep 1000\n");
  auto process = start("notices");
  const int notice = std::stoi(shown.readLine());
  process->signal(SIGKILL);
  EXPECT_TRUE(ends(notice));
}

TEST_F(OnADesktop, NoticesComeOneAfterTheOtherAndTheirResponsesWithThem) {
  standIns.install("notify-send",
                   "for last; do text=$before; before=$last; done; echo \"$text\" > " +
                       shown.path() + "; read x < " + answer.path() + "\n");
  auto process = start("notices");
  for (const char* text : {"one", "two", "three"}) {
    EXPECT_EQ(shown.readLine(), text);
    answer.writeLine("");
    EXPECT_EQ(process->readLine(), std::string("dismissed ") + text + ".");
  }
  EXPECT_EQ(process->wait(), 0);
}

TEST_F(OnADesktop, AnAlertIsUpBesideANotice) {
  standIns.install("notify-send", "exec /bin/sleep 1000\n");
  standIns.install("zenity", "exit 0\n");
  auto process = start("over");
  EXPECT_EQ(process->readLine(), "alert 138: item 1.");
}

std::thread::id gResponder;

void respond(NMRecPtr record) {
  gResponder = std::this_thread::get_id();
  record->nmRefCon = 1;
}

/// Notices of this process.
class NoticeOnADesktop : public OnADesktop {
 protected:
  NoticeOnADesktop() : earlierPath(std::getenv("PATH")) {
    setenv("QRL_UI", "desktop", 1);
    setenv("DISPLAY", ":77", 1);
    setenv("PATH", standIns.folder().c_str(), 1);
    notice.qType = nmType;
    notice.nmStr = text;
    notice.nmResp = NewNMUPP(respond);
  }
  ~NoticeOnADesktop() override {
    NMRemove(&notice);
    setenv("PATH", earlierPath.c_str(), 1);
    unsetenv("DISPLAY");
    setenv("QRL_UI", "none", 1);
  }
  bool wasAnswered() const { return notice.nmRefCon != 0; }
  /// Runs the main loop until the response was called.
  bool isAnswered() {
    const auto end = std::chrono::steady_clock::now() + tests::kPatience;
    while (!wasAnswered() && std::chrono::steady_clock::now() < end) {
      CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, 1);
    }
    return wasAnswered();
  }

  tests::LogListener log{root.path()};
  std::string earlierPath;
  unsigned char text[6] = "\004text";
  NMRec notice{};
};

TEST_F(NoticeOnADesktop, IsUpUntilItsDismissalIsAnsweredOnTheMainLoop) {
  standIns.install("notify-send",
                   "echo up > " + shown.path() + "; read x < " + answer.path() + "\n");
  std::thread([this] { EXPECT_EQ(NMInstall(&notice), 0); }).join();
  EXPECT_EQ(shown.readLine(), "up");
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, 1);
  EXPECT_FALSE(wasAnswered());
  answer.writeLine("");
  EXPECT_TRUE(isAnswered());
  EXPECT_EQ(gResponder, std::this_thread::get_id());
  EXPECT_TRUE(log.isQuiet());
}

TEST_F(NoticeOnADesktop, IsTakenOffTheScreenWhenItIsRemoved) {
  standIns.install("notify-send", "trap 'kill $!; echo tidied >> " + record.string() +
                                      "; exit 0' INT\n/bin/sleep 1000 & echo up > " + shown.path() +
                                      "; wait $!\n");
  NMInstall(&notice);
  EXPECT_EQ(shown.readLine(), "up");
  EXPECT_EQ(NMRemove(&notice), 0);
  EXPECT_THAT(tests::linesOf(record), ElementsAre("tidied"));
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, 1);
  EXPECT_FALSE(wasAnswered());
}

TEST_F(NoticeOnADesktop, GoesToTheNextPresenterWhenItCannotBeShown) {
  standIns.install("notify-send", "exit 1\n");
  NMInstall(&notice);
  EXPECT_EQ(log.readLine(),
            (standIns.folder() / "notify-send").string() + " ended with 1 and has shown nothing");
  EXPECT_TRUE(isAnswered());
  EXPECT_EQ(log.readLine(), "notice: text");
}

TEST_F(NoticeOnADesktop, GoesToTheNextPresenterWhenNothingShowsNotices) {
  NMInstall(&notice);
  EXPECT_EQ(log.readLine(), "notice: text");
  EXPECT_TRUE(isAnswered());
}

}  // namespace
