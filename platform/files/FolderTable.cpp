// Licence: MIT, see LICENSE.
#include "platform/files/FolderTable.h"

#include <CarbonCore/Files.h>

#include <algorithm>

namespace platform::files {
namespace {

using host::FileStatus;
using host::Links;

constexpr FolderID kFirstFolder = 16;  // those below are the volume's

bool hasIdentity(const std::string& path, const host::FileIdentity& identity) {
  const auto status = host::fileStatus(path, Links::kThemselves);
  return status && status->identity == identity;
}

}  // namespace

std::string joined(const std::string& folder, std::string_view name) {
  std::string path = folder;
  if (path.empty() || path.back() != '/') path += '/';
  return path.append(name);
}

std::optional<std::string> findAgain(const std::string& folder, const std::string& name,
                                     const host::FileIdentity& identity) {
  const std::string path = joined(folder, name);
  if (hasIdentity(path, identity)) return name;
  if (const auto names = host::folderNames(folder)) {
    for (const std::string& other : *names) {
      if (hasIdentity(joined(folder, other), identity)) return other;
    }
  }
  if (host::fileStatus(path, Links::kThemselves)) return name;
  return std::nullopt;
}

FolderTable& FolderTable::shared() {
  static auto* table = new FolderTable;
  return *table;
}

std::optional<std::string> FolderTable::pathOf(FolderID folder) {
  std::lock_guard lock(mutex);
  return locate(folder);
}

std::optional<FolderTable::Place> FolderTable::placeOf(FolderID folder) {
  if (folder == fsRtDirID) return Place{fsRtParID, {}};
  std::lock_guard lock(mutex);
  if (!locate(folder)) return std::nullopt;
  return folders.at(folder).place;
}

FolderID FolderTable::idOf(FolderID parent, const std::string& name,
                           const host::FileIdentity& identity) {
  std::lock_guard lock(mutex);
  if (auto known = byName.find({parent, name}); known != byName.end()) {
    const FolderID id = known->second;
    Folder& folder = folders.at(id);
    if (folder.identity == identity) return id;
    // Another folder stands under the name: the known one was replaced, unless it is still beside
    // it under another name.
    locate(id);
    if (folder.place.name == name) {
      setIdentity(id, identity);
      return id;
    }
  }
  const auto same = byIdentity.find({identity.device, identity.inode});
  if (same != byIdentity.end() && folders.at(same->second).place.parent == parent) {
    rename(same->second, name);
    return same->second;
  }
  const FolderID id = kFirstFolder + static_cast<FolderID>(folders.size());
  folders.insert_or_assign(id, Folder{{parent, name}, identity});
  byName.insert_or_assign({parent, name}, id);
  setIdentity(id, identity);
  return id;
}

std::optional<FolderID> FolderTable::idOfPath(const std::string& path) {
  FolderID folder = fsRtDirID;
  std::string reached = "/";
  std::string_view left = path;
  while (!left.empty()) {
    left.remove_prefix(std::min(left.find_first_not_of('/'), left.size()));
    const std::string name(left.substr(0, left.find('/')));
    if (name.empty()) break;
    left.remove_prefix(name.size());
    reached = joined(reached, name);
    const auto status = host::fileStatus(reached, Links::kThemselves);
    if (!status || status->kind != FileStatus::Kind::kFolder) return std::nullopt;
    folder = idOf(folder, name, status->identity);
  }
  return folder;
}

/// Follows what happened to the folders on the way.
std::optional<std::string> FolderTable::locate(FolderID folder) {
  if (folder == fsRtDirID) return "/";
  const auto found = folders.find(folder);
  if (found == folders.end()) return std::nullopt;
  const Folder& known = found->second;
  const auto parent = locate(known.place.parent);
  if (!parent) return std::nullopt;
  const auto name = findAgain(*parent, known.place.name, known.identity);
  if (!name) return std::nullopt;
  const std::string path = joined(*parent, *name);
  const auto status = host::fileStatus(path, Links::kThemselves);
  if (!status || status->kind != FileStatus::Kind::kFolder) return std::nullopt;
  if (*name != known.place.name) rename(folder, *name);
  if (!(status->identity == known.identity)) setIdentity(folder, status->identity);
  return path;
}

// Where memory runs out between two steps of these, a folder that is known stays known.

void FolderTable::rename(FolderID folder, const std::string& name) {
  Place& place = folders.at(folder).place;
  if (place.name == name) return;
  byName.insert_or_assign({place.parent, name}, folder);
  const auto former = byName.find({place.parent, place.name});
  if (former != byName.end() && former->second == folder) byName.erase(former);
  place.name = name;
}

void FolderTable::setIdentity(FolderID folder, const host::FileIdentity& identity) {
  byIdentity.insert_or_assign({identity.device, identity.inode}, folder);
  folders.at(folder).identity = identity;
}

}  // namespace platform::files
