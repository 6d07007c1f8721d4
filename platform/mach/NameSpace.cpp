// Licence: MIT, see LICENSE.
#include "platform/mach/NameSpace.h"

#include <servers/bootstrap.h>

#include <cstring>
#include <mutex>

#include "platform/host/Roots.h"

namespace platform::mach {

namespace {

using host::NameDirectory;

/// An open directory, kept as long as its path stays what it was and nobody removes it.
class KeptDirectory final {
 public:
  host::Result<Directory> at(const std::string& path, NameDirectory::Make make) {
    const std::lock_guard lock(guard);
    if (kept && path == keptPath && !kept->isRemoved()) return kept;
    kept.reset();
    const bool systems = path == host::systemNameSpacePath();
    host::Result<Directory> opened = NameDirectory::open(
        path, systems ? NameDirectory::Audience::kEveryone : NameDirectory::Audience::kOwner, make);
    if (!opened) return opened.error();
    keptPath = path;
    kept = *opened;
    return kept;
  }

 private:
  std::mutex guard;
  std::string keptPath;
  Directory kept;
};

// Never destroyed, because threads may outlive main.
KeptDirectory& own() {
  static KeptDirectory& only = *new KeptDirectory;
  return only;
}

KeptDirectory& systems() {
  static KeptDirectory& only = *new KeptDirectory;
  return only;
}

void append(SearchList& list, const host::Result<Directory>& directory) {
  if (directory) {
    list.directories.push_back(*directory);
  } else if (directory.error() != host::Error::kNotFound && !list.refusal) {
    list.refusal = directory.error();
  }
}

}  // namespace

bool isPortName(const char* name) {
  const std::size_t length = strnlen(name, BOOTSTRAP_MAX_NAME_LEN);
  return length > 0 && length < BOOTSTRAP_MAX_NAME_LEN;
}

host::Result<Directory> ownDirectory() {
  return own().at(host::userNameSpacePath(), NameDirectory::Make::kYes);
}

host::Result<Directory> searchedFirst() {
  return own().at(host::userNameSpacePath(), NameDirectory::Make::kNo);
}

host::Result<Directory> searchedThen() {
  const std::string path = host::systemNameSpacePath();
  if (path == host::userNameSpacePath()) return host::Error::kNotFound;
  return systems().at(path, NameDirectory::Make::kNo);
}

SearchList searchedDirectories() {
  SearchList list;
  append(list, searchedFirst());
  append(list, searchedThen());
  return list;
}

}  // namespace platform::mach
