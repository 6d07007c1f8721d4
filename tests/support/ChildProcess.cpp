// Licence: MIT, see LICENSE.
#include "tests/support/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>

#include "tests/support/Command.h"
#include "tests/support/Deadline.h"

namespace tests {
namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
  int ends[2] = {-1, -1};
  Pipe() {
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
  }
  ~Pipe() {
    for (int end : ends) {
      if (end >= 0) close(end);
    }
  }
  int take(int which) { return std::exchange(ends[which], -1); }
};

}  // namespace

ChildProcess::ChildProcess(const Command& command, const ChildOptions& options) {
  Pipe toChild, fromChild;
  std::vector<std::string> words = withRunner(command, options.runner);
  std::vector<std::string> variables = environmentWith(options);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, toChild.ends[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fromChild.ends[1], STDOUT_FILENO);
  if (options.mergeErrors) {
    posix_spawn_file_actions_adddup2(&actions, fromChild.ends[1], STDERR_FILENO);
  }
  const int error = posix_spawnp(&process, words.front().c_str(), &actions, nullptr,
                                 pointersTo(words).data(), pointersTo(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("cannot start " + words.front());
  input = toChild.take(1);
  output = fromChild.take(0);
}

ChildProcess::~ChildProcess() {
  closeInput();
  close(output);
  if (ending) return;
  kill(process, SIGKILL);
  while (waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
  }
}

bool ChildProcess::fill(Clock::time_point end) {
  pollfd readable{output, POLLIN, 0};
  if (poll(&readable, 1, remainingMilliseconds(end)) <= 0) return false;
  char bytes[4096];
  const ssize_t count = read(output, bytes, sizeof bytes);
  if (count <= 0) return false;
  pending.append(bytes, static_cast<std::size_t>(count));
  return true;
}

std::optional<std::string> ChildProcess::readLine(std::chrono::milliseconds patience) {
  const auto end = Clock::now() + patience;
  std::size_t length;
  while ((length = pending.find('\n')) == std::string::npos) {
    if (!fill(end)) return std::nullopt;
  }
  std::string line = pending.substr(0, length);
  pending.erase(0, length + 1);
  return line;
}

std::string ChildProcess::readAll(std::chrono::milliseconds patience) {
  const auto end = Clock::now() + patience;
  while (fill(end)) {
  }
  return std::exchange(pending, {});
}

bool ChildProcess::writeLine(const std::string& line) {
  const std::string text = line + "\n";
  struct sigaction ignore = {}, earlier;
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignore, &earlier);
  const ssize_t count = write(input, text.data(), text.size());
  sigaction(SIGPIPE, &earlier, nullptr);
  return count == static_cast<ssize_t>(text.size());
}

void ChildProcess::closeInput() {
  if (input >= 0) close(std::exchange(input, -1));
}

void ChildProcess::signal(int number) {
  if (!ending) kill(process, number);
}

std::optional<int> ChildProcess::wait(std::chrono::milliseconds patience) {
  if (ending) return ending;
  const auto end = Clock::now() + patience;
  const int watch = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
  if (watch < 0) throw std::runtime_error("cannot watch a process");
  pollfd ended{watch, POLLIN, 0};
  poll(&ended, 1, remainingMilliseconds(end));
  close(watch);
  int status = 0;
  if (waitpid(process, &status, WNOHANG) != process) return std::nullopt;
  ending = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
  return ending;
}

std::string ownProgram() { return std::filesystem::read_symlink("/proc/self/exe").string(); }

}  // namespace tests
