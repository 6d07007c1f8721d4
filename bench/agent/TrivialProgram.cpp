// Licence: MIT, see LICENSE.
// The least that a server in C++ is: it binds a socket to the path that its last argument says,
// writes a line, and waits.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <iostream>
#include <string>

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  const std::string path = argv[argc - 1];
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return 2;
  path.copy(address.sun_path, path.size());
  const int listener = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener, 1) != 0) {
    return 1;
  }
  std::cout << "ready" << std::endl;
  pause();
  return 0;
}
