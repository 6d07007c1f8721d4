// Licence: MIT, see LICENSE.
#include "platform/resources/ResourceFiles.h"

#include <CarbonCore/MacErrors.h>
#include <CarbonCore/MacMemory.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

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

/// Somebody disposed of a resource handle: the resource counts as not loaded.
void forget(Handle handle) {
  ResourceFiles& files = ResourceFiles::shared();
  auto lock = files.lock();
  if (auto place = files.find(handle); place.resource != nullptr) place.resource->handle = nullptr;
}

std::vector<OpenResource> resourcesOf(const ResourceFork& fork) {
  std::vector<OpenResource> resources;
  resources.reserve(fork.map.entries.size());
  for (const ResourceEntry& entry : fork.map.entries) {
    const Bytes data = Bytes(fork.bytes).subspan(entry.dataOffset, entry.dataSize);
    resources.push_back({entry, data, nullptr});
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
  if (readResourceFork(applicationFile(), fork) == noErr) add(std::move(fork), number);
} catch (const std::bad_alloc&) {
  // The application runs on with what other files it opens.
}

OSErr ResourceFiles::add(ResourceFork contents, SInt16& number) try {
  const SInt16 unused = unusedNumber();
  if (unused == kResFileNotOpened) return tmfoErr;
  OpenFile file{unused, {}, resourcesOf(contents)};
  file.fork = std::move(contents.bytes);  // the data stays where the resources see it
  files.push_back(std::move(file));
  currentNumber = number = unused;
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
  for (OpenResource& resource : file->resources) resource.release();
  if (number == currentNumber) {
    currentNumber = file == files.begin() ? SInt16{kSystemResFile} : std::prev(file)->number;
  }
  files.erase(file);
  return noErr;
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
  return files.add(std::move(fork), file);
}

}  // namespace platform::resources
