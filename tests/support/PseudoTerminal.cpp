// Licence: MIT, see LICENSE.
#include "tests/support/PseudoTerminal.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include "tests/support/Command.h"
#include "tests/support/Deadline.h"

namespace tests {
namespace {

using Clock = std::chrono::steady_clock;

int openMaster() {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
    throw std::runtime_error("cannot make a terminal");
  }
  return master;
}

}  // namespace

PseudoTerminal::PseudoTerminal(const std::vector<std::string>& command, const ChildOptions& options)
    : master(openMaster()) {
  std::vector<std::string> words = withRunner(command, options.runner);
  std::vector<std::string> variables = environmentWith(options);
  const std::string slave = ptsname(master);

  // The first terminal that the leader of a new session opens becomes its controlling terminal.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, slave.c_str(), O_RDWR, 0);
  posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDERR_FILENO);
  const int error = posix_spawnp(&process, words.front().c_str(), &actions, &attributes,
                                 pointersTo(words).data(), pointersTo(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  if (error != 0) throw std::runtime_error("cannot start " + words.front());
}

PseudoTerminal::~PseudoTerminal() {
  if (!ending) {
    kill(process, SIGKILL);
    while (waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  hangUp();
}

bool PseudoTerminal::readMore(Clock::time_point end) {
  pollfd readable{master, POLLIN, 0};
  if (poll(&readable, 1, remainingMilliseconds(end)) <= 0) return false;
  char bytes[4096];
  const ssize_t count = read(master, bytes, sizeof bytes);
  if (count <= 0) return false;
  shown.append(bytes, static_cast<std::size_t>(count));
  return true;
}

std::optional<std::string> PseudoTerminal::readUntil(const std::string& text,
                                                     std::chrono::milliseconds patience) {
  return readUntilAll({text}, patience);
}

std::optional<std::string> PseudoTerminal::readUntilAll(const std::vector<std::string>& texts,
                                                        std::chrono::milliseconds patience) {
  const auto end = Clock::now() + patience;
  std::size_t length = 0;
  for (const std::string& text : texts) {
    std::size_t start;
    while ((start = shown.find(text)) == std::string::npos) {
      if (!readMore(end)) return std::nullopt;
    }
    length = std::max(length, start + text.size());
  }
  std::string seen = shown.substr(0, length);
  shown.erase(0, length);
  return seen;
}

void PseudoTerminal::type(const std::string& keys) {
  if (write(master, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    throw std::runtime_error("cannot type");
  }
}

void PseudoTerminal::hangUp() {
  if (master >= 0) close(std::exchange(master, -1));
}

std::optional<int> PseudoTerminal::wait(std::chrono::milliseconds patience) {
  if (ending) return ending;
  const int watch = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
  if (watch < 0) throw std::runtime_error("cannot watch a process");
  pollfd ended{watch, POLLIN, 0};
  poll(&ended, 1, static_cast<int>(patience.count()));
  close(watch);
  int status = 0;
  if (waitpid(process, &status, WNOHANG) != process) return std::nullopt;
  ending = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
  return ending;
}

}  // namespace tests
