// Licence: MIT, see LICENSE.
// Where the well-known folders are. The environment variable QRL_ROOT moves them all below another
// root; it is read at each call, so that a test can set it for itself.
#ifndef PLATFORM_HOST_ROOTS_H
#define PLATFORM_HOST_ROOTS_H

#include <string>

namespace platform::host {

/// The root's path without a final slash: empty unless QRL_ROOT is set.
std::string rootPath();

/// The directory of this user's name space: below the user's run-time folder, else a private one
/// under /tmp; below a moved root one for each user. Root without a run-time folder lives in the
/// system's.
std::string userNameSpacePath();

/// The directory of the system's name space, to which look-ups fall back.
std::string systemNameSpacePath();

/// This user's home, below the root: HOME, else what the user database says; "/" if neither tells.
std::string homePath();

}  // namespace platform::host

#endif
