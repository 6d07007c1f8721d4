// Licence: MIT, see LICENSE.
// Getting at the resources of a file, wherever this host keeps them.
#ifndef PLATFORM_RESOURCES_RESOURCEFORK_H
#define PLATFORM_RESOURCES_RESOURCEFORK_H

#include <CarbonCore/MacTypes.h>

#include <string>
#include <vector>

#include "platform/resources/ResourceFile.h"

namespace platform::resources {

/// Where the resources of a file are.
struct ForkPlace {
  std::string path;
  bool isAppleDouble = false;
};

/// The bytes of a resource file and what its map says; offsets of the map are into these bytes.
struct ResourceFork {
  std::vector<std::byte> bytes;
  ResourceMap map;
  ForkPlace place;
};

/// Reads a file's resources. It is a classic resource file; or an AppleDouble file that holds one;
/// or a file with such a companion beside it, named "._" and the file's name. Results: noErr;
/// fnfErr, permErr, ioErr; eofErr for an empty file without a companion; mapReadErr for any other
/// file without sound resources; memFullErr.
OSErr readResourceFork(const std::string& path, ResourceFork& fork);

/// Replaces the resources at their place at one stroke; what an AppleDouble file has besides stays.
/// Results: noErr; wrPermErr, dskFulErr, ioErr; mapReadErr if the AppleDouble file is no more what
/// it was; memFullErr.
OSErr writeResourceFork(const ForkPlace& place, Bytes fork);

/// Gives a file resources as FSpCreateResFile does: its own contents where it is missing or empty,
/// else a companion. dupFNErr if it has resources, or is no file; else the results of both above.
OSErr createResourceFork(const std::string& path, Bytes fork);

/// The application's resource file of a program: that of its bundle
/// (Name.app/Contents/PLATFORM/program has Name.app/Contents/Resources/program.rsrc), else the
/// program's companion.
std::string applicationResourcePath(const std::string& program);

}  // namespace platform::resources

#endif
