// Licence: MIT, see LICENSE.
// The calls that change resources and write them.
#include <CarbonCore/MacErrors.h>
#include <CarbonCore/MacMemory.h>
#include <CarbonCore/Resources.h>

#include <bitset>
#include <limits>
#include <new>

#include "platform/memory/HandleTable.h"
#include "platform/resources/ResourceCalls.h"

namespace platform::resources {
namespace {

std::string stringOf(ConstStr255Param name) {
  if (name == nullptr) return {};
  return {reinterpret_cast<const char*>(name) + 1, name[0]};
}

/// Whether a handle is a block of the caller's.
bool isPlainBlock(Handle handle) {
  if (handle == nullptr) return false;
  const auto state = static_cast<UInt8>(HGetState(handle));
  return MemError() == noErr && (state & kHandleIsResourceMask) == 0;
}

OSErr add(const HeldFiles& files, Handle data, ResType type, ResID id, ConstStr255Param name) try {
  OpenFile* file = files->numbered(files->current());
  if (file == nullptr || !isPlainBlock(data)) return addResFailed;
  OpenResource resource;
  resource.entry = {type, id, resChanged, stringOf(name), 0, 0};
  resource.handle = data;
  resource.isInFile = false;
  file->insert(std::move(resource));
  file->attributes |= mapChanged;
  memory::markAsResource(data, true);
  return noErr;
} catch (const std::bad_alloc&) {
  return memFullErr;
}

OSErr rename(OpenResource& resource, ResID id, ConstStr255Param name) try {
  if (resource.isProtected()) return resAttrErr;
  std::string text = stringOf(name);
  resource.entry.id = id;
  if (!text.empty()) resource.entry.name = std::move(text);
  return noErr;
} catch (const std::bad_alloc&) {
  return memFullErr;
}

OSErr writeOne(const ResourceFiles::Place& place) {
  if (!place.resource->isChanged()) return noErr;
  return place.resource->isProtected() ? OSErr{resAttrErr} : place.file->write(place.resource);
}

SInt16 unusedID(std::span<OpenFile> files, ResType type) {
  constexpr std::size_t kFirst = 128;
  std::bitset<std::size_t{std::numeric_limits<ResID>::max()} + 1> used;
  for (const OpenFile& file : files) {
    for (const OpenResource& resource : file.resources) {
      const ResourceEntry& entry = resource.entry;
      if (entry.type == type && entry.id >= 0) used.set(static_cast<std::size_t>(entry.id));
    }
  }
  std::size_t id = kFirst;
  while (id < used.size() && used[id]) ++id;
  setResError(id < used.size() ? OSErr{noErr} : OSErr{resNotFound});
  return id < used.size() ? static_cast<SInt16>(id) : SInt16{0};
}

/// The open file of a number; sets the result.
OpenFile* fileOf(const HeldFiles& files, SInt16 number) {
  OpenFile* file = files->numbered(number);
  setResError(file == nullptr ? OSErr{resFNotFound} : OSErr{noErr});
  return file;
}

}  // namespace
}  // namespace platform::resources

using namespace platform::resources;

void AddResource(Handle data, ResType type, ResID id, ConstStr255Param name) {
  HeldFiles files;
  setResError(add(files, data, type, id, name));
}

void RemoveResource(Handle resource) {
  HeldFiles files;
  const auto place = files->find(resource);
  const bool isRemovable = place.resource != nullptr && !place.resource->isProtected() &&
                           place.file->number == files->current();
  setResError(isRemovable ? OSErr{noErr} : OSErr{rmvResFailed});
  if (!isRemovable) return;
  place.file->attributes |= mapChanged;
  files->remove(place);
}

void ChangedResource(Handle resource) {
  HeldFiles files;
  OpenResource* found = resourceOf(files, resource);
  if (found == nullptr) return;
  if (found->isProtected()) {
    setResError(resAttrErr);
  } else {
    found->entry.attributes |= resChanged;
  }
}

void SetResInfo(Handle resource, ResID id, ConstStr255Param name) {
  HeldFiles files;
  if (OpenResource* found = resourceOf(files, resource)) setResError(rename(*found, id, name));
}

void SetResAttrs(Handle resource, SInt16 attributes) {
  HeldFiles files;
  OpenResource* found = resourceOf(files, resource);
  if (found == nullptr) return;
  const int changed = found->entry.attributes & resChanged;
  found->entry.attributes = static_cast<UInt8>((attributes & 0xFF & ~resChanged) | changed);
}

SInt16 UniqueID(ResType type) { return unusedID(HeldFiles()->all(), type); }

SInt16 Unique1ID(ResType type) { return unusedID(HeldFiles()->currentOnly(), type); }

void WriteResource(Handle resource) {
  HeldFiles files;
  if (resourceOf(files, resource) != nullptr) setResError(writeOne(files->find(resource)));
}

void UpdateResFile(SInt16 file) {
  HeldFiles files;
  if (file == kSystemResFile) {
    setResError(noErr);
  } else if (OpenFile* found = fileOf(files, file)) {
    setResError(found->hasChanges() ? found->write() : OSErr{noErr});
  }
}

SInt16 GetResFileAttrs(SInt16 file) {
  HeldFiles files;
  const OpenFile* found = fileOf(files, file);
  return found == nullptr ? SInt16{0} : static_cast<SInt16>(found->attributes);
}

void SetResFileAttrs(SInt16 file, SInt16 attributes) {
  HeldFiles files;
  OpenFile* found = fileOf(files, file);
  if (found == nullptr) return;
  found->attributes = static_cast<UInt16>(attributes);
  if (found->isReadOnly) found->attributes |= mapReadOnly;
}
