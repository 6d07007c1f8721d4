// Licence: MIT, see LICENSE.
// Items of the volume: what an FSSpec, an FSRef or a path stands for.
#ifndef PLATFORM_FILES_ITEMS_H
#define PLATFORM_FILES_ITEMS_H

#include <CarbonCore/Files.h>

#include <string>

#include "platform/files/FolderTable.h"

namespace platform::files {

/// The number of the only volume, and the name that its root has.
constexpr SInt16 kVolume = -100;
constexpr std::string_view kVolumeName = "Host";

/// A name in a folder; fsRtParID and no name for the root.
struct Item {
  FolderID folder = 0;
  std::string name;  // on the host
  std::string path;
};

/// Whether a number means our volume.
bool isVolume(SInt16 vRefNum);

/// The folder itself as an item. dirNFErr if there is no folder of that ID.
OSErr itemOfFolder(FolderID folder, Item& item);

/// What a name means in a folder, shortened ones included. fnfErr, with the item complete, if it
/// does not exist; dirNFErr, bdNamErr.
OSErr itemNamed(FolderID folder, std::string_view macName, Item& item);

/// The item of an FSSpec, whose name is no path. fnfErr as above.
OSErr itemOfSpec(const FSSpec& spec, Item& item);
OSErr itemOfRef(const FSRef& ref, Item& item);
/// The item at a path, links followed.
OSErr itemOfPath(const std::string& path, Item& item);

FSSpec specOf(const Item& item);
/// fnfErr if the item does not exist.
OSErr makeRef(const Item& item, FSRef& ref);

/// The host path of what an FSSpec stands for. fnfErr, with the path, if nothing is there.
OSErr pathOfSpec(const FSSpec& spec, std::string& path);
OSErr pathOfRef(const FSRef& ref, std::string& path);

}  // namespace platform::files

#endif
