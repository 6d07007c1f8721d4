// Licence: MIT, see LICENSE.
#include <CarbonCore/MacTypes.h>

#include "platform/host/DebuggerState.h"
#include "platform/host/SystemLog.h"

void Debugger(void) {
  if (platform::host::debuggerAttached()) {
    platform::host::trap();
  } else {
    platform::host::log(platform::host::LogLevel::kWarning, "Debugger() called; none is attached");
  }
}
