// Licence: MIT, see LICENSE.
#include <CarbonCore/Files.h>
#include <CarbonCore/MacErrors.h>

#include <cstring>
#include <new>

#include "platform/files/Items.h"
#include "platform/files/Names.h"
#include "platform/files/Results.h"

namespace platform::files {
namespace {

using host::FileStatus;
using host::Links;

std::string_view textOf(ConstStr255Param name) {
  if (name == nullptr) return {};
  return {reinterpret_cast<const char*>(name) + 1, name[0]};
}

/// Runs a call's work; what no memory was there for is memFullErr.
template <typename Work>
OSErr guarded(Work work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return memFullErr;
  }
}

/// The folder that an item is, links followed.
OSErr folderOf(const Item& item, FolderID& folder) {
  const auto status = host::fileStatus(item.path, Links::kThemselves);
  if (!status) return dirNFErr;
  if (item.folder == fsRtParID) {
    folder = fsRtDirID;
    return noErr;
  }
  if (status->kind == FileStatus::Kind::kFolder) {
    folder = FolderTable::shared().idOf(item.folder, item.name, status->identity);
    return noErr;
  }
  const auto target = host::canonicalPath(item.path);
  const auto id = target ? FolderTable::shared().idOfPath(*target) : std::nullopt;
  if (!id) return dirNFErr;
  folder = *id;
  return noErr;
}

/// One step of a path: an empty name goes up.
OSErr step(FolderID folder, std::string_view name, Item& item) {
  if (!name.empty()) return itemNamed(folder, name, item);
  const OSErr result = itemOfFolder(folder, item);
  if (result != noErr) return result;
  return item.folder == fsRtParID ? OSErr{dirNFErr} : itemOfFolder(item.folder, item);
}

/// Walks a path whose first colon, the one that starts at the folder, is gone.
OSErr walk(FolderID folder, std::string_view path, Item& item) {
  OSErr result = itemOfFolder(folder, item);
  while (result == noErr && !path.empty()) {
    const auto colon = path.find(':');
    result = step(folder, path.substr(0, colon), item);
    path.remove_prefix(colon == std::string_view::npos ? path.size() : colon + 1);
    if (path.empty()) return result;
    if (result == fnfErr) return dirNFErr;
    if (result == noErr) result = folderOf(item, folder);
  }
  return result;
}

OSErr itemOfName(FolderID folder, std::string_view name, Item& item) {
  const auto colon = name.find(':');
  if (colon == std::string_view::npos) {
    return name.empty() ? itemOfFolder(folder, item) : itemNamed(folder, name, item);
  }
  if (colon == 0) return walk(folder, name.substr(1), item);
  if (name.substr(0, colon) != kVolumeName) return nsvErr;
  return walk(fsRtDirID, name.substr(colon + 1), item);
}

/// An item that does not exist yet must have a name that will find it when it does.
bool canBeMade(const Item& item) {
  const std::string shown = macNameOf(item.name);
  return hostNameOf(shown) == item.name;
}

OSErr makeSpec(SInt16 volume, SInt32 folder, std::string_view name, FSSpec& spec) {
  if (!isVolume(volume)) return nsvErr;
  Item item;
  const OSErr result = itemOfName(folder == 0 ? FolderID{fsRtDirID} : folder, name, item);
  if (result != noErr && result != fnfErr) return result;
  if (item.path.empty()) return result;  // beside the root there is nothing
  if (result == fnfErr && !canBeMade(item)) return bdNamErr;
  spec = specOf(item);
  return result;
}

void storePermissions(const FileStatus& status, FSCatalogInfo& info) {
  info.permissions[0] = status.user;
  info.permissions[1] = status.group;
  info.permissions[2] = 0;
  info.permissions[3] = status.mode;
}

/// Files have no number here that fits; theirs are made of the host's and differ from folders'.
UInt32 fileNumber(const FileStatus& status) {
  constexpr UInt32 kOfFiles = 0x80000000;
  const std::uint64_t inode = status.identity.inode;
  return kOfFiles | static_cast<UInt32>(inode ^ inode >> 31);
}

OSErr nodeIDOf(const Item& item, const FileStatus& status, UInt32& id) {
  if (status.kind != FileStatus::Kind::kFolder) {
    id = fileNumber(status);
    return noErr;
  }
  FolderID folder = 0;
  const OSErr result = folderOf(item, folder);
  id = static_cast<UInt32>(folder);
  return result;
}

OSErr storeInfo(const Item& item, FSCatalogInfoBitmap which, FSCatalogInfo& info) {
  const auto status = host::fileStatus(item.path, Links::kThemselves);
  if (!status) return resultFor(status.error());
  UInt32 nodeID = 0;
  const OSErr result = nodeIDOf(item, *status, nodeID);
  if (result != noErr) return result;
  const bool isFolder = status->kind == FileStatus::Kind::kFolder;
  if ((which & kFSCatInfoNodeFlags) != 0) info.nodeFlags = isFolder ? kFSNodeIsDirectoryMask : 0;
  if ((which & kFSCatInfoVolume) != 0) info.volume = kVolume;
  if ((which & kFSCatInfoParentDirID) != 0) info.parentDirID = static_cast<UInt32>(item.folder);
  if ((which & kFSCatInfoNodeID) != 0) info.nodeID = nodeID;
  if ((which & kFSCatInfoPermissions) != 0) storePermissions(*status, info);
  if ((which & kFSCatInfoDataSizes) != 0) {
    info.dataLogicalSize = isFolder ? 0 : status->size;
    info.dataPhysicalSize = isFolder ? 0 : status->sizeOnDisk;
  }
  return noErr;
}

OSErr parentOf(const Item& item, FSRef& parent) {
  if (item.folder == fsRtParID) return errFSBadFSRef;
  Item folder;
  const OSErr result = itemOfFolder(item.folder, folder);
  return result == noErr ? makeRef(folder, parent) : result;
}

struct CatalogOutputs {
  FSCatalogInfo* info;
  HFSUniStr255* name;
  FSSpec* spec;
  FSRef* parent;
};

OSErr tellAbout(const FSRef& ref, FSCatalogInfoBitmap which, const CatalogOutputs& outputs) {
  constexpr FSCatalogInfoBitmap kTold = kFSCatInfoNodeFlags | kFSCatInfoVolume |
                                        kFSCatInfoParentDirID | kFSCatInfoNodeID |
                                        kFSCatInfoPermissions | kFSCatInfoDataSizes;
  if ((which & ~kTold) != 0) return errFSBadInfoBitmap;
  if (which != kFSCatInfoNone && outputs.info == nullptr) return paramErr;
  Item item;
  OSErr result = itemOfRef(ref, item);
  FSRef parent;
  if (result == noErr && outputs.parent != nullptr) result = parentOf(item, parent);
  if (result == noErr && which != kFSCatInfoNone) result = storeInfo(item, which, *outputs.info);
  if (result != noErr) return result;
  if (outputs.parent != nullptr) *outputs.parent = parent;
  if (outputs.spec != nullptr) *outputs.spec = specOf(item);
  if (outputs.name != nullptr) {
    *outputs.name = unicodeNameOf(item.folder == fsRtParID ? kVolumeName : item.name);
  }
  return noErr;
}

bool isFolder(const Item& item) {
  const auto status = host::fileStatus(item.path, Links::kThemselves);
  return status && status->kind == FileStatus::Kind::kFolder;
}

OSErr compare(const FSRef& one, const FSRef& other) {
  std::string path, otherPath;
  OSErr result = pathOfRef(one, path);
  if (result == noErr) result = pathOfRef(other, otherPath);
  if (result != noErr) return result;
  const auto status = host::fileStatus(path, Links::kThemselves);
  const auto otherStatus = host::fileStatus(otherPath, Links::kThemselves);
  if (!status || !otherStatus) return fnfErr;
  return status->identity == otherStatus->identity ? OSErr{noErr} : OSErr{errFSRefsDifferent};
}

OSErr makeDirectory(const FSSpec& spec, SInt32& id) {
  Item item;
  const OSErr result = itemOfSpec(spec, item);
  if (result == noErr) return dupFNErr;
  if (result != fnfErr || item.path.empty()) return result;
  if (!canBeMade(item)) return bdNamErr;
  if (auto made = host::makeFolder(item.path); !made) return resultFor(made.error());
  return folderOf(item, id);
}

}  // namespace
}  // namespace platform::files

using namespace platform::files;

OSErr FSMakeFSSpec(SInt16 vRefNum, SInt32 dirID, ConstStr255Param fileName, FSSpec* spec) {
  if (spec == nullptr) return paramErr;
  return guarded([&] { return makeSpec(vRefNum, dirID, textOf(fileName), *spec); });
}

OSErr FSpMakeFSRef(const FSSpec* source, FSRef* newRef) {
  if (source == nullptr || newRef == nullptr) return paramErr;
  return guarded([&] {
    Item item;
    const OSErr result = itemOfSpec(*source, item);
    return result == noErr ? makeRef(item, *newRef) : result;
  });
}

OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) {
  if (path == nullptr || ref == nullptr) return paramErr;
  return guarded([&]() -> OSErr {
    Item item;
    OSErr result = itemOfPath(reinterpret_cast<const char*>(path), item);
    if (result == noErr) result = makeRef(item, *ref);
    if (result != noErr || isDirectory == nullptr) return result;
    *isDirectory = isFolder(item) ? 1 : 0;
    return noErr;
  });
}

OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathSize) {
  if (ref == nullptr || path == nullptr) return paramErr;
  return guarded([&]() -> OSErr {
    std::string text;
    const OSErr result = pathOfRef(*ref, text);
    if (result != noErr) return result;
    if (text.size() >= pathSize) return pathTooLongErr;
    std::memcpy(path, text.c_str(), text.size() + 1);
    return noErr;
  });
}

OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                       HFSUniStr255* outName, FSSpec* fsSpec, FSRef* parentRef) {
  if (ref == nullptr) return paramErr;
  return guarded([&] {
    return tellAbout(*ref, whichInfo, {catalogInfo, outName, fsSpec, parentRef});
  });
}

OSErr FSCompareFSRefs(const FSRef* ref1, const FSRef* ref2) {
  if (ref1 == nullptr || ref2 == nullptr) return paramErr;
  return guarded([&] { return compare(*ref1, *ref2); });
}

OSErr FSpDirCreate(const FSSpec* spec, ScriptCode, SInt32* createdDirID) {
  if (spec == nullptr || createdDirID == nullptr) return paramErr;
  return guarded([&] { return makeDirectory(*spec, *createdDirID); });
}
