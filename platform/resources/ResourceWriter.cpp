// Licence: MIT, see LICENSE.
#include "platform/resources/ResourceWriter.h"

#include <algorithm>

#include "platform/resources/ByteBuffer.h"
#include "platform/resources/MapLayout.h"

namespace platform::resources {
namespace {

constexpr std::size_t kDataStart = 256;  // the header, and space that belongs to other managers
constexpr std::size_t kLargestOffset16 = 0xFFFF;
constexpr std::size_t kLargestOffset24 = 0xFFFFFF;
constexpr std::size_t kLongestName = 255;
constexpr UInt16 kNoName = 0xFFFF;

using Group = std::vector<const ResourceContents*>;

std::vector<Group> groupByType(const std::vector<ResourceContents>& resources) {
  std::vector<Group> groups;
  for (const ResourceContents& resource : resources) {
    auto group = std::find_if(groups.begin(), groups.end(), [&](const Group& candidate) {
      return candidate.front()->type == resource.type;
    });
    if (group == groups.end()) group = groups.insert(groups.end(), Group());
    group->push_back(&resource);
  }
  return groups;
}

/// Appends a resource's data, and its name if it has one, and refers to them.
bool writeReference(const ResourceContents& resource, ByteBuffer& references, ByteBuffer& names,
                    ByteBuffer& data) {
  const bool named = !resource.name.empty();
  if (resource.name.size() > kLongestName || data.size() > kLargestOffset24) return false;
  if (named && names.size() >= kNoName) return false;
  references.put(static_cast<UInt16>(resource.id), 2);
  references.put(named ? static_cast<UInt32>(names.size()) : kNoName, 2);
  references.put(resource.attributes, 1);
  references.put(static_cast<UInt32>(data.size()), 3);
  references.put(0, 4);
  if (named) names.putPascalString(resource.name);
  data.put(static_cast<UInt32>(resource.data.size()), 4);
  data.append(resource.data);
  return true;
}

struct Sections {
  ByteBuffer types;  // with the references behind
  ByteBuffer names;
  ByteBuffer data;
};

std::optional<Sections> writeSections(const std::vector<Group>& groups) {
  Sections sections;
  ByteBuffer references;
  const std::size_t listSize = 2 + groups.size() * kTypeSize;
  sections.types.put(static_cast<UInt16>(groups.size() - 1), 2);
  for (const Group& group : groups) {
    const std::size_t offset = listSize + references.size();
    if (offset > kLargestOffset16 || group.size() > kLargestOffset16) return std::nullopt;
    sections.types.put(group.front()->type, 4);
    sections.types.put(static_cast<UInt16>(group.size() - 1), 2);
    sections.types.put(static_cast<UInt32>(offset), 2);
    for (const ResourceContents* resource : group) {
      if (!writeReference(*resource, references, sections.names, sections.data))
        return std::nullopt;
    }
  }
  sections.types.append(references.bytes());
  return sections;
}

void writeHeader(ByteBuffer& file, std::size_t dataSize, std::size_t mapSize) {
  file.put(kDataStart, 4);
  file.put(static_cast<UInt32>(kDataStart + dataSize), 4);
  file.put(static_cast<UInt32>(dataSize), 4);
  file.put(static_cast<UInt32>(mapSize), 4);
}

}  // namespace

std::optional<std::vector<std::byte>> writeResourceFile(
    const std::vector<ResourceContents>& resources, UInt16 attributes) {
  auto sections = writeSections(groupByType(resources));
  if (!sections) return std::nullopt;
  const std::size_t names = kMapHeaderSize + sections->types.size();
  if (names > kLargestOffset16) return std::nullopt;
  const std::size_t mapSize = names + sections->names.size();

  ByteBuffer file;
  writeHeader(file, sections->data.size(), mapSize);
  file.zeros(kDataStart - file.size());
  file.append(sections->data.bytes());
  writeHeader(file, sections->data.size(), mapSize);  // the map begins with a copy
  file.zeros(6);                                      // a handle and a file number, in memory only
  file.put(attributes, 2);
  file.put(kMapHeaderSize, 2);
  file.put(static_cast<UInt32>(names), 2);
  file.append(sections->types.bytes());
  file.append(sections->names.bytes());
  return file.take();
}

}  // namespace platform::resources
