// Licence: MIT, see LICENSE.
// Which processes of the host this one has to do with.
#ifndef PLATFORM_HOST_PROCESSIDENTITY_H
#define PLATFORM_HOST_PROCESSIDENTITY_H

namespace platform::host {

/// The process that started this one, or that adopted it when that one ended.
int parentProcess();

}  // namespace platform::host

#endif
