// Licence: MIT, see LICENSE.
#include "platform/resources/ResourceFork.h"

#include <CarbonCore/MacErrors.h>

#include <filesystem>
#include <new>

#include "platform/host/FileContents.h"

namespace platform::resources {
namespace {

// Offsets in a map reach 16 MB of data; the map itself stays far below the rest.
constexpr std::size_t kLargestFork = 32 * 1024 * 1024;

OSErr resultFor(host::Error error) {
  switch (error) {
    case host::Error::kNotFound:
      return fnfErr;
    case host::Error::kPermission:
      return permErr;
    case host::Error::kTooLarge:
    case host::Error::kInvalid:
      return mapReadErr;
    case host::Error::kNoMemory:
      return memFullErr;
    case host::Error::kNoResources:
      return tmfoErr;
    default:
      return ioErr;
  }
}

/// Reads one file that is itself a resource file, or an AppleDouble file with one inside.
OSErr readOneFile(const std::string& path, ResourceFork& fork) {
  auto contents = host::readFile(path, kLargestFork);
  if (!contents) return resultFor(contents.error());
  if (contents->empty()) return eofErr;
  auto map = parseResourceFile(*contents);
  if (!map) {
    auto inside = resourceForkOfAppleDouble(*contents);
    if (!inside) return mapReadErr;
    *contents = std::vector(inside->begin(), inside->end());
    map = parseResourceFile(*contents);
    if (!map) return mapReadErr;
  }
  fork = {std::move(*contents), std::move(*map)};
  return noErr;
}

std::string companionOf(const std::string& path) {
  const std::filesystem::path file(path);
  return file.parent_path() / ("._" + file.filename().string());
}

}  // namespace

OSErr readResourceFork(const std::string& path, ResourceFork& fork) try {
  const OSErr result = readOneFile(path, fork);
  if (result != mapReadErr && result != eofErr) return result;
  const OSErr companion = readOneFile(companionOf(path), fork);
  return companion == fnfErr ? result : companion;
} catch (const std::bad_alloc&) {
  return memFullErr;
}

std::string applicationResourcePath(const std::string& program) {
  const std::filesystem::path path(program);
  const auto contents = path.parent_path().parent_path();
  if (contents.filename() != "Contents") return companionOf(program);
  return contents / "Resources" / (path.filename().string() + ".rsrc");
}

}  // namespace platform::resources
