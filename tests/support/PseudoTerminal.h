// Licence: MIT, see LICENSE.
// A program with a terminal of its own, and the person in front of it.
#ifndef TESTS_SUPPORT_PSEUDOTERMINAL_H
#define TESTS_SUPPORT_PSEUDOTERMINAL_H

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/ChildProcess.h"

namespace tests {

/// One thread.
class PseudoTerminal final {
 public:
  /// Runs a program in a session of its own whose controlling terminal (and input, output and
  /// errors) this is. Through the emulator where this build needs one, unless told otherwise.
  explicit PseudoTerminal(const std::vector<std::string>& command,
                          const ChildOptions& options = {});
  /// Kills the program if it still runs.
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  int pid() const { return process; }

  /// Reads the screen until it shows a text, and gives all that came since the last call, the text
  /// included. Nothing when it did not come in time or the terminal was closed.
  std::optional<std::string> readUntil(const std::string& text,
                                       std::chrono::milliseconds patience = kPatience);
  /// The same for several texts that come in any order.
  std::optional<std::string> readUntilAll(const std::vector<std::string>& texts,
                                          std::chrono::milliseconds patience = kPatience);
  /// Everything that was shown so far and not given out yet.
  const std::string& screen() const { return shown; }

  /// Presses keys.
  void type(const std::string& keys);
  /// Closes the window: the program's terminal is gone.
  void hangUp();

  /// Its exit status, or the negative number of the signal that ended it; nothing when it still
  /// runs.
  std::optional<int> wait(std::chrono::milliseconds patience = kPatience);

 private:
  bool readMore(std::chrono::steady_clock::time_point end);

  int process = -1;
  int master = -1;
  std::string shown;
  std::optional<int> ending;
};

}  // namespace tests

#endif
