// Licence: MIT, see LICENSE.
#include "platform/mach/MessageBlock.h"

#include <utility>

namespace platform::mach {

namespace {

// The type of an out-of-line descriptor, as receivers know it.
constexpr unsigned kOutOfLine = 1;

bool isBlock(const mach_msg_header_t* header) {
  if (header == nullptr || (header->msgh_bits & MACH_MSGH_BITS_COMPLEX) == 0) return false;
  if (header->msgh_size != sizeof(MessageBlock)) return false;
  const auto* block = reinterpret_cast<const MessageBlock*>(header);
  return block->body.msgh_descriptor_count == 1 && block->data.type == kOutOfLine;
}

}  // namespace

MessageBlock makeBlock(Message message) {
  MessageBlock block{};
  block.header.msgh_bits = MACH_MSGH_BITS_COMPLEX;
  block.header.msgh_size = sizeof block;
  block.header.msgh_remote_port = message.reply;
  block.header.msgh_local_port = message.receiver;
  block.header.msgh_id = message.id;
  block.body.msgh_descriptor_count = 1;
  block.data.size = static_cast<mach_msg_size_t>(message.body.size);
  block.data.address = message.body.memory.release();
  block.data.deallocate = 1;
  block.data.type = kOutOfLine;
  block.isOwn = message.isOwn;
  return block;
}

std::optional<Message> takeFromBlock(mach_msg_header_t* header) {
  if (!isBlock(header)) return std::nullopt;
  auto* block = reinterpret_cast<MessageBlock*>(header);
  Message message;
  message.id = block->header.msgh_id;
  message.isOwn = block->isOwn;
  message.receiver = block->header.msgh_local_port;
  message.reply = std::exchange(block->header.msgh_remote_port, MACH_PORT_NULL);
  message.body.memory.reset(static_cast<std::byte*>(std::exchange(block->data.address, nullptr)));
  message.body.size = std::exchange(block->data.size, 0);
  return message;
}

void destroyBlock(MessageBlock& block) {
  const std::optional<Message> rest = takeFromBlock(&block.header);
  if (rest && rest->reply != MACH_PORT_NULL) mach_port_deallocate(mach_task_self(), rest->reply);
}

}  // namespace platform::mach
