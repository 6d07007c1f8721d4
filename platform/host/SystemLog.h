// Licence: MIT, see LICENSE.
// The system log. Where QRL_ROOT is set and a log socket exists in it ($QRL_ROOT/dev/log), the
// platform's lines go there, in the form in which the C library sends them; a test listens on that
// socket. Else they go where syslog sends them. Lines of the product itself always take syslog.
#ifndef PLATFORM_HOST_SYSTEMLOG_H
#define PLATFORM_HOST_SYSTEMLOG_H

#include <string_view>

namespace platform::host {

enum class LogLevel { kError = 3, kWarning = 4, kNotice = 5, kInfo = 6 };

/// Writes one line; control characters in it become spaces. Never blocks for long and never fails:
/// a log that does not listen loses the line.
void log(LogLevel level, std::string_view line);

}  // namespace platform::host

#endif
