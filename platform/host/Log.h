// Licence: MIT, see LICENSE.
// One line for whoever looks after this machine.
#ifndef PLATFORM_HOST_LOG_H
#define PLATFORM_HOST_LOG_H

#include <string>

namespace platform::host {

/// Writes a line to standard error and to the system log, the first time that this process says it.
void complainOnce(const std::string& line);

}  // namespace platform::host

#endif
