// Licence: MIT, see LICENSE.
#include <CarbonCore/MacErrors.h>
#include <CarbonCore/Resources.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <set>
#include <string_view>

#include "platform/resources/NameComparison.h"
#include "platform/resources/ResourceCalls.h"

namespace platform::resources {
namespace {

thread_local OSErr resError = noErr;

using Loading = OpenResource::Loading;
using FileSpan = std::span<OpenFile>;

Handle provide(OpenResource& resource, Loading loading) {
  resError = resource.provide(loading);
  return resError == noErr ? resource.handle : nullptr;
}

template <typename Wanted>
Handle findResource(FileSpan files, Loading loading, ResType type, Wanted wanted) {
  bool typeExists = false;
  for (auto file = files.rbegin(); file != files.rend(); ++file) {
    for (OpenResource& resource : file->resources) {
      if (resource.entry.type != type) continue;
      if (wanted(resource.entry)) return provide(resource, loading);
      typeExists = true;
    }
  }
  resError = typeExists ? OSErr{resNotFound} : OSErr{noErr};
  return nullptr;
}

Handle findByID(FileSpan files, Loading loading, ResType type, ResID id) {
  return findResource(files, loading, type,
                      [id](const ResourceEntry& entry) { return entry.id == id; });
}

Handle findByName(FileSpan files, Loading loading, ResType type, ConstStr255Param name) {
  // Resources without a name have none, not an empty one.
  const std::string_view wanted =
      name == nullptr ? std::string_view()
                      : std::string_view(reinterpret_cast<const char*>(name) + 1, name[0]);
  return findResource(files, loading, type, [wanted](const ResourceEntry& entry) {
    return !wanted.empty() && namesAreEqual(entry.name, wanted);
  });
}

Handle findByIndex(FileSpan files, Loading loading, ResType type, SInt16 index) {
  SInt16 left = index;
  Handle found = findResource(files, loading, type,
                              [&left](const ResourceEntry&) { return left > 0 && --left == 0; });
  if (found == nullptr && resError == noErr) resError = resNotFound;
  return found;
}

/// A count as the calls give it, which a file may exceed.
SInt16 limited(std::size_t count) {
  return static_cast<SInt16>(std::min<std::size_t>(count, std::numeric_limits<SInt16>::max()));
}

SInt16 countResources(FileSpan files, ResType type) {
  std::size_t count = 0;
  for (const OpenFile& file : files) {
    count += static_cast<std::size_t>(std::ranges::count_if(
        file.resources,
        [type](const OpenResource& resource) { return resource.entry.type == type; }));
  }
  resError = noErr;
  return limited(count);
}

/// The different types in the order of search.
std::vector<ResType> typesOf(FileSpan files) try {
  std::vector<ResType> types;
  std::set<ResType> seen;
  for (auto file = files.rbegin(); file != files.rend(); ++file) {
    for (const OpenResource& resource : file->resources) {
      if (seen.insert(resource.entry.type).second) types.push_back(resource.entry.type);
    }
  }
  resError = noErr;
  return types;
} catch (const std::bad_alloc&) {
  resError = memFullErr;
  return {};
}

void storeTypeAt(FileSpan files, ResType* type, SInt16 index) {
  const std::vector<ResType> types = typesOf(files);
  const bool exists = index > 0 && static_cast<std::size_t>(index) <= types.size();
  *type = exists ? types[static_cast<std::size_t>(index) - 1] : 0;
}

void copyName(const std::string& name, unsigned char* target) {
  target[0] = static_cast<unsigned char>(name.size());
  std::memcpy(target + 1, name.data(), name.size());
}

}  // namespace

void setResError(OSErr result) { resError = result; }

OpenResource* resourceOf(const HeldFiles& files, Handle handle) {
  OpenResource* resource = files->find(handle).resource;
  resError = resource == nullptr ? OSErr{resNotFound} : OSErr{noErr};
  return resource;
}

}  // namespace platform::resources

using namespace platform::resources;

OSErr ResError(void) { return resError; }

SInt16 CurResFile(void) {
  HeldFiles files;
  resError = noErr;
  return files->current();
}

void UseResFile(SInt16 file) { resError = HeldFiles()->makeCurrent(file); }

void CloseResFile(SInt16 file) { resError = HeldFiles()->close(file); }

SInt16 HomeResFile(Handle resource) {
  HeldFiles files;
  const OpenFile* home = files->find(resource).file;
  resError = home == nullptr ? OSErr{resNotFound} : OSErr{noErr};
  return home == nullptr ? SInt16{kResFileNotOpened} : home->number;
}

void SetResLoad(Boolean load) {
  HeldFiles()->loading = load != 0 ? Loading::kOn : Loading::kOff;
  resError = noErr;
}

void LoadResource(Handle resource) {
  HeldFiles files;
  if (OpenResource* found = resourceOf(files, resource)) provide(*found, Loading::kOn);
}

Handle GetResource(ResType type, ResID id) {
  HeldFiles files;
  return findByID(files->searched(), files->loading, type, id);
}

Handle Get1Resource(ResType type, ResID id) {
  HeldFiles files;
  return findByID(files->currentOnly(), files->loading, type, id);
}

Handle GetNamedResource(ResType type, ConstStr255Param name) {
  HeldFiles files;
  return findByName(files->searched(), files->loading, type, name);
}

Handle Get1NamedResource(ResType type, ConstStr255Param name) {
  HeldFiles files;
  return findByName(files->currentOnly(), files->loading, type, name);
}

SInt16 CountResources(ResType type) { return countResources(HeldFiles()->all(), type); }

SInt16 Count1Resources(ResType type) { return countResources(HeldFiles()->currentOnly(), type); }

Handle GetIndResource(ResType type, SInt16 index) {
  HeldFiles files;
  return findByIndex(files->all(), files->loading, type, index);
}

Handle Get1IndResource(ResType type, SInt16 index) {
  HeldFiles files;
  return findByIndex(files->currentOnly(), files->loading, type, index);
}

SInt16 CountTypes(void) { return limited(typesOf(HeldFiles()->all()).size()); }

SInt16 Count1Types(void) { return limited(typesOf(HeldFiles()->currentOnly()).size()); }

void GetIndType(ResType* type, SInt16 index) { storeTypeAt(HeldFiles()->all(), type, index); }

void Get1IndType(ResType* type, SInt16 index) {
  storeTypeAt(HeldFiles()->currentOnly(), type, index);
}

void GetResInfo(Handle resource, ResID* id, ResType* type, Str255 name) {
  HeldFiles files;
  const OpenResource* found = resourceOf(files, resource);
  if (found == nullptr) return;
  if (id != nullptr) *id = found->entry.id;
  if (type != nullptr) *type = found->entry.type;
  if (name != nullptr) copyName(found->entry.name, name);
}

SInt16 GetResAttrs(Handle resource) {
  HeldFiles files;
  const OpenResource* found = resourceOf(files, resource);
  return found == nullptr ? SInt16{0} : SInt16{found->entry.attributes};
}

SInt32 GetResourceSizeOnDisk(Handle resource) {
  HeldFiles files;
  const OpenResource* found = resourceOf(files, resource);
  return found == nullptr ? SInt32{-1} : static_cast<SInt32>(found->entry.dataSize);
}

void ReleaseResource(Handle resource) {
  HeldFiles files;
  OpenResource* found = resourceOf(files, resource);
  if (found != nullptr && !found->isChanged()) found->release();
}

void DetachResource(Handle resource) {
  HeldFiles files;
  OpenResource* found = resourceOf(files, resource);
  if (found == nullptr) return;
  if (found->isChanged()) {
    setResError(resAttrErr);
  } else {
    found->detach();
  }
}
