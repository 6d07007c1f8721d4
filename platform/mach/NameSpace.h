// Licence: MIT, see LICENSE.
// Which directories names are in: this user's own, and the system's behind it.
#ifndef PLATFORM_MACH_NAMESPACE_H
#define PLATFORM_MACH_NAMESPACE_H

#include <mach/port.h>

#include <memory>
#include <optional>
#include <vector>

#include "platform/host/NameDirectory.h"

namespace platform::mach {

/// The two ports that every process knows without asking.
inline constexpr mach_port_name_t kTaskPort = 0x103;
inline constexpr mach_port_name_t kBootstrapPort = 0x203;

/// Whether this can be the name of a port: 1 to BOOTSTRAP_MAX_NAME_LEN - 1 bytes.
bool isPortName(const char* name);

using Directory = std::shared_ptr<host::NameDirectory>;

/// The directory in which this process registers names, made if need be.
host::Result<Directory> ownDirectory();

/// The directories in which names are looked for, one after the other: this user's own, and the
/// system's. kNotFound for one that does not exist, or is the other one.
host::Result<Directory> searchedFirst();
host::Result<Directory> searchedThen();

/// Both, those that exist, in their order. `refusal` tells
/// why one was left out that there is: it is not safe to use, or the host had no descriptor for it.
struct SearchList {
  std::vector<Directory> directories;
  std::optional<host::Error> refusal;
};
SearchList searchedDirectories();

}  // namespace platform::mach

#endif
