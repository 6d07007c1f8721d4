// Licence: MIT, see LICENSE.
// What the tests of hostile clients share: a live agent, an innocent client that has had a
// connection to it all the while, and a look at the agent from outside.
#ifndef TESTS_INTEGRATION_HOSTILE_H
#define TESTS_INTEGRATION_HOSTILE_H

#include <AE/AppleEvents.h>
#include <mach/mach.h>

#include <string>
#include <vector>

#include "tests/integration/Programs.h"
#include "tests/support/Stranger.h"

namespace tests {

/// The token for the answer that a stranger asks for, where any will do.
inline constexpr std::uint32_t kToken = 21;

/// After each test the agent has closed what the strangers opened, it has never held more memory
/// than it had and was sent, and the innocent's connection still serves.
class Hostile : public Integration {
 protected:
  void SetUp() override;
  void TearDown() override;

  Stranger connect() const { return Stranger(socketFile); }
  /// Sends one packet of what the agent's memory may grow by.
  bool send(Stranger& stranger, const std::string& bytes, const std::vector<int>& passed = {});
  /// Sends a body as several packets. False once it is cut off.
  bool sendInParts(Stranger& stranger, const std::string& body, std::uint32_t reply);

  /// Has the innocent ask for what the agent does not know, and expects its answer.
  void expectService();
  std::size_t descriptors() const;

  /// An event that the agent does not know, with these parameters.
  static std::string event(const std::vector<std::string>& parameters = {});
  /// Whether an answer says that the event is not handled; else the request was given up.
  static bool isNotHandled(const RawAnswer& answer);

  Child agent;

 private:
  std::size_t memoryAtMost() const;

  std::filesystem::path socketFile;
  mach_port_t port = MACH_PORT_NULL;
  std::size_t descriptorsBefore = 0;
  std::size_t memoryBefore = 0;
  std::size_t sent = 0;
};

}  // namespace tests

#endif
