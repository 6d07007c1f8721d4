// Licence: MIT, see LICENSE.
// Feeds a file to everything that reads resource files: the file's own form, the companion form,
// and the forms of alerts, their items and components. What is read must lie inside the file and
// survive being written, in a companion too, of which all else must stay.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "platform/components/ComponentRegistry.h"
#include "platform/resources/AppleDouble.h"
#include "platform/resources/ResourceFile.h"
#include "platform/resources/ResourceWriter.h"
#include "platform/userinterface/AlertResource.h"

namespace {

using namespace platform::resources;

void require(bool holds) {
  if (!holds) std::abort();
}

ResourceContents contentsOf(Bytes file, const ResourceEntry& entry) {
  require(entry.dataOffset <= file.size() && entry.dataSize <= file.size() - entry.dataOffset);
  const Bytes data = file.subspan(entry.dataOffset, entry.dataSize);
  return {entry.type, entry.id, entry.attributes, entry.name, {data.begin(), data.end()}};
}

/// Writing may have to refuse: resources that shared their data no longer do. `resources` is in the
/// order of a map, so that it comes back in the same.
void checkWriting(const std::vector<ResourceContents>& resources, UInt16 attributes) {
  const auto written = writeResourceFile(resources, attributes);
  if (!written) return;
  const auto map = parseResourceFile(*written);
  require(map && map->attributes == attributes && map->entries.size() == resources.size());
  for (std::size_t i = 0; i < resources.size(); ++i) {
    const ResourceContents read = contentsOf(*written, map->entries[i]);
    require(read.type == resources[i].type && read.id == resources[i].id &&
            read.attributes == resources[i].attributes && read.name == resources[i].name &&
            read.data == resources[i].data);
  }
}

void readFile(Bytes file) {
  const auto map = parseResourceFile(file);
  if (!map) return;
  constexpr std::size_t kEnoughToWrite = 64;
  std::vector<ResourceContents> resources;
  for (const ResourceEntry& entry : map->entries) {
    if (resources.size() == kEnoughToWrite) break;
    resources.push_back(contentsOf(file, entry));
    platform::userinterface::parseAlert(resources.back().data);
    platform::userinterface::parseItems(resources.back().data);
    platform::components::parseComponent(resources.back().data);
  }
  checkWriting(resources, map->attributes);
}

/// A companion whose fork is replaced has the new one and is larger by no more than that; replacing
/// it again gives the same file.
void checkCompanion(Bytes file, Bytes fork) {
  const auto replaced = replaceForkOfAppleDouble(file, fork);
  if (!replaced) return;
  const auto inside = resourceForkOfAppleDouble(*replaced);
  require(inside && std::ranges::equal(*inside, fork));
  constexpr std::size_t kHeaderAndOneEntry = 38;
  require(replaced->size() <= 2 * file.size() + fork.size() + kHeaderAndOneEntry);
  require(replaceForkOfAppleDouble(*replaced, fork) == replaced);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes file(reinterpret_cast<const std::byte*>(data), size);
  readFile(file);
  if (const auto fork = resourceForkOfAppleDouble(file)) readFile(*fork);
  checkCompanion(file, file.first(file.size() / 2));
  checkCompanion(appleDoubleWith(file), file);
  return 0;
}
