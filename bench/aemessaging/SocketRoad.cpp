// Licence: MIT, see LICENSE.
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <span>

#include "bench/aemessaging/Roads.h"

namespace bench {

namespace {

constexpr std::size_t kPacketLimit = 192 * 1024;

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  require(path.size() < sizeof address.sun_path, "the socket's path is too long");
  path.copy(address.sun_path, path.size());
  return address;
}

int makeSeqPacket() {
  const int made = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  require(made >= 0, "no socket can be made");
  return made;
}

int acceptOne(const std::string& path) {
  const sockaddr_un address = addressOf(path);
  const int listener = makeSeqPacket();
  require(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
              listen(listener, 1) == 0,
          "the socket cannot listen");
  sayReady();
  const int accepted = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
  require(accepted >= 0, "no client came");
  return accepted;
}

int connectTo(const std::string& path) {
  const sockaddr_un address = addressOf(path);
  const int made = makeSeqPacket();
  require(::connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
          "no server listens");
  return made;
}

/// A connection, with or without epoll.
class Wire {
 public:
  Wire(int descriptor, bool waits) : socket(descriptor), flags(waits ? MSG_DONTWAIT : 0) {
    if (!waits) return;
    poll = epoll_create1(EPOLL_CLOEXEC);
    epoll_event event{};
    event.events = EPOLLIN;
    require(poll >= 0 && epoll_ctl(poll, EPOLL_CTL_ADD, socket, &event) == 0, "no epoll");
  }
  ~Wire() {
    close(socket);
    if (poll >= 0) close(poll);
  }
  Wire(const Wire&) = delete;
  Wire& operator=(const Wire&) = delete;

  void send(std::span<const char> message) {
    while (!message.empty()) {
      const std::size_t part = std::min(message.size(), kPacketLimit);
      while (::send(socket, message.data(), part, flags | MSG_NOSIGNAL) == -1) {
        require(errno == EAGAIN, "the other side is gone");
        waitFor(EPOLLOUT);
      }
      message = message.subspan(part);
    }
  }

  void receive(std::span<char> message) {
    while (!message.empty()) {
      if (poll >= 0) awaitInput();
      const ssize_t size = recv(socket, message.data(), message.size(), flags);
      if (size <= 0) throw EndOfRoad();
      message = message.subspan(static_cast<std::size_t>(size));
    }
  }

 private:
  void awaitInput() {
    epoll_event ready{};
    require(epoll_wait(poll, &ready, 1, -1) == 1, "waiting failed");
  }

  void waitFor(std::uint32_t events) {
    epoll_event event{};
    event.events = events;
    require(epoll_ctl(poll, EPOLL_CTL_MOD, socket, &event) == 0, "no epoll");
    awaitInput();
    event.events = EPOLLIN;
    require(epoll_ctl(poll, EPOLL_CTL_MOD, socket, &event) == 0, "no epoll");
  }

  const int socket;
  const int flags;
  int poll = -1;
};

class SocketClient final : public Client {
 public:
  explicit SocketClient(const Road& road)
      : wire(connectTo(road.address), road.way == "epoll"),
        request(contentsOf(road.size)),
        answer(road.size) {}

  void roundTrip() override {
    wire.send(request);
    wire.receive(answer);
    require(answer.back() == request.back(), "the answer is not the request");
  }

 private:
  Wire wire;
  std::vector<char> request;
  std::vector<char> answer;
};

}  // namespace

std::unique_ptr<Client> openSocketClient(const Road& road) {
  return std::make_unique<SocketClient>(road);
}

void serveSocket(const Road& road) {
  Wire wire(acceptOne(road.address), road.way == "epoll");
  std::vector<char> message(road.size);
  for (;;) {
    wire.receive(message);
    wire.send(message);
  }
}

}  // namespace bench
