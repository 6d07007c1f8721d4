// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/aemessaging/QRLAppleEventReturnAddress.h>

#include "tests/aemessaging/FrameworkCalls.h"
#include "tests/aemessaging/TestListener.h"
#include "tests/support/PrivateRoot.h"

namespace {

class ReturnAddress : public testing::Test {
 protected:
  ReturnAddress() { EXPECT_EQ(AECreateAppleEvent('QrlP', 'Mcam', nullptr, 1, 0, &event), noErr); }
  ~ReturnAddress() override {
    AEDisposeDesc(&event);
    address.finalize();
  }

  tests::PrivateRoot root;
  tests::FrameworkCalls calls;
  QRLAppleEventReturnAddress address;
  AppleEvent event;
};

TEST_F(ReturnAddress, StartsWithoutAPort) {
  EXPECT_EQ(address.port, MACH_PORT_NULL);
  EXPECT_EQ(address.allocated, 0u);
}

TEST_F(ReturnAddress, AllocatesAReceiveRight) {
  EXPECT_EQ(address.initialize(), 0);
  EXPECT_EQ(address.allocated, 1u);
  EXPECT_EQ(tests::rightsOf(address.port), MACH_PORT_TYPE_RECEIVE);
}

TEST_F(ReturnAddress, AllocatesOnePortOnly) {
  EXPECT_EQ(address.initialize(), 0);
  const mach_port_t port = address.port;
  EXPECT_EQ(address.initialize(), 0);
  EXPECT_EQ(address.port, port);
  EXPECT_EQ(calls.portAllocate.count, 1);
}

TEST_F(ReturnAddress, DoesNotTryAgainAfterAFailedAllocation) {
  calls.portAllocate.instead = [](mach_port_name_t*) { return KERN_RESOURCE_SHORTAGE; };
  EXPECT_EQ(address.initialize(), KERN_RESOURCE_SHORTAGE);
  EXPECT_EQ(address.allocated, 1u);
  EXPECT_EQ(address.port, MACH_PORT_NULL);
  EXPECT_EQ(address.initialize(), 0);
  EXPECT_EQ(address.addReturnAddress(event), -1);
  EXPECT_EQ(calls.portAllocate.count, 1);
}

TEST_F(ReturnAddress, DestroysItsPortAndCanBeUsedAgain) {
  EXPECT_EQ(address.initialize(), 0);
  const mach_port_t port = address.port;
  EXPECT_EQ(address.finalize(), 0);
  EXPECT_EQ(tests::rightsOf(port), MACH_PORT_TYPE_NONE);
  EXPECT_EQ(address.port, MACH_PORT_NULL);
  EXPECT_EQ(address.allocated, 0u);
  EXPECT_EQ(address.initialize(), 0);
  EXPECT_EQ(tests::rightsOf(address.port), MACH_PORT_TYPE_RECEIVE);
}

TEST_F(ReturnAddress, HasNothingToFinalizeBeforeItsUse) {
  EXPECT_EQ(address.finalize(), 0);
  EXPECT_EQ(calls.portDestroy.count, 0);
}

TEST_F(ReturnAddress, StaysAllocatedWhenFinalizedWithoutAPort) {
  address.allocated = true;
  EXPECT_EQ(address.finalize(), 0);
  EXPECT_EQ(address.allocated, 1u);
  EXPECT_EQ(calls.portDestroy.count, 0);
}

TEST_F(ReturnAddress, KeepsAPortThatItDidNotAllocate) {
  address.port = 77;
  EXPECT_EQ(address.finalize(), 0);
  EXPECT_EQ(address.addReturnAddress(event), -1);
  EXPECT_EQ(address.port, 77u);
  EXPECT_EQ(calls.portDestroy.count, 0);
}

TEST_F(ReturnAddress, PutsItsPortIntoTheEvent) {
  ASSERT_EQ(address.initialize(), 0);
  EXPECT_EQ(address.addReturnAddress(event), 0);
  mach_port_t port = 0;
  DescType type = 0;
  Size size = 0;
  EXPECT_EQ(AEGetAttributePtr(&event, 'repp', typeWildCard, &type, &port, sizeof port, &size),
            noErr);
  EXPECT_EQ(type, DescType('port'));
  EXPECT_EQ(size, 4);
  EXPECT_EQ(port, address.port);
}

TEST_F(ReturnAddress, PassesOnThatTheEventTakesNoAttribute) {
  ASSERT_EQ(address.initialize(), 0);
  calls.putAttribute.instead = [](AEKeyword) { return memFullErr; };
  EXPECT_EQ(address.addReturnAddress(event), memFullErr);
}

TEST_F(ReturnAddress, HasNoPortToAddBeforeItsUse) {
  EXPECT_EQ(address.addReturnAddress(event), -1);
  EXPECT_EQ(calls.putAttribute.count, 0);
}

TEST_F(ReturnAddress, LeavesItsPortWhenItEnds) {
  mach_port_t port = MACH_PORT_NULL;
  {
    QRLAppleEventReturnAddress temporary;
    ASSERT_EQ(temporary.initialize(), 0);
    port = temporary.port;
  }
  EXPECT_EQ(tests::rightsOf(port), MACH_PORT_TYPE_RECEIVE);
  EXPECT_EQ(mach_port_destroy(mach_task_self(), port), KERN_SUCCESS);
}

}  // namespace
