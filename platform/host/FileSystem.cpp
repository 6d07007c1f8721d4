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

constexpr std::uint64_t kStatusBlock = 512;  // the unit of st_blocks, whatever the file system's

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
  struct stat status {};
  const int flags = links == Links::kFollowed ? 0 : AT_SYMLINK_NOFOLLOW;
  if (::fstatat(AT_FDCWD, path.c_str(), &status, flags) != 0) return lastError();
  return FileStatus{kindOf(status.st_mode),
                    {status.st_dev, status.st_ino},
                    static_cast<std::uint64_t>(status.st_size),
                    static_cast<std::uint64_t>(status.st_blocks) * kStatusBlock,
                    status.st_uid,
                    status.st_gid,
                    status.st_mode};
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
