// Licence: MIT, see LICENSE.
#include <servers/bootstrap.h>

#include <algorithm>

#include "platform/host/Poll.h"
#include "platform/mach/Guard.h"
#include "platform/mach/NameList.h"
#include "platform/mach/NameSpace.h"
#include "platform/mach/Space.h"

namespace platform::mach {

namespace {

kern_return_t codeOf(host::Error error, kern_return_t otherwise) {
  switch (error) {
    case host::Error::kPermission:
      return BOOTSTRAP_NOT_PRIVILEGED;
    case host::Error::kExists:
      return BOOTSTRAP_NAME_IN_USE;
    case host::Error::kNoResources:
    case host::Error::kNoMemory:
    case host::Error::kTimedOut:
      return BOOTSTRAP_NO_MEMORY;
    default:
      return otherwise;
  }
}

// Looking up

/// The name that this process already has for a socket; null if it has none.
struct Known {
  mach_port_name_t name = MACH_PORT_NULL;
  std::shared_ptr<Connection> connection;  // null for a port of ours
  explicit operator bool() const { return name != MACH_PORT_NULL || connection; }
};

Known knownAs(const host::SocketIdentity& identity) {
  for (const std::shared_ptr<Listener>& listener : space().listeners) {
    if (listener->isDead() || listener->file.identity != identity) continue;
    const std::shared_ptr<Port> port = listener->port.lock();
    if (port && !port->dead) return {port->name, nullptr};
  }
  for (const std::shared_ptr<Connection>& connection : space().made) {
    if (connection->identity == identity) return {connection->name, connection};
  }
  return {};
}

/// Adds one send right to what is known, naming it if it has lost its name.
kern_return_t addSendRight(const Known& known, mach_port_name_t* port) {
  mach_port_name_t name = known.name;
  if (name == MACH_PORT_NULL) {
    name = space().names.add({.connection = known.connection});
    if (name == MACH_PORT_NULL) return BOOTSTRAP_NO_MEMORY;
    known.connection->name = name;
  }
  ++space().names.find(name)->sendRights;
  *port = name;
  return KERN_SUCCESS;
}

/// The answer if the socket is known and alive; BOOTSTRAP_UNKNOWN_SERVICE if we must connect to it.
kern_return_t findKnown(const host::SocketIdentity& identity, mach_port_name_t* port) {
  Lock lock(space().mutex);
  const Known known = knownAs(identity);
  if (!known) return BOOTSTRAP_UNKNOWN_SERVICE;
  if (!known.connection) return addSendRight(known, port);
  const Socket socket = known.connection->socket;
  lock.unlock();
  if (host::hasHungUp(*socket)) {
    while (serve(known.connection, socket)) {
    }
    return BOOTSTRAP_UNKNOWN_SERVICE;
  }
  lock.lock();
  if (known.connection->isDead()) return BOOTSTRAP_UNKNOWN_SERVICE;
  return addSendRight({known.connection->name, known.connection}, port);
}

kern_return_t adopt(host::NamedConnection found, mach_port_name_t* port) {
  const host::Result<host::Peer> peer = host::peerOf(found.connection);
  if (!peer) return BOOTSTRAP_UNKNOWN_SERVICE;
  const Lock lock(space().mutex);
  // Another thread may have come to know it meanwhile.
  if (const Known known = knownAs(found.identity)) return addSendRight(known, port);
  auto connection = std::make_shared<Connection>(std::move(found.connection));
  connection->made = true;
  connection->peer = *peer;
  connection->identity = found.identity;
  const kern_return_t result = addSendRight({MACH_PORT_NULL, connection}, port);
  if (result == KERN_SUCCESS) space().made.push_back(connection);
  return result;
}

/// Whether a socket could turn out to be known.
bool knowsAnySocket() {
  const Lock lock(space().mutex);
  return !space().listeners.empty() || !space().made.empty();
}

kern_return_t lookUpInDirectory(const host::NameDirectory& directory, const char* folder,
                                const char* name, mach_port_name_t* port) {
  if (knowsAnySocket()) {
    const host::Result<host::SocketIdentity> identity = directory.identify(folder, name);
    if (!identity) return codeOf(identity.error(), BOOTSTRAP_UNKNOWN_SERVICE);
    const kern_return_t known = findKnown(*identity, port);
    if (known != BOOTSTRAP_UNKNOWN_SERVICE) return known;
  }
  host::Result<host::NamedConnection> found = directory.connect(folder, name);
  if (!found) return codeOf(found.error(), BOOTSTRAP_UNKNOWN_SERVICE);
  return adopt(std::move(*found), port);
}

/// The system's directory is opened only when the user's own does not have the name.
kern_return_t lookUp(const char* folder, const char* name, mach_port_name_t* port) {
  kern_return_t answer = BOOTSTRAP_UNKNOWN_SERVICE;
  for (const auto searched : {searchedFirst, searchedThen}) {
    const host::Result<Directory> directory = searched();
    const kern_return_t result = directory ? lookUpInDirectory(**directory, folder, name, port)
                                           : codeOf(directory.error(), BOOTSTRAP_UNKNOWN_SERVICE);
    if (result == KERN_SUCCESS) return result;
    if (answer == BOOTSTRAP_UNKNOWN_SERVICE) answer = result;
  }
  return answer;
}

// Registering

std::shared_ptr<Listener> listenerIn(const Port& port, const Directory& directory) {
  for (const std::shared_ptr<Listener>& listener : port.listeners) {
    if (listener->directory == directory) return listener;
  }
  return nullptr;
}

/// The port's listener in a directory, made on its first name there.
host::Result<std::shared_ptr<Listener>> obtainListener(const std::shared_ptr<Port>& port,
                                                       const Directory& directory) {
  {
    const Lock lock(space().mutex);
    if (auto listener = listenerIn(*port, directory)) return listener;
  }
  host::Result<host::BoundSocket> bound = directory->bind();
  if (!bound) return bound.error();
  const Lock lock(space().mutex);
  auto listener = listenerIn(*port, directory);
  if (listener || port->dead) {
    directory->unbind(*bound);
    if (port->dead) return host::Error::kInvalid;
    return listener;
  }
  listener = std::make_shared<Listener>(directory, std::move(*bound));
  addListener(port, listener);
  return listener;
}

bool holdsAlready(const Listener& listener, const Listener::Name& name) {
  const host::Result<host::SocketIdentity> holder =
      listener.directory->identify(name.folder, name.name);
  return holder && *holder == listener.file.identity;
}

kern_return_t registerPort(const Listener::Name& name, const std::shared_ptr<Port>& port) {
  const host::Result<Directory> directory = ownDirectory();
  if (!directory) return codeOf(directory.error(), BOOTSTRAP_NOT_PRIVILEGED);
  const host::Result<std::shared_ptr<Listener>> listener = obtainListener(port, *directory);
  if (!listener) return codeOf(listener.error(), BOOTSTRAP_NO_MEMORY);
  if (holdsAlready(**listener, name)) return KERN_SUCCESS;
  const host::Status claimed = (*directory)->claim((*listener)->file, name.folder, name.name);
  if (!claimed) return codeOf(claimed.error(), BOOTSTRAP_NO_MEMORY);

  Lock lock(space().mutex);
  if (!port->dead) {
    (*listener)->names.push_back(name);
    return KERN_SUCCESS;
  }
  lock.unlock();
  (*directory)->reap(name.folder, name.name);
  return KERN_INVALID_RIGHT;
}

kern_return_t giveNameUp(const Listener::Name& name) {
  const host::Result<Directory> directory = ownDirectory();
  if (!directory) return codeOf(directory.error(), BOOTSTRAP_NOT_PRIVILEGED);
  Lock lock(space().mutex);
  for (const std::shared_ptr<Listener>& listener : space().listeners) {
    if (listener->directory != *directory || std::erase(listener->names, name) == 0) continue;
    const std::shared_ptr<Listener> holder = listener;
    lock.unlock();
    (*directory)->release(holder->file.identity, name.folder, name.name);
    return KERN_SUCCESS;
  }
  return BOOTSTRAP_UNKNOWN_SERVICE;
}

}  // namespace

kern_return_t registerIn(const char* directory, const char* name, mach_port_name_t port) {
  if (!isPortName(name)) return BOOTSTRAP_BAD_COUNT;
  if (port == MACH_PORT_NULL) return giveNameUp({directory, name});
  std::shared_ptr<Port> registered;
  {
    const Lock lock(space().mutex);
    registered = findPort(port);
  }
  return registered ? registerPort({directory, name}, registered) : KERN_INVALID_RIGHT;
}

kern_return_t lookUpIn(const char* directory, const char* name, mach_port_name_t* port) {
  *port = MACH_PORT_NULL;
  if (!isPortName(name)) return BOOTSTRAP_UNKNOWN_SERVICE;
  return lookUp(directory, name, port);
}

}  // namespace platform::mach

using namespace platform::mach;

kern_return_t bootstrap_look_up(mach_port_t bootstrap, const char* name, mach_port_t* port) {
  if (name == nullptr || port == nullptr) return KERN_INVALID_ARGUMENT;
  *port = MACH_PORT_NULL;
  if (bootstrap != kBootstrapPort) return MACH_SEND_INVALID_DEST;
  return guarded(BOOTSTRAP_NO_MEMORY, [&] { return lookUpIn(kBootstrapFolder, name, port); });
}

kern_return_t bootstrap_register(mach_port_t bootstrap, const char* name, mach_port_t port) {
  if (name == nullptr) return KERN_INVALID_ARGUMENT;
  if (bootstrap != kBootstrapPort) return MACH_SEND_INVALID_DEST;
  return guarded(BOOTSTRAP_NO_MEMORY, [&] { return registerIn(kBootstrapFolder, name, port); });
}
