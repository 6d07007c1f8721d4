// Licence: MIT, see LICENSE.
//
// Who wins a name. Making a hard link fails if the name exists, so one of several claimants wins. A
// loser connects to the name: if somebody accepts, the name is in use. If the connection is
// refused, the owner is dead and the name may be taken over, which is two steps (remove, link) and
// therefore done under the directory's lock, after a second look. An owner that goes removes its
// names while its socket still listens, so that it never removes a successor's.
#include "platform/host/NameDirectory.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "platform/host/NameEscape.h"
#include "platform/host/Poll.h"
#include "platform/host/Retry.h"

namespace platform::host {

namespace {

constexpr char kSockets[] = "sockets";
constexpr char kLockFile[] = "lock";
constexpr int kClaimRounds = 64;
constexpr Nanoseconds kPause = 1'000'000;  // between two looks at a lock
constexpr Nanoseconds kLockPatience = 2'000'000'000;
constexpr Nanoseconds kConnectPatience = 1'000'000'000;

SocketIdentity identityOf(const struct stat& state) {
  return {static_cast<std::uint64_t>(state.st_dev), static_cast<std::uint64_t>(state.st_ino)};
}

// The system's directory is root's for all but root itself.
FolderRule ruleFor(NameDirectory::Audience audience) {
  const bool systems = audience == NameDirectory::Audience::kEveryone;
  return {.mayBeRoots = systems, .permissions = systems ? 0755u : 0700u};
}

// Sockets are reached through the directory's descriptor, which no path length limits and no
// renaming fools. Where /proc is missing the plain path has to do.
bool hasDescriptorPaths() {
  static const bool present = access("/proc/self/fd", X_OK) == 0;
  return present;
}

std::string descriptorPath(const Descriptor& descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor.number());
}

bool makeAddress(const std::string& path, sockaddr_un& address) {
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return false;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return true;
}

Descriptor makeSocket() {
  return Descriptor(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

void pause() { waitForAny({}, Deadline::after(kPause)); }

// A listener whose queue of connections is full is alive; it gets a moment to take some.
Result<Descriptor> connectTo(const std::string& path) {
  sockaddr_un address{};
  if (!makeAddress(path, address)) return Error::kTooLarge;
  Descriptor connection = makeSocket();
  if (!connection) return lastError();
  const Deadline patience = Deadline::after(kConnectPatience);
  while (retry([&] {
           return ::connect(connection.number(), reinterpret_cast<const sockaddr*>(&address),
                            sizeof address);
         }) == -1) {
    if (errno != EAGAIN) return lastError();
    if (patience.remaining() == 0) return Error::kTimedOut;
    pause();
  }
  return connection;
}

Result<Descriptor> lockDirectory(const Descriptor& directory) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC;
  Descriptor lock(retry([&] { return openat(directory.number(), kLockFile, kFlags, 0600); }));
  if (!lock) return lastError();
  const Deadline patience = Deadline::after(kLockPatience);
  while (retry([&] { return flock(lock.number(), LOCK_EX | LOCK_NB); }) == -1) {
    if (errno != EWOULDBLOCK) return lastError();
    if (patience.remaining() == 0) return Error::kTimedOut;
    pause();
  }
  return lock;
}

class Listing final {
 public:
  explicit Listing(Descriptor directory) : stream(fdopendir(directory.number())) {
    if (stream != nullptr) static_cast<void>(directory.release());
  }
  ~Listing() {
    if (stream != nullptr) closedir(stream);
  }
  Listing(const Listing&) = delete;
  Listing& operator=(const Listing&) = delete;

  const char* next() {
    const dirent* entry = stream == nullptr ? nullptr : readdir(stream);
    return entry == nullptr ? nullptr : entry->d_name;
  }

 private:
  DIR* stream;
};

/// Whose a name is, unless it cannot be trusted.
std::optional<std::string> objectionTo(const struct stat& state) {
  if (S_ISLNK(state.st_mode)) return "it is a symbolic link";
  if (!S_ISSOCK(state.st_mode)) return "it is not a socket";
  if (state.st_uid == geteuid() || state.st_uid == 0) return std::nullopt;
  return "it belongs to user " + std::to_string(state.st_uid);
}

}  // namespace

NameDirectory::NameDirectory(Descriptor opened, std::string openedPath, Audience whoMayConnect)
    : directory(std::move(opened)), path(std::move(openedPath)), whoConnects(whoMayConnect) {}

Result<std::shared_ptr<NameDirectory>> NameDirectory::open(const std::string& path,
                                                           Audience audience, Make make) {
  Result<Descriptor> opened = openTrusted(path, ruleFor(audience), make);
  if (!opened) return opened.error();
  return std::shared_ptr<NameDirectory>(new NameDirectory(std::move(*opened), path, audience));
}

bool NameDirectory::isRemoved() const {
  struct stat state {};
  return fstat(directory.number(), &state) == -1 || state.st_nlink == 0;
}

Result<Descriptor> NameDirectory::subdirectory(const std::string& folder, Make make) const {
  return openTrustedIn(directory, path, folder, ruleFor(whoConnects), make);
}

std::string NameDirectory::addressIn(const Descriptor& folder, const std::string& folderName,
                                     const std::string& file) const {
  const std::string base = hasDescriptorPaths() ? descriptorPath(folder) : path + "/" + folderName;
  return base + "/" + file;
}

Result<BoundSocket> NameDirectory::bind() const {
  static std::atomic<unsigned> lastNumber{0};
  const Result<Descriptor> sockets = subdirectory(kSockets, Make::kYes);
  if (!sockets) return sockets.error();
  if (lastNumber.load() == 0) reapSockets(*sockets);
  BoundSocket bound;
  bound.listener = makeSocket();
  if (!bound.listener) return lastError();
  sockaddr_un address{};
  int outcome = -1;
  // A number may be taken by the file of a dead process that had our ID.
  do {
    bound.file = std::to_string(getpid()) + "." + std::to_string(++lastNumber);
    if (!makeAddress(addressIn(*sockets, kSockets, bound.file), address)) return Error::kTooLarge;
    outcome = ::bind(bound.listener.number(), reinterpret_cast<const sockaddr*>(&address),
                     sizeof address);
  } while (outcome == -1 && errno == EADDRINUSE);
  if (outcome == -1) return lastError();
  if (const Status opened = startListening(bound, *sockets); !opened) {
    unlinkat(sockets->number(), bound.file.c_str(), 0);
    return opened.error();
  }
  return bound;
}

// Lets those connect who may, and only then listens.
Status NameDirectory::startListening(BoundSocket& bound, const Descriptor& sockets) const {
  const mode_t mode = whoConnects == Audience::kEveryone ? 0666 : 0600;
  struct stat state {};
  if (fchmodat(sockets.number(), bound.file.c_str(), mode, 0) == -1 ||
      fstatat(sockets.number(), bound.file.c_str(), &state, AT_SYMLINK_NOFOLLOW) == -1 ||
      listen(bound.listener.number(), SOMAXCONN) == -1) {
    return lastError();
  }
  bound.identity = identityOf(state);
  return success();
}

void NameDirectory::unbind(const BoundSocket& socket) const {
  const std::string file = std::string(kSockets) + "/" + socket.file;
  unlinkat(directory.number(), file.c_str(), 0);
}

Status NameDirectory::claim(const BoundSocket& socket, const std::string& folder,
                            const std::string& name) const {
  const Result<Descriptor> names = subdirectory(folder, Make::kYes);
  if (!names) return names.error();
  const std::string file = fileNameOf(name);
  const std::string source = std::string(kSockets) + "/" + socket.file;
  for (int round = 0; round < kClaimRounds; ++round) {
    if (linkat(directory.number(), source.c_str(), names->number(), file.c_str(), 0) == 0) {
      return success();
    }
    if (errno != EEXIST) return lastError();
    const Result<NamedConnection> owner = connectFile(*names, folder, file);
    if (owner || owner.error() == Error::kTimedOut) return Error::kExists;
    if (owner.error() != Error::kNotFound) return owner.error();
    const Status taken = takeOver(&socket, *names, folder, file);
    if (taken || taken.error() != Error::kExists) return taken;
  }
  return Error::kExists;
}

// Removes a dead owner's name and gives it to the heir, if there is one.
Status NameDirectory::takeOver(const BoundSocket* heir, const Descriptor& folder,
                               const std::string& folderName, const std::string& file) const {
  const Result<Descriptor> lock = lockDirectory(directory);
  if (!lock) return lock.error();
  const Result<NamedConnection> owner = connectFile(folder, folderName, file);
  if (owner) return Error::kExists;
  if (owner.error() != Error::kNotFound) return owner.error();
  if (unlinkat(folder.number(), file.c_str(), 0) == -1 && errno != ENOENT) return lastError();
  if (heir == nullptr) return success();
  const std::string source = std::string(kSockets) + "/" + heir->file;
  if (linkat(directory.number(), source.c_str(), folder.number(), file.c_str(), 0) == -1) {
    return lastError();
  }
  return success();
}

void NameDirectory::release(const SocketIdentity& socket, const std::string& folder,
                            const std::string& name) const {
  const Result<SocketIdentity> holder = identify(folder, name);
  if (!holder || *holder != socket) return;
  unlinkat(directory.number(), (folder + "/" + fileNameOf(name)).c_str(), 0);
}

Result<SocketIdentity> NameDirectory::identify(const std::string& folder,
                                               const std::string& name) const {
  struct stat state {};
  const std::string file = folder + "/" + fileNameOf(name);
  if (fstatat(directory.number(), file.c_str(), &state, AT_SYMLINK_NOFOLLOW) == 0) {
    return identityOf(state);
  }
  const Error error = lastError();
  const Result<Descriptor> names = subdirectory(folder, Make::kNo);
  return names ? error : names.error();
}

Result<NamedConnection> NameDirectory::connect(const std::string& folder,
                                               const std::string& name) const {
  const Result<Descriptor> names = subdirectory(folder, Make::kNo);
  if (!names) return names.error();
  return connectFile(*names, folder, fileNameOf(name));
}

// The file is opened first and the connection made through that descriptor, so that what was
// checked is what is connected to.
Result<NamedConnection> NameDirectory::connectFile(const Descriptor& folder,
                                                   const std::string& folderName,
                                                   const std::string& file) const {
  constexpr int kFlags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
  const Descriptor opened(retry([&] { return openat(folder.number(), file.c_str(), kFlags); }));
  if (!opened) return lastError();
  struct stat state {};
  if (fstat(opened.number(), &state) == -1) return lastError();
  if (const std::optional<std::string> objection = objectionTo(state)) {
    complainOfRefusal(path + "/" + folderName + "/" + file, *objection);
    return Error::kPermission;
  }
  Result<Descriptor> connection = connectTo(
      hasDescriptorPaths() ? descriptorPath(opened) : addressIn(folder, folderName, file));
  if (!connection && connection.error() == Error::kPermission) {
    complainOfRefusal(path + "/" + folderName + "/" + file, "its owner lets nobody connect to it");
  }
  if (!connection) return connection.error();
  return NamedConnection{std::move(*connection), identityOf(state)};
}

Result<std::vector<std::string>> NameDirectory::names(const std::string& folder) const {
  Result<Descriptor> opened = subdirectory(folder, Make::kNo);
  if (!opened) return opened.error();
  std::vector<std::string> found;
  Listing listing(std::move(*opened));
  while (const char* file = listing.next()) {
    if (std::optional<std::string> name = nameOfFile(file)) found.push_back(std::move(*name));
  }
  return found;
}

void NameDirectory::reap(const std::string& folder, const std::string& name) const {
  const Result<Descriptor> names = subdirectory(folder, Make::kNo);
  if (names) static_cast<void>(takeOver(nullptr, *names, folder, fileNameOf(name)));
}

// The files of processes that were killed. A process of ours that lives may be between binding and
// listening, so only those of dead ones are tried.
void NameDirectory::reapSockets(const Descriptor& sockets) const {
  Result<Descriptor> listed = subdirectory(kSockets, Make::kNo);
  if (!listed) return;
  Listing listing(std::move(*listed));
  while (const char* file = listing.next()) {
    const int process = std::atoi(file);
    if (process <= 0 || kill(process, 0) == 0 || errno != ESRCH) continue;
    const Result<NamedConnection> owner = connectFile(sockets, kSockets, file);
    if (!owner && owner.error() == Error::kNotFound) unlinkat(sockets.number(), file, 0);
  }
}

Result<Descriptor> NameDirectory::watch(const std::string& folder) const {
  const Result<Descriptor> names = subdirectory(folder, Make::kYes);
  if (!names) return names.error();
  Descriptor watcher(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  if (!watcher) return lastError();
  constexpr std::uint32_t kChanges = IN_CREATE | IN_DELETE | IN_MOVED_TO | IN_MOVED_FROM;
  const std::string watched = hasDescriptorPaths() ? descriptorPath(*names) : path + "/" + folder;
  if (inotify_add_watch(watcher.number(), watched.c_str(), kChanges) == -1) return lastError();
  return watcher;
}

}  // namespace platform::host
