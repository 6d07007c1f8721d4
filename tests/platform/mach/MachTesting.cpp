// Licence: MIT, see LICENSE.
#include "tests/platform/mach/MachTesting.h"

#include <iterator>
#include <utility>

#include "platform/host/Roots.h"

namespace tests {

std::vector<std::byte> pattern(std::size_t size, unsigned seed) {
  std::vector<std::byte> bytes(size);
  std::uint32_t state = seed * 2654435761u + 1;
  for (std::byte& byte : bytes) {
    state = state * 1664525u + 1013904223u;
    byte = static_cast<std::byte>(state >> 24);
  }
  return bytes;
}

std::vector<std::byte> bytesOf(const Message& message) {
  const Bytes bytes = message.body.bytes();
  return {bytes.begin(), bytes.end()};
}

std::size_t entriesIn(const std::filesystem::path& folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t openDescriptors() { return entriesIn("/proc/self/fd"); }

OwnPort::OwnPort() {
  EXPECT_EQ(KERN_SUCCESS, mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &name));
}

void OwnPort::destroy() {
  if (name == MACH_PORT_NULL) return;
  EXPECT_EQ(KERN_SUCCESS, mach_port_destroy(mach_task_self(), std::exchange(name, MACH_PORT_NULL)));
}

std::filesystem::path MachTest::directory() const { return platform::host::userNameSpacePath(); }

kern_return_t MachTest::registerName(const std::string& name, mach_port_name_t port) const {
  return bootstrap_register(kBootstrapPort, name.c_str(), port);
}

mach_port_name_t MachTest::lookUp(const std::string& name) const {
  mach_port_name_t port = 0xdead;
  const kern_return_t result = bootstrap_look_up(kBootstrapPort, name.c_str(), &port);
  EXPECT_EQ(result == KERN_SUCCESS, port != MACH_PORT_NULL);
  return port;
}

std::unique_ptr<ChildProcess> MachTest::startPeer(const ChildProcess::Command& arguments) {
  ChildProcess::Command command{QRL_MACH_PEER};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return std::make_unique<ChildProcess>(command);
}

std::unique_ptr<ChildProcess> MachTest::startServer(const std::string& name,
                                                    const std::string& mode) {
  std::unique_ptr<ChildProcess> server = startPeer({mode, name});
  EXPECT_EQ("0", server->readLine());
  return server;
}

Message MachTest::request(mach_port_name_t right, mach_port_name_t reply, int id, Bytes body) {
  Message message;
  EXPECT_EQ(KERN_SUCCESS, platform::mach::send(right, reply, id, body, soon()));
  EXPECT_EQ(KERN_SUCCESS, platform::mach::receive(reply, message, soon()));
  return message;
}

mach_port_type_t typeOf(mach_port_name_t name) {
  mach_port_type_t type = MACH_PORT_TYPE_NONE;
  EXPECT_EQ(KERN_SUCCESS, mach_port_type(mach_task_self(), name, &type));
  return type;
}

mach_port_urefs_t references(mach_port_name_t name, mach_port_right_t right) {
  mach_port_urefs_t count = 0xdead;
  EXPECT_EQ(KERN_SUCCESS, mach_port_get_refs(mach_task_self(), name, right, &count));
  return count;
}

}  // namespace tests
