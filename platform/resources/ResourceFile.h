// Licence: MIT, see LICENSE.
// The form of a classic resource file, apart from files and memory blocks. All numbers are
// big-endian.
//
//   header      data offset, map offset, data size, map size (4 bytes each), then reserved bytes
//   data        for each resource: size (4), bytes
//   map         reserved (22), attributes (2), offset of the type list (2), of the name list (2)
//   type list   number of types less one (2); for each: type (4), number of resources less one (2),
//               offset of its references from the type list (2)
//   references  ID (2), offset of the name or -1 (2), attributes (1), offset of the data (3),
//   reserved (4)
//   name list   Pascal strings
//
// Files come from anywhere: parsing reads inside its view alone and allocates in proportion to it.
#ifndef PLATFORM_RESOURCES_RESOURCEFILE_H
#define PLATFORM_RESOURCES_RESOURCEFILE_H

#include <CarbonCore/MacTypes.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace platform::resources {

using Bytes = std::span<const std::byte>;

/// A resource of a file: what the map says, and where the data lies in the file.
struct ResourceEntry {
  ResType type = 0;
  ResID id = 0;
  UInt8 attributes = 0;
  std::string name;  // MacRoman; empty for none
  std::size_t dataOffset = 0;
  std::size_t dataSize = 0;
};

struct ResourceMap {
  UInt16 attributes = 0;
  std::vector<ResourceEntry> entries;  // in the order of the map: those of a type stand together
};

/// The map of a resource file, or nothing if the file is damaged or something else: any offset,
/// size or count that leads outside, lists that overlap, a type that is listed twice.
std::optional<ResourceMap> parseResourceFile(Bytes file);

}  // namespace platform::resources

#endif
