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

/// Opens a resource file for reading and makes it the current one, first in the order of search,
/// whether it is open already or not. Results are those of readResourceFork, and tmfoErr when no
/// number is left for the file.
OSErr openResourceFile(const std::string& path, SInt16& file);

/// Opens a file as FSpOpenResFile does: once. The number is untouched on failure.
OSErr openResourceFileOnce(const std::string& path, SInt8 permission, SInt16& number);

/// A resource of an open file. The handle is null until somebody asks for the resource.
struct OpenResource {
  ResourceEntry entry;
  Bytes data;  // as it is in the file
  Handle handle = nullptr;
  bool isInFile = true;  // a new one is not, until it is written

  /// Sees to it that there is a handle, with the data in it if that is asked for. memFullErr, and
  /// no handle, if there is no memory.
  enum class Loading { kOff, kOn };
  OSErr provide(Loading loading);
  void release();
  void detach();

  bool isChanged() const { return (entry.attributes & resChanged) != 0; }
  bool isProtected() const { return (entry.attributes & resProtected) != 0; }
};

struct OpenFile {
  SInt16 number = kResFileNotOpened;
  std::string path;  // as it was opened, links followed
  ForkPlace place;   // where its resources are written back to
  UInt16 attributes = 0;
  bool isReadOnly = false;
  std::vector<std::byte> fork;
  std::vector<OpenResource> resources;  // those of a type stand together

  /// Puts a resource behind the last of its type.
  void insert(OpenResource resource);
  bool hasChanges() const;
  /// Writes all changes, or those of one resource, and takes the outcome over as what is in the
  /// file. On failure nothing has changed.
  OSErr write(const OpenResource* one = nullptr);
};

/// All of it together, for whoever holds the lock. Spans of files have the last opened last.
class ResourceFiles final {
 public:
  /// The process's own; the application's file is open in it. Never destroyed, since resource
  /// handles may be used until the very end.
  static ResourceFiles& shared();

  std::unique_lock<std::mutex> lock() { return std::unique_lock(mutex); }

  enum class Access { kRead, kWrite };
  OSErr add(ResourceFork contents, const std::string& path, Access access, SInt16& number);
  /// Writes changes; the file is closed also where that fails.
  OSErr close(SInt16 number);

  OpenFile* numbered(SInt16 number);
  /// The open file of a canonical path, by whatever name it was opened; null if it is not open.
  OpenFile* at(const std::string& path);

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
  /// Takes a resource out of its file; the handle, if there is one, is no resource any more.
  void remove(const Place& place);

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
