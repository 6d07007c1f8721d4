// Licence: MIT, see LICENSE.
// What does one request to another process and its answer cost? The same bytes go there and back on
// every way of Roads.h, from the barest pair of sockets to our events, at four sizes: 64 bytes and
// 1 KiB as nearly all requests have, 64 KiB and 1 MiB as a picture or a list of devices may have.
// Both processes are on one processor but for the last rows.
#include <benchmark/benchmark.h>

#include <stdexcept>

#include "bench/aemessaging/RoadPair.h"
#include "bench/support/Comparison.h"

namespace {

using bench::Comparison;
using bench::Place;

constexpr int kWarmUp = 20;

void roundTrip(benchmark::State& state, const char* way, Place place) try {
  const bench::RoadPair pair(way, static_cast<std::size_t>(state.range(0)), place);
  const std::unique_ptr<bench::Client> client = bench::openClient(pair.road());
  for (int i = 0; i < kWarmUp; ++i) client->roundTrip();
  for (auto _ : state) client->roundTrip();
} catch (const std::exception& failure) {
  state.SkipWithError(failure.what());
}

constexpr long kSmall = 64;
constexpr long kMedium = 1 << 10;
constexpr long kLarge = 64 << 10;
constexpr long kHuge = 1 << 20;

void everySize(benchmark::internal::Benchmark* family) {
  for (const long size : {kSmall, kMedium, kLarge, kHuge}) family->Arg(size);
  family->UseRealTime();
}
void small(benchmark::internal::Benchmark* family) {
  family->Arg(kSmall)->Arg(kMedium)->UseRealTime();
}

BENCHMARK_CAPTURE(roundTrip, blocking, "blocking", Place::kTogether)->Apply(everySize);
BENCHMARK_CAPTURE(roundTrip, epoll, "epoll", Place::kTogether)->Apply(everySize);
BENCHMARK_CAPTURE(roundTrip, bus, "bus", Place::kTogether)->Apply(everySize);
BENCHMARK_CAPTURE(roundTrip, daemon, "daemon", Place::kTogether)->Apply(everySize);
BENCHMARK_CAPTURE(roundTrip, event, "event", Place::kTogether)->Apply(everySize);
BENCHMARK_CAPTURE(roundTrip, request, "request", Place::kTogether)->Apply(everySize);
BENCHMARK_CAPTURE(roundTrip, listener, "listener", Place::kTogether)->Apply(small);
BENCHMARK_CAPTURE(roundTrip, epollApart, "epoll", Place::kApart)->Apply(small);
BENCHMARK_CAPTURE(roundTrip, busApart, "bus", Place::kApart)->Apply(small);
BENCHMARK_CAPTURE(roundTrip, daemonApart, "daemon", Place::kApart)->Apply(small);
BENCHMARK_CAPTURE(roundTrip, eventApart, "event", Place::kApart)->Apply(small);

/// Rows of the table for one size.
struct Ladder {
  Ladder(const std::string& sizeName, long size, double goal)
      : suffix("/" + std::to_string(size)),
        name(sizeName),
        blocking(title("event : blocking sockets"), at("event"), at("blocking"),
                 bench::onlyShown()),
        epoll(title("event : sockets with epoll"), at("event"), at("epoll"),
              bench::timeAtMost(goal)),
        request(title("whole request : sockets with epoll"), at("request"), at("epoll"),
                bench::onlyShown()),
        bus(title("whole request : sd-bus"), at("request"), at("bus"), bench::speedAtLeast(1)),
        daemon(title("whole request : D-Bus through its daemon"), at("request"), at("daemon"),
               bench::speedAtLeast(3)) {}

  std::string at(const char* way) const { return std::string("roundTrip/") + way + suffix; }
  std::string title(const char* what) const { return name + ", " + what; }

  const std::string suffix;
  const std::string name;
  const Comparison blocking, epoll, request, bus, daemon;
};

const Ladder kAt64B("64 B", kSmall, 1.3);
const Ladder kAt1KiB("1 KiB", kMedium, 1.3);
const Ladder kAt64KiB("64 KiB", kLarge, 1.2);
const Ladder kAt1MiB("1 MiB", kHuge, 1.2);

const Comparison kListener{"64 B, event to the listener's call-back : epoll",
                           "roundTrip/listener/64", "roundTrip/epoll/64", bench::timeAtMost(1.3)};
const Comparison kListener1KiB{"1 KiB, event to the listener's call-back : epoll",
                               "roundTrip/listener/1024", "roundTrip/epoll/1024",
                               bench::timeAtMost(1.3)};
const Comparison kApart{"64 B, across two processors, event : epoll", "roundTrip/eventApart/64",
                        "roundTrip/epollApart/64", bench::onlyShown()};
const Comparison kBusApart{"64 B, across two processors, event : sd-bus", "roundTrip/eventApart/64",
                           "roundTrip/busApart/64", bench::onlyShown()};
const Comparison kDaemonApart{"64 B, across two processors, event : D-Bus, daemon",
                              "roundTrip/eventApart/64", "roundTrip/daemonApart/64",
                              bench::onlyShown()};
const Comparison kApart1KiB{"1 KiB, across two processors, event : epoll",
                            "roundTrip/eventApart/1024", "roundTrip/epollApart/1024",
                            bench::onlyShown()};

}  // namespace
