// Licence: MIT, see LICENSE.
// The result that MemError tells.
#ifndef PLATFORM_MEMORY_MEMORYERROR_H
#define PLATFORM_MEMORY_MEMORYERROR_H

#include <CarbonCore/MacErrors.h>
#include <CarbonCore/MacTypes.h>

namespace platform::memory {

/// Keeps the result of a call for the thread's MemError, and gives it back.
OSErr setMemError(OSErr result);

}  // namespace platform::memory

#endif
