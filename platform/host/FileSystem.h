// Licence: MIT, see LICENSE.
// What is where: items of the file system, told by their paths.
#ifndef PLATFORM_HOST_FILESYSTEM_H
#define PLATFORM_HOST_FILESYSTEM_H

#include <cstdint>
#include <string>
#include <vector>

#include "platform/host/Result.h"

namespace platform::host {

/// Which item it is, whatever its path. The numbers of one that is gone are given to others at
/// once; the moment of its making, where the file system keeps that, tells it from them.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t made = 0;  // nanoseconds, 0 if nobody knows
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

struct FileStatus {
  enum class Kind { kFile, kFolder, kLink, kOther };
  Kind kind = Kind::kOther;
  FileIdentity identity;
  std::uint64_t size = 0;
  std::uint64_t sizeOnDisk = 0;
  std::uint32_t user = 0;
  std::uint32_t group = 0;
  std::uint32_t mode = 0;  // the kind's bits included
};

enum class Links { kFollowed, kThemselves };
Result<FileStatus> fileStatus(const std::string& path, Links links);

/// The path from the root without a link, a full stop or a doubled slash in it.
Result<std::string> canonicalPath(const std::string& path);

/// The names in a folder but "." and "..", in no order.
Result<std::vector<std::string>> folderNames(const std::string& path);

/// Whether this process may write to an existing item.
bool mayWrite(const std::string& path);

/// Makes a folder. kExists if there is something of that name.
Status makeFolder(const std::string& path);
/// Makes a folder and those above it that are missing; one that is there already is fine.
Status makeFolders(const std::string& path);

}  // namespace platform::host

#endif
