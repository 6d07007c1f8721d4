// Licence: MIT, see LICENSE.
#include "platform/host/FileSystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace platform::host {
namespace {

constexpr std::uint64_t kStatusBlock = 512;  // the unit of stx_blocks, whatever the file system's

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

FileStatus::Kind kindOf(mode_t mode) {
  if (S_ISREG(mode)) return FileStatus::Kind::kFile;
  if (S_ISDIR(mode)) return FileStatus::Kind::kFolder;
  if (S_ISLNK(mode)) return FileStatus::Kind::kLink;
  return FileStatus::Kind::kOther;
}

}  // namespace

Result<FileStatus> fileStatus(const std::string& path, Links links) {
  const int flags = links == Links::kFollowed ? 0 : AT_SYMLINK_NOFOLLOW;
  struct statx status {};
  if (::statx(AT_FDCWD, path.c_str(), flags, STATX_BASIC_STATS | STATX_BTIME, &status) != 0) {
    return lastError();
  }
  const std::uint64_t device =
      std::uint64_t{status.stx_dev_major} << 32 | std::uint64_t{status.stx_dev_minor};
  const auto seconds = static_cast<std::uint64_t>(status.stx_btime.tv_sec);
  const bool hasBirth = (status.stx_mask & STATX_BTIME) != 0;
  const std::uint64_t made = hasBirth ? seconds * 1000000000U + status.stx_btime.tv_nsec : 0;
  return FileStatus{kindOf(status.stx_mode), {device, status.stx_ino, made},
                    status.stx_size,         status.stx_blocks * kStatusBlock,
                    status.stx_uid,          status.stx_gid,
                    status.stx_mode};
}

Result<std::string> canonicalPath(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr),
                                                             std::free);
  if (!resolved) return lastError();
  return std::string(resolved.get());
}

Result<std::vector<std::string>> folderNames(const std::string& path) {
  const std::unique_ptr<DIR, CloseFolder> folder(::opendir(path.c_str()));
  if (!folder) return lastError();
  std::vector<std::string> names;
  for (;;) {
    errno = 0;
    const dirent* entry = ::readdir(folder.get());
    if (entry == nullptr) break;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  if (errno != 0) return lastError();
  return names;
}

bool mayWrite(const std::string& path) {
  return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

Status makeFolder(const std::string& path) {
  if (::mkdir(path.c_str(), 0777) != 0) return lastError();
  return success();
}

Status makeFolders(const std::string& path) {
  Status made = makeFolder(path);
  if (made) return made;
  if (made.error() == Error::kExists) {
    auto status = fileStatus(path, Links::kFollowed);
    const bool isFolder = status && status->kind == FileStatus::Kind::kFolder;
    return isFolder ? success() : made;
  }
  const auto slash = path.find_last_of('/');
  if (made.error() != Error::kNotFound || slash == std::string::npos || slash == 0) return made;
  if (Status above = makeFolders(path.substr(0, slash)); !above) return above;
  made = makeFolder(path);
  return !made && made.error() == Error::kExists ? makeFolders(path) : made;
}

}  // namespace platform::host
