// Licence: MIT, see LICENSE.
// What the tests of faults share: a server and clients that do as they are told, of two builds, and
// a look at them from outside.
#ifndef TESTS_INTEGRATION_FAULTS_H
#define TESTS_INTEGRATION_FAULTS_H

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "tests/integration/Programs.h"
#include "tests/support/TimeScale.h"

namespace tests {

using Microseconds = std::chrono::microseconds;

/// How soon a process must notice what has happened to another one.
inline constexpr std::chrono::milliseconds kReaction = std::chrono::milliseconds(50) * kTimeScale;

/// Now, on the clock by which the clients tell when something ended.
Microseconds now();

/// The one in the middle; of an even number the later one.
Microseconds medianOf(std::vector<Microseconds> spans);

/// What a client prints of a request.
struct Answer {
  int status = 1;
  long answer = 0;   // the number that came back, -1 for none
  long handled = 0;  // how many events the server had handled before it, -1 for no answer
  Microseconds spent{};
  Microseconds ended{};
};

/// What a client prints of events that it sent in a row.
struct Sent {
  long count = 0;
  int status = 1;
  Microseconds spent{};  // on the last one
};

class Faults : public Integration, public testing::WithParamInterface<Mixture> {
 protected:
  static constexpr char kServer[] = "com.example.faults.1.1";

  /// A server that listens; "tidy" makes one whose memory does not grow.
  Child startServer(const Words& options = {});
  /// A client that has found a port.
  Child startClient(const std::string& name = kServer);
  /// A client, whatever the look-up says: the first line of its output.
  Child startLoneClient(const std::string& name = kServer);

  static std::string command(ChildProcess& client, const std::string& line);
  static Answer ask(ChildProcess& client, const std::string& request);
  static Sent send(ChildProcess& client, const std::string& events);
  /// Asks for an echo of a number and expects it.
  static void expectService(ChildProcess& client, int number);
  /// Makes the server hold a request of the client's.
  static void hold(ChildProcess& client, ChildProcess& server, const std::string& ticks = "3600");
  static Answer readAnswer(ChildProcess& client);
  static Sent readSent(ChildProcess& client);

  static std::size_t descriptorsOf(const ChildProcess& process);
  /// Waits until a server has as many descriptors open as it had, asking it for something in
  /// between so that it has looked around.
  static void expectDescriptors(ChildProcess& server, ChildProcess& client, std::size_t count);
  /// The memory of a process that is in use, in KiB.
  static long memoryOf(const ChildProcess& process);
};

}  // namespace tests

#endif
