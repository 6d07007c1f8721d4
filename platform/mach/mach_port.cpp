// Licence: MIT, see LICENSE.
#include <mach/mach_port.h>

#include "platform/host/Poll.h"
#include "platform/mach/Guard.h"
#include "platform/mach/NameSpace.h"
#include "platform/mach/Space.h"
#include "platform/mach/WaitSet.h"

bool platform::mach::isReceiveRight(mach_port_name_t name) {
  const Lock lock(space().mutex);
  const Entry* entry = space().names.find(name);
  return entry != nullptr && entry->port != nullptr;
}

using namespace platform::mach;

namespace {

bool isPermanent(mach_port_name_t name) { return name == kTaskPort || name == kBootstrapPort; }

mach_port_type_t typeOf(const Entry& entry) {
  if (entry.port) {
    return MACH_PORT_TYPE_RECEIVE | (entry.sendRights > 0 ? MACH_PORT_TYPE_SEND : 0u);
  }
  if (entry.reply) {
    const ReplyRight& reply = entry.reply;
    const bool dead = reply.port ? reply.port->dead : reply.connection->isDead();
    return dead ? MACH_PORT_TYPE_DEAD_NAME : MACH_PORT_TYPE_SEND_ONCE;
  }
  return entry.connection->isDead() ? MACH_PORT_TYPE_DEAD_NAME : MACH_PORT_TYPE_SEND;
}

/// Takes in what the connection behind a name has to say, so that a right whose port has died since
/// it was last used is seen to be dead.
void refresh(Lock& lock, mach_port_name_t name) {
  const Entry* entry = space().names.find(name);
  if (entry == nullptr || entry->port || entry->reply.port) return;
  const std::shared_ptr<Connection> connection =
      entry->reply ? entry->reply.connection : entry->connection;
  const Socket socket = connection->socket;
  if (!socket) return;
  lock.unlock();
  if (platform::host::hasHungUp(*socket)) {
    while (serve(connection, socket)) {
    }
  }
  lock.lock();
}

// What is left of an entry whose name is gone.
void release(Lock& lock, Entry entry) {
  if (entry.port) return killPort(lock, entry.port);
  if (entry.reply) return giveUp(lock, std::move(entry.reply));
  entry.connection->name = MACH_PORT_NULL;
  dropIfUnused(entry.connection);
}

kern_return_t allocate(mach_port_name_t* name) {
  const Lock lock(space().mutex);
  const auto port = std::make_shared<Port>();
  const mach_port_name_t added = space().names.add({.port = port});
  if (added == MACH_PORT_NULL) return KERN_NO_SPACE;
  port->name = added;
  *name = added;
  return KERN_SUCCESS;
}

kern_return_t deallocate(mach_port_name_t name) {
  Lock lock(space().mutex);
  Entry* entry = space().names.find(name);
  if (entry == nullptr) return KERN_INVALID_NAME;
  if (entry->reply) {
    release(lock, space().names.remove(name));
    return KERN_SUCCESS;
  }
  if (entry->sendRights == 0) return KERN_INVALID_RIGHT;
  --entry->sendRights;
  if (entry->sendRights == 0 && !entry->port) release(lock, space().names.remove(name));
  return KERN_SUCCESS;
}

kern_return_t destroy(mach_port_name_t name) {
  Lock lock(space().mutex);
  if (space().names.find(name) == nullptr) return KERN_INVALID_NAME;
  release(lock, space().names.remove(name));
  return KERN_SUCCESS;
}

kern_return_t type(mach_port_name_t name, mach_port_type_t* answer) {
  Lock lock(space().mutex);
  refresh(lock, name);
  const Entry* entry = space().names.find(name);
  if (entry == nullptr) return KERN_INVALID_NAME;
  *answer = typeOf(*entry);
  return KERN_SUCCESS;
}

kern_return_t references(mach_port_name_t name, mach_port_right_t right, mach_port_urefs_t* refs) {
  Lock lock(space().mutex);
  refresh(lock, name);
  const Entry* entry = space().names.find(name);
  if (entry == nullptr) return KERN_INVALID_NAME;
  if ((typeOf(*entry) & MACH_PORT_TYPE(right)) == 0) {
    *refs = 0;
  } else {
    *refs = right == MACH_PORT_RIGHT_RECEIVE || entry->reply ? 1 : entry->sendRights;
  }
  return KERN_SUCCESS;
}

}  // namespace

kern_return_t mach_port_allocate(task_t task, mach_port_right_t right, mach_port_name_t* name) {
  if (task != kTaskPort) return KERN_INVALID_TASK;
  if (right != MACH_PORT_RIGHT_RECEIVE) return KERN_INVALID_VALUE;
  if (name == nullptr) return KERN_INVALID_ARGUMENT;
  return guarded(KERN_RESOURCE_SHORTAGE, [&] { return allocate(name); });
}

kern_return_t mach_port_destroy(task_t task, mach_port_name_t name) {
  if (task != kTaskPort) return KERN_INVALID_TASK;
  if (isPermanent(name)) return KERN_INVALID_RIGHT;
  return guarded(KERN_RESOURCE_SHORTAGE, [&] { return destroy(name); });
}

kern_return_t mach_port_deallocate(task_t task, mach_port_name_t name) {
  if (task != kTaskPort) return KERN_INVALID_TASK;
  if (isPermanent(name)) return KERN_SUCCESS;
  return guarded(KERN_RESOURCE_SHORTAGE, [&] { return deallocate(name); });
}

kern_return_t mach_port_type(task_t task, mach_port_name_t name, mach_port_type_t* answer) {
  if (task != kTaskPort) return KERN_INVALID_TASK;
  if (answer == nullptr) return KERN_INVALID_ARGUMENT;
  if (isPermanent(name)) {
    *answer = MACH_PORT_TYPE_SEND;
    return KERN_SUCCESS;
  }
  return guarded(KERN_RESOURCE_SHORTAGE, [&] { return type(name, answer); });
}

kern_return_t mach_port_get_refs(task_t task, mach_port_name_t name, mach_port_right_t right,
                                 mach_port_urefs_t* refs) {
  if (task != kTaskPort) return KERN_INVALID_TASK;
  if (right > MACH_PORT_RIGHT_DEAD_NAME) return KERN_INVALID_VALUE;
  if (refs == nullptr) return KERN_INVALID_ARGUMENT;
  if (isPermanent(name)) {
    *refs = right == MACH_PORT_RIGHT_SEND ? 1 : 0;
    return KERN_SUCCESS;
  }
  return guarded(KERN_RESOURCE_SHORTAGE, [&] { return references(name, right, refs); });
}
