// Licence: MIT, see LICENSE.
// An agent that has nothing to do does nothing: the host does not wake it.
#include <fstream>
#include <optional>

#include "tests/integration/Programs.h"

namespace {

using namespace std::chrono_literals;

/// How often the process has waited so far.
std::optional<long> waitsOf(int process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  constexpr std::string_view kKey = "voluntary_ctxt_switches:";
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(kKey)) return std::stol(line.substr(kKey.size()));
  }
  return std::nullopt;
}

class Idle : public tests::Integration {
 protected:
  /// Lets a while go by in which the process says nothing, and tells how often it was woken.
  static std::optional<long> wakeUpsOf(tests::ChildProcess& process) {
    const std::optional<long> before = waitsOf(process.pid());
    if (process.readLine(1500ms) || !before) return std::nullopt;
    const std::optional<long> after = waitsOf(process.pid());
    return after ? std::optional(*after - *before) : std::nullopt;
  }
};

TEST_F(Idle, AgentIsNotWoken) {
  const Child agent = startAgent({"-keepRunning"});
  agent->readLine(200ms);  // it may still be on its way to its first sleep
  EXPECT_EQ(wakeUpsOf(*agent), 0);
}

TEST_F(Idle, AgentIsNotWokenAfterARequest) {
  const Child agent = startAgent({"-keepRunning"});
  ASSERT_EQ(qrl({"send", tests::kAgentPort, "QrlP", "Mcam"}).status, 0);
  agent->readLine(200ms);
  EXPECT_EQ(wakeUpsOf(*agent), 0);
  EXPECT_EQ(qrl({"quit", tests::kAgentPort}).status, 0);
  EXPECT_EQ(agent->wait(), 0);
}

}  // namespace
