// Licence: MIT, see LICENSE.
#include "platform/host/SystemLog.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string>

#include "platform/host/Descriptor.h"
#include "platform/host/Roots.h"

namespace platform::host {
namespace {

std::string onOneLine(std::string_view line) {
  std::string text(line);
  for (char& character : text) {
    const auto code = static_cast<unsigned char>(character);
    if (code < 0x20 || code == 0x7F) character = ' ';
  }
  return text;
}

/// "<priority>Mon dd hh:mm:ss name[pid]: text", as the log's readers expect it.
std::string recordOf(LogLevel level, const std::string& text) {
  std::array<char, 32> stamp{};
  const time_t now = ::time(nullptr);
  struct tm local {};
  ::localtime_r(&now, &local);
  ::strftime(stamp.data(), stamp.size(), "%b %e %H:%M:%S", &local);
  return "<" + std::to_string(LOG_USER | static_cast<int>(level)) + ">" + stamp.data() + " " +
         program_invocation_short_name + "[" + std::to_string(::getpid()) + "]: " + text;
}

/// Whether the root's own log took the line.
bool sendBelowRoot(LogLevel level, const std::string& text) {
  const std::string root = rootPath();
  const std::string path = root + "/dev/log";
  sockaddr_un address{};
  if (root.empty() || path.size() >= sizeof address.sun_path) return false;
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);

  Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const std::string record = recordOf(level, text);
  return socket && ::sendto(socket.number(), record.data(), record.size(), MSG_NOSIGNAL,
                            reinterpret_cast<const sockaddr*>(&address), sizeof address) >= 0;
}

}  // namespace

void log(LogLevel level, std::string_view line) {
  const std::string text = onOneLine(line);
  if (!sendBelowRoot(level, text)) {
    ::syslog(LOG_USER | static_cast<int>(level), "%s", text.c_str());
  }
}

}  // namespace platform::host
