// Licence: MIT, see LICENSE.
#include <CarbonCore/Folders.h>
#include <CarbonCore/MacErrors.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <optional>

#include "platform/files/Items.h"
#include "platform/files/Results.h"
#include "platform/host/Roots.h"

namespace platform::files {
namespace {

/// Where a kind of folder is in its domain. Of those that have a domain of their own the path
/// starts at the root or at the home.
struct Kind {
  OSType type;
  SInt16 usualDomain;
  const char* path;
};

constexpr Kind kKinds[] = {
    {kDomainTopLevelFolderType, kLocalDomain, ""},
    {kDomainLibraryFolderType, kLocalDomain, "/Library"},
    {kApplicationsFolderType, kLocalDomain, "/Applications"},
    {kApplicationSupportFolderType, kLocalDomain, "/Library/Application Support"},
    {kCachedDataFolderType, kUserDomain, "/Library/Caches"},
    {kFrameworksFolderType, kSystemDomain, "/Library/Frameworks"},
    {kLogsFolderType, kLocalDomain, "/Library/Logs"},
    {kPreferencesFolderType, kUserDomain, "/Library/Preferences"},
};

/// The top of a domain.
std::optional<std::string> topOf(SInt16 domain) {
  switch (domain) {
    case kSystemDomain:
      return host::rootPath() + "/System";
    case kLocalDomain:
      return host::rootPath();
    case kNetworkDomain:
      return host::rootPath() + "/Network";
    case kUserDomain:
      return host::homePath();
    default:
      return std::nullopt;
  }
}

bool isDisk(SInt16 domain) {
  return domain == kOnSystemDisk || domain == kOnAppropriateDisk || isVolume(domain);
}

OSErr pathOfKind(SInt16 domain, OSType type, std::string& path) {
  const auto kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                 [type](const Kind& each) { return each.type == type; });
  const bool isKnown = kind != std::end(kKinds);
  if (isDisk(domain)) domain = isKnown ? kind->usualDomain : SInt16{kUserDomain};
  const auto top = topOf(domain);
  if (!top) return nsvErr;
  if (type == kTemporaryFolderType) {
    path = host::rootPath() + "/tmp";
  } else if (type == kCurrentUserFolderType && domain == kUserDomain) {
    path = host::homePath();
  } else if (isKnown) {
    path = *top + kind->path;
  } else {
    return fnfErr;
  }
  if (path.empty()) path = "/";
  return noErr;
}

OSErr findFolder(SInt16 domain, OSType type, bool create, Item& item) try {
  std::string path;
  OSErr result = pathOfKind(domain, type, path);
  if (result != noErr) return result;
  if (create) {
    if (auto made = host::makeFolders(path); !made) return resultFor(made.error());
  }
  result = itemOfPath(path, item);
  if (result != noErr) return result == dirNFErr ? OSErr{fnfErr} : result;
  const auto status = host::fileStatus(item.path, host::Links::kThemselves);
  const bool isFolder = status && status->kind == host::FileStatus::Kind::kFolder;
  return isFolder ? OSErr{noErr} : OSErr{fnfErr};
} catch (const std::bad_alloc&) {
  return memFullErr;
}

OSErr folderIDOf(const Item& item, SInt32& id) try {
  const auto folder = FolderTable::shared().idOfPath(item.path);
  if (!folder) return fnfErr;
  id = *folder;
  return noErr;
} catch (const std::bad_alloc&) {
  return memFullErr;
}

}  // namespace
}  // namespace platform::files

using namespace platform::files;

OSErr FindFolder(SInt16 vRefNum, OSType folderType, Boolean createFolder, SInt16* foundVRefNum,
                 SInt32* foundDirID) {
  if (foundVRefNum == nullptr || foundDirID == nullptr) return paramErr;
  Item item;
  OSErr result = findFolder(vRefNum, folderType, createFolder != 0, item);
  if (result == noErr) result = folderIDOf(item, *foundDirID);
  if (result == noErr) *foundVRefNum = kVolume;
  return result;
}

OSErr FSFindFolder(SInt16 vRefNum, OSType folderType, Boolean createFolder, FSRef* foundRef) {
  if (foundRef == nullptr) return paramErr;
  Item item;
  const OSErr result = findFolder(vRefNum, folderType, createFolder != 0, item);
  return result == noErr ? makeRef(item, *foundRef) : result;
}
