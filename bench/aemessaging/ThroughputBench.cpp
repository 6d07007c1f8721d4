// Licence: MIT, see LICENSE.
// How many requests does one server answer when eight clients ask at once? Each client is a process
// that makes, sends and reads one small request after the other, as fast as it is answered. All of
// them and the server share one processor, so that it is the work that counts.
#include <benchmark/benchmark.h>

#include <stdexcept>
#include <vector>

#include "bench/aemessaging/RoadPair.h"
#include "bench/support/Comparison.h"

namespace {

constexpr std::size_t kClients = 8;
constexpr std::size_t kSize = 64;
constexpr int kRequests = 100;  // of each client in one iteration

using Clients = std::vector<std::unique_ptr<tests::ChildProcess>>;

void askAll(const Clients& clients) {
  for (const auto& client : clients) {
    bench::require(client->writeLine(std::to_string(kRequests)), "a client is gone");
  }
  for (const auto& client : clients) {
    bench::require(client->readLine() == "done", "a client was not answered");
  }
}

void eightClients(benchmark::State& state, const char* way) try {
  const bench::RoadPair pair(way, kSize, bench::Place::kTogether);
  Clients clients;
  for (std::size_t i = 0; i < kClients; ++i) clients.push_back(pair.startClient());
  askAll(clients);
  for (auto _ : state) askAll(clients);
  const auto requests = static_cast<double>(state.iterations()) * kClients * kRequests;
  state.counters["requests/s"] = benchmark::Counter(requests, benchmark::Counter::kIsRate);
} catch (const std::exception& failure) {
  state.SkipWithError(failure.what());
}

BENCHMARK_CAPTURE(eightClients, request, "request")->UseRealTime();
BENCHMARK_CAPTURE(eightClients, daemon, "daemon")->UseRealTime();

const bench::Comparison kThroughput{"8 clients at once, requests/s : D-Bus, daemon",
                                    "eightClients/request", "eightClients/daemon",
                                    bench::counterAtLeast("requests/s", 3)};

}  // namespace
