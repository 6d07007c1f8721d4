// Licence: MIT, see LICENSE.
// The messaging half of this process's ports, for the managers above: sending to a right, receiving
// from a port, and sets of ports to wait for. The calls of <mach/mach_port.h> and
// <servers/bootstrap.h> make, name and destroy the rights that are used here.
//
// All functions may be called from any thread; results are Mach's codes.
#ifndef PLATFORM_MACH_PORTSPACE_H
#define PLATFORM_MACH_PORTSPACE_H

#include <mach/mach.h>
#include <servers/bootstrap.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "platform/host/Clock.h"

namespace platform::mach {

using host::Deadline;
using Bytes = std::span<const std::byte>;

/// A message's data, allocated with std::malloc so that it can change owners across C interfaces.
struct Buffer {
  struct Free {
    void operator()(std::byte* block) const;
  };
  std::unique_ptr<std::byte[], Free> memory;
  std::size_t size = 0;
  Bytes bytes() const { return {memory.get(), size}; }
};

/// A message that has arrived. The reply right is the receiver's to use (sending through it spends
/// it) or to give up with mach_port_deallocate; it holds no descriptor and dies with its
/// connection.
struct Message {
  mach_msg_id_t id = 0;
  mach_port_name_t receiver = MACH_PORT_NULL;
  mach_port_name_t reply = MACH_PORT_NULL;
  bool isOwn = false;  // sent from within this process
  Buffer body;
};

/// Sends to a send or send-once right. `replyPort`, a receive right of ours or null, is where the
/// answer shall arrive: the receiver gets one send-once right to it. Should the receiver die before
/// it has answered, the reply port receives a message with the ID MACH_NOTIFY_SEND_ONCE and no
/// body. Blocks while the receiver's queue is full, until the deadline: MACH_SEND_TIMED_OUT. A
/// right whose port is dead is MACH_SEND_INVALID_DEST. A send-once right is spent by success.
kern_return_t send(mach_port_name_t destination, mach_port_name_t replyPort, mach_msg_id_t id,
                   Bytes body, Deadline deadline);

/// Takes the oldest message of a port, waiting for one until the deadline: MACH_RCV_TIMED_OUT.
/// MACH_RCV_PORT_DIED when the port is destroyed meanwhile, MACH_RCV_INVALID_NAME when the name is
/// not a receive right of ours.
kern_return_t receive(mach_port_name_t port, Message& message, Deadline deadline);

/// Forgets every answer that a port still waits for: one that comes later is dropped. For a sender
/// that gave up waiting, so that its next request is not answered by the last one's reply.
void abandonReplies(mach_port_name_t replyPort);

/// Calls `onDeath` once when the port of this receive right is destroyed, on the destroying thread
/// and with no lock held; at once if it does not exist. Returns a token for cancelDeathNotice (0:
/// already dead).
std::uint32_t noticeDeath(mach_port_name_t port, std::function<void()> onDeath);
void cancelDeathNotice(std::uint32_t token);

/// Whether a name stands for a receive right of ours. Unlike mach_port_type it asks the host for
/// nothing.
bool isReceiveRight(mach_port_name_t name);

/// The process at the other end of a right (ours for our own ports), or 0 if it cannot be told.
int ownerOf(mach_port_name_t right);

/// Makes a port of ours reachable under, or finds a port by, a name in a directory of the name
/// space other than the bootstrap names ("processes"). Results are those of bootstrap_register and
/// bootstrap_look_up; the bootstrap calls are these with the directory "ports".
kern_return_t registerIn(const char* directory, const char* name, mach_port_name_t port);
kern_return_t lookUpIn(const char* directory, const char* name, mach_port_name_t* port);

/// Ports that one thread waits for together: what a run loop sleeps on. One thread waits on a set
/// at a time; everything else may be called from any thread.
class PortSet {
 public:
  PortSet();
  ~PortSet();
  PortSet(const PortSet&) = delete;
  PortSet& operator=(const PortSet&) = delete;

  /// Adds a receive right of ours; twice is once. A port may be in several sets.
  kern_return_t insert(mach_port_name_t port);
  void remove(mach_port_name_t port);

  /// Ends the current wait, or the next one if none is under way.
  void wake();

  enum class Outcome { kMessage, kWoken, kTimedOut };

  /// Waits until a member port has a message, wake() is called or the deadline passes. A woken set
  /// that also has a message reports kWoken first. Takes nothing: kMessage fills in a port that
  /// receive() will serve at once. Ports are named in the order in which their messages arrived.
  Outcome wait(mach_port_name_t& port, Deadline deadline);

  /// What wait() would report at once of what has already been taken in, kTimedOut for nothing.
  /// Asks the host only now and then, lest a busy process never hear of the others.
  Outcome glance(mach_port_name_t& port);

 private:
  struct Implementation;
  std::unique_ptr<Implementation> implementation;
};

}  // namespace platform::mach

#endif
