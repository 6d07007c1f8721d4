// Licence: MIT, see LICENSE.
// The names under which this process holds rights. A name is an index and a generation, so that a
// name that was given up is not mistaken for a later one. The space's lock guards it.
#ifndef PLATFORM_MACH_NAMETABLE_H
#define PLATFORM_MACH_NAMETABLE_H

#include <mach/mach.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/mach/Packet.h"

namespace platform::mach {

struct Port;
struct Connection;

/// A right to answer once: to a port at the other end of a connection, or to one of ours.
struct ReplyRight {
  std::shared_ptr<Connection> connection;
  std::shared_ptr<Port> port;
  Token token = 0;
  explicit operator bool() const { return token != 0; }
};

/// The rights under one name: those to a port of ours, send rights to somebody else's, or a right
/// to answer.
struct Entry {
  std::shared_ptr<Port> port{};              // a receive right
  std::shared_ptr<Connection> connection{};  // send rights
  ReplyRight reply{};                        // a send-once right
  mach_port_urefs_t sendRights = 0;
  bool inUse = false;  // a send-once right that a thread is sending through
};

class NameTable final {
 public:
  /// A new name, MACH_PORT_NULL when there is none left.
  mach_port_name_t add(Entry entry);
  /// The entry of a name, null for a name that is not held. Good until the next add().
  Entry* find(mach_port_name_t name);
  /// Frees a name that is held, and hands out what it stood for.
  Entry remove(mach_port_name_t name);

 private:
  struct Slot {
    Entry entry;
    std::uint8_t generation = 0;
    bool held = false;
  };
  std::vector<Slot> slots;
  std::vector<std::uint32_t> freed;
};

}  // namespace platform::mach

#endif
