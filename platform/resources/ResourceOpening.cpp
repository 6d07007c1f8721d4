// Licence: MIT, see LICENSE.
// Opening and making resource files by FSSpec or FSRef.
#include <CarbonCore/MacErrors.h>
#include <CarbonCore/Resources.h>

#include <filesystem>
#include <new>

#include "platform/files/Items.h"
#include "platform/host/FileSystem.h"
#include "platform/resources/ResourceCalls.h"
#include "platform/resources/ResourceWriter.h"

namespace platform::resources {
namespace {

using Access = ResourceFiles::Access;

/// Whether resources can be written back to their place: the file is replaced in its folder.
bool mayReplace(const ForkPlace& place) {
  const std::string folder = std::filesystem::path(place.path).parent_path();
  return host::mayWrite(place.path) && host::mayWrite(folder);
}

OSErr accessFor(SInt8 permission, const ForkPlace& place, Access& access) {
  access = permission != fsRdPerm && mayReplace(place) ? Access::kWrite : Access::kRead;
  const bool mustWrite = permission != fsRdPerm && permission != fsCurPerm;
  return mustWrite && access == Access::kRead ? OSErr{permErr} : OSErr{noErr};
}

OSErr useOpenFile(const OpenFile& file, SInt8 permission, SInt16& number) {
  const bool mustWrite = permission != fsRdPerm && permission != fsCurPerm;
  if (mustWrite && file.isReadOnly) return permErr;
  number = file.number;
  return noErr;
}

template <typename Place, typename Resolve>
SInt16 openPlace(const Place* place, SInt8 permission, Resolve resolve) {
  SInt16 number = kResFileNotOpened;
  OSErr result = paramErr;
  try {
    std::string path;
    if (place != nullptr) result = resolve(*place, path);
    if (result == noErr) result = openResourceFileOnce(path, permission, number);
  } catch (const std::bad_alloc&) {
    result = memFullErr;
  }
  setResError(result);
  return number;
}

/// The number of a file that is open, kResFileNotOpened if it is not.
OSErr findOpenFile(const FSSpec& spec, SInt16& number) {
  std::string path;
  const OSErr result = files::pathOfSpec(spec, path);
  if (result != noErr) return result;
  HeldFiles held;
  if (const OpenFile* file = held->at(path)) number = file->number;
  return noErr;
}

OSErr createAt(const FSSpec& spec) {
  std::string path;
  const OSErr result = files::pathOfSpec(spec, path);
  if (result != noErr && result != fnfErr) return result;
  const auto emptyFile = writeResourceFile({});
  return createResourceFork(path, *emptyFile);
}

}  // namespace

OSErr openResourceFileOnce(const std::string& path, SInt8 permission, SInt16& number) {
  if (permission < fsCurPerm || permission > fsRdWrPerm) return paramErr;
  const auto canonical = host::canonicalPath(path);
  const std::string& opened = canonical ? *canonical : path;
  HeldFiles files;
  if (const OpenFile* file = files->at(opened)) return useOpenFile(*file, permission, number);
  ResourceFork fork;
  OSErr result = readResourceFork(opened, fork);
  if (result != noErr) return result;
  Access access = Access::kRead;
  result = accessFor(permission, fork.place, access);
  return result == noErr ? files->add(std::move(fork), opened, access, number) : result;
}

}  // namespace platform::resources

using namespace platform::resources;

SInt16 FSpOpenResFile(const FSSpec* spec, SInt8 permission) {
  return openPlace(spec, permission, platform::files::pathOfSpec);
}

SInt16 FSOpenResFile(const FSRef* ref, SInt8 permission) {
  return openPlace(ref, permission, platform::files::pathOfRef);
}

Boolean FSpResourceFileAlreadyOpen(const FSSpec* resourceFile, Boolean* inChain, SInt16* refNum) {
  SInt16 number = kResFileNotOpened;
  OSErr result = paramErr;
  try {
    if (resourceFile != nullptr) result = findOpenFile(*resourceFile, number);
  } catch (const std::bad_alloc&) {
    result = memFullErr;
  }
  setResError(result);
  const Boolean isOpen = number != kResFileNotOpened ? 1 : 0;
  if (inChain != nullptr) *inChain = isOpen;
  if (refNum != nullptr) *refNum = number;
  return isOpen;
}

void FSpCreateResFile(const FSSpec* spec, OSType, OSType, ScriptCode) try {
  setResError(spec == nullptr ? OSErr{paramErr} : createAt(*spec));
} catch (const std::bad_alloc&) {
  setResError(memFullErr);
}
