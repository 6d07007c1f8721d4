// Licence: MIT, see LICENSE.
// The ways on which a request can go to another process and its answer come back, all with the same
// contents: SIZE bytes there and as many back. No server looks at the bytes, and none but sd-bus's
// copies them itself.
//
//   blocking   a SOCK_SEQPACKET connection that both read and write without more ado
//   epoll      the same, not blocking, both waiting with epoll, as a program with several sources
//              of events must
//   bus        D-Bus as sd-bus speaks it, over a connection of the two
//   daemon     the same through a message bus between them
//   event      ours: an event that is sent with QRLPortAppleEvent to a port on the server's run
//              loop, goes to an installed handler, and is answered
//   listener   the same to the dispatch call-back of a QRLPortAEMachPortListener, as the agent has
//   request    "event" with everything that a client does for one request: making the event and its
//              reply port, and disposing of both
//
// On the sockets a message of more than 192 KiB goes in several packets, because a send buffer as
// unprivileged users get it takes no more; ours splits in the same places.
#ifndef BENCH_AEMESSAGING_ROADS_H
#define BENCH_AEMESSAGING_ROADS_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace bench {

struct Road {
  std::string way;
  std::string address;  // a socket's path, a bus's address, or a port's name
  std::size_t size = 0;
};

/// The client's end. One thread.
class Client {
 public:
  virtual ~Client() = default;
  /// Sends one request and waits for its answer; throws std::runtime_error if there is none as it
  /// should be.
  virtual void roundTrip() = 0;
};

/// Connects to a server; throws std::runtime_error if it cannot.
std::unique_ptr<Client> openClient(const Road& road);

/// What a server throws when its client has gone.
struct EndOfRoad {};

/// Serves one client (on a bus, and with events, any number) until it is killed. Writes a line when
/// clients may come. Throws EndOfRoad, or std::runtime_error when something fails.
void serve(const Road& road);

/// The bytes of a request of that size.
std::vector<char> contentsOf(std::size_t size);
/// Tells whoever started the server that clients may come.
void sayReady();
/// Throws a std::runtime_error unless the condition holds.
void require(bool condition, const char* complaint);

std::unique_ptr<Client> openSocketClient(const Road& road);
void serveSocket(const Road& road);
std::unique_ptr<Client> openBusClient(const Road& road);
void serveBus(const Road& road);
std::unique_ptr<Client> openEventClient(const Road& road);
void serveEvents(const Road& road);

}  // namespace bench

#endif
