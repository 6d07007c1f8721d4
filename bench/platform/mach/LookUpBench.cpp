// Licence: MIT, see LICENSE.
// What does finding a live port by its name cost? The first look-up makes a connection, as bare as
// a connection to a socket whose path is known: that is the peer, with the same server behind both.
// Further look-ups find the connection that there is.
#include <benchmark/benchmark.h>
#include <mach/mach.h>
#include <servers/bootstrap.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

#include "bench/support/Comparison.h"
#include "platform/host/Roots.h"
#include "platform/mach/NameSpace.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRoot.h"

namespace {

constexpr char kName[] = "com.quorvant.bench.lookup";

/// A process with a port of that name.
class NamedServer final {
 public:
  NamedServer() : server({QRL_PORT_PROGRAM, kName}) {
    if (!server.readLine()) throw std::runtime_error("the server did not come up");
  }

  /// Its socket.
  static std::string path() {
    const std::filesystem::path folder = platform::host::userNameSpacePath();
    for (const auto& entry : std::filesystem::directory_iterator(folder / "ports")) {
      return entry.path();
    }
    throw std::runtime_error("the server has no name");
  }

 private:
  const tests::PrivateRoot root;
  tests::ChildProcess server;
};

mach_port_t lookUp() {
  mach_port_t port = MACH_PORT_NULL;
  if (bootstrap_look_up(platform::mach::kBootstrapPort, kName, &port) != KERN_SUCCESS) {
    throw std::runtime_error("nobody has the name");
  }
  return port;
}

void firstLookUp(benchmark::State& state) try {
  const NamedServer server;
  for (auto _ : state) mach_port_deallocate(mach_task_self(), lookUp());
} catch (const std::exception& failure) {
  state.SkipWithError(failure.what());
}
BENCHMARK(firstLookUp)->UseRealTime();

void furtherLookUp(benchmark::State& state) try {
  const NamedServer server;
  const mach_port_t held = lookUp();
  for (auto _ : state) mach_port_deallocate(mach_task_self(), lookUp());
  mach_port_deallocate(mach_task_self(), held);
} catch (const std::exception& failure) {
  state.SkipWithError(failure.what());
}
BENCHMARK(furtherLookUp)->UseRealTime();

void connectOnce(const sockaddr_un& address) {
  const int made = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  const int result = connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  close(made);
  if (result != 0) throw std::runtime_error("nobody listens");
}

void bareConnect(benchmark::State& state) try {
  const NamedServer server;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  NamedServer::path().copy(address.sun_path, sizeof address.sun_path - 1);
  for (auto _ : state) connectOnce(address);
} catch (const std::exception& failure) {
  state.SkipWithError(failure.what());
}
BENCHMARK(bareConnect)->UseRealTime();

const bench::Comparison kFirst{"first look-up of a live name : bare connect", "firstLookUp",
                               "bareConnect", bench::timeAtMost(1.5)};
const bench::Comparison kFurther{"look-up of a name that is connected : bare connect",
                                 "furtherLookUp", "bareConnect", bench::timeAtMost(1.5)};

}  // namespace
