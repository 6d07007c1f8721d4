// Licence: MIT, see LICENSE.
#include "platform/mach/MessageBlock.h"

#include "tests/platform/mach/MachTesting.h"

namespace tests {
namespace {

using platform::mach::destroyBlock;
using platform::mach::makeBlock;
using platform::mach::MessageBlock;
using platform::mach::receive;
using platform::mach::send;
using platform::mach::takeFromBlock;

class MessageBlocks : public MachTest {
 protected:
  /// A message with a right to answer, as it arrives.
  Message arrived() {
    Message message;
    EXPECT_EQ(KERN_SUCCESS, send(port, reply, 42, pattern(10), soon()));
    EXPECT_EQ(KERN_SUCCESS, receive(port, message, soon()));
    return message;
  }

  OwnPort port;
  OwnPort reply;
};

TEST_F(MessageBlocks, ShowTheMessage) {
  Message message = arrived();
  const mach_port_name_t right = message.reply;
  MessageBlock block = makeBlock(std::move(message));
  EXPECT_EQ(MACH_MSGH_BITS_COMPLEX, block.header.msgh_bits);
  EXPECT_EQ(sizeof(MessageBlock), block.header.msgh_size);
  EXPECT_EQ(right, block.header.msgh_remote_port);
  EXPECT_EQ(port, block.header.msgh_local_port);
  EXPECT_EQ(42, block.header.msgh_id);
  EXPECT_EQ(1u, block.body.msgh_descriptor_count);
  EXPECT_EQ(10u, block.data.size);
  EXPECT_EQ(0, memcmp(pattern(10).data(), block.data.address, 10));
  destroyBlock(block);
}

TEST_F(MessageBlocks, GiveTheirPartsUpOnce) {
  MessageBlock block = makeBlock(arrived());
  const auto taken = takeFromBlock(&block.header);
  ASSERT_TRUE(taken);
  EXPECT_EQ(42, taken->id);
  EXPECT_EQ(port, taken->receiver);
  EXPECT_EQ(pattern(10), bytesOf(*taken));
  EXPECT_EQ(nullptr, block.data.address);
  EXPECT_EQ(MACH_PORT_NULL, block.header.msgh_remote_port);
  destroyBlock(block);
  EXPECT_EQ(MACH_PORT_TYPE_SEND_ONCE, typeOf(taken->reply));
}

TEST_F(MessageBlocks, FreeWhatNobodyTook) {
  Message message = arrived();
  const mach_port_name_t right = message.reply;
  MessageBlock block = makeBlock(std::move(message));
  destroyBlock(block);
  destroyBlock(block);
  mach_port_type_t type = 0;
  EXPECT_EQ(KERN_INVALID_NAME, mach_port_type(mach_task_self(), right, &type));
}

TEST_F(MessageBlocks, CarryEmptyMessages) {
  MessageBlock block = makeBlock(Message{});
  EXPECT_EQ(0u, block.data.size);
  const auto taken = takeFromBlock(&block.header);
  ASSERT_TRUE(taken);
  EXPECT_EQ(0u, taken->body.size);
}

TEST_F(MessageBlocks, AreNotTakenFromAnythingElse) {
  MessageBlock block = makeBlock(arrived());
  EXPECT_FALSE(takeFromBlock(nullptr));
  MessageBlock changed = block;
  changed.header.msgh_bits = 0;
  EXPECT_FALSE(takeFromBlock(&changed.header));
  changed = block;
  changed.header.msgh_size = sizeof(mach_msg_header_t);
  EXPECT_FALSE(takeFromBlock(&changed.header));
  changed = block;
  changed.body.msgh_descriptor_count = 2;
  EXPECT_FALSE(takeFromBlock(&changed.header));
  destroyBlock(block);
}

}  // namespace
}  // namespace tests
