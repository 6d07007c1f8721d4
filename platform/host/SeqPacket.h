// Licence: MIT, see LICENSE.
// Local connections that keep the bounds of packets, and may carry one descriptor with a packet. No
// call here waits: what cannot be done now is kWouldBlock.
#ifndef PLATFORM_HOST_SEQPACKET_H
#define PLATFORM_HOST_SEQPACKET_H

#include <cstddef>
#include <span>
#include <string>

#include "platform/host/Clock.h"
#include "platform/host/Descriptor.h"
#include "platform/host/Result.h"

namespace platform::host {

/// Who is at the other end of a connection, as the host vouches for it.
struct Peer {
  int process = 0;
  unsigned user = 0;
  friend bool operator==(const Peer&, const Peer&) = default;
};

/// Takes the oldest waiting connection of a listening socket.
Result<Descriptor> acceptConnection(const Descriptor& listener);

Result<Peer> peerOf(const Descriptor& connection);

/// This process's own user and process IDs, to compare with a peer's.
unsigned effectiveUser();
int currentProcess();

/// The most bytes that one packet on this connection may have.
std::size_t packetLimit(const Descriptor& connection);

/// How much was sent that the other end has not taken yet, 0 if the host cannot tell.
std::size_t untakenBytes(const Descriptor& connection);

/// Sends one packet made of two parts, with a descriptor unless `passed` is null.
Status sendPacket(const Descriptor& connection, std::span<const std::byte> head,
                  std::span<const std::byte> body, const Descriptor* passed);

struct ReceivedPacket {
  std::size_t size = 0;
  Descriptor passed;     // the first descriptor that came along
  bool surplus = false;  // more came, and were closed
};

/// Where a packet goes: one room after the other is filled. A few at most.
using Rooms = std::span<const std::span<std::byte>>;
inline constexpr std::size_t kMostRooms = 3;

/// Takes one packet. kTooLarge when it did not fit (its rest and its descriptors are gone),
/// kDisconnected when the other end has closed and everything was read; an empty packet counts as
/// that.
Result<ReceivedPacket> receivePacket(const Descriptor& connection, Rooms rooms);
Result<ReceivedPacket> receivePacket(const Descriptor& connection, std::span<std::byte> buffer);

/// How long the host lets a call wait on a connection, as it was last told.
struct ReceivePatience {
  enum : int { kUntold = -1, kForEver = 0 };
  int seconds = kUntold;
};

/// As receivePacket, but waits for a packet: kWouldBlock when none has come, which may be before
/// the deadline. Nothing but the connection ends the wait, so it is for a thread that nobody wakes;
/// it spares that one the asking whether there is something to read.
Result<ReceivedPacket> awaitPacket(const Descriptor& connection, Rooms rooms, Deadline deadline,
                                   ReceivePatience& patience);

/// Ends a connection or a listening socket for both sides, waking whoever waits on it. The
/// descriptor stays open, so that its number is not reused under another thread's feet.
void shutDown(const Descriptor& socket);

/// Two ends of a new connection.
struct ConnectedPair {
  Descriptor first;
  Descriptor second;
};
Result<ConnectedPair> makeConnectedPair();

}  // namespace platform::host

#endif
