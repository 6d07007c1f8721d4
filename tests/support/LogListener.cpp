// Licence: MIT, see LICENSE.
#include "tests/support/LogListener.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>

namespace tests {

LogListener::LogListener(const std::filesystem::path& root) {
  std::filesystem::create_directories(root / "dev");
  const std::string path = root / "dev" / "log";
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path)
    throw std::runtime_error("the root's path is too long");
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (socket < 0 ||
      bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("cannot listen to the log");
  }
}

LogListener::~LogListener() { close(socket); }

std::optional<std::string> LogListener::readRecord(std::chrono::milliseconds patience) {
  pollfd polled{socket, POLLIN, 0};
  if (poll(&polled, 1, static_cast<int>(patience.count())) != 1) return std::nullopt;
  std::array<char, 8192> buffer;
  const ssize_t length = recv(socket, buffer.data(), buffer.size(), 0);
  if (length < 0) return std::nullopt;
  return std::string(buffer.data(), static_cast<std::size_t>(length));
}

std::optional<std::string> LogListener::readLine(std::chrono::milliseconds patience) {
  auto record = readRecord(patience);
  if (!record) return std::nullopt;
  const auto text = record->find("]: ");
  return text == std::string::npos ? *record : record->substr(text + 3);
}

bool LogListener::isQuiet() {
  pollfd polled{socket, POLLIN, 0};
  return poll(&polled, 1, 0) == 0;
}

}  // namespace tests
