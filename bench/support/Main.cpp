// Licence: MIT, see LICENSE.
// The main program of every benchmark: runs all benchmarks of the program, each several times and
// interleaved in random order, so that whatever else the machine does falls on all alike, and
// prints the comparisons. Exit status: 0, 1 when a goal is missed, 2 when a figure is missing.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "bench/support/Figures.h"
#include "bench/support/Processors.h"

namespace {

constexpr int kMissed = 1;
constexpr int kIncomplete = 2;

struct Options {
  bool smoke = false;  // a run as short as can be, whose ratios mean nothing
  bool json = false;
  bool filtered = false;             // not every benchmark runs
  int processor = -1;                // the last allowed one
  std::vector<std::string> library;  // for the benchmark library
};

Options parse(int argc, char** argv) {
  Options options;
  options.library = {argv[0], "--benchmark_repetitions=11", "--benchmark_min_time=0.04",
                     "--benchmark_enable_random_interleaving=true"};
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    constexpr std::string_view kProcessor = "--processor=";
    if (argument == "--smoke") {
      options.smoke = true;
      options.library.insert(options.library.end(),
                             {"--benchmark_repetitions=1", "--benchmark_min_time=0"});
    } else if (argument == "--json") {
      options.json = true;
    } else if (argument.starts_with(kProcessor)) {
      options.processor = std::atoi(argv[i] + kProcessor.size());
    } else {
      options.filtered |= argument.starts_with("--benchmark_filter");
      options.library.emplace_back(argument);
    }
  }
  return options;
}

/// Keeps the samples; the table is printed at the end.
class Collector final : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred) {
        std::cerr << run.benchmark_name() << ": " << run.error_message << '\n';
        hasFailed = true;
      } else if (run.run_type == Run::RT_Iteration) {
        add(run);
      }
    }
  }

  bench::Figures figures;
  bool hasFailed = false;

 private:
  void add(const Run& run) {
    const std::string& arguments = run.run_name.args;
    const std::string name =
        run.run_name.function_name + (arguments.empty() ? "" : "/" + arguments);
    const auto iterations = static_cast<double>(run.iterations);
    figures.add(name, "", run.real_accumulated_time / iterations);
    for (const auto& [counter, value] : run.counters) figures.add(name, counter, value.value);
  }
};

/// The rows of the table; false when one cannot be made.
bool tabulate(const bench::Figures& figures, bool filtered, std::vector<bench::Row>& rows) {
  bool complete = true;
  for (const bench::Comparison* comparison : bench::Comparison::all()) {
    if (const auto row = figures.rowOf(*comparison)) {
      rows.push_back(*row);
    } else if (!filtered) {
      std::cerr << comparison->what << ": a figure is missing\n";
      complete = false;
    }
  }
  return complete;
}

std::string_view nameOf(std::string_view program) {
  program.remove_prefix(program.rfind('/') + 1);
  return program;
}

void start(const Options& options) {
  const std::vector<int>& allowed = bench::processors();
  const int processor =
      options.processor >= 0 || allowed.empty() ? options.processor : allowed.back();
  if (!bench::stayOn(processor)) std::cerr << "processor " << processor << " cannot be used\n";
  if (options.json) return;
  std::cout << bench::describeMachine() << ", on processor " << processor << '\n';
  if (!bench::isOptimised()) std::cout << "Not optimised: these figures mean nothing.\n";
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = parse(argc, argv);
  std::vector<char*> library;
  for (const std::string& argument : options.library) {
    library.push_back(const_cast<char*>(argument.c_str()));
  }
  int count = static_cast<int>(library.size());
  benchmark::Initialize(&count, library.data());
  if (count > 1) {
    std::cerr << nameOf(argv[0]) << ": what is " << library[1] << "?\n"
              << "usage: " << nameOf(argv[0])
              << " [--json] [--smoke] [--processor=N] [--benchmark_filter=REGEX]\n";
    return EXIT_FAILURE;
  }
  start(options);
  Collector collector;
  benchmark::RunSpecifiedBenchmarks(&collector);

  std::vector<bench::Row> rows;
  const bool complete = tabulate(collector.figures, options.filtered, rows) && !collector.hasFailed;
  (options.json ? bench::printJson : bench::printTable)(std::cout, nameOf(argv[0]), rows);
  if (!complete) return kIncomplete;
  if (options.smoke) return EXIT_SUCCESS;
  for (const bench::Row& row : rows) {
    if (!row.isMet) return kMissed;
  }
  return EXIT_SUCCESS;
}
