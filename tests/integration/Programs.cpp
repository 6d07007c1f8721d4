// Licence: MIT, see LICENSE.
#include "tests/integration/Programs.h"

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <ostream>

#include "tests/support/Command.h"

namespace tests {

const char kAgentPort[] = QRL_AGENT_PORT_NAME;

namespace {

Build buildIn(const char* name, const std::string& folder, Runner runner) {
  const std::string tests = folder + "/tests/integration/";
  return {name,
          folder + "/bin/qrl",
          folder + "/bin/qrlagentd",
          tests + "echo_server",
          tests + "fault_server",
          tests + "fault_client",
          runner};
}

std::string contentsOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

ChildProcess::Command commandOf(const std::string& program, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), program);
  return arguments;
}

}  // namespace

const Build& thisBuild() {
  static const Build build = buildIn("Own", QRL_BUILD_DIR, Runner::kOfThisBuild);
  return build;
}

std::ostream& operator<<(std::ostream& stream, const Mixture& mixture) {
  return stream << mixture.client->name << "Client" << mixture.server->name << "Server";
}

std::vector<Mixture> mixtures() {
  const Build& own = thisBuild();
  std::vector<Mixture> all{{&own, &own}};
  static const std::string nativeFolder = QRL_NATIVE_BUILD_DIR;
  if (nativeFolder.empty()) return all;
  static const Build native = buildIn("Native", nativeFolder, Runner::kNone);
  all.push_back({&own, &native});
  all.push_back({&native, &own});
  return all;
}

std::string nameOf(const testing::TestParamInfo<Mixture>& info) {
  return testing::PrintToString(info.param);
}

Outcome Integration::qrl(const Words& arguments, const Build& build) {
  // The errors go to a file, since a child of ours has one pipe to talk through.
  const std::string errors = root.path() / ("errors" + std::to_string(++runs));
  ChildProcess::Command command{"/bin/sh", "-c", "exec \"$@\" 2>\"$0\"", errors};
  for (const std::string& word : withRunner(commandOf(build.qrl, arguments), build.runner)) {
    command.push_back(word);
  }
  ChildProcess process(command, {.environment = {}, .runner = Runner::kNone});
  Outcome outcome;
  outcome.output = process.readAll();
  outcome.status = process.wait().value_or(-1);
  outcome.errors = contentsOf(errors);
  return outcome;
}

Integration::Child Integration::startQrl(const Words& arguments, const Build& build) {
  return std::make_unique<ChildProcess>(commandOf(build.qrl, arguments),
                                        ChildOptions{.environment = {}, .runner = build.runner});
}

Integration::Child Integration::startAgent(const Words& arguments, const Build& build) {
  auto agent = std::make_unique<ChildProcess>(
      commandOf(build.agent, arguments),
      ChildOptions{.environment = {{"QRL_UI", "none"}}, .runner = build.runner});
  waitForName(kAgentPort);
  return agent;
}

Integration::Child Integration::startEchoServer(const std::string& name, const Build& build) {
  auto server = std::make_unique<ChildProcess>(
      commandOf(build.echoServer, {name}), ChildOptions{.environment = {}, .runner = build.runner});
  EXPECT_EQ(server->readLine(), "listening");
  return server;
}

void Integration::waitForName(const std::string& name) {
  const std::string patience = std::to_string(kPatience.count());
  EXPECT_EQ(qrl({"wait", name, "--timeout", patience}).status, 0) << name << " did not appear";
}

std::string Integration::serialNumberOf(const std::string& name) {
  const Outcome ports = qrl({"ports", "--json"});
  for (const auto& port : nlohmann::json::parse(ports.output)) {
    if (port["name"] == name && port.contains("psn")) return port["psn"];
  }
  ADD_FAILURE() << name << " has no serial number in " << ports.output;
  return "";
}

}  // namespace tests
