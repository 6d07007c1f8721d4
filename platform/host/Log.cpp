// Licence: MIT, see LICENSE.
#include "platform/host/Log.h"

#include <unistd.h>

#include <mutex>
#include <set>

#include "platform/host/Retry.h"
#include "platform/host/SystemLog.h"

namespace platform::host {

void complainOnce(const std::string& line) {
  static std::mutex guard;
  static std::set<std::string> said;
  {
    const std::lock_guard lock(guard);
    if (!said.insert(line).second) return;
  }
  log(LogLevel::kError, line);
  const std::string text = "quorvant: " + line + "\n";
  static_cast<void>(retry([&] { return write(STDERR_FILENO, text.data(), text.size()); }));
}

}  // namespace platform::host
