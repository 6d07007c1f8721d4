// Licence: MIT, see LICENSE.
#include "platform/host/Descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <utility>

namespace tests {
namespace {

using platform::host::Descriptor;

bool isOpen(int number) { return fcntl(number, F_GETFD) != -1; }

int openOne() { return open("/dev/null", O_RDONLY | O_CLOEXEC); }

TEST(OwnedDescriptor, IsNoneAtFirst) {
  const Descriptor none;
  EXPECT_FALSE(none);
  EXPECT_EQ(-1, none.number());
}

TEST(OwnedDescriptor, IsClosedWithItsOwner) {
  const int number = openOne();
  {
    const Descriptor owner(number);
    EXPECT_TRUE(owner);
    EXPECT_EQ(number, owner.number());
    EXPECT_TRUE(isOpen(number));
  }
  EXPECT_FALSE(isOpen(number));
}

TEST(OwnedDescriptor, MovesToANewOwner) {
  const int number = openOne();
  Descriptor first(number);
  Descriptor second(std::move(first));
  EXPECT_FALSE(first);
  Descriptor third(openOne());
  const int replaced = third.number();
  third = std::move(second);
  EXPECT_FALSE(isOpen(replaced));
  EXPECT_EQ(number, third.number());
  EXPECT_TRUE(isOpen(number));
}

TEST(OwnedDescriptor, IsClosedOnDemandOnce) {
  Descriptor owner(openOne());
  const int number = owner.number();
  owner.reset();
  EXPECT_FALSE(isOpen(number));
  const Descriptor other(openOne());
  owner.reset();
  EXPECT_TRUE(isOpen(other.number()));
}

TEST(OwnedDescriptor, IsHandedOver) {
  Descriptor owner(openOne());
  const int number = owner.release();
  EXPECT_FALSE(owner);
  EXPECT_TRUE(isOpen(number));
  close(number);
}

}  // namespace
}  // namespace tests
