// Licence: MIT, see LICENSE.
// Writing an open file back. The whole file is laid out anew and replaces the old one, so that
// whoever reads it finds either of them whole. Until that has succeeded nothing in memory says that
// it has.
#include <CarbonCore/MacErrors.h>
#include <CarbonCore/MacMemory.h>

#include <algorithm>
#include <new>

#include "platform/resources/BigEndian.h"
#include "platform/resources/ResourceFiles.h"
#include "platform/resources/ResourceWriter.h"

namespace platform::resources {
namespace {

// Of the header's reserved bytes, those that belong to the application and the system.
constexpr std::size_t kReservedStart = 16;
constexpr std::size_t kReservedEnd = 256;

/// What a writing is about: all changes of a file, or those of one resource.
struct Selection {
  const OpenResource* one;

  bool hasChangesOf(const OpenResource& resource) const {
    return one == nullptr || one == &resource;
  }
  /// Whether the file has the resource afterwards.
  bool includes(const OpenResource& resource) const {
    return resource.isInFile || hasChangesOf(resource);
  }
};

/// The changed data of a resource that has it in memory, else what the file has.
std::vector<std::byte> dataToWrite(const OpenResource& resource, const Selection& selection) {
  const bool isInMemory = resource.handle != nullptr && *resource.handle != nullptr;
  if (!selection.hasChangesOf(resource) || !resource.isChanged() || !isInMemory) {
    return {resource.data.begin(), resource.data.end()};
  }
  const auto* bytes = reinterpret_cast<const std::byte*>(*resource.handle);
  return {bytes, bytes + GetHandleSize(resource.handle)};
}

std::vector<ResourceContents> contentsToWrite(const std::vector<OpenResource>& resources,
                                              const Selection& selection) {
  std::vector<ResourceContents> contents;
  for (const OpenResource& resource : resources) {
    if (!selection.includes(resource)) continue;
    const ResourceEntry& entry = resource.entry;
    contents.push_back({entry.type, entry.id, static_cast<UInt8>(entry.attributes & ~resChanged),
                        entry.name, dataToWrite(resource, selection)});
  }
  return contents;
}

/// What programs keep in the reserved part of the header is theirs.
void keepReservedBytes(Bytes former, std::vector<std::byte>& file) {
  Reader header(former);
  const UInt32 dataStart = header.u32();
  const UInt32 mapStart = header.u32();
  if (former.size() < kReservedEnd || std::min(dataStart, mapStart) < kReservedEnd) return;
  std::copy(former.begin() + kReservedStart, former.begin() + kReservedEnd,
            file.begin() + kReservedStart);
}

/// Makes the resources see what was written; the map has them in the same order.
void takeOver(std::vector<OpenResource>& resources, const Selection& selection, Bytes fork,
              const ResourceMap& map) {
  auto entry = map.entries.begin();
  for (OpenResource& resource : resources) {
    if (!selection.includes(resource)) continue;
    resource.entry.dataOffset = entry->dataOffset;
    resource.entry.dataSize = entry->dataSize;
    resource.data = fork.subspan(entry->dataOffset, entry->dataSize);
    if (selection.hasChangesOf(resource)) {
      resource.isInFile = true;
      resource.entry.attributes &= static_cast<UInt8>(~resChanged);
    }
    ++entry;
  }
}

}  // namespace

void OpenFile::insert(OpenResource resource) {
  const auto last = std::find_if(resources.rbegin(), resources.rend(), [&](const auto& other) {
    return other.entry.type == resource.entry.type;
  });
  const auto behind = last == resources.rend() ? resources.end() : last.base();
  resources.insert(behind, std::move(resource));
}

bool OpenFile::hasChanges() const {
  return (attributes & mapChanged) != 0 || std::ranges::any_of(resources, &OpenResource::isChanged);
}

OSErr OpenFile::write(const OpenResource* one) try {
  if ((attributes & mapReadOnly) != 0) return wrPermErr;
  const Selection selection{one};
  const auto kept = static_cast<UInt16>(attributes & ~mapChanged);
  auto written = writeResourceFile(contentsToWrite(resources, selection), kept);
  if (!written) return dskFulErr;
  keepReservedBytes(fork, *written);
  const auto map = parseResourceFile(*written);
  if (!map) return ioErr;
  const OSErr result = writeResourceFork(place, *written);
  if (result != noErr) return result;
  fork = std::move(*written);
  attributes = kept;
  takeOver(resources, selection, fork, *map);
  return noErr;
} catch (const std::bad_alloc&) {
  return memFullErr;
}

}  // namespace platform::resources
