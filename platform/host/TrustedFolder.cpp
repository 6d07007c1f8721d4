// Licence: MIT, see LICENSE.
//
// A path is walked one directory at a time, because what the kernel follows by itself has been
// followed before anybody can ask whose it was. A link's owner stands for where it leads.
#include "platform/host/TrustedFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <string_view>

#include "platform/host/Log.h"
#include "platform/host/Retry.h"

namespace platform::host {

namespace {

constexpr int kLookFlags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
constexpr int kFollowFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
constexpr int kOpenFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr mode_t kParentPermissions = 0755;
// An emulator that puts a root of its own before the host's knows nothing of this way.
constexpr char kRoot[] = "/proc/self/root";

bool isOursOrRoots(const struct stat& state) {
  return state.st_uid == geteuid() || state.st_uid == 0;
}

std::string octal(mode_t mode) {
  char digits[8];
  std::snprintf(digits, sizeof digits, "%04o", static_cast<unsigned>(mode & 07777));
  return digits;
}

/// Why a directory is not trusted; nothing if it is.
std::optional<std::string> objectionTo(const struct stat& state, const FolderRule& rule) {
  if (S_ISLNK(state.st_mode)) return "it is a symbolic link";
  if (!S_ISDIR(state.st_mode)) return "it is not a directory";
  const bool roots = rule.mayBeRoots && state.st_uid == 0;
  if (state.st_uid != geteuid() && !roots) {
    return "it belongs to user " + std::to_string(state.st_uid);
  }
  if ((state.st_mode & 022) != 0) return "others may write to it, mode " + octal(state.st_mode);
  return std::nullopt;
}

/// One step of the walk to a directory, whose whole path is for the complaint.
class Step final {
 public:
  Step(const Descriptor& folder, std::string stepName, std::string stepPath)
      : base(folder), name(std::move(stepName)), path(std::move(stepPath)) {}

  /// Opens one that lies above a trusted directory.
  Result<Descriptor> pass(const std::string& whole, Make make) const {
    Descriptor found = open(kLookFlags, make, kParentPermissions);
    if (!found) return failure(whole, path + " cannot be opened");
    struct stat state {};
    if (fstat(found.number(), &state) == -1) return lastError();
    if (S_ISDIR(state.st_mode)) return found;
    if (!S_ISLNK(state.st_mode)) return refuse(whole, path + " is not a directory");
    if (!isOursOrRoots(state)) {
      return refuse(whole, path + " is a symbolic link of user " + std::to_string(state.st_uid));
    }
    Descriptor target = open(kFollowFlags, Make::kNo, 0);
    if (!target) return refuse(whole, path + " does not lead to a directory");
    return target;
  }

  /// Opens the trusted directory itself.
  Result<Descriptor> enter(const FolderRule& rule, Make make) const {
    Descriptor found = open(kOpenFlags, make, rule.permissions);
    const int error = errno;
    struct stat state {};
    const int looked = found ? fstat(found.number(), &state)
                             : fstatat(base.number(), name.c_str(), &state, AT_SYMLINK_NOFOLLOW);
    const auto objection = looked == 0 ? objectionTo(state, rule) : std::nullopt;
    if (objection) return refuse(path, *objection);
    if (found) return found;
    errno = error;
    return failure(path, "it cannot be opened");
  }

 private:
  Descriptor open(int flags, Make make, mode_t permissions) const {
    const auto attempt = [&] {
      return retry([&] { return openat(base.number(), name.c_str(), flags); });
    };
    Descriptor found(attempt());
    if (found || errno != ENOENT || make == Make::kNo) return found;
    if (mkdirat(base.number(), name.c_str(), permissions) == 0) {
      fchmodat(base.number(), name.c_str(), permissions, 0);  // whatever the umask left of it
    } else if (errno != EEXIST) {
      return {};
    }
    return Descriptor(attempt());
  }

  static Error refuse(const std::string& whole, const std::string& reason) {
    complainOfRefusal(whole, reason);
    return Error::kPermission;
  }

  /// What the last call failed with.
  static Error failure(const std::string& whole, const std::string& what) {
    const Error error = lastError();
    return error == Error::kPermission ? refuse(whole, what + ", permission denied") : error;
  }

  const Descriptor& base;
  std::string name;
  std::string path;
};

Descriptor openDirectory(const char* path) {
  return Descriptor(retry([&] { return ::open(path, kFollowFlags); }));
}

/// Splits the first step off a path.
std::string_view takeStep(std::string_view& rest) {
  const std::size_t end = std::min(rest.find('/'), rest.size());
  const std::string_view step = rest.substr(0, end);
  rest.remove_prefix(end);
  rest.remove_prefix(std::min(rest.find_first_not_of('/'), rest.size()));
  return step;
}

}  // namespace

Result<Descriptor> openTrusted(const std::string& path, const FolderRule& rule, Make make) {
  std::string_view rest = path;
  const bool absolute = rest.starts_with('/');
  rest.remove_prefix(std::min(rest.find_first_not_of('/'), rest.size()));
  Descriptor folder = absolute ? openDirectory(kRoot) : openDirectory(".");
  if (!folder && absolute) folder = openDirectory("/");
  if (!folder) return lastError();
  for (;;) {
    const std::string_view name = takeStep(rest);
    const Step step(folder, std::string(name),
                    path.substr(0, static_cast<std::size_t>(name.end() - path.data())));
    if (rest.empty()) return step.enter(rule, make);
    Result<Descriptor> next = step.pass(path, make);
    if (!next) return next;
    folder = std::move(*next);
  }
}

Result<Descriptor> openTrustedIn(const Descriptor& folder, const std::string& path,
                                 const std::string& name, const FolderRule& rule, Make make) {
  return Step(folder, name, path + "/" + name).enter(rule, make);
}

void complainOfRefusal(const std::string& path, const std::string& reason) {
  complainOnce("refusing the name space " + path + ": " + reason);
}

}  // namespace platform::host
