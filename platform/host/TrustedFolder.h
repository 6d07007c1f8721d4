// Licence: MIT, see LICENSE.
// Opening directories in which nobody else can have put anything. What is wrong with one that is
// refused is said in one line of the log and of the standard error.
#ifndef PLATFORM_HOST_TRUSTEDFOLDER_H
#define PLATFORM_HOST_TRUSTEDFOLDER_H

#include <string>

#include "platform/host/Descriptor.h"
#include "platform/host/Result.h"

namespace platform::host {

enum class Make { kNo, kYes };

/// Whose a directory may be, and the permissions that it is made with.
struct FolderRule {
  bool mayBeRoots = false;  // else it must be ours
  unsigned permissions = 0700;
};

/// Opens a directory that is no link, has an owner that the rule allows and lets nobody else write;
/// kPermission for any other. Above it links are followed, but none that somebody planted who is
/// neither we nor root. Makes it and what is missing above it if told to.
Result<Descriptor> openTrusted(const std::string& path, const FolderRule& rule, Make make);

/// Opens a directory in one that is open under that path, which has been trusted.
Result<Descriptor> openTrustedIn(const Descriptor& folder, const std::string& path,
                                 const std::string& name, const FolderRule& rule, Make make);

/// Says why something of the name space is not used.
void complainOfRefusal(const std::string& path, const std::string& reason);

}  // namespace platform::host

#endif
