// Licence: MIT, see LICENSE.
// Feeds the packets of one connection to the assembler. The input is packets, each after its length
// in two bytes. Whatever they are, no more memory may be held than was fed, and what is said to be
// complete must be what was sent.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "platform/mach/Packet.h"

namespace {

using platform::mach::Assembler;
using platform::mach::Bytes;
using platform::mach::decodeHeader;
using platform::mach::encodeHeader;
using platform::mach::kPacketHeaderSize;
using Outcome = Assembler::Outcome;

void require(bool holds) {
  if (!holds) std::abort();
}

void checkHeader(Bytes packet) {
  const auto header = decodeHeader(packet);
  if (!header) return;
  const auto again = encodeHeader(*header);
  for (std::size_t i = 0; i < again.size(); ++i) require(again[i] == packet[i]);
}

Bytes takePacket(Bytes& input) {
  const std::size_t claimed =
      std::to_integer<std::size_t>(input[0]) << 8 | std::to_integer<std::size_t>(input[1]);
  input = input.subspan(2);
  const Bytes packet = input.first(std::min(claimed, input.size()));
  input = input.subspan(packet.size());
  return packet;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes input = std::as_bytes(std::span(data, size));
  Assembler assembler;
  std::size_t fed = 0;
  while (input.size() >= 2) {
    const Bytes packet = takePacket(input);
    checkHeader(packet);
    fed += packet.size();
    const Outcome outcome = assembler.feed(packet);
    if (outcome == Outcome::kMalformed) break;
    if (outcome != Outcome::kComplete) continue;
    const platform::mach::Buffer body = assembler.takeBody();
    require(body.size == assembler.header().total);
    require(body.size + kPacketHeaderSize <= fed);
  }
  return 0;
}
