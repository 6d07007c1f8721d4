// Licence: MIT, see LICENSE.
// Which thread of the process this is.
#ifndef PLATFORM_HOST_THREADIDENTITY_H
#define PLATFORM_HOST_THREADIDENTITY_H

namespace platform::host {

/// Whether the caller runs on the process's first thread, after a fork the one that forked.
bool onFirstThread();

/// Whether the caller is sure to be the process's only thread.
bool isOnlyThread();

}  // namespace platform::host

#endif
