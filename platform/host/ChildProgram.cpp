// Licence: MIT, see LICENSE.
#include "platform/host/ChildProgram.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
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

int signalOf(ChildProgram::Ending ending) {
  return ending == ChildProgram::Ending::kInterrupt ? SIGINT : SIGTERM;
}

/// What is between the fork and the program: only what a signal handler might call, since other
/// threads of this process may have held any lock.
class Start final {
 public:
  /// Both descriptors may stand where others are to be, and are put aside.
  Start(int life, int report)
      : lifeAside(::fcntl(life, F_DUPFD_CLOEXEC, kLifeDescriptor + 1)),
        reportAside(::fcntl(report, F_DUPFD_CLOEXEC, kLifeDescriptor + 1)) {}

  [[noreturn]] void become(char* const* arguments, int endingSignal, pid_t parent) const {
    // A parent that died before it was asked for the signal would leave the program behind.
    if (::prctl(PR_SET_PDEATHSIG, endingSignal) == -1 || ::getppid() != parent) giveUp();
    place(::open(kNullDevice, O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    place(::open(kNullDevice, O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    place(lifeAside, kLifeDescriptor);
    // The caller's mask is this thread's, not the program's.
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::execve(arguments[0], arguments, environ);
    giveUp();
  }

 private:
  [[noreturn]] void giveUp() const {
    const int why = errno;
    static_cast<void>(!::write(reportAside, &why, sizeof why));
    ::_exit(1);
  }
  void place(int descriptor, int number) const {
    const bool isThere = descriptor == number;  // and would not last beyond the program's start
    if ((isThere ? ::fcntl(number, F_SETFD, 0) : ::dup2(descriptor, number)) == -1) giveUp();
  }

  int lifeAside;
  int reportAside;
};

}  // namespace

Result<ChildProgram> ChildProgram::start(const std::vector<std::string>& command, Ending ending) {
  std::array<int, 2> lifeEnds{};
  std::array<int, 2> reportEnds{};
  if (::pipe2(lifeEnds.data(), O_CLOEXEC) != 0) return lastError();
  Descriptor life(lifeEnds[0]);
  Descriptor theirLife(lifeEnds[1]);
  if (::pipe2(reportEnds.data(), O_CLOEXEC) != 0) return lastError();
  const Descriptor report(reportEnds[0]);
  Descriptor theirReport(reportEnds[1]);

  std::vector<char*> arguments;
  for (const std::string& argument : command) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);
  const pid_t parent = ::getpid();
  const pid_t started = ::fork();
  if (started == -1) return lastError();
  if (started == 0) {
    Start(theirLife.number(), theirReport.number())
        .become(arguments.data(), signalOf(ending), parent);
  }
  // Until it runs: then the report's other end is closed without a word.
  ChildProgram program(started, signalOf(ending), std::move(life));
  theirReport = Descriptor();
  int why = 0;
  if (retry([&] { return ::read(report.number(), &why, sizeof why); }) > 0) {
    errno = why;
    return lastError();
  }
  return program;
}

ChildProgram::ChildProgram(ChildProgram&& other) noexcept
    : process(std::exchange(other.process, -1)),
      endingSignal(other.endingSignal),
      life(std::move(other.life)) {}

ChildProgram::~ChildProgram() {
  if (process == -1) return;
  ::kill(process, endingSignal);
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
