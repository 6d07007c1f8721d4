// Licence: MIT, see LICENSE.
// The resource files that this process has open, below the calls of <CarbonCore/Resources.h>.
#ifndef PLATFORM_RESOURCES_RESOURCEFILES_H
#define PLATFORM_RESOURCES_RESOURCEFILES_H

#include <CarbonCore/Resources.h>

#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "platform/resources/ResourceFork.h"

namespace platform::resources {

/// Opens a resource file for reading and makes it the current one, first in the order of search.
/// Results are those of readResourceFork, and tmfoErr when no number is left for the file.
OSErr openResourceFile(const std::string& path, SInt16& file);

/// A resource of an open file. The handle is null until somebody asks for the resource.
struct OpenResource {
  ResourceEntry entry;
  Bytes data;
  Handle handle = nullptr;

  /// Sees to it that there is a handle, with the data in it if that is asked for. memFullErr, and
  /// no handle, if there is no memory.
  enum class Loading { kOff, kOn };
  OSErr provide(Loading loading);
  void release();
  void detach();
};

struct OpenFile {
  SInt16 number = kResFileNotOpened;
  std::vector<std::byte> fork;
  std::vector<OpenResource> resources;
};

/// All of it together, for whoever holds the lock. Spans of files have the last opened last.
class ResourceFiles final {
 public:
  /// The process's own; the application's file is open in it. Never destroyed, since resource
  /// handles may be used until the very end.
  static ResourceFiles& shared();

  std::unique_lock<std::mutex> lock() { return std::unique_lock(mutex); }

  OSErr add(ResourceFork contents, SInt16& number);
  OSErr close(SInt16 number);

  SInt16 current() const { return currentNumber; }
  OSErr makeCurrent(SInt16 number);
  OpenResource::Loading loading = OpenResource::Loading::kOn;

  std::span<OpenFile> all() { return files; }
  /// The current file and those that were opened before it; nothing if that is the system's.
  std::span<OpenFile> searched();
  std::span<OpenFile> currentOnly();

  struct Place {
    OpenFile* file = nullptr;
    OpenResource* resource = nullptr;
  };
  /// Where a resource handle belongs; nulls for any other.
  Place find(Handle handle);

 private:
  ResourceFiles();
  void openApplicationFile();
  SInt16 unusedNumber() const;
  std::vector<OpenFile>::iterator fileNumbered(SInt16 number);

  std::mutex mutex;
  std::vector<OpenFile> files;
  SInt16 currentNumber = kSystemResFile;
};

}  // namespace platform::resources

#endif
