// Licence: MIT, see LICENSE.
#include "platform/host/ChildProgram.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/host/Poll.h"
#include "platform/host/Retry.h"

namespace platform::host {
namespace {

constexpr const char* kNullDevice = "/dev/null";
constexpr Nanoseconds kGracePeriod = 2'000'000'000;
constexpr int kLifeDescriptor = 3;  // its number in the program

class SpawnSettings final {
 public:
  explicit SpawnSettings(int life) {
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, kNullDevice, O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, kNullDevice, O_WRONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, life, kLifeDescriptor);
    // The caller's mask is this thread's, not the program's.
    ::posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    ::posix_spawnattr_setsigmask(&attributes, &none);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  }
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
};

}  // namespace

Result<ChildProgram> ChildProgram::start(const std::vector<std::string>& command) {
  // Not every host reports it when the program cannot be run: under emulation it seems to have
  // started.
  if (::access(command.front().c_str(), X_OK) != 0) return lastError();
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return lastError();
  Descriptor ours(ends[0]);
  Descriptor theirs(ends[1]);

  std::vector<char*> arguments;
  for (const std::string& argument : command) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);
  SpawnSettings settings(theirs.number());
  pid_t started = -1;
  errno = ::posix_spawn(&started, arguments[0], &settings.actions, &settings.attributes,
                        arguments.data(), environ);
  if (errno != 0) return lastError();
  return ChildProgram(started, std::move(ours));
}

ChildProgram::ChildProgram(ChildProgram&& other) noexcept
    : process(std::exchange(other.process, -1)), life(std::move(other.life)) {}

ChildProgram::~ChildProgram() {
  if (process == -1) return;
  ::kill(process, SIGTERM);
  std::array<Interest, 1> end{Interest{&life}};
  if (!waitForAny(end, Deadline::after(kGracePeriod))) ::kill(process, SIGKILL);
  static_cast<void>(collect());
}

Result<int> ChildProgram::wait(const WakeEvent& wake) {
  for (;;) {
    std::array<Interest, 2> interests{Interest{&life}, Interest{&wake.descriptor()}};
    if (!waitForAny(interests, Deadline::never())) continue;
    return interests[0].readable ? collect() : Error::kWouldBlock;
  }
}

Result<int> ChildProgram::collect() {
  int status = 0;
  const pid_t ended = std::exchange(process, -1);
  if (retry([&] { return ::waitpid(ended, &status, 0); }) == -1) return lastError();
  if (!WIFEXITED(status)) return Error::kFailed;
  return WEXITSTATUS(status);
}

}  // namespace platform::host
