// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/aemessaging/PortNames.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <string>

#include "tests/aemessaging/FrameworkCalls.h"
#include "tests/support/PrivateRoot.h"

namespace {

class PortNames : public testing::Test {
 protected:
  void pretendToBe(UInt32 high, UInt32 low) {
    calls.getCurrentProcess.instead = [=](ProcessSerialNumber* psn) {
      *psn = {high, low};
      return noErr;
    };
  }
  // A name that is made into a buffer of exactly the size given, or "untouched".
  SInt32 make(UInt32 size, const char* base, bool number, const char* suffix, int index) {
    char buffer[128] = "untouched";
    const SInt32 err = QRLAEMakePortName(buffer, size, base, number, suffix, index);
    made = buffer;
    return err;
  }

  tests::FrameworkCalls calls;
  std::string made;
};

TEST_F(PortNames, AddsOnlyThePartsThatAreThere) {
  const struct {
    const char* suffix;
    int index;
    const char* name;
  } cases[] = {
      {nullptr, -1, "com.q.base"},          {"", -1, "com.q.base"},
      {nullptr, INT_MIN, "com.q.base"},     {"suffix", -1, "com.q.base.suffix"},
      {nullptr, 0, "com.q.base.0"},         {"", 7, "com.q.base.7"},
      {"suffix", 2, "com.q.base.suffix.2"}, {"s", INT_MAX, "com.q.base.s.2147483647"},
  };
  for (const auto& [suffix, index, name] : cases) {
    EXPECT_EQ(make(128, "com.q.base", false, suffix, index), 0) << name;
    EXPECT_EQ(made, name);
  }
}

TEST_F(PortNames, PutsTheLowWordOfTheSerialNumberFirst) {
  pretendToBe(0, 0x1234);
  EXPECT_EQ(make(128, "B", true, nullptr, -1), 0);
  EXPECT_EQ(made, "B.0000123400000000");
}

TEST_F(PortNames, WritesTheSerialNumberBetweenSuffixAndIndex) {
  pretendToBe(0xABCDEF01, 0xFFFFFFFE);
  EXPECT_EQ(make(128, "B", true, "S", 2), 0);
  EXPECT_EQ(made, "B.S.fffffffeabcdef01.2");
}

TEST_F(PortNames, UsesTheSerialNumberOfThisProcess) {
  tests::PrivateRoot root;
  ProcessSerialNumber self{};
  ASSERT_EQ(GetCurrentProcess(&self), noErr);
  char expected[32];
  std::snprintf(expected, sizeof expected, "B.%08lx%08lx",
                static_cast<unsigned long>(self.lowLongOfPSN),
                static_cast<unsigned long>(self.highLongOfPSN));
  EXPECT_EQ(make(128, "B", true, nullptr, -1), 0);
  EXPECT_EQ(made, expected);
}

TEST_F(PortNames, DoesNotAskForTheSerialNumberWhenItIsNotWanted) {
  EXPECT_EQ(make(128, "B", false, "S", 1), 0);
  EXPECT_EQ(calls.getCurrentProcess.count, 0);
}

TEST_F(PortNames, PassesOnThatTheSerialNumberCannotBeHad) {
  calls.getCurrentProcess.instead = [](ProcessSerialNumber*) { return procNotFound; };
  EXPECT_EQ(make(128, "B", true, nullptr, -1), procNotFound);
  EXPECT_EQ(made, "untouched");
}

TEST_F(PortNames, RejectsANameThatIsAsLongAsTheBuffer) {
  EXPECT_EQ(make(8, "12345678", false, nullptr, -1), paramErr);
  EXPECT_EQ(made, "untouched");
}

TEST_F(PortNames, AcceptsANameThatIsOneShorterThanTheBuffer) {
  EXPECT_EQ(make(9, "12345678", false, nullptr, -1), 0);
  EXPECT_EQ(made, "12345678");
}

TEST_F(PortNames, CountsEveryPartAgainstTheBuffer) {
  pretendToBe(0, 1);
  const UInt32 length = sizeof "B.S.0000000100000000.10" - 1;
  EXPECT_EQ(make(length, "B", true, "S", 10), paramErr);
  EXPECT_EQ(made, "untouched");
  EXPECT_EQ(make(length + 1, "B", true, "S", 10), 0);
  EXPECT_EQ(made, "B.S.0000000100000000.10");
}

TEST_F(PortNames, RejectsANullOrEmptyBase) {
  EXPECT_EQ(make(128, nullptr, false, "S", 1), paramErr);
  EXPECT_EQ(make(128, "", false, "S", 1), paramErr);
  EXPECT_EQ(made, "untouched");
}

TEST_F(PortNames, DoesNotAskForTheSerialNumberWithoutABase) {
  EXPECT_EQ(make(128, "", true, nullptr, -1), paramErr);
  EXPECT_EQ(calls.getCurrentProcess.count, 0);
}

TEST_F(PortNames, CallsAnEarlierErrorABadArgumentWhenThereIsNoBuffer) {
  calls.getCurrentProcess.instead = [](ProcessSerialNumber*) { return procNotFound; };
  EXPECT_EQ(make(0, "B", true, nullptr, -1), paramErr);
  EXPECT_EQ(make(1, "B", true, nullptr, -1), procNotFound);
}

TEST_F(PortNames, RejectsANullBuffer) {
  EXPECT_EQ(QRLAEMakePortName(nullptr, 128, "B", false, nullptr, -1), paramErr);
}

TEST_F(PortNames, MayBuildANameOverItsOwnBase) {
  char name[32] = "base";
  EXPECT_EQ(QRLAEMakePortName(name, sizeof name, name, false, name, 3), 0);
  EXPECT_STREQ(name, "base.base.3");
}

TEST_F(PortNames, HasNoLimitButTheBuffers) {
  const std::string base(5000, 'x');
  char name[5003];
  EXPECT_EQ(QRLAEMakePortName(name, sizeof name, base.c_str(), false, nullptr, 4), 0);
  EXPECT_EQ(name, base + ".4");
}

TEST(BootstrapError, IsOneOf1100To1105) {
  for (SInt32 err = 1100; err <= 1105; ++err) EXPECT_TRUE(IsBootstrapError(err)) << err;
  for (SInt32 err : {0, 1099, 1106, -1100, -50, INT_MAX, INT_MIN}) {
    EXPECT_FALSE(IsBootstrapError(err)) << err;
  }
}

}  // namespace
