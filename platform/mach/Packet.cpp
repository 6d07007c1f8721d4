// Licence: MIT, see LICENSE.
#include "platform/mach/Packet.h"

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

void Buffer::Free::operator()(std::byte* block) const { std::free(block); }

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
  const std::optional<PacketHeader> header = decodeHeader(packet);
  if (!header) return Outcome::kMalformed;
  const Bytes rest = packet.subspan(kPacketHeaderSize);
  switch (header->kind) {
    case PacketHeader::Kind::kFirst:
      return begin(*header, rest);
    case PacketHeader::Kind::kAbandoned:
      if (header->destination == 0 || header->reply != 0) return Outcome::kMalformed;
      if (!rest.empty() || header->inMemoryFile || header->total != 0) return Outcome::kMalformed;
      return begin(*header, rest);
    case PacketHeader::Kind::kContinuation:
      break;
  }
  // Only a body that is under way and still lacks these bytes can go on.
  if (!underWay || header->inMemoryFile || rest.empty()) return Outcome::kMalformed;
  return append(rest);
}

Assembler::Outcome Assembler::begin(const PacketHeader& header, Bytes rest) {
  current = header;
  body = Buffer{};
  underWay = !header.inMemoryFile;
  if (header.inMemoryFile) return rest.empty() ? Outcome::kMemoryFile : Outcome::kMalformed;
  if (rest.empty() && header.total > 0) return Outcome::kMalformed;
  return append(rest);
}

Assembler::Outcome Assembler::append(Bytes rest) {
  if (rest.size() > current.total - body.size) return Outcome::kMalformed;
  if (!rest.empty()) {
    void* grown = std::realloc(body.memory.get(), body.size + rest.size());
    if (grown == nullptr) return Outcome::kMalformed;
    static_cast<void>(body.memory.release());
    body.memory.reset(static_cast<std::byte*>(grown));
    std::memcpy(body.memory.get() + body.size, rest.data(), rest.size());
    body.size += rest.size();
  }
  if (body.size < current.total) return Outcome::kPartial;
  underWay = false;
  return Outcome::kComplete;
}

}  // namespace platform::mach
