// Licence: MIT, see LICENSE.
// Getting at the resources of a file, wherever this host keeps them.
#ifndef PLATFORM_RESOURCES_RESOURCEFORK_H
#define PLATFORM_RESOURCES_RESOURCEFORK_H

#include <CarbonCore/MacTypes.h>

#include <string>
#include <vector>

#include "platform/resources/ResourceFile.h"

namespace platform::resources {

/// The bytes of a resource file and what its map says; offsets of the map are into these bytes.
struct ResourceFork {
  std::vector<std::byte> bytes;
  ResourceMap map;
};

/// Reads a file's resources. It is a classic resource file; or an AppleDouble file that holds one;
/// or a file with such a companion beside it, named "._" and the file's name. Results: noErr;
/// fnfErr, permErr, ioErr; eofErr for an empty file without a companion; mapReadErr for any other
/// file without sound resources; memFullErr.
OSErr readResourceFork(const std::string& path, ResourceFork& fork);

/// The application's resource file of a program: that of its bundle
/// (Name.app/Contents/PLATFORM/program has Name.app/Contents/Resources/program.rsrc), else the
/// program's companion.
std::string applicationResourcePath(const std::string& program);

}  // namespace platform::resources

#endif
