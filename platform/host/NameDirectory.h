// Licence: MIT, see LICENSE.
// A name space on disk: a directory with sub-directories of listening sockets. A port binds one
// socket file, "sockets/<process>.<number>", and every name of it is a hard link to that file, so
// that making a name is one step that one contender wins, and the file's identity tells one port
// from another.
//
// The kernel is the name server: a name whose owner is gone, however it ended, refuses connections,
// and whoever finds it so may take it over. Nothing here follows a link or trusts a directory of
// somebody else. Any thread may use a directory.
#ifndef PLATFORM_HOST_NAMEDIRECTORY_H
#define PLATFORM_HOST_NAMEDIRECTORY_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/host/Clock.h"
#include "platform/host/Descriptor.h"
#include "platform/host/Result.h"
#include "platform/host/TrustedFolder.h"

namespace platform::host {

/// Which socket file it is. Two live ones never share an identity; a connection that has not hung
/// up keeps its file's identity from being used again.
struct SocketIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  friend bool operator==(const SocketIdentity&, const SocketIdentity&) = default;
};

struct BoundSocket {
  Descriptor listener;
  SocketIdentity identity;
  std::string file;  // in "sockets"
};

struct NamedConnection {
  Descriptor connection;
  SocketIdentity identity;
};

class NameDirectory final {
 public:
  enum class Audience { kOwner, kEveryone };  // who may connect
  using Make = host::Make;

  /// Opens the directory of a name space, making it and what is missing above it if told to.
  /// kPermission, with a line that says why, if it is not to be trusted.
  static Result<std::shared_ptr<NameDirectory>> open(const std::string& path, Audience audience,
                                                     Make make);

  Audience audience() const { return whoConnects; }
  /// Whether somebody has removed the directory since it was opened.
  bool isRemoved() const;

  /// Makes a listening socket with a file of its own and no name yet.
  Result<BoundSocket> bind() const;
  /// Removes a socket's file, not its names.
  void unbind(const BoundSocket& socket) const;

  /// Gives a socket a name. kExists while another live socket has it; a dead one's is taken over.
  Status claim(const BoundSocket& socket, const std::string& folder, const std::string& name) const;
  /// Removes a name if it still is the name of that socket, which must not have been closed yet.
  void release(const SocketIdentity& socket, const std::string& folder,
               const std::string& name) const;

  /// Which socket file has a name, dead or alive. kPermission for one that is missing from a folder
  /// that is not to be trusted.
  Result<SocketIdentity> identify(const std::string& folder, const std::string& name) const;
  /// Connects to the owner of a name. kNotFound if there is none alive, kPermission, with a line
  /// that says why, if the file is not a socket of ours or root's.
  Result<NamedConnection> connect(const std::string& folder, const std::string& name) const;

  /// Every name in a folder, dead ones included. Fails as subdirectory().
  Result<std::vector<std::string>> names(const std::string& folder) const;
  /// Removes a name whose owner is dead.
  void reap(const std::string& folder, const std::string& name) const;

  /// Opens a folder, for files of another kind beside the names. kPermission as open().
  Result<Descriptor> subdirectory(const std::string& folder, Make make) const;

  /// A descriptor that becomes readable when names of a folder come or go.
  Result<Descriptor> watch(const std::string& folder) const;

 private:
  NameDirectory(Descriptor opened, std::string openedPath, Audience whoMayConnect);

  Status startListening(BoundSocket& bound, const Descriptor& sockets) const;
  std::string addressIn(const Descriptor& folder, const std::string& folderName,
                        const std::string& file) const;
  Result<NamedConnection> connectFile(const Descriptor& folder, const std::string& folderName,
                                      const std::string& file) const;
  Status takeOver(const BoundSocket* heir, const Descriptor& folder, const std::string& folderName,
                  const std::string& file) const;
  void reapSockets(const Descriptor& sockets) const;

  Descriptor directory;
  std::string path;
  Audience whoConnects;
};

}  // namespace platform::host

#endif
