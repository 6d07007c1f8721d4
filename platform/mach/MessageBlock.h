// Licence: MIT, see LICENSE.
// A received message in the form in which call-backs of Mach ports see it: header, body, and one
// descriptor of out-of-line data, with a trailer behind them.
#ifndef PLATFORM_MACH_MESSAGEBLOCK_H
#define PLATFORM_MACH_MESSAGEBLOCK_H

#include <mach/mach.h>

#include <optional>

#include "platform/mach/PortSpace.h"

namespace platform::mach {

/// Owns what the message carries: the out-of-line data and the right in msgh_remote_port, until
/// they are taken.
struct MessageBlock {
  mach_msg_header_t header;
  mach_msg_body_t body;
  mach_msg_ool_descriptor_t data;
  bool isOwn;  // sent from within this process, as its sender cannot make up
};

/// The ID under which Apple events travel.
inline constexpr mach_msg_id_t kAppleEventMessageID = 0x61657674;  // 'aevt'

/// Lays a received message out as a block; the block owns its parts from then on.
MessageBlock makeBlock(Message message);

/// Takes the parts back out of a message that a call-back was handed, leaving null and
/// MACH_PORT_NULL behind so that they are not freed twice. Nothing if the header does not describe
/// a block of this shape.
std::optional<Message> takeFromBlock(mach_msg_header_t* header);

/// Frees whatever a block still owns: its data, and its right to answer (which is not answered).
void destroyBlock(MessageBlock& block);

}  // namespace platform::mach

#endif
