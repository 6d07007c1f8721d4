// Licence: MIT, see LICENSE.
#include "platform/resources/ResourceFiles.h"

#include <CarbonCore/MacErrors.h>
#include <CarbonCore/MacMemory.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "platform/host/FileSystem.h"
#include "platform/host/ProgramPath.h"
#include "platform/memory/HandleTable.h"

namespace platform::resources {
namespace {

// Numbers below belong to the system's file.
constexpr SInt16 kFirstNumber = 2;
constexpr SInt16 kLastNumber = 0x7FFF;

/// QRL_RESOURCE_FILE names another file for the application: for programs without a bundle, and
/// tests.
std::string applicationFile() {
  const char* setting = std::getenv("QRL_RESOURCE_FILE");
  if (setting != nullptr && *setting != '\0') return setting;
  return applicationResourcePath(host::programPath());
}

/// Somebody disposed of a resource handle: the resource counts as not loaded, its changes are lost.
void forget(Handle handle) {
  ResourceFiles& files = ResourceFiles::shared();
  auto lock = files.lock();
  const auto place = files.find(handle);
  if (place.resource == nullptr) return;
  place.resource->handle = nullptr;
  place.resource->entry.attributes &= static_cast<UInt8>(~resChanged);
  if (!place.resource->isInFile) files.remove(place);
}

std::vector<OpenResource> resourcesOf(const ResourceFork& fork) {
  std::vector<OpenResource> resources;
  resources.reserve(fork.map.entries.size());
  for (const ResourceEntry& entry : fork.map.entries) {
    const Bytes data = Bytes(fork.bytes).subspan(entry.dataOffset, entry.dataSize);
    resources.push_back({entry, data});
    // Whether a resource was changed is a matter of memory; a file that says so says nothing.
    resources.back().entry.attributes &= static_cast<UInt8>(~resChanged);
  }
  return resources;
}

}  // namespace

OSErr OpenResource::provide(Loading loading) {
  if (handle == nullptr) {
    handle = NewEmptyHandle();
    if (handle == nullptr) return memFullErr;
    memory::markAsResource(handle, true);
  }
  if (loading == Loading::kOff || *handle != nullptr) return noErr;
  ReallocateHandle(handle, static_cast<Size>(data.size()));
  if (MemError() != noErr) return MemError();
  if (!data.empty()) std::memcpy(*handle, data.data(), data.size());
  if ((entry.attributes & resLocked) != 0) {
    HLock(handle);
  } else if ((entry.attributes & resPurgeable) != 0) {
    HPurge(handle);
  }
  return noErr;
}

void OpenResource::release() {
  if (handle == nullptr) return;
  Handle released = handle;
  detach();
  DisposeHandle(released);
}

void OpenResource::detach() {
  memory::markAsResource(handle, false);
  handle = nullptr;
}

ResourceFiles& ResourceFiles::shared() {
  static ResourceFiles* files = new ResourceFiles;
  return *files;
}

ResourceFiles::ResourceFiles() {
  memory::setDisposalNotice(forget);
  openApplicationFile();
}

void ResourceFiles::openApplicationFile() try {
  ResourceFork fork;
  SInt16 number;
  const std::string path = applicationFile();
  if (readResourceFork(path, fork) == noErr) add(std::move(fork), path, Access::kRead, number);
} catch (const std::bad_alloc&) {
  // The application runs on with what other files it opens.
}

OSErr ResourceFiles::add(ResourceFork contents, const std::string& path, Access access,
                         SInt16& number) try {
  OpenFile file;
  file.number = unusedNumber();
  if (file.number == kResFileNotOpened) return tmfoErr;
  file.path = path;
  file.attributes = static_cast<UInt16>(contents.map.attributes & ~mapChanged);
  file.isReadOnly = access == Access::kRead;
  if (file.isReadOnly) file.attributes |= mapReadOnly;
  file.resources = resourcesOf(contents);
  file.place = std::move(contents.place);
  file.fork = std::move(contents.bytes);  // the data stays where the resources see it
  files.push_back(std::move(file));
  currentNumber = number = files.back().number;
  for (OpenResource& resource : files.back().resources) {
    if ((resource.entry.attributes & resPreload) != 0) resource.provide(loading);
  }
  return noErr;
} catch (const std::bad_alloc&) {
  return memFullErr;
}

OSErr ResourceFiles::close(SInt16 number) {
  if (number == kSystemResFile) return noErr;
  auto file = fileNumbered(number);
  if (file == files.end()) return resFNotFound;
  const OSErr result = file->hasChanges() ? file->write() : OSErr{noErr};
  for (OpenResource& resource : file->resources) resource.release();
  if (number == currentNumber) {
    currentNumber = file == files.begin() ? SInt16{kSystemResFile} : std::prev(file)->number;
  }
  files.erase(file);
  return result;
}

OpenFile* ResourceFiles::numbered(SInt16 number) {
  auto file = fileNumbered(number);
  return file == files.end() ? nullptr : &*file;
}

OpenFile* ResourceFiles::at(const std::string& path) {
  // A file that was written back has another identity than when it was opened.
  const auto wanted = host::fileStatus(path, host::Links::kFollowed);
  if (!wanted) return nullptr;
  for (OpenFile& file : files) {
    const auto status = host::fileStatus(file.path, host::Links::kFollowed);
    if (status && status->identity == wanted->identity) return &file;
  }
  return nullptr;
}

OSErr ResourceFiles::makeCurrent(SInt16 number) {
  if (number != kSystemResFile && fileNumbered(number) == files.end()) return resFNotFound;
  currentNumber = number;
  return noErr;
}

std::span<OpenFile> ResourceFiles::searched() {
  auto file = fileNumbered(currentNumber);
  if (file == files.end()) return {};
  return std::span(files).first(static_cast<std::size_t>(file - files.begin()) + 1);
}

std::span<OpenFile> ResourceFiles::currentOnly() {
  auto chain = searched();
  return chain.empty() ? chain : chain.last(1);
}

ResourceFiles::Place ResourceFiles::find(Handle handle) {
  if (handle == nullptr) return {};
  for (OpenFile& file : files) {
    for (OpenResource& resource : file.resources) {
      if (resource.handle == handle) return {&file, &resource};
    }
  }
  return {};
}

void ResourceFiles::remove(const Place& place) {
  if (place.resource->handle != nullptr) place.resource->detach();
  auto& resources = place.file->resources;
  resources.erase(resources.begin() + (place.resource - resources.data()));
}

SInt16 ResourceFiles::unusedNumber() const {
  for (SInt16 number = kFirstNumber; number < kLastNumber; ++number) {
    auto isUsed = [number](const OpenFile& file) { return file.number == number; };
    if (std::none_of(files.begin(), files.end(), isUsed)) return number;
  }
  return kResFileNotOpened;
}

std::vector<OpenFile>::iterator ResourceFiles::fileNumbered(SInt16 number) {
  return std::find_if(files.begin(), files.end(),
                      [number](const OpenFile& file) { return file.number == number; });
}

OSErr openResourceFile(const std::string& path, SInt16& file) {
  ResourceFork fork;
  const OSErr result = readResourceFork(path, fork);
  if (result != noErr) return result;
  ResourceFiles& files = ResourceFiles::shared();
  auto lock = files.lock();
  return files.add(std::move(fork), path, ResourceFiles::Access::kRead, file);
}

}  // namespace platform::resources
