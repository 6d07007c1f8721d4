// Licence: MIT, see LICENSE.
// What the agent asks of the Toolbox, in order. The linker leads the calls through here; each is
// noted, then answered as the test says, or by the real call.
#ifndef TESTS_AGENT_TOOLBOXCALLS_H
#define TESTS_AGENT_TOOLBOXCALLS_H

#include <Carbon/Carbon.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tests {

struct ToolboxCalls {
  ToolboxCalls();
  ~ToolboxCalls();
  ToolboxCalls(const ToolboxCalls&) = delete;
  ToolboxCalls& operator=(const ToolboxCalls&) = delete;

  /// The real event loop.
  static void runEventLoop();

  /// "install aevt quit 0", "EventAvail 1024", "alert 138", ...
  std::vector<std::string> log;

  std::optional<bool> eventWaits;  // what EventAvail answers
  std::function<void()> run;       // in place of the event loop
  bool quits = false;              // whether QuitApplicationEventLoop gets through
  std::function<OSErr()> interact = [] { return noErr; };
  AEIdleUPP idle = nullptr;  // the procedure given to AEInteractWithUser
  DialogItemIndex alertAnswer = kStdOkItemIndex;
  std::string failing;  // the start of the note of a call that fails
  OSErr failure = noErr;
};

}  // namespace tests

#endif
