// Licence: MIT, see LICENSE.
// Where programs are.
#ifndef PLATFORM_HOST_PROGRAMPATH_H
#define PLATFORM_HOST_PROGRAMPATH_H

#include <optional>
#include <string>

namespace platform::host {

/// The path of the program that this process runs, links resolved; empty if the host does not tell.
std::string programPath();

/// The first executable file of that name in the folders of PATH.
std::optional<std::string> findProgram(const std::string& name);

}  // namespace platform::host

#endif
