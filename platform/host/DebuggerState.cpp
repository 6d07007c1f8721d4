// Licence: MIT, see LICENSE.
#include "platform/host/DebuggerState.h"

#include <signal.h>

#include "platform/host/FileContents.h"

namespace platform::host {

bool statusNamesTracer(std::string_view status) {
  constexpr std::string_view kLabel = "\nTracerPid:";
  const auto line = status.find(kLabel);
  if (line == std::string_view::npos) return false;
  const auto value = status.find_first_not_of(" \t", line + kLabel.size());
  return value != std::string_view::npos && status[value] >= '1' && status[value] <= '9';
}

bool debuggerAttached() {
  constexpr std::size_t kStatusLimit = 64 * 1024;
  auto status = readFile("/proc/self/status", kStatusLimit);
  if (!status) return false;
  return statusNamesTracer({reinterpret_cast<const char*>(status->data()), status->size()});
}

void trap() { ::raise(SIGTRAP); }

}  // namespace platform::host
