// Licence: MIT, see LICENSE.
#include "platform/host/SeqPacket.h"

#include <fcntl.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstring>

#include "platform/host/Poll.h"
#include "platform/host/Retry.h"

namespace platform::host {

namespace {

// The most descriptors that the kernel lets one packet carry. Room for all of them, because those
// that find none may be lost open where an emulator stands between the kernel and us.
constexpr std::size_t kMostPassed = 253;
// What the kernel takes of the send buffer's size for itself.
constexpr std::size_t kPacketOverhead = 64;
constexpr std::size_t kSmallPacket = 2048;

struct alignas(cmsghdr) ReceivedControl {
  std::array<std::byte, CMSG_SPACE(kMostPassed * sizeof(int))> bytes;
};

// Closing a socket that somebody handed to us must not wait until its data has gone.
void stopLingering(const Descriptor& received) {
  const linger off{};
  setsockopt(received.number(), SOL_SOCKET, SO_LINGER, &off, sizeof off);
}

void takeDescriptors(const cmsghdr* control, ReceivedPacket& packet) {
  const std::size_t count = (control->cmsg_len - CMSG_LEN(0)) / sizeof(int);
  for (std::size_t i = 0; i < count; ++i) {
    int number = -1;
    std::memcpy(&number, CMSG_DATA(control) + i * sizeof(int), sizeof number);
    Descriptor received(number);
    stopLingering(received);
    if (packet.passed) {
      packet.surplus = true;
    } else {
      packet.passed = std::move(received);
    }
  }
}

constexpr int kSendFlags = MSG_DONTWAIT | MSG_NOSIGNAL;

/// One block of bytes costs the kernel less than a list of parts: for a small packet more than the
/// copying.
Status sendSmall(const Descriptor& connection, std::span<const std::byte> head,
                 std::span<const std::byte> body) {
  std::array<std::byte, kSmallPacket> packet;
  std::ranges::copy(body, std::ranges::copy(head, packet.begin()).out);
  const std::size_t size = head.size() + body.size();
  const auto send = [&] { return ::send(connection.number(), packet.data(), size, kSendFlags); };
  if (retry(send) == -1) return lastError();
  return success();
}

Result<ReceivedPacket> packetOf(msghdr& message, ssize_t size) {
  ReceivedPacket packet;
  packet.size = static_cast<std::size_t>(size);
  for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr;
       header = CMSG_NXTHDR(&message, header)) {
    if (header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS) {
      takeDescriptors(header, packet);
    }
  }
  if (size == 0) return Error::kDisconnected;
  if ((message.msg_flags & MSG_TRUNC) != 0) return Error::kTooLarge;
  return packet;
}

/// A signal ends a call that waits, as it ends any wait.
Result<ReceivedPacket> receive(const Descriptor& connection, Rooms rooms, int flags) {
  std::array<iovec, kMostRooms> parts;
  const std::size_t count = std::min(rooms.size(), kMostRooms);
  for (std::size_t i = 0; i < count; ++i) parts[i] = {rooms[i].data(), rooms[i].size()};
  ReceivedControl control;
  msghdr message{};
  message.msg_iov = parts.data();
  message.msg_iovlen = count;
  const auto take = [&] {
    message.msg_control = control.bytes.data();
    message.msg_controllen = control.bytes.size();
    return recvmsg(connection.number(), &message, flags | MSG_CMSG_CLOEXEC);
  };
  const bool waits = (flags & MSG_DONTWAIT) == 0;
  ssize_t size = waits ? take() : retry(take);
  // A peer that closed with our packets unread leaves this error in front of what it had sent us;
  // it is reported once, and then the packets come.
  if (size == -1 && errno == ECONNRESET) size = waits ? take() : retry(take);
  if (size == -1) return waits && errno == EINTR ? Error::kWouldBlock : lastError();
  return packetOf(message, size);
}

/// Has the host limit the waits on a connection, roughly, so that it need not be told again for the
/// next request: to half of the time that is left at least, and to less than all of it. False if
/// that is too little or the host refuses.
bool letWait(const Descriptor& connection, Deadline deadline, ReceivePatience& patience) {
  constexpr Nanoseconds kSecond = 1'000'000'000;
  constexpr Nanoseconds kLongest = 1 << 20;
  int seconds = ReceivePatience::kForEver;
  if (!deadline.isNever()) {
    const Nanoseconds whole = std::min(deadline.remaining() / kSecond, kLongest);
    if (whole < 2) return false;
    seconds = static_cast<int>(std::bit_floor(static_cast<unsigned>(whole - 1)));
  }
  if (seconds == patience.seconds) return true;
  const timeval limit{seconds, 0};
  // The connection was made not to wait at all, which all other calls ask for themselves.
  if (patience.seconds == ReceivePatience::kUntold &&
      fcntl(connection.number(), F_SETFL, 0) == -1) {
    return false;
  }
  if (setsockopt(connection.number(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit) == -1) {
    return false;
  }
  patience.seconds = seconds;
  return true;
}

}  // namespace

Result<Descriptor> acceptConnection(const Descriptor& listener) {
  Descriptor connection(retry(
      [&] { return accept4(listener.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK); }));
  if (!connection) return lastError();
  return connection;
}

Result<Peer> peerOf(const Descriptor& connection) {
  ucred credentials{};
  socklen_t size = sizeof credentials;
  if (getsockopt(connection.number(), SOL_SOCKET, SO_PEERCRED, &credentials, &size) == -1) {
    return lastError();
  }
  return Peer{credentials.pid, credentials.uid};
}

unsigned effectiveUser() { return geteuid(); }

int currentProcess() { return getpid(); }

std::size_t packetLimit(const Descriptor& connection) {
  int size = 0;
  socklen_t length = sizeof size;
  getsockopt(connection.number(), SOL_SOCKET, SO_SNDBUF, &size, &length);
  const std::size_t buffer = size > 0 ? static_cast<std::size_t>(size) : 0;
  return buffer > kPacketOverhead ? buffer - kPacketOverhead : 0;
}

std::size_t untakenBytes(const Descriptor& connection) {
  int count = 0;
  if (ioctl(connection.number(), SIOCOUTQ, &count) == -1 || count < 0) return 0;
  return static_cast<std::size_t>(count);
}

Status sendPacket(const Descriptor& connection, std::span<const std::byte> head,
                  std::span<const std::byte> body, const Descriptor* passed) {
  if (passed == nullptr && head.size() + body.size() <= kSmallPacket) {
    return sendSmall(connection, head, body);
  }
  // The kernel only reads through these pointers; its structure is shared with receiving.
  std::array<iovec, 2> parts{{{const_cast<std::byte*>(head.data()), head.size()},
                              {const_cast<std::byte*>(body.data()), body.size()}}};
  msghdr message{};
  message.msg_iov = parts.data();
  message.msg_iovlen = body.empty() ? 1 : 2;
  alignas(cmsghdr) std::array<std::byte, CMSG_SPACE(sizeof(int))> control{};
  if (passed != nullptr) {
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    const int number = passed->number();
    std::memcpy(CMSG_DATA(header), &number, sizeof number);
  }
  if (retry([&] { return sendmsg(connection.number(), &message, kSendFlags); }) == -1) {
    return lastError();
  }
  return success();
}

Result<ReceivedPacket> receivePacket(const Descriptor& connection, Rooms rooms) {
  return receive(connection, rooms, MSG_DONTWAIT);
}

Result<ReceivedPacket> receivePacket(const Descriptor& connection, std::span<std::byte> buffer) {
  return receivePacket(connection, Rooms(&buffer, 1));
}

Result<ReceivedPacket> awaitPacket(const Descriptor& connection, Rooms rooms, Deadline deadline,
                                   ReceivePatience& patience) {
  if (letWait(connection, deadline, patience)) return receive(connection, rooms, 0);
  Interest input{&connection};
  if (!waitForAny({&input, 1}, deadline)) return Error::kWouldBlock;
  return receivePacket(connection, rooms);
}

void shutDown(const Descriptor& socket) { shutdown(socket.number(), SHUT_RDWR); }

Result<ConnectedPair> makeConnectedPair() {
  int ends[2] = {-1, -1};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) == -1) {
    return lastError();
  }
  return ConnectedPair{Descriptor(ends[0]), Descriptor(ends[1])};
}

}  // namespace platform::host
