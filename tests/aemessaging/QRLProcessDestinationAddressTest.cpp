// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/aemessaging/QRLProcessDestinationAddress.h>

namespace {

TEST(ProcessDestination, StartsWithNoProcess) {
  const QRLProcessDestinationAddress address;
  EXPECT_EQ(address.psn.highLongOfPSN, 0u);
  EXPECT_EQ(address.psn.lowLongOfPSN, 0u);
}

TEST(ProcessDestination, HasNothingToInitialize) {
  QRLProcessDestinationAddress address;
  address.psn = {1, 2};
  EXPECT_EQ(address.initialize(), 0);
  EXPECT_EQ(address.psn.highLongOfPSN, 1u);
  EXPECT_EQ(address.psn.lowLongOfPSN, 2u);
}

TEST(ProcessDestination, DescribesItsSerialNumber) {
  QRLProcessDestinationAddress address;
  address.psn = {0x01020304, 0x05060708};
  AEDesc desc;
  ASSERT_EQ(address.getDestinationAddress(&desc), noErr);
  ProcessSerialNumber psn{};
  EXPECT_EQ(desc.descriptorType, DescType('psn '));
  EXPECT_EQ(AEGetDescDataSize(&desc), 8);
  EXPECT_EQ(AEGetDescData(&desc, &psn, sizeof psn), noErr);
  EXPECT_EQ(psn.highLongOfPSN, 0x01020304u);
  EXPECT_EQ(psn.lowLongOfPSN, 0x05060708u);
  AEDisposeDesc(&desc);
}

TEST(ProcessDestination, PassesOnThatNoDescriptorCanBeMade) {
  QRLProcessDestinationAddress address;
  EXPECT_EQ(address.getDestinationAddress(nullptr), paramErr);
}

TEST(ProcessDestination, TakesOverBothWords) {
  QRLProcessDestinationAddress address;
  address.psn = {3, 4};
  QRLProcessDestinationAddress copy;
  copy = address;
  EXPECT_EQ(copy.psn.highLongOfPSN, 3u);
  EXPECT_EQ(copy.psn.lowLongOfPSN, 4u);
  const QRLProcessDestinationAddress constructed(address);
  EXPECT_EQ(constructed.psn.lowLongOfPSN, 4u);
}

TEST(ProcessDestination, KeepsItsValueWhenAssignedToItself) {
  QRLProcessDestinationAddress address;
  address.psn = {3, 4};
  QRLProcessDestinationAddress& same = address;
  address = same;
  EXPECT_EQ(address.psn.highLongOfPSN, 3u);
  EXPECT_EQ(address.psn.lowLongOfPSN, 4u);
}

}  // namespace
