// Licence: MIT, see LICENSE.
// Whole files: read into memory, replaced at one stroke.
#ifndef PLATFORM_HOST_FILECONTENTS_H
#define PLATFORM_HOST_FILECONTENTS_H

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "platform/host/Result.h"

namespace platform::host {

/// The bytes of a file. kTooLarge if it holds more than `limit`; kInvalid for what is not a file
/// with contents (a folder, a pipe).
Result<std::vector<std::byte>> readFile(const std::string& path, std::size_t limit);

/// Replaces a file, or makes it: readers see the old contents or the new ones whole, and so does
/// who looks after a crash. A failure leaves the old file and nothing beside it.
Status replaceFile(const std::string& path, std::span<const std::byte> contents);

}  // namespace platform::host

#endif
