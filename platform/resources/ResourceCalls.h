// Licence: MIT, see LICENSE.
// What the calls of <CarbonCore/Resources.h> have in common.
#ifndef PLATFORM_RESOURCES_RESOURCECALLS_H
#define PLATFORM_RESOURCES_RESOURCECALLS_H

#include "platform/resources/ResourceFiles.h"

namespace platform::resources {

/// The process's files, held by this thread until the call ends.
class HeldFiles final {
 public:
  ResourceFiles* operator->() const { return &files; }

 private:
  ResourceFiles& files = ResourceFiles::shared();
  std::unique_lock<std::mutex> lock = files.lock();
};

/// What ResError tells the thread.
void setResError(OSErr result);

/// The resource behind a handle; sets the result, resNotFound if there is none.
OpenResource* resourceOf(const HeldFiles& files, Handle handle);

}  // namespace platform::resources

#endif
