// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFString.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "tests/platform/corefoundation/CountingAllocator.h"
#include "tests/platform/corefoundation/ObjectTesting.h"

using namespace tests;

namespace {

template <typename... Arguments>
std::string formatted(const char* format, Arguments... arguments) {
  const Held<CFStringRef> pattern = stringOf(format);
  const Held<CFStringRef> made(
      CFStringCreateWithFormat(nullptr, nullptr, pattern.get(), arguments...));
  return textOf(made.get());
}

}  // namespace

TEST(CFStringFormat, CopiesLiteralText) {
  EXPECT_EQ(formatted("plain té\u20acxt"), "plain té\u20acxt");
  EXPECT_EQ(formatted(""), "");
  EXPECT_EQ(formatted("100%%"), "100%");
}

TEST(CFStringFormat, LeavesWhatIsNoConversion) {
  EXPECT_EQ(formatted("50% y"), "50% y");
  EXPECT_EQ(formatted("end %"), "end %");
  EXPECT_EQ(formatted("%5"), "%5");
  EXPECT_EQ(formatted("%y %d", 3), "%y 3");
  EXPECT_EQ(formatted("%\u20ac"), "%\u20ac");
}

TEST(CFStringFormat, WritesIntegersOfEveryLength) {
  EXPECT_EQ(formatted("%d %i %D", -1, 2, 3), "-1 2 3");
  EXPECT_EQ(formatted("%u %U", -1, 7U), "4294967295 7");
  EXPECT_EQ(formatted("%x %X %o %O", 0xBEEFU, 0xBEEFU, 8U, 9U), "beef BEEF 10 11");
  EXPECT_EQ(formatted("%hd %hu %hhd %hhu", 0x18000, 0x18000, 0x1FF, 0x1FF), "-32768 32768 -1 255");
  EXPECT_EQ(formatted("%ld %lu", -5L, 5UL), "-5 5");
  EXPECT_EQ(formatted("%lld %qd", std::numeric_limits<SInt64>::min(), SInt64{-7}),
            "-9223372036854775808 -7");
  EXPECT_EQ(formatted("%llu %qx", std::numeric_limits<UInt64>::max(), UInt64{0xABC}),
            "18446744073709551615 abc");
  EXPECT_EQ(formatted("%zu %zd", std::size_t{9}, std::size_t{8}), "9 8");
  EXPECT_EQ(formatted("%td %jd", std::ptrdiff_t{-9}, std::intmax_t{-8}), "-9 -8");
  EXPECT_EQ(formatted("%lx", -1L), sizeof(long) == 8 ? "ffffffffffffffff" : "ffffffff");
}

TEST(CFStringFormat, WritesFloatingPointValues) {
  EXPECT_EQ(formatted("%f %.2f", 1.5, 3.14159), "1.500000 3.14");
  EXPECT_EQ(formatted("%e %E", 12345.678, 12345.678), "1.234568e+04 1.234568E+04");
  EXPECT_EQ(formatted("%g %G", 0.0001, 1e-10), "0.0001 1E-10");
  EXPECT_EQ(formatted("%Lf", 2.25L), "2.250000");
  EXPECT_EQ(formatted("%a", 1.0), formatted("%s", "0x1p+0"));
}

TEST(CFStringFormat, KeepsFlagsWidthAndPrecision) {
  EXPECT_EQ(formatted("[%5d|%-5d|%05d|%+d|% d|%#x]", 42, 42, 42, 42, 42, 255),
            "[   42|42   |00042|+42| 42|0xff]");
  EXPECT_EQ(formatted("[%.4d|%8.3f|%-8.3f]", 7, 2.5, 2.5), "[0007|   2.500|2.500   ]");
  EXPECT_EQ(formatted("[%5s|%-5s|%.2s]", "ab", "ab", "abc"), "[   ab|ab   |ab]");
  EXPECT_EQ(formatted("[%4c|%-4c]", 'x', 'y'), "[   x|y   ]");
}

TEST(CFStringFormat, TakesWidthAndPrecisionFromArguments) {
  EXPECT_EQ(formatted("[%*d|%-*d|%.*f]", 4, 7, 4, 7, 1, 2.55), "[   7|7   |2.5]");
  EXPECT_EQ(formatted("[%*d]", -4, 7), "[7   ]");
  EXPECT_EQ(formatted("[%.*s]", -1, "whole"), "[whole]");
}

TEST(CFStringFormat, TakesArgumentsByPosition) {
  EXPECT_EQ(formatted("%2$s %1$d", 7, "seven"), "seven 7");
  EXPECT_EQ(formatted("%1$d %1$d", 7), "7 7");
  EXPECT_EQ(formatted("%3$s %1$f %2$lld", 1.5, SInt64{1} << 40, "x"), "x 1.500000 1099511627776");
  EXPECT_EQ(formatted("[%2$*1$d]", 4, 7), "[   7]");
}

TEST(CFStringFormat, DoesNotTakeAbsurdPositions) {
  EXPECT_EQ(formatted("%2000000000$d"), "%2000000000$d");
  EXPECT_EQ(formatted("%0$d"), "%0$d");
}

TEST(CFStringFormat, WritesTextOfEachKind) {
  const UniChar units[] = {'w', 0x20AC, 0};
  EXPECT_EQ(formatted("%s", "caf\x8e"), "café");
  EXPECT_EQ(formatted("%S", units), "w\u20ac");
  EXPECT_EQ(formatted("%.1S", units), "w");
  EXPECT_EQ(formatted("%c%c", 'a', 0x8E), "aé");
  EXPECT_EQ(formatted("%C", 0x20AC), "\u20ac");
}

TEST(CFStringFormat, ReadsNoFurtherThanThePrecision) {
  const char unterminated[3] = {'a', 'b', 'c'};
  EXPECT_EQ(formatted("%.3s", &unterminated[0]), "abc");
}

TEST(CFStringFormat, WritesNullForNull) {
  EXPECT_EQ(formatted("%s", static_cast<const char*>(nullptr)), "(null)");
  EXPECT_EQ(formatted("%S", static_cast<const UniChar*>(nullptr)), "(null)");
  EXPECT_EQ(formatted("%@", static_cast<CFTypeRef>(nullptr)), "(null)");
}

TEST(CFStringFormat, WritesPointersInHexadecimal) {
  EXPECT_EQ(formatted("%p", reinterpret_cast<void*>(0xBEEF)), "0xbeef");
  EXPECT_EQ(formatted("%p", static_cast<void*>(nullptr)), "0x0");
  EXPECT_EQ(formatted("[%8p]", reinterpret_cast<void*>(0xBEEF)), "[  0xbeef]");
}

TEST(CFStringFormat, StoresNothing) {
  int count = 77;
  EXPECT_EQ(formatted("ab%ncd", &count), "abcd");
  EXPECT_EQ(count, 77);
}

TEST(CFStringFormat, WritesTheTextOfObjects) {
  const Held<CFNumberRef> number = numberOf(-12);
  EXPECT_EQ(formatted("<%@>", static_cast<CFTypeRef>(CFSTR("text"))), "<text>");
  EXPECT_EQ(formatted("%@", static_cast<CFTypeRef>(number.get())), "-12");
  EXPECT_EQ(formatted("%@ %@", static_cast<CFTypeRef>(kCFBooleanTrue),
                      static_cast<CFTypeRef>(kCFBooleanFalse)),
            "true false");
  EXPECT_EQ(formatted("[%6@|%-6@|%.2@]", CFSTR("abc"), CFSTR("abc"), CFSTR("abc")),
            "[   abc|abc   |ab]");
}

TEST(CFStringFormat, WritesTheDescriptionOfOtherObjects) {
  const Held array(CFArrayCreate(nullptr, nullptr, 0, nullptr));
  EXPECT_EQ(formatted("%@", static_cast<CFTypeRef>(array.get())), describe(array.get()));
}

TEST(CFStringFormat, HoldsNoReferenceToItsArguments) {
  const Held<CFNumberRef> number = numberOf(5);
  formatted("%@", static_cast<CFTypeRef>(number.get()));
  EXPECT_EQ(CFGetRetainCount(number.get()), 1);
}

TEST(CFStringFormat, IsNullForWhatIsNoFormat) {
  EXPECT_EQ(CFStringCreateWithFormat(nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(
      CFStringCreateWithFormat(nullptr, nullptr, reinterpret_cast<CFStringRef>(kCFBooleanTrue)),
      nullptr);
}

TEST(CFStringFormat, IsNullWhenThereIsNoMemory) {
  CountingAllocator allocator;
  allocator.failAfter(0);
  EXPECT_EQ(CFStringCreateWithFormat(allocator.get(), nullptr, CFSTR("%d"), 1), nullptr);
}

TEST(CFStringFormat, AppendsToText) {
  const Held text(CFStringCreateMutable(nullptr, 0));
  CFStringAppendFormat(text.get(), nullptr, CFSTR("%d"), 1);
  CFStringAppendFormat(text.get(), nullptr, CFSTR(", %s"), "two");
  EXPECT_EQ(textOf(text.get()), "1, two");
}
