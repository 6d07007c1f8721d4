// Licence: MIT, see LICENSE.
// The one place in a process that talks to the person at its terminal. Several questions may wait:
// the latest alert goes before those that it interrupted, and all alerts before notices, which are
// asked in their order. Only the question on top is shown and takes input; one that comes back on
// top is shown again.
#ifndef PLATFORM_USERINTERFACE_TERMINALDESK_H
#define PLATFORM_USERINTERFACE_TERMINALDESK_H

#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>

#include "platform/host/Terminal.h"
#include "platform/host/WakeEvent.h"

namespace platform::userinterface {

class TerminalDesk final {
 public:
  enum class Rank { kNotice, kAlert };
  struct Question {
    Rank rank = Rank::kNotice;
    std::string text;
    /// Given a line of input, or nothing when the terminal is gone, tells whether that settles the
    /// question. Called on the desk's thread and under its lock.
    std::function<bool(const std::optional<std::string>& line)> answer;
  };

  /// Never destroyed: its thread may be waiting when the program ends.
  static TerminalDesk& shared();

  /// Puts a question up and gives its number; 0 when there is no terminal.
  std::uint32_t ask(Question question);
  /// Takes a question down; when this returns its answer is not being called and will not be.
  void withdraw(std::uint32_t number);

 private:
  struct Entry {
    std::uint32_t number;
    Question question;
  };

  TerminalDesk() = default;
  bool startServing();
  void serve(host::Terminal terminal);
  std::string textToShow();
  void take(const host::Terminal::Input& input);

  std::mutex mutex;
  std::optional<host::WakeEvent> wake;  // raised when the top may have changed
  std::list<Entry> entries;             // the one on top first
  std::uint32_t lastNumber = 0;
  std::uint32_t shown = 0;  // the question that is on the screen
  bool serving = false;     // whether the thread runs; it ends with the last question
};

}  // namespace platform::userinterface

#endif
