// Licence: MIT, see LICENSE.
// What the tests of ports share: a name space of the test's own, ports that go with the test,
// bodies to send, and the peer process.
#ifndef TESTS_PLATFORM_MACH_MACHTESTING_H
#define TESTS_PLATFORM_MACH_MACHTESTING_H

#include <gtest/gtest.h>
#include <mach/mach.h>
#include <servers/bootstrap.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/mach/NameSpace.h"
#include "platform/mach/PortSpace.h"
#include "tests/platform/mach/PeerMessages.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRoot.h"

namespace tests {

using platform::mach::Bytes;
using platform::mach::Deadline;
using platform::mach::kBootstrapPort;
using platform::mach::Message;
using platform::mach::PortSet;

inline constexpr platform::host::Nanoseconds kMillisecond = 1'000'000;

/// A deadline for what is bound to happen.
inline Deadline soon() { return Deadline::after(60'000 * kMillisecond); }
/// A deadline for what must not happen.
inline Deadline shortly() { return Deadline::after(20 * kMillisecond); }

std::vector<std::byte> pattern(std::size_t size, unsigned seed = 1);
std::vector<std::byte> bytesOf(const Message& message);
std::size_t openDescriptors();
std::size_t entriesIn(const std::filesystem::path& folder);

/// A port of this process that is destroyed with the object.
class OwnPort final {
 public:
  OwnPort();
  ~OwnPort() { destroy(); }
  OwnPort(const OwnPort&) = delete;
  OwnPort& operator=(const OwnPort&) = delete;

  operator mach_port_name_t() const { return name; }
  void destroy();

 private:
  mach_port_name_t name = MACH_PORT_NULL;
};

class MachTest : public testing::Test {
 protected:
  /// The name space's directory.
  std::filesystem::path directory() const;
  kern_return_t registerName(const std::string& name, mach_port_name_t port) const;
  /// The port under a name, MACH_PORT_NULL if there is none.
  mach_port_name_t lookUp(const std::string& name) const;

  static std::unique_ptr<ChildProcess> startPeer(const ChildProcess::Command& arguments);
  /// A peer that has registered the name.
  static std::unique_ptr<ChildProcess> startServer(const std::string& name,
                                                   const std::string& mode = "serve");
  /// Sends a request to a right and takes the answer.
  static Message request(mach_port_name_t right, mach_port_name_t reply, int id, Bytes body);

  PrivateRoot root;
};

mach_port_type_t typeOf(mach_port_name_t name);
mach_port_urefs_t references(mach_port_name_t name, mach_port_right_t right);

}  // namespace tests

#endif
