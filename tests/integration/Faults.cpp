// Licence: MIT, see LICENSE.
#include "tests/integration/Faults.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace tests {

Microseconds now() {
  return std::chrono::duration_cast<Microseconds>(
      std::chrono::steady_clock::now().time_since_epoch());
}

Microseconds medianOf(std::vector<Microseconds> spans) {
  std::sort(spans.begin(), spans.end());
  return spans[spans.size() / 2];
}

Integration::Child Faults::startServer(const Words& options) {
  const Build& build = *GetParam().server;
  ChildProcess::Command command{build.faultServer, kServer};
  command.insert(command.end(), options.begin(), options.end());
  // Memory that was given back shall be so at once, where a sanitizer keeps it for a while.
  auto server = std::make_unique<ChildProcess>(
      command, ChildOptions{.environment = {{"ASAN_OPTIONS", "quarantine_size_mb=1"}},
                            .runner = build.runner});
  EXPECT_EQ(server->readLine(), "0");
  return server;
}

Integration::Child Faults::startLoneClient(const std::string& name) {
  const Build& build = *GetParam().client;
  return std::make_unique<ChildProcess>(ChildProcess::Command{build.faultClient, name},
                                        ChildOptions{.environment = {}, .runner = build.runner});
}

Integration::Child Faults::startClient(const std::string& name) {
  Child client = startLoneClient(name);
  EXPECT_EQ(client->readLine(), "0");
  return client;
}

std::string Faults::command(ChildProcess& client, const std::string& line) {
  EXPECT_TRUE(client.writeLine(line));
  return client.readLine().value_or("nothing");
}

Answer Faults::readAnswer(ChildProcess& client) {
  std::istringstream words(client.readLine().value_or(""));
  Answer answer;
  Microseconds::rep spent = 0;
  Microseconds::rep ended = 0;
  words >> answer.status >> answer.answer >> answer.handled >> spent >> ended;
  EXPECT_FALSE(words.fail()) << words.str();
  answer.spent = Microseconds(spent);
  answer.ended = Microseconds(ended);
  return answer;
}

Sent Faults::readSent(ChildProcess& client) {
  std::istringstream words(client.readLine().value_or(""));
  Sent sent;
  Microseconds::rep spent = 0;
  words >> sent.count >> sent.status >> spent;
  EXPECT_FALSE(words.fail()) << words.str();
  sent.spent = Microseconds(spent);
  return sent;
}

Answer Faults::ask(ChildProcess& client, const std::string& request) {
  EXPECT_TRUE(client.writeLine(request));
  return readAnswer(client);
}

Sent Faults::send(ChildProcess& client, const std::string& events) {
  EXPECT_TRUE(client.writeLine(events));
  return readSent(client);
}

void Faults::expectService(ChildProcess& client, int number) {
  const Answer answer = ask(client, "ask TesT numb " + std::to_string(number) + " 3600");
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(answer.answer, number);
}

void Faults::hold(ChildProcess& client, ChildProcess& server, const std::string& ticks) {
  EXPECT_TRUE(client.writeLine("ask TesT hold 1 " + ticks));
  EXPECT_EQ(server.readLine(), "holding");
}

std::size_t Faults::descriptorsOf(const ChildProcess& process) {
  const std::filesystem::directory_iterator entries("/proc/" + std::to_string(process.pid()) +
                                                    "/fd");
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

void Faults::expectDescriptors(ChildProcess& server, ChildProcess& client, std::size_t count) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (descriptorsOf(server) != count && std::chrono::steady_clock::now() < end) {
    expectService(client, 0);
  }
  EXPECT_EQ(descriptorsOf(server), count);
}

long Faults::memoryOf(const ChildProcess& process) {
  std::ifstream status("/proc/" + std::to_string(process.pid()) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) return std::stol(line.substr(6));
  }
  ADD_FAILURE() << "no memory";
  return 0;
}

}  // namespace tests
