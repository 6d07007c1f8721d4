// Licence: MIT, see LICENSE.
// What this process's ports are made of, shared by the sources of this folder.
//
// A port of ours is a queue. What is sent to it from within the process goes straight there; what
// comes from others arrives on connections that its listening sockets accepted. A send right to
// somebody else's port is a connection that we made. A request takes a token with it, and its
// answer rides back on the same connection under that token, so that many may be under way on one
// connection.
//
// There is no thread behind the scenes: whoever waits reads. A thread in receive() leads one
// connection, reading what comes for everybody and waking them, and hands the lead on when it
// leaves; a set watches all that its ports may hear from. One lock guards all of this; it is never
// held while waiting, while reading or writing a connection or over a call-back. A connection's
// `reading` comes before it.
#ifndef PLATFORM_MACH_SPACE_H
#define PLATFORM_MACH_SPACE_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/host/NameDirectory.h"
#include "platform/host/SeqPacket.h"
#include "platform/host/WakeEvent.h"
#include "platform/mach/NameTable.h"
#include "platform/mach/Packet.h"
#include "platform/mach/PortSpace.h"

namespace platform::mach {

class WaitSet;

/// The lock of the space, held. Functions that take it may give it up and take it again only where
/// they say so.
using Lock = std::unique_lock<std::mutex>;

/// A thread asleep in receive().
struct Waiter {
  std::optional<host::WakeEvent> event;
  std::shared_ptr<Connection> led;  // the connection that it reads
  bool asleep = false;
  bool raised = false;
  void wake();
};
Waiter& ownWaiter();  // the calling thread's

/// Something that a set can watch. The socket is shared with whoever uses it at the moment, so that
/// its number stays taken until they are done.
struct Source {
  enum class Kind { kListener, kConnection };
  /// Needs the lock.
  Source(Kind kindOfSource, host::Descriptor descriptor);
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  const Kind kind;
  const std::uint64_t key;
  std::shared_ptr<const host::Descriptor> socket;  // null once it is dead
  std::vector<WaitSet*> watchers;
  bool isDead() const { return socket == nullptr; }

 protected:
  ~Source() = default;
};

struct Listener final : Source {
  Listener(std::shared_ptr<host::NameDirectory> nameSpace, host::BoundSocket bound);

  struct Name {
    std::string folder;
    std::string name;
    friend bool operator==(const Name&, const Name&) = default;
  };
  std::shared_ptr<host::NameDirectory> directory;
  host::BoundSocket file;  // its descriptor is `socket`
  std::weak_ptr<Port> port;
  std::vector<Name> names;
};

/// A message, or what is left of it, that waits for room.
struct Parcel {
  PacketHeader header;
  Buffer body;
  host::Descriptor file;  // in the body's place
  std::size_t sent = 0;   // of the body
  std::size_t size() const;
};

struct Connection final : Source {
  explicit Connection(host::Descriptor descriptor);

  // What it connects.
  host::Peer peer;
  std::size_t packetBody = 0;     // bytes of a body that one packet takes
  bool made = false;              // by a look-up of ours; else a listener of ours accepted it
  host::SocketIdentity identity;  // made: whose socket it reaches
  mach_port_name_t name = MACH_PORT_NULL;                  // made: our send right
  std::weak_ptr<Port> port;                                // accepted: whom it reaches
  std::unordered_map<Token, std::weak_ptr<Port>> awaited;  // answers that are to come
  unsigned replyRights = 0;                                // rights to answer over it that we hold

  // Sending, one message at a time.
  bool sending = false;
  unsigned sendersWaiting = 0;
  std::condition_variable sendable;
  std::deque<Parcel> backlog;  // answers that found no room, in their order
  std::size_t backlogBytes = 0;
  bool isBackedUp() const;  // so that nothing is read from it

  // Reading, one thread at a time.
  Waiter* leader = nullptr;
  std::mutex reading;
  Assembler assembler;                     // guarded by `reading`
  host::ReceivePatience patience;          // likewise
  std::atomic<std::size_t> unfinished{0};  // what the assembler holds of a message
};

struct QueuedMessage {
  std::uint64_t sequence = 0;
  mach_msg_id_t id = 0;
  Token answers = 0;  // the token of the request that this answers
  ReplyRight reply{};
  bool isOwn = false;  // sent from within this process
  Buffer body{};
};

struct Port final {
  mach_port_name_t name = MACH_PORT_NULL;
  bool dead = false;
  std::deque<QueuedMessage> queue;
  std::size_t queuedBytes = 0;
  std::vector<std::shared_ptr<Listener>> listeners;
  std::vector<std::shared_ptr<Connection>> accepted;

  struct Awaited {
    Token token = 0;
    std::shared_ptr<Connection> connection;  // null: a port of ours shall answer
  };
  std::vector<Awaited> awaited;

  std::vector<Waiter*> waiters;
  std::vector<WaitSet*> sets;
  std::unique_ptr<WaitSet> ownSet;  // for receive() on a port with more than one connection
  unsigned sendersWaiting = 0;
  std::condition_variable room;

  struct DeathNotice {
    std::uint32_t token = 0;
    std::function<void()> onDeath;
  };
  std::vector<DeathNotice> deathNotices;

  ~Port();
  bool isFull() const;
  bool awaits(const Connection& connection) const;
};

struct Space {
  std::mutex mutex;
  NameTable names;
  std::vector<std::shared_ptr<Connection>> made;
  std::vector<std::shared_ptr<Listener>> listeners;
  std::size_t accepted = 0;  // connections that others made to our ports
  std::unordered_map<std::uint32_t, std::weak_ptr<Port>> deathNotices;
  std::uint64_t lastKey = 0;
  std::uint64_t lastSequence = 0;
  Token lastToken = 0;
  int process = 0;  // that has listeners

  Token nextToken();
};

/// The process's only space. It is never destroyed: threads may outlive main.
Space& space();

// Ports (Port.cpp)

/// The port whose receive right a name holds, null if it holds none.
std::shared_ptr<Port> findPort(mach_port_name_t name);
/// Puts a message into a port's queue and wakes who waits for it.
void enqueue(Port& port, QueuedMessage message);
/// Lets a port be reached through a listening socket.
void addListener(const std::shared_ptr<Port>& port, const std::shared_ptr<Listener>& listener);
/// Wakes everybody who waits for a port, because something about it changed.
void wakeWaiters(Port& port);
/// Makes a right for the answer to a request: the port awaits it from now on. `connection` is null
/// for a request within the process.
Token expectAnswer(const std::shared_ptr<Port>& port,
                   const std::shared_ptr<Connection>& connection);
/// Ends the waiting for an answer. False if it was not awaited (any more).
bool forgetAnswer(Port& port, Token token);
/// Gives a right to answer up unused: its owner is told. May release the lock.
void giveUp(Lock& lock, ReplyRight right);
/// Kills a port whose name is gone already. Releases the lock; call-backs are made without it.
void killPort(Lock& lock, std::shared_ptr<Port> port);

// Connections (Connection.cpp)

using Socket = std::shared_ptr<const host::Descriptor>;

/// Sends one message. A request waits for its turn and for room until the deadline; an answer waits
/// for a moment at most, then it is kept and follows when there is room. Releases the lock
/// meanwhile.
kern_return_t transmit(Lock& lock, const std::shared_ptr<Connection>& connection,
                       const PacketHeader& header, Bytes body, Deadline deadline);
/// Tells the other end that a request of its will not be answered: now, or when there is room.
/// Releases the lock meanwhile.
void abandonRequest(Lock& lock, const std::shared_ptr<Connection>& connection, Token token);
/// Sends as much of a backlog as there is room for now. Releases the lock meanwhile.
void flushBacklog(Lock& lock, const std::shared_ptr<Connection>& connection);
/// Gives those that still read what they were answered the time to, for connections that are about
/// to end. Releases the lock meanwhile.
void drainBacklogs(Lock& lock, const std::vector<std::shared_ptr<Connection>>& connections);
/// Reads and delivers at most one message. To be called without the lock. False once there is
/// nothing to read now.
bool serve(const std::shared_ptr<Connection>& connection, const Socket& socket);
/// The same, but waits for something to read until about the deadline, or a while. Nobody can end
/// the wait, so it is for the only thread of a process.
void serveAlone(const std::shared_ptr<Connection>& connection, const Socket& socket,
                Deadline deadline);
/// Ends a connection: whoever awaits an answer over it is told.
void hangUp(std::shared_ptr<Connection> connection);
/// Ends a connection of ours that nobody holds a right to or awaits an answer from.
void dropIfUnused(const std::shared_ptr<Connection>& connection);
/// Lets a waiting thread read a connection that nobody leads.
void passLead(const std::shared_ptr<Connection>& connection);
/// Takes the connections that wait at a listening socket. To be called without the lock. False when
/// there was no descriptor left for one.
bool acceptWaiting(const std::shared_ptr<Listener>& listener, const Socket& socket);

}  // namespace platform::mach

#endif
