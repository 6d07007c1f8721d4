// Licence: MIT, see LICENSE.
#include "platform/host/Poll.h"

#include <poll.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>

#include "platform/host/Retry.h"

namespace platform::host {

namespace {

constexpr Nanoseconds kSecond = 1'000'000'000;
constexpr Nanoseconds kMillisecond = 1'000'000;
constexpr std::size_t kMostInterests = 4;
constexpr std::size_t kMostEvents = 64;

timespec spanOf(Nanoseconds span) {
  return {static_cast<time_t>(span / kSecond), static_cast<long>(span % kSecond)};
}

// Milliseconds for epoll_wait, rounded up so that nobody wakes before his time and spins.
int millisecondsUntil(Deadline deadline) {
  if (deadline.isNever()) return -1;
  const Nanoseconds left = deadline.remaining();
  return static_cast<int>(std::min<Nanoseconds>((left + kMillisecond - 1) / kMillisecond, INT_MAX));
}

// The call with nanoseconds is missing on older kernels and under emulation; once refused it is not
// tried again.
int waitPrecisely(int poll, epoll_event* events, int room, Deadline deadline) {
  static std::atomic<bool> missing{false};
  if (!deadline.isNever() && !deadline.isImmediate() && !missing.load(std::memory_order_relaxed)) {
    const timespec left = spanOf(deadline.remaining());
    const int count = epoll_pwait2(poll, events, room, &left, nullptr);
    if (count >= 0 || errno != ENOSYS) return count;
    missing.store(true, std::memory_order_relaxed);
  }
  return epoll_wait(poll, events, room, millisecondsUntil(deadline));
}

short eventsOf(Interest::In in) {
  switch (in) {
    case Interest::In::kInput:
      return POLLIN;
    case Interest::In::kOutput:
      return POLLOUT;
    case Interest::In::kBoth:
      break;
  }
  return POLLIN | POLLOUT;
}

std::uint32_t eventsOf(Poll::Reporting reporting) {
  switch (reporting) {
    case Poll::Reporting::kHangUps:
      return 0;
    case Poll::Reporting::kInput:
      return EPOLLIN;
    case Poll::Reporting::kOutput:
      return EPOLLOUT;
    case Poll::Reporting::kBoth:
      break;
  }
  return EPOLLIN | EPOLLOUT;
}

Status control(const Descriptor& poll, int operation, const Descriptor& member,
               std::uint32_t events, std::uint64_t key) {
  epoll_event event{};
  event.events = events;
  event.data.u64 = key;
  if (epoll_ctl(poll.number(), operation, member.number(), &event) == -1) return lastError();
  return success();
}

}  // namespace

Result<Poll> Poll::make() {
  Descriptor poll(epoll_create1(EPOLL_CLOEXEC));
  if (!poll) return lastError();
  return Poll(std::move(poll));
}

Status Poll::add(const Descriptor& descriptor, std::uint64_t key) {
  return control(poll, EPOLL_CTL_ADD, descriptor, EPOLLIN, key);
}

void Poll::remove(const Descriptor& descriptor) {
  static_cast<void>(control(poll, EPOLL_CTL_DEL, descriptor, 0, 0));
}

Status Poll::report(const Descriptor& descriptor, std::uint64_t key, Reporting reporting) {
  return control(poll, EPOLL_CTL_MOD, descriptor, eventsOf(reporting), key);
}

std::size_t Poll::wait(std::span<std::uint64_t> keys, Deadline deadline) const {
  std::array<epoll_event, kMostEvents> events;
  const int room = static_cast<int>(std::min(keys.size(), events.size()));
  const int count = waitPrecisely(poll.number(), events.data(), room, deadline);
  if (count <= 0) return 0;
  for (int i = 0; i < count; ++i) keys[i] = events[i].data.u64;
  return static_cast<std::size_t>(count);
}

bool waitForAny(std::span<Interest> interests, Deadline deadline) {
  std::array<pollfd, kMostInterests> polled{};
  const std::size_t count = std::min(interests.size(), polled.size());
  for (std::size_t i = 0; i < count; ++i) {
    polled[i] = {interests[i].descriptor->number(), eventsOf(interests[i].in), 0};
  }
  const timespec left = spanOf(deadline.isNever() ? 0 : deadline.remaining());
  if (ppoll(polled.data(), count, deadline.isNever() ? nullptr : &left, nullptr) <= 0) return false;
  for (std::size_t i = 0; i < count; ++i) {
    interests[i].readable = (polled[i].revents & (POLLIN | POLLHUP | POLLERR)) != 0;
    interests[i].writable = (polled[i].revents & (POLLOUT | POLLHUP | POLLERR)) != 0;
  }
  return true;
}

void discardInput(const Descriptor& descriptor) {
  std::array<std::byte, 4096> rest;
  while (retry([&] { return read(descriptor.number(), rest.data(), rest.size()); }) > 0) {
  }
}

bool hasHungUp(const Descriptor& connection) {
  pollfd polled{connection.number(), 0, 0};
  // A signal interrupts even a call that does not wait.
  const int count = retry([&] { return poll(&polled, 1, 0); });
  return count == 1 && (polled.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}

}  // namespace platform::host
