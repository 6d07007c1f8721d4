// Licence: MIT, see LICENSE.
#include <gtest/gtest.h>
#include <quorvant/util/VersionStrings.h>

#include <string>

#include "tests/util/Destination.h"

namespace {

using namespace std::string_literals;
using tests::Destination;

struct VersionRow {
  UInt32 version;
  const char* withStage;
  const char* without;
};

constexpr VersionRow kVersionRows[] = {
    {0x01108000, "1.1f0", "1.1"},         {0x10230000, "10.2.3?0", "10.2.3"},
    {0x01206003, "1.2b3", "1.2"},         {0x00000000, "0.0?0", "0.0"},
    {0x10048000, "10.0.4f0", "10.0.4"},   {0x09922001, "9.9.2d1", "9.9.2"},
    {0x01004063, "1.0a99", "1.0"},        {0x010080FF, "1.0f255", "1.0"},
    {0x99998080, "99.9.9f128", "99.9.9"}, {0x20008000, "20.0f0", "20.0"},
    {0x01C08000, "1.12f0", "1.12"},       {0xFFFFFFFF, "1515.15.15?255", "1515.15.15"},
    {0x01002100, "1.0?0", "1.0"},         {0x0100FF07, "1.0?7", "1.0"},
};

TEST(VersToString, WritesEveryPart) {
  for (const VersionRow& row : kVersionRows) {
    Destination with;
    Destination without;
    EXPECT_EQ(VersToString(row.version, with.pascalBytes(), true), with.chars() + 1);
    EXPECT_EQ(VersToString(row.version, without.pascalBytes(), false), without.chars() + 1);
    EXPECT_EQ(with.written(), tests::pascal(row.withStage) + "\0"s);
    EXPECT_EQ(without.written(), tests::pascal(row.without) + "\0"s);
  }
}

TEST(VersToString, NeedsSixteenBytesAtMost) {
  std::size_t longest = 0;
  for (const UInt32 number : {0xFFFFFFFFU, 0xFFFF20FFU, 0xFFFF80FFU}) {
    Destination buffer;
    VersToString(number, buffer.pascalBytes(), true);
    longest = std::max(longest, buffer.written().size());
  }
  EXPECT_EQ(longest, 16u);
}

TEST(VersToString, LeavesOutAFixOfZero) {
  Destination buffer;
  EXPECT_STREQ(VersToString(0x10230000, buffer.pascalBytes(), false), "10.2.3");
  EXPECT_STREQ(VersToString(0x10200000, buffer.pascalBytes(), false), "10.2");
}

TEST(VersToString, DoesNothingWithoutABuffer) {
  EXPECT_EQ(VersToString(0x01108000, nullptr, true), nullptr);
}

TEST(StringToVers, ReadsEveryPart) {
  const struct {
    const char* text;
    UInt32 version;
  } rows[] = {
      {"1.2b3", 0x01206003},    {"1", 0x01008000},          {"10.2.3", 0x10238000},
      {"1.0d1", 0x01002001},    {"1.0a2", 0x01004002},      {"1.0b3", 0x01006003},
      {"1.0f4", 0x01008004},    {"7b12", 0x0700600C},       {"99.9.9f255", 0x999980FF},
      {"0", 0x00008000},        {"1.2.3.4", 0x01238000},    {"1.2x5", 0x01208000},
      {"1.2 b3", 0x01208000},   {"1.2b3junk", 0x01206003},  {"  1.  2b  3", 0x01206003},
      {"+1.+2b+3", 0x01206003}, {"1.12", 0x01C08000},       {"1.16.17", 0x01018000},
      {"1.0b256", 0x01006000},  {"1.0b257", 0x01006001},    {"1.0b-1", 0x010060FF},
      {"1.-1", 0x01F08000},     {"123.4", 0xC3408000},      {"1.2B3", 0x01208000},
      {"01.02", 0x01208000},    {"2147483648", 0xC7008000}, {"99999999999999", 0xC7008000},
  };
  for (const auto& row : rows) {
    UInt32 version = 0xDEADBEEF;
    EXPECT_EQ(StringToVers(row.text, version), noErr) << row.text;
    EXPECT_EQ(version, row.version) << row.text;
  }
}

TEST(StringToVers, RefusesMissingNumbersAndLeavesTheVersionAlone) {
  for (const char* text : {"", " ", "b3", ".", ".1", "x", "1.", "1.b3", "1..2", "1.2.", "1.2.b3",
                           "1.2b", "1.2bb3", "1.2b.", "1d", "-", "+", "1.-", "1.2b-"}) {
    UInt32 version = 0xDEADBEEF;
    EXPECT_EQ(StringToVers(text, version), paramErr) << text;
    EXPECT_EQ(version, 0xDEADBEEFU) << text;
  }
  UInt32 version = 0xDEADBEEF;
  EXPECT_EQ(StringToVers(nullptr, version), paramErr);
  EXPECT_EQ(version, 0xDEADBEEFU);
}

TEST(StringToVers, ReadsBackWhatVersToStringWrites) {
  for (const UInt32 stage : {0x20U, 0x40U, 0x60U, 0x80U}) {
    for (UInt32 numbers = 0; numbers < 0x10000; numbers += 7) {
      const bool decimalMajor = (numbers >> 8 & 0xF) <= 9 && (numbers >> 12) <= 9;
      if (!decimalMajor) continue;
      const UInt32 version = numbers << 16 | stage << 8 | (numbers & 0xFF);
      Destination buffer;
      UInt32 read = 0;
      ASSERT_EQ(StringToVers(VersToString(version, buffer.pascalBytes(), true), read), noErr);
      ASSERT_EQ(read, version) << buffer.chars() + 1;
    }
  }
}

}  // namespace
