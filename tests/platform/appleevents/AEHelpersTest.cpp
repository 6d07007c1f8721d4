// Licence: MIT, see LICENSE.
#include <AE/AEHelpers.h>
#include <AE/AEMach.h>
#include <gtest/gtest.h>

#include <limits>

#include "tests/platform/appleevents/Printing.h"
#include "tests/support/AllocationFailures.h"

namespace {

using tests::Desc;
using tests::printed;

template <typename T>
std::string printedValue(DescType type, const T& value) {
  return printed(tests::makeValue(type, value));
}

std::string printedBytes(DescType type, std::string_view bytes) {
  Desc desc;
  EXPECT_EQ(AECreateDesc(type, bytes.data(), static_cast<Size>(bytes.size()), &desc), noErr);
  return printed(desc);
}

TEST(PrintDesc, WritesNumbers) {
  EXPECT_EQ(printedValue<SInt32>(typeSInt32, -5), "-5");
  EXPECT_EQ(printedValue<SInt16>(typeSInt16, -5), "'shor'(-5)");
  EXPECT_EQ(printedValue<UInt16>(typeUInt16, 65535), "'ushr'(65535)");
  EXPECT_EQ(printedValue<UInt32>(typeUInt32, 4294967295u), "'magn'(4294967295)");
  EXPECT_EQ(printedValue<SInt64>(typeSInt64, -5000000000), "'comp'(-5000000000)");
  EXPECT_EQ(printedValue<UInt64>(typeUInt64, 18446744073709551615u),
            "'ucom'(18446744073709551615)");
  EXPECT_EQ(printedValue<Float32>(typeIEEE32BitFloatingPoint, 0.1F), "'sing'(0.1)");
  EXPECT_EQ(printedValue<Float64>(typeIEEE64BitFloatingPoint, -2.5), "'doub'(-2.5)");
}

TEST(PrintDesc, WritesBytesWhereThereIsNoOneNumber) {
  const SInt32 array[] = {1, -2};
  EXPECT_EQ(printedValue(typeSInt32, array), "'long'($00000001FFFFFFFE$)");
  EXPECT_EQ(printedBytes(typeSInt32, "abc"), "'long'($616263$)");
  EXPECT_EQ(printedBytes(typeSInt32, ""), "'long'()");
  EXPECT_EQ(printedValue(typeIEEE64BitFloatingPoint, std::numeric_limits<double>::infinity()),
            "'doub'($7FF0000000000000$)");
}

TEST(PrintDesc, WritesTruth) {
  EXPECT_EQ(printedBytes(typeBoolean, "\1"), "'bool'(\"true\")");
  EXPECT_EQ(printedBytes(typeBoolean, std::string_view("\0", 1)), "'bool'(\"false\")");
  EXPECT_EQ(printedBytes(typeBoolean, "\2"), "'bool'($02$)");
  EXPECT_EQ(printedBytes(typeTrue, ""), "'true'()");
  EXPECT_EQ(printedBytes(typeFalse, ""), "'fals'()");
}

TEST(PrintDesc, WritesCodes) {
  EXPECT_EQ(printedValue<OSType>(typeEnumerated, 'yes '), "'yes '");
  EXPECT_EQ(printedValue<OSType>(typeType, 'cwin'), "'type'('cwin')");
  EXPECT_EQ(printedValue<OSType>(typeApplSignature, 'Qrl1'), "'sign'('Qrl1')");
  EXPECT_EQ(printedValue<OSType>(typeEnumerated, 0x01020304), "'enum'($01020304$)");
  EXPECT_EQ(printedValue<OSType>(typeType, 'it\'s'), "'type'($69742773$)");
  EXPECT_EQ(printedValue<UInt16>('\1\2\3\4', 0), "$01020304$($0000$)");
}

TEST(PrintDesc, WritesText) {
  EXPECT_EQ(printedBytes(typeChar, "hello"), "\"hello\"");
  EXPECT_EQ(printedBytes(typeChar, ""), "\"\"");
  EXPECT_EQ(printedBytes(typeChar, "a \"b\" \\c"), "\"a \\\"b\\\" \\\\c\"");
  EXPECT_EQ(printedBytes(typeChar, "caf\x8E"), "\"caf\x8E\"");
  EXPECT_EQ(printedBytes(typeUTF8Text, "caf\xC3\xA9"), "'utf8'(\"caf\x8E\")");
  EXPECT_EQ(printedBytes(typePString, "\2ab"), "'pstr'(\"ab\")");
  EXPECT_EQ(printedValue<UInt16>(typeUnicodeText, 'a'), "'utxt'(\"a\")");
}

TEST(PrintDesc, WritesBytesWhereTextIsNoLineOfMacRoman) {
  EXPECT_EQ(printedBytes(typeChar, "a\nb"), "'TEXT'($610A62$)");
  EXPECT_EQ(printedBytes(typeChar, "a\x7F"), "'TEXT'($617F$)");
  EXPECT_EQ(printedBytes(typeUTF8Text, "\xE2\x98\x83"), "'utf8'($E29883$)");
  EXPECT_EQ(printedBytes(typePString, "\5ab"), "'pstr'($056162$)");
  EXPECT_EQ(printedValue<UInt16>(typeUnicodeText, 0x2603), "'utxt'($2603$)");
}

TEST(PrintDesc, WritesBytesOfOtherData) {
  EXPECT_EQ(printedValue<ProcessSerialNumber>(typeProcessSerialNumber, {0, 5}),
            "'psn '($0000000000000005$)");
  EXPECT_EQ(printedValue<mach_port_name_t>(typeMachPort, 0x503), "'port'($00000503$)");
  EXPECT_EQ(printedBytes('blob', "\xDE\xAD"), "'blob'($DEAD$)");
  EXPECT_EQ(printed(Desc()), "'null'()");
}

TEST(PrintDesc, WritesListsAndRecords) {
  Desc list = tests::makeList();
  EXPECT_EQ(printed(list), "[]");
  const SInt32 one = 1;
  ASSERT_EQ(AEPutPtr(&list, 0, typeSInt32, &one, sizeof one), noErr);
  ASSERT_EQ(AEPutPtr(&list, 0, typeChar, "two", 3), noErr);
  EXPECT_EQ(printed(list), "[1, \"two\"]");
  Desc record = tests::makeRecord();
  EXPECT_EQ(printed(record), "{}");
  ASSERT_EQ(tests::putParameter<SInt16>(record, 'errn', typeSInt16, -50), noErr);
  ASSERT_EQ(AEPutKeyDesc(&record, 'list', &list), noErr);
  EXPECT_EQ(printed(record), "{'errn':'shor'(-50), 'list':[1, \"two\"]}");
}

TEST(PrintDesc, WritesEventsWithTheirOwnAttributes) {
  Desc event = tests::makeEvent('aevt', 'quit');
  EXPECT_EQ(printed(event), "'aevt'\\'quit'{}");
  ASSERT_EQ(AEPutAttributePtr(&event, 'mine', typeChar, "x", 1), noErr);
  EXPECT_EQ(printed(event), "'aevt'\\'quit'{&'mine':\"x\"}");
  ASSERT_EQ(tests::putParameter<SInt32>(event, keyDirectObject, typeSInt32, 1), noErr);
  const mach_port_name_t port = 0x503;
  ASSERT_EQ(AEPutAttributePtr(&event, keyReplyPortAttr, typeMachPort, &port, sizeof port), noErr);
  EXPECT_EQ(printed(event), "'aevt'\\'quit'{'----':1, &'mine':\"x\", &'repp':'port'($00000503$)}");
  Desc list;
  ASSERT_EQ(AECoerceDesc(&event, typeAEList, &list), noErr);
  EXPECT_EQ(printed(list), "['aevt'\\'quit'{'----':1, &'mine':\"x\", &'repp':'port'($00000503$)}]");
}

TEST(PrintDesc, WritesAsDeepAsDescriptorsGo) {
  Desc list = tests::makeList();
  for (int depth = 1; depth < 64; ++depth) {
    Desc outer = tests::makeList();
    ASSERT_EQ(AEPutDesc(&outer, 0, &list), noErr);
    std::swap(*&list, *&outer);
  }
  EXPECT_EQ(printed(list), std::string(64, '[') + std::string(64, ']'));
}

TEST(PrintDesc, RefusesBadArguments) {
  const Desc text = tests::makeText("x");
  Handle handle = nullptr;
  EXPECT_EQ(AEPrintDescToHandle(nullptr, &handle), paramErr);
  EXPECT_EQ(AEPrintDescToHandle(&text, nullptr), paramErr);
  const AEDesc empty = {typeAEList, nullptr};
  Handle old = NewHandle(1);
  handle = old;
  EXPECT_EQ(AEPrintDescToHandle(&empty, &handle), errAECorruptData);
  EXPECT_EQ(handle, nullptr);
  DisposeHandle(old);
}

TEST(PrintDesc, FailsWithEachAllocationAndLeaksNothing) {
  Desc record = tests::makeRecord();
  ASSERT_EQ(AEPutKeyPtr(&record, 'text', typeUTF8Text, "hello", 5), noErr);
  ASSERT_EQ(AEPutKeyPtr(&record, 'blob', 'blob', "12", 2), noErr);
  const std::string big(300, 'x');
  ASSERT_EQ(AEPutKeyPtr(&record, 'big ', typeChar, big.data(), 300), noErr);
  Handle handle = nullptr;
  const UInt32 allocations = tests::failEachAllocation(
      [&] { return AEPrintDescToHandle(&record, &handle); },
      [&](OSStatus status, bool failed) {
        EXPECT_EQ(status, failed ? OSStatus{memFullErr} : OSStatus{noErr});
        if (failed) {
          EXPECT_EQ(handle, nullptr);
        }
      });
  EXPECT_GE(allocations, 12u);
  EXPECT_EQ(std::string(*handle, static_cast<std::size_t>(GetHandleSize(handle))),
            "{'text':'utf8'(\"hello\"), 'blob':'blob'($3132$), 'big ':\"" + big + "\"}");
  DisposeHandle(handle);
}

}  // namespace
