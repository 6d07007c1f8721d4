// Licence: MIT, see LICENSE.
#include "tests/support/Stranger.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace tests {

namespace {

constexpr std::size_t kHeader = 24;

void put(std::string& bytes, std::uint32_t value, int size) {
  for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
    bytes += static_cast<char>(value >> shift & 0xff);
  }
}

std::uint32_t wordAt(const std::string& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<std::uint8_t>(bytes[at + i]);
  return value;
}

bool await(int descriptor, short events, std::chrono::milliseconds patience) {
  pollfd polled{descriptor, events, 0};
  return poll(&polled, 1, static_cast<int>(patience.count())) == 1;
}

}  // namespace

std::string RawPacket::bytes() const {
  std::string bytes;
  put(bytes, magic, 4);
  put(bytes, kind, 1);
  put(bytes, flags, 1);
  put(bytes, reserved, 2);
  for (const std::uint32_t word : {destination, reply, id, total}) put(bytes, word, 4);
  return bytes + body;
}

RawPacket wholePacket(const std::string& body, std::uint32_t reply) {
  return {.reply = reply, .total = static_cast<std::uint32_t>(body.size()), .body = body};
}

// The path goes through a descriptor, because a socket's address has room for a short one only.
Stranger::Stranger(const std::filesystem::path& socketFile)
    : connection(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
  const int file = open(socketFile.c_str(), O_PATH | O_CLOEXEC);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string path = "/proc/self/fd/" + std::to_string(file);
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  const int result =
      connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  close(file);
  if (result == 0) return;
  close(connection);
  throw std::runtime_error("nobody listens at " + socketFile.string());
}

Stranger::Stranger(Stranger&& other) noexcept : connection(std::exchange(other.connection, -1)) {}

Stranger::~Stranger() {
  if (connection >= 0) close(connection);
}

bool Stranger::sendNow(const std::string& bytes, const std::vector<int>& passed) {
  iovec part{const_cast<char*>(bytes.data()), bytes.size()};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  const std::size_t size = passed.size() * sizeof(int);
  std::vector<cmsghdr> control(CMSG_SPACE(size) / sizeof(cmsghdr) + 1);
  if (!passed.empty()) {
    message.msg_control = control.data();
    message.msg_controllen = CMSG_SPACE(size);
    cmsghdr* rights = CMSG_FIRSTHDR(&message);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(size);
    std::memcpy(CMSG_DATA(rights), passed.data(), size);
  }
  return sendmsg(connection, &message, MSG_NOSIGNAL) >= 0;
}

bool Stranger::send(const std::string& bytes, const std::vector<int>& passed) {
  while (!sendNow(bytes, passed)) {
    if (errno != EAGAIN || !await(connection, POLLOUT, kPatience)) return false;
  }
  return true;
}

std::optional<RawAnswer> Stranger::receive() {
  std::string bytes(1 << 20, '\0');
  if (!await(connection, POLLIN, kPatience)) return std::nullopt;
  const ssize_t size = recv(connection, bytes.data(), bytes.size(), 0);
  if (size < static_cast<ssize_t>(kHeader)) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(size));
  return RawAnswer{static_cast<std::uint8_t>(bytes[4]), wordAt(bytes, 8), bytes.substr(kHeader)};
}

bool Stranger::isCutOff(std::chrono::milliseconds patience) {
  std::string bytes(1 << 20, '\0');
  while (await(connection, POLLIN, patience)) {
    const ssize_t size = recv(connection, bytes.data(), bytes.size(), 0);
    if (size == 0 || (size < 0 && errno != EAGAIN && errno != ECONNRESET)) return true;
  }
  return false;
}

}  // namespace tests
