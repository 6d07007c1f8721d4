// Licence: MIT, see LICENSE.
#include "platform/resources/ResourceFile.h"

#include <algorithm>
#include <set>

#include "platform/resources/BigEndian.h"
#include "platform/resources/MapLayout.h"

namespace platform::resources {
namespace {

/// The areas that the file's header and the map's header name.
struct Areas {
  Bytes data;
  std::size_t dataStart = 0;  // of the data area in the file
  Bytes types;                // from the type list to the end of the map
  Bytes names;                // from the name list to the end of the map
  UInt16 attributes = 0;
};

struct TypeHeader {
  ResType type;
  std::size_t count;
  std::size_t references;  // offset from the type list
};

std::optional<Areas> findAreas(Bytes file) {
  Reader header(file);
  const UInt32 dataStart = header.u32();
  const UInt32 mapStart = header.u32();
  const UInt32 dataSize = header.u32();
  const UInt32 mapSize = header.u32();
  if (header.failed()) return std::nullopt;
  auto data = part(file, dataStart, dataSize);
  auto map = part(file, mapStart, mapSize);
  if (!data || !map || map->size() < kMapHeaderSize) return std::nullopt;

  Reader reader(map->subspan(22));
  Areas areas{*data, dataStart, {}, {}, reader.u16()};
  const std::size_t types = reader.u16();
  const std::size_t names = reader.u16();
  if (types < kMapHeaderSize || types > map->size() || names > map->size()) return std::nullopt;
  areas.types = map->subspan(types);
  areas.names = map->subspan(names);
  return areas;
}

/// A count that is kept less one: 0xFFFF stands for none.
std::size_t countFrom(UInt16 lessOne) { return static_cast<UInt16>(lessOne + 1); }

/// The headers of the types, the references of each known to lie inside the map.
std::optional<std::vector<TypeHeader>> parseTypes(Bytes list) {
  Reader reader(list);
  const std::size_t count = countFrom(reader.u16());
  if (reader.failed() || count > reader.remaining() / kTypeSize) return std::nullopt;

  std::vector<TypeHeader> types;
  std::set<ResType> seen;
  std::size_t references = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const ResType type = reader.u32();
    const std::size_t resources = countFrom(reader.u16());
    const std::size_t offset = reader.u16();
    if (!seen.insert(type).second) return std::nullopt;
    if (!part(list, offset, resources * kReferenceSize)) return std::nullopt;
    // Lists that overlap could name far more resources than the file has bytes.
    references += resources;
    if (references > list.size() / kReferenceSize) return std::nullopt;
    types.push_back({type, resources, offset});
  }
  return types;
}

std::optional<std::string> parseName(Bytes names, UInt16 offset) {
  constexpr UInt16 kNoName = 0xFFFF;
  if (offset == kNoName) return std::string();
  if (offset > names.size()) return std::nullopt;
  Reader reader(names.subspan(offset));
  const Bytes text = reader.take(reader.u8());
  if (reader.failed()) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(text.data()), text.size());
}

std::optional<ResourceEntry> parseReference(Reader& reader, ResType type, const Areas& areas) {
  ResourceEntry entry;
  entry.type = type;
  entry.id = reader.s16();
  auto name = parseName(areas.names, reader.u16());
  entry.attributes = reader.u8();
  const std::size_t offset = reader.u24();
  reader.u32();
  if (!name || reader.failed() || offset > areas.data.size()) return std::nullopt;

  Reader data(areas.data.subspan(offset));
  const std::size_t size = data.u32();
  if (data.failed() || size > data.remaining()) return std::nullopt;
  entry.name = std::move(*name);
  entry.dataOffset = areas.dataStart + offset + sizeof(UInt32);
  entry.dataSize = size;
  return entry;
}

}  // namespace

std::optional<ResourceMap> parseResourceFile(Bytes file) {
  auto areas = findAreas(file);
  if (!areas) return std::nullopt;
  auto types = parseTypes(areas->types);
  if (!types) return std::nullopt;

  ResourceMap map{areas->attributes, {}};
  for (const TypeHeader& header : *types) {
    Reader references(areas->types.subspan(header.references, header.count * kReferenceSize));
    for (std::size_t i = 0; i < header.count; ++i) {
      auto entry = parseReference(references, header.type, *areas);
      if (!entry) return std::nullopt;
      map.entries.push_back(std::move(*entry));
    }
  }
  return map;
}

}  // namespace platform::resources
