// Licence: MIT, see LICENSE.
#ifndef TESTS_PLATFORM_PROCESSES_CURRENTPROCESS_H
#define TESTS_PLATFORM_PROCESSES_CURRENTPROCESS_H

#include <HIServices/Processes.h>

namespace tests {

/// What a process may write for its own serial number.
inline constexpr ProcessSerialNumber kSelf = {0, kCurrentProcess};

}  // namespace tests

#endif
