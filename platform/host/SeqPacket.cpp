// Licence: MIT, see LICENSE.
#include "platform/host/SeqPacket.h"

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "platform/host/Retry.h"

namespace platform::host {

namespace {

// The most descriptors that the kernel lets one packet carry. Room for all of them, because those
// that find none may be lost open where an emulator stands between the kernel and us.
constexpr std::size_t kMostPassed = 253;
// What the kernel takes of the send buffer's size for itself.
constexpr std::size_t kPacketOverhead = 64;

struct alignas(cmsghdr) ReceivedControl {
  std::array<std::byte, CMSG_SPACE(kMostPassed * sizeof(int))> bytes;
};

void takeDescriptors(const cmsghdr* control, ReceivedPacket& packet) {
  const std::size_t count = (control->cmsg_len - CMSG_LEN(0)) / sizeof(int);
  for (std::size_t i = 0; i < count; ++i) {
    int number = -1;
    std::memcpy(&number, CMSG_DATA(control) + i * sizeof(int), sizeof number);
    Descriptor received(number);
    if (packet.passed) {
      packet.surplus = true;
    } else {
      packet.passed = std::move(received);
    }
  }
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
  constexpr int kFlags = MSG_DONTWAIT | MSG_NOSIGNAL;
  if (retry([&] { return sendmsg(connection.number(), &message, kFlags); }) == -1) {
    return lastError();
  }
  return success();
}

Result<ReceivedPacket> receivePacket(const Descriptor& connection, std::span<std::byte> buffer) {
  iovec part{buffer.data(), buffer.size()};
  ReceivedControl control;
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  const auto take = [&] {
    message.msg_control = control.bytes.data();
    message.msg_controllen = control.bytes.size();
    return recvmsg(connection.number(), &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
  };
  ssize_t size = retry(take);
  // A peer that closed with our packets unread leaves this error in front of what it had sent us;
  // it is reported once, and then the packets come.
  if (size == -1 && errno == ECONNRESET) size = retry(take);
  if (size == -1) return lastError();

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

void shutDown(const Descriptor& socket) { shutdown(socket.number(), SHUT_RDWR); }

Result<ConnectedPair> makeConnectedPair() {
  int ends[2] = {-1, -1};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) == -1) {
    return lastError();
  }
  return ConnectedPair{Descriptor(ends[0]), Descriptor(ends[1])};
}

}  // namespace platform::host
