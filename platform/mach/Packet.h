// Licence: MIT, see LICENSE.
// How a message travels over a connection: as one packet or several. Each starts with a header of
// big-endian words; the first packet of a message is followed by as much of the body as it holds,
// and continuations by the rest, in order and without other packets between them. A first packet
// abandons whatever an earlier one had begun. A very large body travels as a memory file beside its
// first packet.
//
// Nothing here does input or output: these are pure functions of bytes that strangers may have made
// up.
#ifndef PLATFORM_MACH_PACKET_H
#define PLATFORM_MACH_PACKET_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

#include "platform/mach/KeptBlocks.h"
#include "platform/mach/PortSpace.h"

namespace platform::mach {

/// Names a send-once right among those that one process made; 0 is none.
using Token = std::uint32_t;

struct PacketHeader {
  enum class Kind : std::uint8_t {
    kFirst = 1,
    kContinuation = 2,
    kAbandoned = 3,  // the send-once right `destination` was given up unused
  };
  Kind kind = Kind::kFirst;
  bool inMemoryFile = false;
  Token destination = 0;  // 0: the port that listens at the receiving end
  Token reply = 0;        // the sender's right for the answer
  mach_msg_id_t id = 0;
  std::uint32_t total = 0;  // bytes of the whole body
};

inline constexpr std::size_t kPacketHeaderSize = 24;
/// The most bytes of a body that one packet may carry; larger packets are refused.
inline constexpr std::size_t kPacketBodyLimit = 192 * 1024;

std::array<std::byte, kPacketHeaderSize> encodeHeader(const PacketHeader& header);
/// None unless the bytes start with a header in which everything is as it should be.
std::optional<PacketHeader> decodeHeader(Bytes packet);

/// Makes a buffer of this size; none when memory is exhausted. The bytes are not set.
std::optional<Buffer> makeBuffer(std::size_t size);

/// A buffer with these bytes; none when memory is exhausted.
std::optional<Buffer> copyOf(Bytes body);

/// What a packet brings behind its header.
struct PacketBody {
  Bytes placed{};  // was read into the assembler's room()
  Bytes rest{};    // follows that
  /// Where the rest lies from the beginning on, if the assembler may take the block over.
  Block* block = nullptr;
};

/// Puts the packets of one connection together. Never holds more memory than it was fed, but for
/// blocks that are kept for large messages.
class Assembler final {
 public:
  enum class Outcome {
    kPartial,     // more packets are to come
    kComplete,    // header() and takeBody() are a message
    kMemoryFile,  // header() is a message whose body is the descriptor that came with the packet
    kMalformed,   // the connection cannot be trusted any more
  };
  Outcome feed(Bytes head, const PacketBody& body);
  Outcome feed(Bytes packet);

  /// Where the rest of the message that is under way can be read to at once, if there is a block
  /// for all of it.
  std::span<std::byte> room();
  const PacketHeader& header() const { return current; }
  /// The size of the message that came last, or is on its way.
  std::size_t lastTotal() const { return current.total; }
  /// Bytes of a message that more packets belong to.
  std::size_t unfinished() const { return underWay ? body.size : 0; }
  Buffer takeBody() { return std::exchange(body, Buffer{}); }

 private:
  Outcome begin(const PacketHeader& header, const PacketBody& incoming);
  Outcome append(Bytes rest);
  Outcome settle();
  bool takeOver(const PacketBody& incoming);
  bool grow(std::size_t size);

  PacketHeader current;
  Buffer body;
  std::size_t capacity = 0;  // of the body's memory
  bool underWay = false;
};

}  // namespace platform::mach

#endif
