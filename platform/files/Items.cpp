// Licence: MIT, see LICENSE.
#include "platform/files/Items.h"

#include <CarbonCore/MacErrors.h>

#include <algorithm>
#include <cstring>

#include "platform/files/Names.h"
#include "platform/files/Results.h"
#include "platform/host/Clock.h"

namespace platform::files {
namespace {

using host::Links;

constexpr std::size_t kKeptName = 40;

/// What is in an FSRef: where the item was met and which one it was. A long name is kept by its sum
/// only, and its item found among those of its folder.
struct RefContents {
  UInt32 mark;
  FolderID folder;
  UInt32 identity[6];
  UInt32 nameSum;
  UInt32 nameLength;
  char name[kKeptName];
};
static_assert(sizeof(RefContents) == sizeof(FSRef));

UInt32 highWord(std::uint64_t value) { return static_cast<UInt32>(value >> 32); }
UInt32 lowWord(std::uint64_t value) { return static_cast<UInt32>(value); }
std::uint64_t fromWords(UInt32 high, UInt32 low) { return std::uint64_t{high} << 32 | low; }

/// Folder IDs are of this process only, and so is what refers to them.
UInt32 processMark() {
  static const UInt32 mark = lowWord(static_cast<std::uint64_t>(host::wallNow())) | 1;
  return mark;
}

host::FileIdentity identityIn(const RefContents& contents) {
  const UInt32* words = contents.identity;
  return {fromWords(words[0], words[1]), fromWords(words[2], words[3]),
          fromWords(words[4], words[5])};
}

/// The one name in a folder that passes a test; nothing if there is none.
template <typename Test>
std::optional<std::string> findName(const std::string& folder, Test test) {
  const auto names = host::folderNames(folder);
  if (!names) return std::nullopt;
  const auto found = std::find_if(names->begin(), names->end(), test);
  return found == names->end() ? std::nullopt : std::optional(*found);
}

/// The name that an FSRef has kept, a long one as it is in the folder now.
std::optional<std::string> nameIn(const RefContents& contents, const std::string& folder) {
  if (contents.nameLength <= kKeptName) return std::string(contents.name, contents.nameLength);
  const std::string_view start(contents.name, kKeptName);
  return findName(folder, [&](const std::string& name) {
    return name.starts_with(start) && sumOf(name) == contents.nameSum;
  });
}

std::optional<std::string> nameByIdentity(const RefContents& contents, const std::string& folder) {
  const auto identity = identityIn(contents);
  if (auto kept = nameIn(contents, folder)) return findAgain(folder, *kept, identity);
  return findName(folder, [&](const std::string& name) {
    const auto status = host::fileStatus(joined(folder, name), Links::kThemselves);
    return status && status->identity == identity;
  });
}

bool exists(const std::string& path) {
  return static_cast<bool>(host::fileStatus(path, Links::kThemselves));
}

/// The host name that is shown in a folder in a certain way.
std::optional<std::string> nameShownAs(const std::string& folder, std::string_view macName) {
  return findName(folder, [&](const std::string& name) { return macNameOf(name) == macName; });
}

}  // namespace

bool isVolume(SInt16 vRefNum) { return vRefNum == 0 || vRefNum == kVolume; }

OSErr itemOfFolder(FolderID folder, Item& item) {
  const auto place = FolderTable::shared().placeOf(folder);
  const auto path = FolderTable::shared().pathOf(folder);
  if (!place || !path) return dirNFErr;
  item = {place->parent, place->name, *path};
  return noErr;
}

OSErr itemNamed(FolderID folder, std::string_view macName, Item& item) {
  if (folder == fsRtParID) {
    return macName == kVolumeName ? itemOfFolder(fsRtDirID, item) : OSErr{fnfErr};
  }
  const auto path = FolderTable::shared().pathOf(folder);
  if (!path) return dirNFErr;
  if (looksShortened(macName)) {
    if (const auto name = nameShownAs(*path, macName)) {
      item = {folder, *name, joined(*path, *name)};
      return noErr;
    }
  }
  const auto name = hostNameOf(macName);
  if (!name) return bdNamErr;
  item = {folder, *name, joined(*path, *name)};
  return exists(item.path) ? OSErr{noErr} : OSErr{fnfErr};
}

OSErr itemOfSpec(const FSSpec& spec, Item& item) {
  if (!isVolume(spec.vRefNum)) return nsvErr;
  const FolderID folder = spec.parID == 0 ? FolderID{fsRtDirID} : spec.parID;
  const std::size_t length = spec.name[0];
  if (length == 0) return itemOfFolder(folder, item);
  if (length >= sizeof(spec.name)) return bdNamErr;
  return itemNamed(folder, {reinterpret_cast<const char*>(spec.name) + 1, length}, item);
}

OSErr itemOfRef(const FSRef& ref, Item& item) {
  RefContents contents;
  std::memcpy(&contents, ref.hidden, sizeof(contents));
  if (contents.mark != processMark()) return errFSBadFSRef;
  if (contents.folder == fsRtParID) return itemOfFolder(fsRtDirID, item);
  const auto folder = FolderTable::shared().pathOf(contents.folder);
  if (!folder) return dirNFErr;
  const auto name = nameByIdentity(contents, *folder);
  if (!name) return fnfErr;
  item = {contents.folder, *name, joined(*folder, *name)};
  return noErr;
}

OSErr itemOfPath(const std::string& path, Item& item) {
  const auto canonical = host::canonicalPath(path);
  if (!canonical) {
    if (canonical.error() != host::Error::kNotFound) return resultFor(canonical.error());
    const auto slash = path.find_last_of('/');
    const bool isAtHand = slash == std::string::npos || slash == 0;
    const bool isThere = isAtHand || host::canonicalPath(path.substr(0, slash));
    return isThere ? OSErr{fnfErr} : OSErr{dirNFErr};
  }
  if (*canonical == "/") return itemOfFolder(fsRtDirID, item);
  const auto slash = canonical->find_last_of('/');
  const auto folder = FolderTable::shared().idOfPath(canonical->substr(0, slash));
  if (!folder) return dirNFErr;
  item = {*folder, canonical->substr(slash + 1), *canonical};
  return noErr;
}

FSSpec specOf(const Item& item) {
  FSSpec spec{};
  spec.vRefNum = kVolume;
  spec.parID = item.folder;
  const std::string name =
      item.folder == fsRtParID ? std::string(kVolumeName) : macNameOf(item.name);
  spec.name[0] = static_cast<UInt8>(name.size());
  std::memcpy(spec.name + 1, name.data(), name.size());
  return spec;
}

OSErr makeRef(const Item& item, FSRef& ref) {
  const auto status = host::fileStatus(item.path, Links::kThemselves);
  if (!status) return resultFor(status.error());
  RefContents contents{};
  contents.mark = processMark();
  contents.folder = item.folder;
  const auto [device, inode, made] = status->identity;
  const UInt32 words[] = {highWord(device), lowWord(device), highWord(inode),
                          lowWord(inode),   highWord(made),  lowWord(made)};
  std::memcpy(contents.identity, words, sizeof(words));
  contents.nameSum = sumOf(item.name);
  contents.nameLength = static_cast<UInt32>(item.name.size());
  std::memcpy(contents.name, item.name.data(), std::min(item.name.size(), kKeptName));
  std::memcpy(ref.hidden, &contents, sizeof(contents));
  return noErr;
}

OSErr pathOfSpec(const FSSpec& spec, std::string& path) {
  Item item;
  const OSErr result = itemOfSpec(spec, item);
  if (result == noErr || result == fnfErr) path = item.path;
  return result;
}

OSErr pathOfRef(const FSRef& ref, std::string& path) {
  Item item;
  const OSErr result = itemOfRef(ref, item);
  if (result == noErr) path = item.path;
  return result;
}

}  // namespace platform::files
