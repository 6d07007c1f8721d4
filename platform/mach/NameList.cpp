// Licence: MIT, see LICENSE.
#include "platform/mach/NameList.h"

#include <servers/bootstrap.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>

#include "platform/host/Poll.h"
#include "platform/host/SeqPacket.h"
#include "platform/mach/NameSpace.h"

namespace platform::mach {

namespace {

/// False if a name was refused.
bool listInto(std::map<std::string, NamedPort>& found, const host::NameDirectory& directory,
              const char* folder) {
  const host::Result<std::vector<std::string>> names = directory.names(folder);
  if (!names) return names.error() != host::Error::kPermission;
  bool complete = true;
  const bool systems = directory.audience() == host::NameDirectory::Audience::kEveryone;
  for (const std::string& name : *names) {
    const host::Result<host::NamedConnection> owner = directory.connect(folder, name);
    if (owner) {
      const host::Result<host::Peer> peer = host::peerOf(owner->connection);
      found.try_emplace(name, NamedPort{name, peer ? peer->process : 0, systems});
    } else if (owner.error() == host::Error::kNotFound) {
      directory.reap(folder, name);
    } else if (owner.error() == host::Error::kPermission) {
      complete = false;
    }
  }
  return complete;
}

/// Where a name may appear: a search list and descriptors that tell of changes there.
struct Lookout {
  SearchList list;
  std::vector<host::Descriptor> changes;

  // The watches are laid before anybody looks, so that nothing happens unseen in between.
  static host::Result<Lookout> over(const char* folder) {
    const host::Result<Directory> own = ownDirectory();
    if (!own) return own.error();
    Lookout lookout{searchedDirectories(), {}};
    for (const Directory& directory : lookout.list.directories) {
      host::Result<host::Descriptor> watch = directory->watch(folder);
      if (watch) {
        lookout.changes.push_back(std::move(*watch));
      } else if (directory == *own) {
        return watch.error();
      }
    }
    return lookout;
  }

  // True when something may have changed, false when the deadline has passed.
  bool wait(host::Deadline deadline, const host::Descriptor* connection = nullptr) const {
    std::vector<host::Interest> interests;
    for (const host::Descriptor& change : changes) interests.push_back({&change});
    if (connection != nullptr) interests.push_back({connection});
    const bool ready = host::waitForAny(interests, deadline);
    for (const host::Descriptor& change : changes) host::discardInput(change);
    return ready || deadline.remaining() > 0;
  }

  // The first directory in which somebody alive holds the name.
  std::optional<host::NamedConnection> find(const char* folder, const std::string& name) const {
    for (const Directory& directory : list.directories) {
      host::Result<host::NamedConnection> found = directory->connect(folder, name);
      if (found) return std::move(*found);
    }
    return std::nullopt;
  }

  bool holds(const char* folder, const std::string& name,
             const host::SocketIdentity& socket) const {
    return std::any_of(
        list.directories.begin(), list.directories.end(), [&](const auto& directory) {
          const host::Result<host::SocketIdentity> holder = directory->identify(folder, name);
          return holder && *holder == socket;
        });
  }
};

kern_return_t codeOf(host::Error error) {
  return error == host::Error::kPermission ? BOOTSTRAP_NOT_PRIVILEGED : BOOTSTRAP_NO_MEMORY;
}

}  // namespace

kern_return_t liveNames(const char* directory, std::vector<NamedPort>& names) {
  std::map<std::string, NamedPort> found;
  const SearchList list = searchedDirectories();
  bool complete = !list.refusal;
  for (const Directory& searched : list.directories) {
    complete = listInto(found, *searched, directory) && complete;
  }
  names.clear();
  for (auto& [name, port] : found) names.push_back(std::move(port));
  return complete ? KERN_SUCCESS : BOOTSTRAP_NOT_PRIVILEGED;
}

kern_return_t waitForName(const char* directory, const char* name, host::Deadline deadline) {
  if (!isPortName(name)) return BOOTSTRAP_BAD_COUNT;
  const host::Result<Lookout> lookout = Lookout::over(directory);
  if (!lookout) return codeOf(lookout.error());
  while (!lookout->find(directory, name)) {
    if (!lookout->wait(deadline)) return MACH_RCV_TIMED_OUT;
  }
  return KERN_SUCCESS;
}

kern_return_t waitForEnd(const char* directory, const char* name, host::Deadline deadline) {
  if (!isPortName(name)) return BOOTSTRAP_BAD_COUNT;
  const host::Result<Lookout> lookout = Lookout::over(directory);
  if (!lookout) return codeOf(lookout.error());
  const std::optional<host::NamedConnection> owner = lookout->find(directory, name);
  if (!owner) return KERN_SUCCESS;
  while (!host::hasHungUp(owner->connection) && lookout->holds(directory, name, owner->identity)) {
    if (!lookout->wait(deadline, &owner->connection)) return MACH_RCV_TIMED_OUT;
  }
  return KERN_SUCCESS;
}

}  // namespace platform::mach
