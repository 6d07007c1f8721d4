// Licence: MIT, see LICENSE.
// Directory IDs. The host has none that a folder could be found by, so that this process numbers
// the folders that it meets, as a tree: a folder has a name in its parent. A folder that was
// renamed there is found again by its identity, and one that was replaced by its name.
#ifndef PLATFORM_FILES_FOLDERTABLE_H
#define PLATFORM_FILES_FOLDERTABLE_H

#include <CarbonCore/MacTypes.h>

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "platform/host/FileSystem.h"

namespace platform::files {

using FolderID = SInt32;

/// Finds an item of a folder that had a certain name and identity: the one that has that identity
/// now, else the one that has the name. Gives the name that it has now.
std::optional<std::string> findAgain(const std::string& folder, const std::string& name,
                                     const host::FileIdentity& identity);

/// A path with a name behind it.
std::string joined(const std::string& folder, std::string_view name);

class FolderTable final {
 public:
  struct Place {
    FolderID parent = 0;
    std::string name;  // on the host
  };

  /// The process's own. Never destroyed, since IDs may be used until the very end.
  static FolderTable& shared();

  /// Where a folder is now; nothing if it is gone or the ID is nobody's.
  std::optional<std::string> pathOf(FolderID folder);
  /// Its parent and name; the root's are fsRtParID and empty.
  std::optional<Place> placeOf(FolderID folder);

  /// The ID of an existing folder, the one that it had before if it was met already.
  FolderID idOf(FolderID parent, const std::string& name, const host::FileIdentity& identity);
  /// The ID of the folder at a canonical path; nothing if there is none.
  std::optional<FolderID> idOfPath(const std::string& path);

 private:
  struct Folder {
    Place place;
    host::FileIdentity identity;
  };

  // With the lock held.
  std::optional<std::string> locate(FolderID folder);
  void rename(FolderID folder, const std::string& name);
  void setIdentity(FolderID folder, const host::FileIdentity& identity);

  std::mutex mutex;
  std::unordered_map<FolderID, Folder> folders;
  std::map<std::pair<FolderID, std::string>, FolderID> byName;
  std::map<std::pair<std::uint64_t, std::uint64_t>, FolderID> byIdentity;
};

}  // namespace platform::files

#endif
