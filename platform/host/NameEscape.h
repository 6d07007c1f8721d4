// Licence: MIT, see LICENSE.
// Names of ports as names of files. A port's name is any bytes; a file's may hold no slash, and a
// leading full stop would hide it. Each byte becomes at most two, so that the longest port name
// still fits.
#ifndef PLATFORM_HOST_NAMEESCAPE_H
#define PLATFORM_HOST_NAMEESCAPE_H

#include <optional>
#include <string>
#include <string_view>

namespace platform::host {

std::string fileNameOf(std::string_view name);

/// The name that became this file name; none for a file name that no name becomes.
std::optional<std::string> nameOfFile(std::string_view file);

}  // namespace platform::host

#endif
