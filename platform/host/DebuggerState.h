// Licence: MIT, see LICENSE.
// Whether somebody traces this process.
#ifndef PLATFORM_HOST_DEBUGGERSTATE_H
#define PLATFORM_HOST_DEBUGGERSTATE_H

#include <string_view>

namespace platform::host {

/// Whether a debugger is attached now; false where the host does not tell.
bool debuggerAttached();

/// The same, from the text of /proc/PID/status.
bool statusNamesTracer(std::string_view status);

/// Stops in the debugger. Without one the process ends, as by any trap.
void trap();

}  // namespace platform::host

#endif
