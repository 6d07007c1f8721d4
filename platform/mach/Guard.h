// Licence: MIT, see LICENSE.
#ifndef PLATFORM_MACH_GUARD_H
#define PLATFORM_MACH_GUARD_H

#include <mach/kern_return.h>

#include <new>

namespace platform::mach {

/// Runs the body of a C call, turning exhausted memory into its code.
template <typename Call>
kern_return_t guarded(kern_return_t noMemory, Call call) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return noMemory;
  }
}

}  // namespace platform::mach

#endif
