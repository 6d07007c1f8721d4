// Licence: MIT, see LICENSE.
#include "platform/mach/Packet.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace platform::mach {

namespace {

constexpr std::uint32_t kMagic = 0x51724d31;  // 'QrM1'
constexpr std::uint8_t kInMemoryFile = 1;

// Where the fields stand.
constexpr std::size_t kKindAt = 4;
constexpr std::size_t kFlagsAt = 5;
constexpr std::size_t kReservedAt = 6;
constexpr std::size_t kDestinationAt = 8;
constexpr std::size_t kReplyAt = 12;
constexpr std::size_t kIdAt = 16;
constexpr std::size_t kTotalAt = 20;

void putWord(std::byte* at, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) *at++ = static_cast<std::byte>(value >> shift);
}

std::uint32_t getWord(Bytes packet, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i)
    value = value << 8 | std::to_integer<std::uint32_t>(packet[at + i]);
  return value;
}

}  // namespace

std::optional<Buffer> makeBuffer(std::size_t size) {
  Buffer buffer;
  if (size == 0) return buffer;
  buffer.memory.reset(static_cast<std::byte*>(std::malloc(size)));
  if (!buffer.memory) return std::nullopt;
  buffer.size = size;
  return buffer;
}

std::optional<Buffer> copyOf(Bytes body) {
  std::optional<Buffer> copy = makeBuffer(body.size());
  if (copy && !body.empty()) std::memcpy(copy->memory.get(), body.data(), body.size());
  return copy;
}

std::array<std::byte, kPacketHeaderSize> encodeHeader(const PacketHeader& header) {
  std::array<std::byte, kPacketHeaderSize> bytes{};
  putWord(bytes.data(), kMagic);
  bytes[kKindAt] = static_cast<std::byte>(header.kind);
  bytes[kFlagsAt] = static_cast<std::byte>(header.inMemoryFile ? kInMemoryFile : 0);
  putWord(&bytes[kDestinationAt], header.destination);
  putWord(&bytes[kReplyAt], header.reply);
  putWord(&bytes[kIdAt], static_cast<std::uint32_t>(header.id));
  putWord(&bytes[kTotalAt], header.total);
  return bytes;
}

std::optional<PacketHeader> decodeHeader(Bytes packet) {
  if (packet.size() < kPacketHeaderSize || getWord(packet, 0) != kMagic) return std::nullopt;
  const auto kind = std::to_integer<std::uint8_t>(packet[kKindAt]);
  const auto flags = std::to_integer<std::uint8_t>(packet[kFlagsAt]);
  const bool reserved =
      packet[kReservedAt] != std::byte{0} || packet[kReservedAt + 1] != std::byte{0};
  if (kind < 1 || kind > 3 || (flags & ~kInMemoryFile) != 0 || reserved) return std::nullopt;

  PacketHeader header;
  header.kind = static_cast<PacketHeader::Kind>(kind);
  header.inMemoryFile = (flags & kInMemoryFile) != 0;
  header.destination = getWord(packet, kDestinationAt);
  header.reply = getWord(packet, kReplyAt);
  header.id = static_cast<mach_msg_id_t>(getWord(packet, kIdAt));
  header.total = getWord(packet, kTotalAt);
  if (header.total > std::uint32_t{std::numeric_limits<std::int32_t>::max()}) return std::nullopt;
  return header;
}

Assembler::Outcome Assembler::feed(Bytes packet) {
  const std::size_t head = std::min(packet.size(), kPacketHeaderSize);
  return feed(packet.first(head), {.rest = packet.subspan(head)});
}

Assembler::Outcome Assembler::feed(Bytes head, const PacketBody& incoming) {
  const std::optional<PacketHeader> header = decodeHeader(head);
  if (!header) return Outcome::kMalformed;
  const bool isEmpty = incoming.placed.empty() && incoming.rest.empty();
  switch (header->kind) {
    case PacketHeader::Kind::kFirst:
      return begin(*header, incoming);
    case PacketHeader::Kind::kAbandoned:
      if (header->destination == 0 || header->reply != 0) return Outcome::kMalformed;
      if (!isEmpty || header->inMemoryFile || header->total != 0) return Outcome::kMalformed;
      return begin(*header, incoming);
    case PacketHeader::Kind::kContinuation:
      break;
  }
  // Only a body that is under way and still lacks these bytes can go on.
  if (!underWay || header->inMemoryFile || isEmpty) return Outcome::kMalformed;
  body.size += incoming.placed.size();  // no more than room(), so no more than is lacking
  return append(incoming.rest);
}

Assembler::Outcome Assembler::begin(const PacketHeader& header, const PacketBody& incoming) {
  const Buffer before = std::exchange(body, Buffer{});  // where `placed` lies
  capacity = 0;
  current = header;
  underWay = !header.inMemoryFile;
  const std::size_t size = incoming.placed.size() + incoming.rest.size();
  if (header.inMemoryFile) return size == 0 ? Outcome::kMemoryFile : Outcome::kMalformed;
  if ((size == 0 && header.total > 0) || size > header.total) return Outcome::kMalformed;
  if (takeOver(incoming)) return settle();
  const Outcome outcome = append(incoming.placed);
  return incoming.rest.empty() || outcome == Outcome::kMalformed ? outcome : append(incoming.rest);
}

/// A large packet stays where it was read if its message has room there; else it goes to a kept
/// block with room, if there is one. False if it must be copied to a block of its size.
bool Assembler::takeOver(const PacketBody& incoming) {
  const Bytes rest = incoming.rest;
  if (!incoming.placed.empty() || incoming.block == nullptr) return false;
  if (rest.size() < kSmallestKept || current.total > kLargestKept) return false;
  const bool fits = incoming.block->capacity >= current.total;
  Block block = fits ? std::move(*incoming.block) : withdrawKept(current.total);
  if (!block) return false;
  if (!keepOnceFree(block.memory.get(), block.capacity)) {
    if (fits) *incoming.block = std::move(block);
    return false;
  }
  if (!fits) std::memcpy(block.memory.get(), rest.data(), rest.size());
  capacity = block.capacity;
  body.memory = std::move(block.memory);
  body.size = rest.size();
  return true;
}

std::span<std::byte> Assembler::room() {
  if (!underWay || capacity < current.total) return {};
  return {body.memory.get() + body.size, current.total - body.size};
}

Assembler::Outcome Assembler::append(Bytes rest) {
  if (rest.size() > current.total - body.size) return Outcome::kMalformed;
  if (!rest.empty()) {
    if (!grow(body.size + rest.size())) return Outcome::kMalformed;
    std::memcpy(body.memory.get() + body.size, rest.data(), rest.size());
    body.size += rest.size();
  }
  return settle();
}

/// Exactly to a size, unless the block has room for it. When it holds a whole large message there
/// is to be a block for the next such.
bool Assembler::grow(std::size_t size) {
  if (size <= capacity) return true;
  void* grown = std::realloc(body.memory.get(), size);
  if (grown == nullptr) return false;
  static_cast<void>(body.memory.release());
  body.memory.reset(static_cast<std::byte*>(grown));
  capacity = size;
  if (size == current.total && isWorthKeeping(size)) keepOne(size);
  return true;
}

Assembler::Outcome Assembler::settle() {
  if (body.size < current.total) return Outcome::kPartial;
  underWay = false;
  return Outcome::kComplete;
}

}  // namespace platform::mach
