// Licence: MIT, see LICENSE.
#include <HIServices/Processes.h>
#include <gtest/gtest.h>
#include <mach/mach.h>

#include "platform/appleevents/Conversions.h"
#include "tests/platform/appleevents/Printing.h"
#include "tests/support/PrivateRoot.h"

namespace {

using tests::coerced;
using tests::Desc;

class ProcessConversions : public testing::Test {
 protected:
  ProcessConversions() {
    EXPECT_EQ(GetCurrentProcess(&self), noErr);
    EXPECT_EQ(GetProcessPID(&self, &pid), noErr);
    ProcessInfoRec info{};
    info.processInfoLength = sizeof info;
    EXPECT_EQ(GetProcessInformation(&self, &info), noErr);
    signature = info.processSignature;
  }

  tests::PrivateRoot root;
  ProcessSerialNumber self{};
  int pid = 0;
  OSType signature = 0;
};

template <typename T>
std::optional<T> valueAs(const Desc& source, DescType type) {
  Desc result;
  if (AECoerceDesc(&source, type, &result) != noErr) return std::nullopt;
  EXPECT_EQ(result.type(), type);
  return tests::valueOf<T>(result);
}

TEST_F(ProcessConversions, NameARunningProcessInThreeWays) {
  const Desc names[] = {
      tests::makeValue(typeProcessSerialNumber, self),
      tests::makeValue(typeProcessSerialNumber, ProcessSerialNumber{0, kCurrentProcess}),
      tests::makeValue(typeKernelProcessID, SInt32{pid})};
  for (const Desc& name : names) {
    EXPECT_EQ(valueAs<SInt32>(name, typeKernelProcessID), pid);
    EXPECT_EQ(valueAs<OSType>(name, typeApplSignature), signature);
    const auto psn = valueAs<ProcessSerialNumber>(name, typeProcessSerialNumber);
    ASSERT_TRUE(psn);
    Boolean isSame = false;
    EXPECT_EQ(SameProcess(&*psn, &self, &isSame), noErr);
    EXPECT_TRUE(isSame);
  }
}

TEST_F(ProcessConversions, TakeTheFirstProcessOfASignature) {
  const Desc name = tests::makeValue(typeApplSignature, signature);
  const auto psn = valueAs<ProcessSerialNumber>(name, typeProcessSerialNumber);
  ASSERT_TRUE(psn);
  EXPECT_EQ(psn->highLongOfPSN, self.highLongOfPSN);
  EXPECT_EQ(psn->lowLongOfPSN, self.lowLongOfPSN);
  EXPECT_EQ(valueAs<SInt32>(name, typeKernelProcessID), pid);
}

TEST_F(ProcessConversions, FindNoProcessThatDoesNotRun) {
  const Desc strangers[] = {
      tests::makeValue(typeProcessSerialNumber, ProcessSerialNumber{0, 0x7FFFFFFF}),
      tests::makeValue(typeProcessSerialNumber, ProcessSerialNumber{0, kNoProcess}),
      tests::makeValue(typeKernelProcessID, SInt32{1}),
      tests::makeValue(typeKernelProcessID, SInt32{-1}),
      tests::makeValue(typeApplSignature, OSType{'none'})};
  for (const Desc& stranger : strangers) {
    for (const DescType type : {typeProcessSerialNumber, typeKernelProcessID, typeApplSignature}) {
      if (type == stranger.type()) continue;
      EXPECT_EQ(coerced(*&stranger, type), "<-1700>") << tests::printed(stranger);
    }
  }
}

TEST_F(ProcessConversions, RefuseNamesOfAWrongSize) {
  for (const DescType type : {typeProcessSerialNumber, typeKernelProcessID, typeApplSignature}) {
    const Desc name = tests::makeValue<UInt16>(type, 1);
    for (const DescType to : {typeProcessSerialNumber, typeKernelProcessID, typeApplSignature}) {
      if (type == to) continue;
      EXPECT_EQ(coerced(*&name, to), "<-1700>");
    }
  }
}

// A port's name means something in one process alone: it is nobody's number, and nothing's.
TEST_F(ProcessConversions, KeepPortsApartFromNumbersAndProcesses) {
  const Desc port = tests::makeValue<mach_port_name_t>(typeMachPort, mach_task_self());
  for (const DescType type :
       {typeSInt32, typeUInt32, typeSInt64, typeChar, typeType, typeProcessSerialNumber,
        typeKernelProcessID, typeApplSignature, typeBoolean}) {
    EXPECT_EQ(coerced(*&port, type), "<-1700>") << tests::codeText(type);
    const Desc number = tests::makeValue<UInt32>(type, 1);
    EXPECT_EQ(coerced(*&number, typeMachPort), "<-1700>") << tests::codeText(type);
  }
}

TEST_F(ProcessConversions, KeepProcessesApartFromNumbersAndOtherCodes) {
  for (const Desc& name : {tests::makeValue(typeProcessSerialNumber, self),
                           tests::makeValue(typeKernelProcessID, SInt32{pid})}) {
    for (const DescType type : {typeSInt32, typeUInt32, typeSInt64, typeIEEE64BitFloatingPoint,
                                typeChar, typeUTF8Text, typeType, typeEnumerated, typeBoolean}) {
      EXPECT_EQ(coerced(*&name, type), "<-1700>") << tests::codeText(type);
      const Desc number = tests::makeValue<UInt32>(type, 1);
      EXPECT_EQ(coerced(*&number, name.type()), "<-1700>") << tests::codeText(type);
    }
  }
}

}  // namespace
