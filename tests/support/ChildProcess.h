// Licence: MIT, see LICENSE.
// A real process beside the test: a program of this build, with pipes to talk to it over. It does
// not outlive the object.
#ifndef TESTS_SUPPORT_CHILDPROCESS_H
#define TESTS_SUPPORT_CHILDPROCESS_H

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tests {

/// How long anything that is bound to happen may take before a test fails.
inline constexpr std::chrono::seconds kPatience{60};

/// Whether a program is started through the emulator that QRL_RUNNER names, as programs of a cross
/// build are.
enum class Runner { kOfThisBuild, kNone };

struct ChildOptions {
  std::vector<std::pair<std::string, std::string>> environment;  // added to the test's own
  Runner runner = Runner::kOfThisBuild;
  bool mergeErrors = false;  // standard error comes with standard output
};

/// Waits may be made on one thread only.
class ChildProcess final {
 public:
  using Command = std::vector<std::string>;  // a program's path, then its arguments

  /// Starts the program; throws std::runtime_error if the host refuses.
  explicit ChildProcess(const Command& command, const ChildOptions& options = {});
  /// Kills it if it still runs.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  int pid() const { return process; }

  /// The next line of its output without the line end; nothing when the output has ended or the
  /// time is over.
  std::optional<std::string> readLine(std::chrono::milliseconds patience = kPatience);
  /// The rest of its output until it closes it, or what came until the time was over.
  std::string readAll(std::chrono::milliseconds patience = kPatience);

  /// False when it does not read any more.
  bool writeLine(const std::string& line);
  void closeInput();

  void signal(int number);
  /// Its exit status, or the negative number of the signal that ended it; nothing when it still
  /// runs after the time. May be asked again.
  std::optional<int> wait(std::chrono::milliseconds patience = kPatience);

 private:
  bool fill(std::chrono::steady_clock::time_point end);

  int process = -1;
  int input = -1;   // we write
  int output = -1;  // we read
  std::string pending;
  std::optional<int> ending;
};

/// The path of the running test program.
std::string ownProgram();

}  // namespace tests

#endif
