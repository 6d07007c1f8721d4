// Licence: MIT, see LICENSE.
// A program that shows alerts and notices on its terminal and writes there what comes of it. The
// first argument says what to do; the application's resources hold the alerts.
#include <CoreFoundation/CFMachPort.h>
#include <CoreFoundation/CFRunLoop.h>
#include <HIToolbox/Dialogs.h>
#include <HIToolbox/Notification.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "platform/mach/PortSpace.h"

namespace {

/// Calls a function on the main loop, soon or again and again.
void later(void (*call)(), double interval = 0) {
  auto fire = [](CFRunLoopTimerRef, void* info) { reinterpret_cast<void (*)()>(info)(); };
  CFRunLoopTimerContext context{};
  context.info = reinterpret_cast<void*>(call);
  CFRunLoopTimerRef timer = CFRunLoopTimerCreate(kCFAllocatorDefault, CFAbsoluteTimeGetCurrent(),
                                                 interval, 0, 0, fire, &context);
  CFRunLoopAddTimer(CFRunLoopGetMain(), timer, kCFRunLoopDefaultMode);
  CFRelease(timer);
}

void answer(SInt16 alert) { std::printf("alert %d: item %d.\n", alert, Alert(alert, nullptr)); }

void showOne() { answer(138); }
void showChoice() { answer(139); }

CFMachPortRef gPort;

/// While the alert is up a timer sends to a port, and the port's call-back tells of it.
void showServed() {
  CFMachPortContext context{};
  auto receive = [](CFMachPortRef, void*, CFIndex, void*) { std::printf("port served.\n"); };
  gPort = CFMachPortCreate(kCFAllocatorDefault, receive, &context, nullptr);
  CFRunLoopSourceRef source = CFMachPortCreateRunLoopSource(kCFAllocatorDefault, gPort, 0);
  CFRunLoopAddSource(CFRunLoopGetMain(), source, kCFRunLoopDefaultMode);
  CFRelease(source);
  later([] {
    std::printf("timer served.\n");
    platform::mach::send(CFMachPortGetPort(gPort), 0, 1, {}, platform::host::Deadline::never());
  });
  answer(138);
}

/// While the first alert is up a timer shows a second one.
void showNested() {
  later(showChoice);
  answer(138);
}

/// The loop is stopped while the alert that it serves is up.
void showStopped() {
  later([] {
    later([] { CFRunLoopStop(CFRunLoopGetMain()); });
    answer(138);
  });
  CFRunLoopRun();
  std::printf("loop stopped.\n");
}

Boolean endAfterATimer(DialogRef, EventRecord*, DialogItemIndex* item) {
  static int calls = 0;
  *item = 4;
  return ++calls == 3;
}

/// The filter ends the alert when the loop has served two messages.
void showFiltered() {
  later([] {
    for (int i = 0; i < 2; ++i) {
      platform::mach::send(CFMachPortGetPort(gPort), 0, 1, {}, platform::host::Deadline::never());
    }
  });
  auto ignore = [](CFMachPortRef, void*, CFIndex, void*) {};
  gPort = CFMachPortCreate(kCFAllocatorDefault, ignore, nullptr, nullptr);
  CFRunLoopSourceRef source = CFMachPortCreateRunLoopSource(kCFAllocatorDefault, gPort, 0);
  CFRunLoopAddSource(CFRunLoopGetMain(), source, kCFRunLoopDefaultMode);
  CFRelease(source);
  std::printf("item %d.\n", Alert(138, endAfterATimer));
}

/// Outlives its terminal and exits with the answer.
void showUntilHangUp() {
  signal(SIGHUP, SIG_IGN);
  std::exit(Alert(139, nullptr));
}

void showWithoutATerminal() {
  setsid();
  answer(138);
}

/// Shows the alert in a job of its own, which goes to the foreground when a line was typed.
void showInBackground() {
  const pid_t job = fork();
  if (job == 0) {
    setpgid(0, 0);
    return answer(138);
  }
  setpgid(job, job);
  char line[16];
  if (read(STDIN_FILENO, line, sizeof line) <= 0) std::exit(1);
  tcsetpgrp(STDIN_FILENO, job);
  std::printf("in the foreground.\n");
  waitpid(job, nullptr, 0);
}

unsigned char gTexts[3][8] = {"\003one", "\003two", "\005three"};
NMRec gNotices[3];

void dismissed(NMRecPtr record) {
  std::printf("dismissed %s.\n", reinterpret_cast<const char*>(record->nmStr) + 1);
  if (record == &gNotices[2]) CFRunLoopStop(CFRunLoopGetMain());
}

void installNotices() {
  for (int i = 0; i < 3; ++i) {
    gNotices[i] = {};
    gNotices[i].qType = nmType;
    gNotices[i].nmStr = gTexts[i];
    gNotices[i].nmResp = NewNMUPP(dismissed);
    NMInstall(&gNotices[i]);
  }
}

void showNotices() {
  installNotices();
  CFRunLoopRun();
}

/// The notice in the middle is removed before it was shown.
void showFewerNotices() {
  installNotices();
  NMRemove(&gNotices[1]);
  std::puts("removed the one in the middle.");
  CFRunLoopRun();
}

/// An alert goes before the notices that are waiting.
void showAlertOverNotices() {
  installNotices();
  later(showOne);
  CFRunLoopRun();
}

}  // namespace

int main(int argc, char** argv) {
  const std::map<std::string, void (*)()> scenes = {{"one", showOne},
                                                    {"choice", showChoice},
                                                    {"served", showServed},
                                                    {"nested", showNested},
                                                    {"stopped", showStopped},
                                                    {"filtered", showFiltered},
                                                    {"notices", showNotices},
                                                    {"fewer", showFewerNotices},
                                                    {"over", showAlertOverNotices},
                                                    {"hangup", showUntilHangUp},
                                                    {"alone", showWithoutATerminal},
                                                    {"background", showInBackground}};
  auto scene = scenes.find(argc > 1 ? argv[1] : "");
  if (scene == scenes.end()) return 2;
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  scene->second();
  return 0;
}
