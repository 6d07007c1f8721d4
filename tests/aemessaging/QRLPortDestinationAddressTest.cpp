// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/aemessaging/QRLPortDestinationAddress.h>

#include <cstring>

#include "tests/aemessaging/FrameworkCalls.h"
#include "tests/aemessaging/TestListener.h"
#include "tests/support/PrivateRoot.h"

namespace {

constexpr char kName[] = "com.quorvant.test.destination";

class PortDestination : public testing::Test {
 protected:
  tests::PrivateRoot root;
  tests::FrameworkCalls calls;
  QRLPortDestinationAddress address;
};

TEST_F(PortDestination, StartsEmptyAndUnlocated) {
  EXPECT_EQ(address.port, MACH_PORT_NULL);
  EXPECT_STREQ(address.name, "");
  EXPECT_EQ(address.located, 0u);
}

TEST_F(PortDestination, CannotBeLocatedWithoutAName) {
  EXPECT_EQ(address.locatePort(), -1);
  EXPECT_EQ(address.initialize(), -1);
  EXPECT_EQ(address.located, 0u);
  EXPECT_EQ(calls.lookUp.count, 0);
}

TEST_F(PortDestination, CannotBeLocatedByANameThatDoesNotEnd) {
  std::memset(address.name, 'x', sizeof address.name);
  EXPECT_EQ(address.initialize(), -1);
  EXPECT_EQ(calls.lookUp.count, 0);
}

TEST_F(PortDestination, PassesOnThatThereIsNoBootstrapPort) {
  std::strcpy(address.name, kName);
  calls.getSpecialPort.instead = [](mach_port_t*) { return KERN_INVALID_ARGUMENT; };
  EXPECT_EQ(address.initialize(), KERN_INVALID_ARGUMENT);
  EXPECT_EQ(address.located, 0u);
  EXPECT_EQ(calls.lookUp.count, 0);
}

TEST_F(PortDestination, PassesOnThatNobodyHasTheName) {
  std::strcpy(address.name, kName);
  EXPECT_EQ(address.initialize(), BOOTSTRAP_UNKNOWN_SERVICE);
  EXPECT_EQ(address.located, 0u);
  EXPECT_EQ(address.port, MACH_PORT_NULL);
}

TEST_F(PortDestination, FindsThePortOnceSomebodyHasTheName) {
  std::strcpy(address.name, kName);
  EXPECT_EQ(address.initialize(), BOOTSTRAP_UNKNOWN_SERVICE);
  const tests::OtherPort server(kName);
  EXPECT_EQ(address.initialize(), 0);
  EXPECT_EQ(address.located, 1u);
  EXPECT_EQ(address.port, server.port);
}

TEST_F(PortDestination, LooksALocatedPortUpNoMore) {
  const tests::OtherPort server(kName);
  std::strcpy(address.name, kName);
  EXPECT_EQ(address.initialize(), 0);
  EXPECT_EQ(address.initialize(), 0);
  EXPECT_EQ(calls.lookUp.count, 1);
}

TEST_F(PortDestination, LocatesAnewWhenAskedDirectly) {
  std::strcpy(address.name, kName);
  address.located = true;
  EXPECT_EQ(address.locatePort(), BOOTSTRAP_UNKNOWN_SERVICE);
  EXPECT_EQ(address.located, 1u);
}

TEST_F(PortDestination, FindsANameOf127Characters) {
  const std::string name(127, 'n');
  const tests::OtherPort server(name.c_str());
  std::strcpy(address.name, name.c_str());
  EXPECT_EQ(address.initialize(), 0);
  EXPECT_EQ(address.port, server.port);
}

TEST_F(PortDestination, HasNoDescriptorUntilLocated) {
  AEDesc desc = {'same', nullptr};
  address.port = 1;
  EXPECT_EQ(address.getDestinationAddress(&desc), -1);
  EXPECT_EQ(desc.descriptorType, DescType('same'));
}

TEST_F(PortDestination, DescribesItsPort) {
  address.located = true;
  address.port = 0x1203;
  AEDesc desc;
  ASSERT_EQ(address.getDestinationAddress(&desc), noErr);
  mach_port_t port = 0;
  EXPECT_EQ(desc.descriptorType, DescType('port'));
  EXPECT_EQ(AEGetDescDataSize(&desc), 4);
  EXPECT_EQ(AEGetDescData(&desc, &port, sizeof port), noErr);
  EXPECT_EQ(port, 0x1203u);
  AEDisposeDesc(&desc);
}

TEST_F(PortDestination, TakesOverNamePortAndState) {
  address.port = 7;
  address.located = true;
  std::strcpy(address.name, "short");
  QRLPortDestinationAddress copy;
  std::strcpy(copy.name, "something longer");
  copy = address;
  EXPECT_EQ(copy.port, 7u);
  EXPECT_EQ(copy.located, 1u);
  EXPECT_STREQ(copy.name, "short");
}

TEST_F(PortDestination, CopiesTheNameAsAStringOnly) {
  std::strcpy(address.name, "ab");
  QRLPortDestinationAddress copy;
  std::strcpy(copy.name, "ABCD");
  copy = address;
  EXPECT_EQ(std::memcmp(copy.name, "ab\0D", 5), 0);
}

TEST_F(PortDestination, EndsACopiedNameThatHasNoEnd) {
  std::memset(address.name, 'x', sizeof address.name);
  QRLPortDestinationAddress copy;
  copy = address;
  EXPECT_EQ(std::string(copy.name), std::string(127, 'x'));
}

TEST_F(PortDestination, KeepsItsValuesWhenAssignedToItself) {
  address.port = 7;
  address.located = true;
  std::strcpy(address.name, kName);
  QRLPortDestinationAddress& same = address;
  address = same;
  EXPECT_EQ(address.port, 7u);
  EXPECT_EQ(address.located, 1u);
  EXPECT_STREQ(address.name, kName);
}

TEST_F(PortDestination, IsAlsoCopiedByConstruction) {
  address.port = 7;
  std::strcpy(address.name, kName);
  const QRLPortDestinationAddress copy(address);
  EXPECT_EQ(copy.port, 7u);
  EXPECT_EQ(copy.located, 0u);
  EXPECT_STREQ(copy.name, kName);
}

TEST_F(PortDestination, LeavesTheSendRightWhenItEnds) {
  const tests::OtherPort server(kName);
  {
    QRLPortDestinationAddress temporary;
    std::strcpy(temporary.name, kName);
    ASSERT_EQ(temporary.initialize(), 0);
  }
  EXPECT_EQ(tests::sendRightsOf(server.port), 1u);
}

}  // namespace
