// Licence: MIT, see LICENSE.
// What a benchmark program shows: pairs of benchmarks that ran in the same process run, ours and a
// peer that does the same work, with the ratio that we want between them. Declare one next to the
// benchmarks, as a constant at namespace scope:
//
//   const bench::Comparison kHexDump{"hex dump of 64 KiB", "hexDump/65536", "digitTable/65536",
//                                    bench::speedAtLeast(0.8)};
//
// `ours` and `peer` are names of registered benchmarks: the function's name and "/ARGUMENT" for
// each argument. Main.cpp runs everything interleaved several times and prints one table of
// medians.
#ifndef BENCH_SUPPORT_COMPARISON_H
#define BENCH_SUPPORT_COMPARISON_H

#include <string>
#include <vector>

namespace bench {

/// What is compared, and the ratio that is wanted of it.
struct Goal {
  enum class Of { kTime, kCounter };
  enum class Wanted { kAtMost, kAtLeast, kNothing };

  Of of = Of::kTime;      // the real time of one iteration, or a counter of the benchmark
  std::string counter{};  // its name
  Wanted wanted = Wanted::kNothing;
  double ratio = 0;
  bool peerByOurs = false;  // the ratio is the peer's value divided by ours, not ours by the peer's
};

/// Ours takes at most so many times the peer's time.
Goal timeAtMost(double ratio);
/// Ours is at least so many times as fast as the peer.
Goal speedAtLeast(double ratio);
/// Our counter of that name divided by the peer's: for memory, throughput or time per item.
Goal counterAtMost(const std::string& counter, double ratio);
Goal counterAtLeast(const std::string& counter, double ratio);
/// The ratio of the times is shown and nothing is asked of it.
Goal onlyShown();

/// Registers itself for as long as it lives.
class Comparison final {
 public:
  Comparison(std::string subject, std::string oursName, std::string peerName, Goal wantedGoal);
  ~Comparison();
  Comparison(const Comparison&) = delete;
  Comparison& operator=(const Comparison&) = delete;

  /// In the order of their declaration.
  static const std::vector<const Comparison*>& all();

  const std::string what;
  const std::string ours;
  const std::string peer;
  const Goal goal;
};

}  // namespace bench

#endif
