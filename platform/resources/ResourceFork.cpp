// Licence: MIT, see LICENSE.
#include "platform/resources/ResourceFork.h"

#include <CarbonCore/MacErrors.h>

#include <filesystem>
#include <new>

#include "platform/host/FileContents.h"
#include "platform/host/FileSystem.h"
#include "platform/resources/AppleDouble.h"

namespace platform::resources {
namespace {

// Offsets in a map reach 16 MB of data; the map itself stays far below the rest.
constexpr std::size_t kLargestFork = 32 * 1024 * 1024;

OSErr resultOfReading(host::Error error) {
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

OSErr resultOfWriting(host::Error error) {
  switch (error) {
    case host::Error::kPermission:
      return wrPermErr;
    case host::Error::kTooLarge:
    case host::Error::kNoResources:
      return dskFulErr;
    case host::Error::kNoMemory:
      return memFullErr;
    default:
      return ioErr;
  }
}

/// Reads one file that is itself a resource file, or an AppleDouble file with one inside.
OSErr readOneFile(const std::string& path, ResourceFork& fork) {
  auto contents = host::readFile(path, kLargestFork);
  if (!contents) return resultOfReading(contents.error());
  if (contents->empty()) return eofErr;
  auto map = parseResourceFile(*contents);
  const bool isAppleDouble = !map;
  if (isAppleDouble) {
    auto inside = resourceForkOfAppleDouble(*contents);
    if (!inside) return mapReadErr;
    *contents = std::vector(inside->begin(), inside->end());
    map = parseResourceFile(*contents);
    if (!map) return mapReadErr;
  }
  fork = {std::move(*contents), std::move(*map), {path, isAppleDouble}};
  return noErr;
}

OSErr replaceFile(const std::string& path, Bytes contents) {
  const auto replaced = host::replaceFile(path, contents);
  return replaced ? OSErr{noErr} : resultOfWriting(replaced.error());
}

bool isFile(const std::string& path) {
  const auto status = host::fileStatus(path, host::Links::kFollowed);
  return status && status->kind == host::FileStatus::Kind::kFile;
}

bool isThere(const std::string& path) {
  return static_cast<bool>(host::fileStatus(path, host::Links::kThemselves));
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

OSErr writeResourceFork(const ForkPlace& place, Bytes fork) try {
  if (!place.isAppleDouble) return replaceFile(place.path, fork);
  const auto contents = host::readFile(place.path, kLargestFork);
  if (!contents) return resultOfWriting(contents.error());
  const auto replaced = replaceForkOfAppleDouble(*contents, fork);
  return replaced ? replaceFile(place.path, *replaced) : OSErr{mapReadErr};
} catch (const std::bad_alloc&) {
  return memFullErr;
}

OSErr createResourceFork(const std::string& path, Bytes fork) try {
  if (!isThere(path)) return replaceFile(path, fork);
  if (!isFile(path)) return dupFNErr;
  ResourceFork present;
  const OSErr result = readResourceFork(path, present);
  if (result == noErr) return dupFNErr;
  if (result == eofErr) return replaceFile(path, fork);
  const std::string companion = companionOf(path);
  if (result != mapReadErr || isThere(companion)) return result;
  return replaceFile(companion, appleDoubleWith(fork));
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
