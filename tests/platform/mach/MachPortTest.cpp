// Licence: MIT, see LICENSE.
#include <mach/mach_port.h>

#include "tests/platform/mach/MachTesting.h"

namespace tests {
namespace {

using platform::mach::receive;
using platform::mach::send;

constexpr mach_port_name_t kNobodys = 0x7fff00;

class MachPort : public MachTest {
 protected:
  task_t task = mach_task_self();
};

TEST_F(MachPort, AllocatesAReceiveRight) {
  const OwnPort port;
  EXPECT_NE(MACH_PORT_NULL, port);
  EXPECT_EQ(MACH_PORT_TYPE_RECEIVE, typeOf(port));
  EXPECT_EQ(1u, references(port, MACH_PORT_RIGHT_RECEIVE));
  EXPECT_EQ(0u, references(port, MACH_PORT_RIGHT_SEND));
}

TEST_F(MachPort, AllocatesOnlyReceiveRights) {
  mach_port_name_t name = 7;
  EXPECT_EQ(KERN_INVALID_VALUE, mach_port_allocate(task, MACH_PORT_RIGHT_SEND, &name));
  EXPECT_EQ(KERN_INVALID_VALUE, mach_port_allocate(task, MACH_PORT_RIGHT_PORT_SET, &name));
  EXPECT_EQ(KERN_INVALID_ARGUMENT, mach_port_allocate(task, MACH_PORT_RIGHT_RECEIVE, nullptr));
  EXPECT_EQ(7u, name);
}

TEST_F(MachPort, RefusesEveryOtherTask) {
  mach_port_name_t name = 7;
  mach_port_type_t type = 0;
  mach_port_urefs_t refs = 0;
  EXPECT_EQ(KERN_INVALID_TASK, mach_port_allocate(0, MACH_PORT_RIGHT_RECEIVE, &name));
  EXPECT_EQ(KERN_INVALID_TASK, mach_port_destroy(task + 1, name));
  EXPECT_EQ(KERN_INVALID_TASK, mach_port_deallocate(task + 1, name));
  EXPECT_EQ(KERN_INVALID_TASK, mach_port_type(task + 1, name, &type));
  EXPECT_EQ(KERN_INVALID_TASK, mach_port_get_refs(task + 1, name, MACH_PORT_RIGHT_SEND, &refs));
}

TEST_F(MachPort, KnowsNoNameThatIsNotHeld) {
  mach_port_type_t type = 0;
  mach_port_urefs_t refs = 0;
  for (const mach_port_name_t name : {MACH_PORT_NULL, MACH_PORT_DEAD, kNobodys}) {
    EXPECT_EQ(KERN_INVALID_NAME, mach_port_destroy(task, name));
    EXPECT_EQ(KERN_INVALID_NAME, mach_port_deallocate(task, name));
    EXPECT_EQ(KERN_INVALID_NAME, mach_port_type(task, name, &type));
    EXPECT_EQ(KERN_INVALID_NAME, mach_port_get_refs(task, name, MACH_PORT_RIGHT_SEND, &refs));
  }
}

TEST_F(MachPort, DoesNotMistakeALaterPortForADestroyedOne) {
  OwnPort first;
  const mach_port_name_t old = first;
  first.destroy();
  const OwnPort second;
  EXPECT_NE(old, second);
  EXPECT_EQ(KERN_INVALID_NAME, mach_port_destroy(task, old));
  EXPECT_EQ(MACH_PORT_TYPE_RECEIVE, typeOf(second));
}

TEST_F(MachPort, KeepsTheReceiveRightWhenTheLastSendRightGoes) {
  const OwnPort port;
  ASSERT_EQ(KERN_SUCCESS, registerName("a", port));
  ASSERT_EQ(port, lookUp("a"));
  ASSERT_EQ(port, lookUp("a"));
  EXPECT_EQ(MACH_PORT_TYPE_RECEIVE | MACH_PORT_TYPE_SEND, typeOf(port));
  EXPECT_EQ(2u, references(port, MACH_PORT_RIGHT_SEND));
  EXPECT_EQ(KERN_SUCCESS, mach_port_deallocate(task, port));
  EXPECT_EQ(KERN_SUCCESS, mach_port_deallocate(task, port));
  EXPECT_EQ(KERN_INVALID_RIGHT, mach_port_deallocate(task, port));
  EXPECT_EQ(MACH_PORT_TYPE_RECEIVE, typeOf(port));
}

TEST_F(MachPort, CountsTheSendRightsToSomebodyElsesPort) {
  const auto server = startServer("a");
  const mach_port_name_t right = lookUp("a");
  ASSERT_EQ(right, lookUp("a"));
  EXPECT_EQ(MACH_PORT_TYPE_SEND, typeOf(right));
  EXPECT_EQ(2u, references(right, MACH_PORT_RIGHT_SEND));
  EXPECT_EQ(0u, references(right, MACH_PORT_RIGHT_RECEIVE));
  EXPECT_EQ(KERN_SUCCESS, mach_port_deallocate(task, right));
  EXPECT_EQ(KERN_SUCCESS, mach_port_deallocate(task, right));
  EXPECT_EQ(KERN_INVALID_NAME, mach_port_deallocate(task, right));
}

TEST_F(MachPort, DestroysAllSendRightsAtOnce) {
  const auto server = startServer("a");
  const mach_port_name_t right = lookUp("a");
  ASSERT_EQ(right, lookUp("a"));
  EXPECT_EQ(KERN_SUCCESS, mach_port_destroy(task, right));
  EXPECT_EQ(MACH_SEND_INVALID_DEST, send(right, MACH_PORT_NULL, 1, {}, soon()));
  EXPECT_NE(MACH_PORT_NULL, lookUp("a"));
}

TEST_F(MachPort, SeesARightTurnIntoADeadName) {
  const auto server = startServer("a");
  const mach_port_name_t right = lookUp("a");
  server->signal(9);
  ASSERT_EQ(-9, server->wait());
  EXPECT_EQ(MACH_PORT_TYPE_DEAD_NAME, typeOf(right));
  EXPECT_EQ(1u, references(right, MACH_PORT_RIGHT_DEAD_NAME));
  EXPECT_EQ(0u, references(right, MACH_PORT_RIGHT_SEND));
  EXPECT_EQ(KERN_SUCCESS, mach_port_deallocate(task, right));
  EXPECT_EQ(KERN_INVALID_NAME, mach_port_deallocate(task, right));
}

TEST_F(MachPort, ReceivesARightToAnswerOnce) {
  const OwnPort port;
  const OwnPort reply;
  Message message;
  ASSERT_EQ(KERN_SUCCESS, send(port, reply, 1, {}, soon()));
  ASSERT_EQ(KERN_SUCCESS, receive(port, message, soon()));
  EXPECT_EQ(MACH_PORT_TYPE_SEND_ONCE, typeOf(message.reply));
  EXPECT_EQ(1u, references(message.reply, MACH_PORT_RIGHT_SEND_ONCE));
  EXPECT_EQ(KERN_SUCCESS, send(message.reply, MACH_PORT_NULL, 2, {}, soon()));
  mach_port_type_t type = 0;
  EXPECT_EQ(KERN_INVALID_NAME, mach_port_type(task, message.reply, &type));
}

TEST_F(MachPort, RefusesToCountAnUnknownKindOfRight) {
  const OwnPort port;
  mach_port_urefs_t refs = 7;
  EXPECT_EQ(KERN_INVALID_VALUE, mach_port_get_refs(task, port, 5, &refs));
  EXPECT_EQ(7u, refs);
  EXPECT_EQ(0u, references(port, MACH_PORT_RIGHT_PORT_SET));
}

TEST_F(MachPort, AlwaysHoldsTheBootstrapPort) {
  mach_port_t bootstrap = 0;
  ASSERT_EQ(KERN_SUCCESS, task_get_special_port(task, TASK_BOOTSTRAP_PORT, &bootstrap));
  EXPECT_EQ(MACH_PORT_TYPE_SEND, typeOf(bootstrap));
  EXPECT_EQ(KERN_SUCCESS, mach_port_deallocate(task, bootstrap));
  EXPECT_EQ(KERN_INVALID_RIGHT, mach_port_destroy(task, bootstrap));
  EXPECT_EQ(MACH_PORT_TYPE_SEND, typeOf(bootstrap));
}

TEST_F(MachPort, HasNoOtherSpecialPort) {
  mach_port_t port = 7;
  EXPECT_EQ(KERN_INVALID_ARGUMENT, task_get_special_port(task, 3, &port));
  EXPECT_EQ(KERN_INVALID_ARGUMENT, task_get_special_port(task, TASK_BOOTSTRAP_PORT, nullptr));
  EXPECT_EQ(KERN_INVALID_TASK, task_get_special_port(0, TASK_BOOTSTRAP_PORT, &port));
  EXPECT_EQ(7u, port);
}

}  // namespace
}  // namespace tests
