// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/util/ByteDumps.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "tests/util/Destination.h"

namespace {

using namespace std::string_literals;
using tests::Destination;

constexpr UInt8 kBytes[] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0x00, 0xFF, 0xA5, 0x5A};

TEST(HexDump, WritesDigitsInTheOrderOfTheBytes) {
  const struct {
    int digits;
    const char* text;
  } rows[] = {
      {0, ""},
      {1, "0"},
      {2, "01"},
      {3, "012"},
      {7, "0123456"},
      {8, "01234567"},
      {9, "012345678"},
      {16, "0123456789ABCDEF"},
      {24, "0123456789ABCDEF00FFA55A"},
      {-1, ""},
  };
  for (const auto& row : rows) {
    Destination to;
    EXPECT_EQ(HexDump(kBytes, to.chars(), row.digits, 0), to.chars());
    EXPECT_EQ(to.written(), row.text) << row.digits;
    Destination terminated;
    HexDump(kBytes, terminated.chars(), row.digits, kHexDumpTerminate);
    EXPECT_EQ(terminated.written(), row.text + "\0"s) << row.digits;
  }
}

TEST(HexDump, TerminatesForFlag2Only) {
  for (UInt32 flags = 0; flags < 16; ++flags) {
    Destination to;
    HexDump(kBytes, to.chars(), 4, flags);
    EXPECT_EQ(to.written(), (flags & 2) != 0 ? "0123\0"s : "0123"s) << flags;
  }
}

TEST(HexDump, WritesWhatPrintfWrites) {
  std::mt19937 random(16);
  std::vector<UInt8> bytes(400);
  for (UInt8& byte : bytes) byte = static_cast<UInt8>(random());
  std::string expected;
  char pair[3];
  for (const UInt8 byte : bytes) {
    std::snprintf(pair, sizeof pair, "%02X", byte);
    expected += pair;
  }
  for (int digits = 0; digits <= 800; ++digits) {
    Destination to;
    HexDump(bytes.data(), to.chars(), digits, 0);
    ASSERT_EQ(to.written(), expected.substr(0, static_cast<std::size_t>(digits)));
  }
}

TEST(ASCIICharDump, ReplacesWhatCannotBePrinted) {
  const struct {
    std::string bytes, text;
  } rows[] = {
      {"plain text", "plain text"}, {" ~", " ~"}, {"a\x1F\x7F\x80\xFFz", "a....z"},
      {"\0\t\r\n"s, "...."},        {"", ""},
  };
  for (const auto& row : rows) {
    const int count = static_cast<int>(row.bytes.size());
    Destination to;
    EXPECT_EQ(ASCIICharDump(row.bytes.data(), to.chars(), count, 0), to.chars());
    EXPECT_EQ(to.written(), row.text);
    Destination terminated;
    ASCIICharDump(row.bytes.data(), terminated.chars(), count, kASCIICharDumpTerminate);
    EXPECT_EQ(terminated.written(), row.text + "\0"s);
  }
}

TEST(ASCIICharDump, KeepsExactlyThePrintableCharacters) {
  for (unsigned int code = 0; code < 256; ++code) {
    const char byte = static_cast<char>(code);
    char shown = '\0';
    ASCIICharDump(&byte, &shown, 1, 0);
    EXPECT_EQ(shown, code >= 0x20 && code <= 0x7E ? byte : '.') << code;
  }
}

TEST(ASCIICharDump, TerminatesForFlag1Only) {
  for (UInt32 flags = 0; flags < 16; ++flags) {
    Destination to;
    ASCIICharDump("abc", to.chars(), 2, flags);
    EXPECT_EQ(to.written(), (flags & 1) != 0 ? "ab\0"s : "ab"s) << flags;
  }
}

TEST(Dumps, TakeANegativeCountForNone) {
  Destination to;
  ASCIICharDump("abc", to.chars(), -5, 0);
  HexDump("abc", to.chars(), -5, 0);
  EXPECT_EQ(to.written(), "");
}

TEST(Dumps, DoNothingForNullPointers) {
  Destination to;
  EXPECT_EQ(HexDump(nullptr, to.chars(), 4, kHexDumpTerminate), to.chars());
  EXPECT_EQ(ASCIICharDump(nullptr, to.chars(), 4, kASCIICharDumpTerminate), to.chars());
  EXPECT_EQ(to.written(), "");
  EXPECT_EQ(HexDump("abc", nullptr, 4, 0), nullptr);
  EXPECT_EQ(ASCIICharDump("abc", nullptr, 4, 0), nullptr);
}

}  // namespace
