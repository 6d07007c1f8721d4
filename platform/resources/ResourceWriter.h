// Licence: MIT, see LICENSE.
// Lays resources out as a classic resource file.
#ifndef PLATFORM_RESOURCES_RESOURCEWRITER_H
#define PLATFORM_RESOURCES_RESOURCEWRITER_H

#include <CarbonCore/MacTypes.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace platform::resources {

struct ResourceContents {
  ResType type = 0;
  ResID id = 0;
  UInt8 attributes = 0;
  std::string name;  // MacRoman, at most 255 characters; empty for none
  std::vector<std::byte> data;
};

/// The bytes of the file: types in the order of their first resource, the resources of a type in
/// the given order, nothing that depends on the time or the machine. Nothing where the format has
/// no room: a name too long, more than 16 MB of data, more resources or names than 16-bit offsets
/// reach.
std::optional<std::vector<std::byte>> writeResourceFile(
    const std::vector<ResourceContents>& resources, UInt16 attributes = 0);

}  // namespace platform::resources

#endif
