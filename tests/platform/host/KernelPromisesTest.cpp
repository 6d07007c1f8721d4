// Licence: MIT, see LICENSE.
// What the platform takes for granted of the host's kernel. A failure here explains many elsewhere.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/host/Descriptor.h"
#include "tests/support/PrivateRoot.h"

namespace tests {
namespace {

using platform::host::Descriptor;

class KernelPromises : public testing::Test {
 protected:
  static sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    EXPECT_LT(path.size(), sizeof address.sun_path);
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
  }
  static Descriptor makeSocket() {
    return Descriptor(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  }
  static Descriptor listenAt(const std::string& path) {
    Descriptor listener = makeSocket();
    const sockaddr_un address = addressOf(path);
    EXPECT_EQ(0,
              bind(listener.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address));
    EXPECT_EQ(0, listen(listener.number(), 16));
    return listener;
  }
  /// 0 or the error number of a connection to a path.
  static int connectTo(const Descriptor& from, const std::string& path) {
    const sockaddr_un address = addressOf(path);
    const int result =
        connect(from.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return result == 0 ? 0 : errno;
  }
  std::string at(const std::string& name) const { return (root.path() / name).string(); }
  static ino_t inodeOf(const std::string& path) {
    struct stat state {};
    EXPECT_EQ(0, lstat(path.c_str(), &state));
    return state.st_ino;
  }

  PrivateRoot root;
};

TEST_F(KernelPromises, ASocketIsReachedThroughItsHardLinks) {
  const Descriptor listener = listenAt(at("short"));
  ASSERT_EQ(0, link(at("short").c_str(), at("long").c_str()));
  ASSERT_EQ(0, unlink(at("short").c_str()));
  const Descriptor client = makeSocket();
  EXPECT_EQ(0, connectTo(client, at("long")));
}

TEST_F(KernelPromises, ALinkHasOneWinner) {
  const Descriptor listener = listenAt(at("socket"));
  ASSERT_EQ(0, link(at("socket").c_str(), at("name").c_str()));
  EXPECT_EQ(-1, link(at("socket").c_str(), at("name").c_str()));
  EXPECT_EQ(EEXIST, errno);
}

TEST_F(KernelPromises, ADeadSocketRefuses) {
  listenAt(at("socket"));
  const Descriptor client = makeSocket();
  EXPECT_EQ(ECONNREFUSED, connectTo(client, at("socket")));
}

TEST_F(KernelPromises, ASocketIsReachedThroughADescriptorOfItsFile) {
  const Descriptor listener = listenAt(at("socket"));
  const Descriptor file(open(at("socket").c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  ASSERT_EQ(0, unlink(at("socket").c_str()));
  const Descriptor client = makeSocket();
  EXPECT_EQ(0, connectTo(client, "/proc/self/fd/" + std::to_string(file.number())));
}

TEST_F(KernelPromises, ASocketIsBoundThroughADescriptorOfItsDirectory) {
  const Descriptor directory(open(root.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const Descriptor listener =
      listenAt("/proc/self/fd/" + std::to_string(directory.number()) + "/socket");
  EXPECT_EQ(std::filesystem::file_type::socket, std::filesystem::status(at("socket")).type());
}

TEST_F(KernelPromises, AnOpenConnectionKeepsTheSocketsInode) {
  Descriptor listener = listenAt(at("first"));
  const ino_t inode = inodeOf(at("first"));
  const Descriptor client = makeSocket();
  ASSERT_EQ(0, connectTo(client, at("first")));
  const Descriptor accepted(accept(listener.number(), nullptr, nullptr));
  ASSERT_EQ(0, unlink(at("first").c_str()));
  listener.reset();
  for (int i = 0; i < 50; ++i) {
    const std::string path = at("later" + std::to_string(i));
    const Descriptor later = listenAt(path);
    EXPECT_NE(inode, inodeOf(path));
  }
}

TEST_F(KernelPromises, AWaitingConnectionHangsUpWhenTheListenerDies) {
  Descriptor listener = listenAt(at("socket"));
  const Descriptor client = makeSocket();
  ASSERT_EQ(0, connectTo(client, at("socket")));
  listener.reset();
  pollfd polled{client.number(), 0, 0};
  ASSERT_EQ(1, poll(&polled, 1, 0));
  EXPECT_NE(0, polled.revents & POLLHUP);
}

TEST_F(KernelPromises, WhatWasSentIsReadAfterTheSenderHasClosed) {
  const Descriptor listener = listenAt(at("socket"));
  Descriptor client = makeSocket();
  ASSERT_EQ(0, connectTo(client, at("socket")));
  ASSERT_EQ(2, send(client.number(), "hi", 2, 0));
  shutdown(client.number(), SHUT_RDWR);
  client.reset();
  const Descriptor accepted(accept(listener.number(), nullptr, nullptr));
  char text[8] = {};
  EXPECT_EQ(2, recv(accepted.number(), text, sizeof text, 0));
  EXPECT_EQ(0, recv(accepted.number(), text, sizeof text, 0));
}

TEST_F(KernelPromises, AShutListenerRefuses) {
  const Descriptor listener = listenAt(at("socket"));
  ASSERT_EQ(0, shutdown(listener.number(), SHUT_RDWR));
  const Descriptor client = makeSocket();
  EXPECT_EQ(ECONNREFUSED, connectTo(client, at("socket")));
}

TEST_F(KernelPromises, AFullQueueOfConnectionsIsNotARefusal) {
  const Descriptor listener = listenAt(at("socket"));
  std::vector<Descriptor> clients;
  int result = 0;
  while (result == 0 && clients.size() < 100) {
    clients.push_back(makeSocket());
    result = connectTo(clients.back(), at("socket"));
  }
  EXPECT_EQ(EAGAIN, result);
}

}  // namespace
}  // namespace tests
