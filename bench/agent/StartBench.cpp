// Licence: MIT, see LICENSE.
// How long does the agent take from its start to its name, and how much memory does it hold then?
// The peer is the least that could do as much: a C++ program, linked alike, that binds a socket
// where the agent has its own (TrivialProgram.cpp). Both are waited for in the same way.
#include <benchmark/benchmark.h>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "bench/support/Comparison.h"
#include "platform/host/Roots.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRoot.h"

namespace {

constexpr int kPatience = 10'000;  // milliseconds

/// Tells when something appears in a folder.
class FolderWatch final {
 public:
  explicit FolderWatch(const std::filesystem::path& folder)
      : descriptor(inotify_init1(IN_CLOEXEC)) {
    if (inotify_add_watch(descriptor, folder.c_str(), IN_CREATE) == -1) {
      throw std::runtime_error("the folder cannot be watched");
    }
  }
  ~FolderWatch() { close(descriptor); }
  FolderWatch(const FolderWatch&) = delete;
  FolderWatch& operator=(const FolderWatch&) = delete;

  void await() const {
    pollfd input{descriptor, POLLIN, 0};
    if (poll(&input, 1, kPatience) != 1) throw std::runtime_error("nothing appeared");
  }

 private:
  const int descriptor;
};

double residentKiB(int process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  constexpr std::string_view kKey = "VmRSS:";
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(kKey)) return std::stod(line.substr(kKey.size()));
  }
  throw std::runtime_error("the process is gone");
}

void removeFiles(const std::filesystem::path& folder) {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::filesystem::remove(entry.path());
  }
}

/// Gives what the program holds when it has made its file.
double startOnce(benchmark::State& state, const char* program,
                 const std::filesystem::path& folder) {
  const FolderWatch watch(folder);
  const auto begun = std::chrono::steady_clock::now();
  const tests::ChildProcess child({program, "-keepRunning", (folder / "trivial").string()});
  watch.await();
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begun;
  state.SetIterationTime(taken.count());
  return residentKiB(child.pid());
}

/// Starts a program until it has made a file in the folder of the port names.
void startProgram(benchmark::State& state, const char* program) try {
  const tests::PrivateRoot root;
  const std::filesystem::path folder =
      std::filesystem::path(platform::host::userNameSpacePath()) / "ports";
  // As it is on every start but the first, the folders are there.
  std::filesystem::create_directories(folder.parent_path() / "sockets");
  std::filesystem::create_directory(folder);
  std::filesystem::permissions(folder.parent_path(), std::filesystem::perms::owner_all);
  double resident = 0;
  for (auto _ : state) {
    resident = startOnce(state, program, folder);
    // What the killed program has left would make the next one's start another kind of start.
    removeFiles(folder);
    removeFiles(folder.parent_path() / "sockets");
  }
  state.counters["KiB"] = resident;
} catch (const std::exception& failure) {
  state.SkipWithError(failure.what());
}

BENCHMARK_CAPTURE(startProgram, agent, QRL_AGENT_PROGRAM)->UseManualTime();
BENCHMARK_CAPTURE(startProgram, trivial, QRL_TRIVIAL_PROGRAM)->UseManualTime();

const bench::Comparison kTime{"agent's start to its name : trivial program's to its socket",
                              "startProgram/agent", "startProgram/trivial", bench::timeAtMost(1.5)};
const bench::Comparison kMemory{"agent's resident memory, KiB : trivial program's",
                                "startProgram/agent", "startProgram/trivial",
                                bench::counterAtMost("KiB", 1.3)};

}  // namespace
