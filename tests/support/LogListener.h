// Licence: MIT, see LICENSE.
// The system log of a private root: what the platform logs while the object lives.
#ifndef TESTS_SUPPORT_LOGLISTENER_H
#define TESTS_SUPPORT_LOGLISTENER_H

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/ChildProcess.h"

namespace tests {

/// One thread.
class LogListener final {
 public:
  /// Listens on dev/log below a private root.
  explicit LogListener(const std::filesystem::path& root);
  ~LogListener();
  LogListener(const LogListener&) = delete;
  LogListener& operator=(const LogListener&) = delete;

  /// The next record as it was sent ("<13>Jan  1 00:00:00 name[pid]: text"); nothing when none came
  /// in time.
  std::optional<std::string> readRecord(std::chrono::milliseconds patience = kPatience);
  /// The text of the next record.
  std::optional<std::string> readLine(std::chrono::milliseconds patience = kPatience);
  /// Whether nothing has been logged since the last record that was read.
  bool isQuiet();

 private:
  int socket = -1;
};

}  // namespace tests

#endif
