// Licence: MIT, see LICENSE.
// The process's controlling terminal: lines out, and lines in that the user ends with Return. The
// terminal's settings stay as they are.
#ifndef PLATFORM_HOST_TERMINAL_H
#define PLATFORM_HOST_TERMINAL_H

#include <optional>
#include <string>
#include <string_view>

#include "platform/host/Descriptor.h"
#include "platform/host/WakeEvent.h"

namespace platform::host {

/// Whether the process has a controlling terminal.
bool hasTerminal();

/// For one thread.
class Terminal final {
 public:
  /// kNotFound when there is none.
  static Result<Terminal> open();

  /// Writes text; what the terminal does not take is lost.
  void write(std::string_view text) const;

  enum class Outcome { kLine, kWoken, kGone };
  struct Input {
    Outcome outcome;
    std::string line;  // without its end
  };
  /// Waits for a line, until the event is raised or the terminal is gone. A process in the
  /// background of its terminal is not stopped: it gets no input until the user brings it to the
  /// foreground. A line that has been begun is kept for the next call.
  Input readLine(const WakeEvent& wake);

 private:
  explicit Terminal(Descriptor opened) : terminal(std::move(opened)) {}
  std::optional<Input> takeLine();
  bool inForeground() const;
  Outcome readMore();

  Descriptor terminal;
  std::string pending;
};

}  // namespace platform::host

#endif
