// Licence: MIT, see LICENSE.
// The programs of this build and, in a cross build, those of the native one, and what integration
// tests do with them.
#ifndef TESTS_INTEGRATION_PROGRAMS_H
#define TESTS_INTEGRATION_PROGRAMS_H

#include <gtest/gtest.h>

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRoot.h"

namespace tests {

/// The name of the agent's port.
extern const char kAgentPort[];
/// A name for an echo server.
inline constexpr char kEchoPort[] = "com.example.echo.1.1";

/// The programs of one build.
struct Build {
  const char* name;
  std::string qrl;
  std::string agent;
  std::string echoServer;
  std::string faultServer;
  std::string faultClient;
  Runner runner;
};

const Build& thisBuild();

/// Whose client talks to whose server.
struct Mixture {
  const Build* client;
  const Build* server;
};
std::ostream& operator<<(std::ostream& stream, const Mixture& mixture);

/// This build with itself; in a cross build that knows of native programs also both mixtures.
std::vector<Mixture> mixtures();
std::string nameOf(const testing::TestParamInfo<Mixture>& info);

/// What a program left behind.
struct Outcome {
  int status = -1;
  std::string output;
  std::string errors;
};

/// Tests with a root of their own, in which they run qrl.
class Integration : public testing::Test {
 protected:
  using Words = std::vector<std::string>;
  using Child = std::unique_ptr<ChildProcess>;

  /// Runs qrl to its end.
  Outcome qrl(const Words& arguments, const Build& build = thisBuild());
  /// Starts qrl; its standard error goes to the test's own.
  Child startQrl(const Words& arguments, const Build& build = thisBuild());
  /// Starts an agent that logs its alerts and answers them by itself, and waits until it listens.
  Child startAgent(const Words& arguments = {}, const Build& build = thisBuild());
  /// Starts an echo server and waits until it listens.
  Child startEchoServer(const std::string& name, const Build& build = thisBuild());
  void waitForName(const std::string& name);
  /// The serial number of the process that holds a name, as `qrl ports` tells it.
  std::string serialNumberOf(const std::string& name);

  PrivateRoot root;

 private:
  int runs = 0;
};

}  // namespace tests

#endif
