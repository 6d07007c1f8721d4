// Licence: MIT, see LICENSE.
#include "platform/resources/AppleDouble.h"

#include <limits>

#include "platform/resources/BigEndian.h"
#include "platform/resources/ByteBuffer.h"

namespace platform::resources {
namespace {

constexpr UInt32 kMagic = 0x00051607;
constexpr UInt32 kVersion = 0x00020000;
constexpr std::size_t kFillerSize = 16;
constexpr std::size_t kHeaderSize = 26;
constexpr std::size_t kEntrySize = 12;
constexpr UInt32 kResourceFork = 2;

struct DoubleEntry {
  UInt32 kind = 0;
  Bytes data;
};

struct DoubleFile {
  Bytes filler;
  std::vector<DoubleEntry> entries;
};

std::optional<DoubleFile> parseAppleDouble(Bytes file) {
  Reader reader(file);
  if (reader.u32() != kMagic || reader.u32() != kVersion) return std::nullopt;
  DoubleFile parsed{reader.take(kFillerSize), {}};
  const std::size_t count = reader.u16();
  if (reader.failed() || count > reader.remaining() / kEntrySize) return std::nullopt;
  for (std::size_t i = 0; i < count; ++i) {
    const UInt32 kind = reader.u32();
    const UInt32 offset = reader.u32();
    const UInt32 size = reader.u32();
    const auto data = part(file, offset, size);
    if (!data) return std::nullopt;
    parsed.entries.push_back({kind, *data});
  }
  return parsed;
}

std::optional<std::vector<std::byte>> layOut(const DoubleFile& file) {
  std::size_t offset = kHeaderSize + file.entries.size() * kEntrySize;
  ByteBuffer buffer;
  buffer.put(kMagic, 4);
  buffer.put(kVersion, 4);
  buffer.append(file.filler);
  buffer.put(static_cast<UInt32>(file.entries.size()), 2);
  for (const DoubleEntry& entry : file.entries) {
    if (entry.data.size() > std::numeric_limits<UInt32>::max() - offset) return std::nullopt;
    buffer.put(entry.kind, 4);
    buffer.put(static_cast<UInt32>(offset), 4);
    buffer.put(static_cast<UInt32>(entry.data.size()), 4);
    offset += entry.data.size();
  }
  for (const DoubleEntry& entry : file.entries) buffer.append(entry.data);
  return buffer.take();
}

DoubleEntry* forkIn(DoubleFile& file) {
  for (DoubleEntry& entry : file.entries) {
    if (entry.kind == kResourceFork) return &entry;
  }
  return nullptr;
}

}  // namespace

std::optional<Bytes> resourceForkOfAppleDouble(Bytes file) {
  auto parsed = parseAppleDouble(file);
  const DoubleEntry* fork = parsed ? forkIn(*parsed) : nullptr;
  return fork == nullptr ? std::nullopt : std::optional(fork->data);
}

std::vector<std::byte> appleDoubleWith(Bytes fork) {
  const std::vector<std::byte> filler(kFillerSize);
  return *layOut({filler, {{kResourceFork, fork}}});
}

std::optional<std::vector<std::byte>> replaceForkOfAppleDouble(Bytes file, Bytes fork) {
  auto parsed = parseAppleDouble(file);
  if (!parsed) return std::nullopt;
  if (DoubleEntry* entry = forkIn(*parsed)) {
    entry->data = fork;
  } else if (parsed->entries.size() < std::numeric_limits<UInt16>::max()) {
    parsed->entries.push_back({kResourceFork, fork});
  } else {
    return std::nullopt;
  }
  // Entries that share their data would each have a copy: a small file must not become a large one.
  std::size_t kept = 0;
  for (const DoubleEntry& entry : parsed->entries) kept += entry.data.size();
  if (kept > file.size() + fork.size()) return std::nullopt;
  return layOut(*parsed);
}

}  // namespace platform::resources
