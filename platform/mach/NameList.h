// Licence: MIT, see LICENSE.
// The names of the name space as a whole: who holds which, and waiting for one to come or go. All
// calls may be made from any thread.
#ifndef PLATFORM_MACH_NAMELIST_H
#define PLATFORM_MACH_NAMELIST_H

#include <mach/mach.h>

#include <string>
#include <vector>

#include "platform/host/Clock.h"

namespace platform::mach {

/// The directory of the bootstrap names.
inline constexpr char kBootstrapFolder[] = "ports";

struct NamedPort {
  std::string name;
  int process = 0;         // the ID of the process that holds the port
  bool isSystems = false;  // it stands in the system's name space, not in the user's own
};

/// Stores the names in a directory that somebody alive holds, sorted; a name of the user's own
/// hides the system's. Names of the dead are removed on the way, where we may.
/// BOOTSTRAP_NOT_PRIVILEGED when a name, or a whole name space, was refused and is missing.
kern_return_t liveNames(const char* directory, std::vector<NamedPort>& names);

/// Waits until somebody alive holds a name: KERN_SUCCESS, or MACH_RCV_TIMED_OUT when the deadline
/// passes first. BOOTSTRAP_NOT_PRIVILEGED when the name space refuses us, BOOTSTRAP_BAD_COUNT for
/// what cannot be a name, BOOTSTRAP_NO_MEMORY when the host has no descriptors left.
kern_return_t waitForName(const char* directory, const char* name, host::Deadline deadline);

/// Waits until the port that holds a name has died or given the name up; at once if nobody holds
/// it. Results are those of waitForName.
kern_return_t waitForEnd(const char* directory, const char* name, host::Deadline deadline);

}  // namespace platform::mach

#endif
