// Licence: MIT, see LICENSE.
// What the Resource Manager needs of handles beyond <CarbonCore/MacMemory.h>.
#ifndef PLATFORM_MEMORY_HANDLETABLE_H
#define PLATFORM_MEMORY_HANDLETABLE_H

#include <CarbonCore/MacMemory.h>

namespace platform::memory {

/// Says whether a handle is a resource's. Nothing for a handle that is not alive.
void markAsResource(Handle handle, bool isResource);

/// Called, with no lock held, when somebody has disposed of a handle that is marked as a
/// resource's. The handle is gone already and serves as a key only. One for the process, set once.
using DisposalNotice = void (*)(Handle handle);
void setDisposalNotice(DisposalNotice notice);

}  // namespace platform::memory

#endif
