// Licence: MIT, see LICENSE.
// Waiting for descriptors: a lasting set of many, and a one-time wait for a few.
#ifndef PLATFORM_HOST_POLL_H
#define PLATFORM_HOST_POLL_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/host/Clock.h"
#include "platform/host/Descriptor.h"
#include "platform/host/Result.h"

namespace platform::host {

/// A set of descriptors, each watched for input and hang-up under a key of the owner's choice. A
/// descriptor must leave the set before it is closed. Members may be changed while a thread waits.
class Poll final {
 public:
  static Result<Poll> make();

  Status add(const Descriptor& descriptor, std::uint64_t key);
  void remove(const Descriptor& descriptor);
  /// What is reported of a member: hang-ups always, at first its input.
  enum class Reporting { kHangUps, kInput, kOutput, kBoth };
  Status report(const Descriptor& descriptor, std::uint64_t key, Reporting reporting);

  /// Waits until a member is ready or the deadline passes. Stores the keys of ready members and
  /// tells how many; 0 when the deadline passed or a signal came.
  std::size_t wait(std::span<std::uint64_t> keys, Deadline deadline) const;

 private:
  explicit Poll(Descriptor opened) : poll(std::move(opened)) {}
  Descriptor poll;
};

/// One descriptor of a one-time wait. Hang-ups and errors count as ready.
struct Interest {
  enum class In { kInput, kOutput, kBoth };
  const Descriptor* descriptor = nullptr;
  In in = In::kInput;
  bool readable = false;
  bool writable = false;
};

/// Waits until one of a few descriptors is ready and marks those that are. False when the deadline
/// passed or a signal came.
bool waitForAny(std::span<Interest> interests, Deadline deadline);

/// Throws away what a descriptor that does not block has to read.
void discardInput(const Descriptor& descriptor);

/// Whether the other end of a connection has closed it.
bool hasHungUp(const Descriptor& connection);

}  // namespace platform::host

#endif
