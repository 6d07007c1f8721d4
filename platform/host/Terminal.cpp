// Licence: MIT, see LICENSE.
#include "platform/host/Terminal.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/host/Poll.h"
#include "platform/host/Retry.h"

namespace platform::host {
namespace {

constexpr const char* kControllingTerminal = "/dev/tty";
constexpr std::size_t kLongestLine = 4096;
// Nothing announces that a job was moved to the foreground, so that is looked for this often.
constexpr Nanoseconds kForegroundInterval = 100'000'000;

/// Keeps the kernel from stopping the process when this thread uses the terminal from the
/// background: reading then fails, writing goes through.
class NoJobControl final {
 public:
  NoJobControl() {
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGTTIN);
    sigaddset(&stops, SIGTTOU);
    ::pthread_sigmask(SIG_BLOCK, &stops, &earlier);
  }
  ~NoJobControl() { ::pthread_sigmask(SIG_SETMASK, &earlier, nullptr); }
  NoJobControl(const NoJobControl&) = delete;
  NoJobControl& operator=(const NoJobControl&) = delete;

 private:
  sigset_t earlier;
};

}  // namespace

bool hasTerminal() { return static_cast<bool>(Terminal::open()); }

Result<Terminal> Terminal::open() {
  Descriptor opened(
      retry([] { return ::open(kControllingTerminal, O_RDWR | O_CLOEXEC | O_NOCTTY); }));
  if (!opened) return Error::kNotFound;
  return Terminal(std::move(opened));
}

void Terminal::write(std::string_view text) const {
  NoJobControl guard;
  while (!text.empty()) {
    const ssize_t written =
        retry([&] { return ::write(terminal.number(), text.data(), text.size()); });
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

Terminal::Input Terminal::readLine(const WakeEvent& wake) {
  NoJobControl guard;
  for (;;) {
    if (auto input = takeLine()) return *input;
    const bool foreground = inForeground();
    std::array<Interest, 2> interests{Interest{&wake.descriptor()}, Interest{&terminal}};
    const std::span<Interest> waitedFor(interests.data(), foreground ? 2 : 1);
    const Deadline deadline = foreground ? Deadline::never() : Deadline::after(kForegroundInterval);
    if (!waitForAny(waitedFor, deadline)) continue;
    if (interests[0].readable) return {Outcome::kWoken, {}};
    if (interests[1].readable && readMore() == Outcome::kGone) return {Outcome::kGone, {}};
  }
}

std::optional<Terminal::Input> Terminal::takeLine() {
  // A terminal that does not translate sends a carriage return for the key.
  const auto end = pending.find_first_of("\r\n");
  if (end == std::string::npos) return std::nullopt;
  Input input{Outcome::kLine, pending.substr(0, end)};
  pending.erase(0, end + 1);
  return input;
}

bool Terminal::inForeground() const {
  const pid_t foreground = ::tcgetpgrp(terminal.number());
  return foreground == -1 || foreground == ::getpgrp();
}

Terminal::Outcome Terminal::readMore() {
  std::array<char, 256> buffer;
  const ssize_t got =
      retry([&] { return ::read(terminal.number(), buffer.data(), buffer.size()); });
  if (got < 0 && errno == EIO && !inForeground()) return Outcome::kWoken;
  if (got <= 0) return Outcome::kGone;
  if (pending.size() > kLongestLine) pending.clear();
  pending.append(buffer.data(), static_cast<std::size_t>(got));
  return Outcome::kLine;
}

}  // namespace platform::host
