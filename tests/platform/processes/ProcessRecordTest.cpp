// Licence: MIT, see LICENSE.
#include "platform/processes/ProcessRecord.h"

#include <gtest/gtest.h>

namespace {

using namespace platform::processes;
using Bytes = std::vector<std::byte>;

ProcessRecord example() {
  ProcessRecord record;
  record.pid = 0x01020304;
  record.launcher = 77;
  record.launchTicks = 0xFFFFFFFE;
  record.signature = 'QrlA';
  record.name = "qrlagentd";
  record.path = "/Applications/qrlagentd.app/Contents/MacOS/qrlagentd";
  return record;
}

Bytes bytesOf(const std::string& text) {
  const auto* first = reinterpret_cast<const std::byte*>(text.data());
  return Bytes(first, first + text.size());
}

TEST(ProcessRecord, ComesBackFromItsBytesAsItWas) {
  const auto decoded = decodeRecord(encodeRecord(example()));
  ASSERT_TRUE(decoded);
  EXPECT_EQ(*decoded, example());
}

TEST(ProcessRecord, HasTheSameBytesOnEveryMachine) {
  ProcessRecord record;
  record.pid = 0x01020304;
  record.launcher = 5;
  record.launchTicks = 6;
  record.name = "ab";
  record.path = "/c";
  const std::string expected(
      "QPrc\0\0\0\1\1\2\3\4\0\0\0\5\0\0\0\6APPL\x3F\x3F\x3F\x3F"
      "\0\0\0\2ab\0\0\0\2/c",
      40);
  EXPECT_EQ(encodeRecord(record), bytesOf(expected));
}

TEST(ProcessRecord, IsNothingWhenAnyByteIsMissing) {
  const Bytes whole = encodeRecord(example());
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(decodeRecord({whole.data(), size})) << size;
  }
}

TEST(ProcessRecord, IsNothingWhenBytesFollow) {
  Bytes bytes = encodeRecord(example());
  bytes.push_back(std::byte{0});
  EXPECT_FALSE(decodeRecord(bytes));
}

struct Damage {
  const char* what;
  std::size_t offset;
  unsigned char value;

  friend void PrintTo(const Damage& damage, std::ostream* out) { *out << damage.what; }
};

class DamagedRecord : public testing::TestWithParam<Damage> {};

TEST_P(DamagedRecord, IsNothing) {
  Bytes bytes = encodeRecord(example());
  bytes.at(GetParam().offset) = std::byte{GetParam().value};
  EXPECT_FALSE(decodeRecord(bytes)) << GetParam().what;
}

INSTANTIATE_TEST_SUITE_P(
    All, DamagedRecord,
    testing::Values(Damage{"another magic", 0, 'X'}, Damage{"another version", 7, 2},
                    Damage{"a negative process ID", 8, 0x80}, Damage{"a huge name", 28, 0xFF},
                    Damage{"a name longer than the rest", 31, 0x7F},
                    Damage{"a name shorter by one", 31, 8}, Damage{"a huge path", 41, 0xFF}));

TEST(ProcessRecord, NeedsAProcessID) {
  ProcessRecord record = example();
  record.pid = 0;
  EXPECT_FALSE(decodeRecord(encodeRecord(record)));
}

TEST(ProcessRecord, LeavesOutTextsThatAreTooLong) {
  ProcessRecord record = example();
  record.path = std::string(kMaximumRecordSize, 'x');
  const Bytes bytes = encodeRecord(record);
  EXPECT_LE(bytes.size(), kMaximumRecordSize);
  const auto decoded = decodeRecord(bytes);
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->path, "");
  EXPECT_EQ(decoded->name, "qrlagentd");
}

TEST(ProcessRecord, StaysWithinItsBoundWithTheLongestTexts) {
  ProcessRecord record = example();
  record.path = record.name = std::string((kMaximumRecordSize - 36) / 2, 'x');
  const Bytes bytes = encodeRecord(record);
  EXPECT_LE(bytes.size(), kMaximumRecordSize);
  EXPECT_EQ(decodeRecord(bytes), record);
}

struct ProgramCase {
  const char* path;
  const char* application;  // null: none
  const char* name;

  friend void PrintTo(const ProgramCase& each, std::ostream* out) { *out << each.path; }
};

class Program : public testing::TestWithParam<ProgramCase> {};

TEST_P(Program, BelongsToItsApplicationAndIsNamedAfterIt) {
  const auto folder = applicationFolder(GetParam().path);
  EXPECT_EQ(folder.has_value(), GetParam().application != nullptr);
  EXPECT_EQ(folder.value_or(""), GetParam().application == nullptr ? "" : GetParam().application);
  EXPECT_EQ(processName(GetParam().path), GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(
    All, Program,
    testing::Values(ProgramCase{"/A/My Name.app/Contents/MacOS/prog", "/A/My Name.app", "My Name"},
                    ProgramCase{"/N.app/Contents/Linux/N", "/N.app", "N"},
                    ProgramCase{"N.app/Contents/Linux/N", "N.app", "N"},
                    ProgramCase{"/usr/bin/prog", nullptr, "prog"},
                    ProgramCase{"/N.app/Contents/prog", nullptr, "prog"},
                    ProgramCase{"/N.app/Contents/a/b/prog", nullptr, "prog"},
                    ProgramCase{"/N.app/contents/MacOS/prog", nullptr, "prog"},
                    ProgramCase{"/N.application/Contents/MacOS/prog", nullptr, "prog"},
                    ProgramCase{"/.app/Contents/MacOS/prog", nullptr, "prog"},
                    ProgramCase{"prog", nullptr, "prog"}, ProgramCase{"", nullptr, ""}));

TEST(PackageInfo, TellsTypeAndSignature) {
  ProcessRecord record;
  EXPECT_TRUE(readPackageInfo(bytesOf("BNDLQrlA\n"), record));
  EXPECT_EQ(record.type, OSType{'BNDL'});
  EXPECT_EQ(record.signature, OSType{'QrlA'});
}

TEST(PackageInfo, ChangesNothingWhenItIsTooShort) {
  ProcessRecord record;
  EXPECT_FALSE(readPackageInfo(bytesOf("APPLQrl"), record));
  EXPECT_EQ(record.type, OSType{'APPL'});
  EXPECT_EQ(record.signature, kUnknownSignature);
}

}  // namespace
