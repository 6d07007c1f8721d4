// Licence: MIT, see LICENSE.
// Feeds a text to the reader of versions. It must read what the C library's scanner reads, and what
// is read and written must be read back as the same version.
#include <quorvant/util/VersionStrings.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "tests/fuzz/ScannedText.h"

namespace {

using tests::hasLongNumber;
using tests::require;

/// The steps as they are described, each by the scanner.
bool scan(const char* text, int numbers[4], char& stage) {
  int length = 0;
  if (std::sscanf(text, "%d%n", &numbers[0], &length) != 1) return false;
  text += length;
  for (int i = 1; i <= 2 && *text == '.'; ++i) {
    if (std::sscanf(++text, "%d%n", &numbers[i], &length) != 1) return false;
    text += length;
  }
  if (*text == '\0' || std::strchr("adbf", *text) == nullptr) return true;
  return std::sscanf(text, "%c%d", &stage, &numbers[3]) == 2;
}

UInt32 stageCode(char stage) {
  return stage == 'd' ? 0x20 : stage == 'a' ? 0x40 : stage == 'b' ? 0x60 : 0x80;
}

UInt32 packed(const int numbers[4], char stage) {
  const auto bits = [](int number, UInt32 mask, int shift) {
    return (static_cast<UInt32>(number) & mask) << shift;
  };
  return bits(numbers[0] / 10, 0xF, 28) | bits(numbers[0] % 10, 0xF, 24) |
         bits(numbers[1], 0xF, 20) | bits(numbers[2], 0xF, 16) | stageCode(stage) << 8 |
         bits(numbers[3], 0xFF, 0);
}

void checkAgainstScanner(const std::string& text, OSErr result, UInt32 version) {
  int numbers[4] = {};
  char stage = 'f';
  const bool isVersion = scan(text.c_str(), numbers, stage);
  require((result == noErr) == isVersion);
  if (isVersion) require(version == packed(numbers, stage));
}

void checkWayBack(UInt32 version) {
  if ((version >> 24 & 0xF) > 9) return;  // of a negative number
  unsigned char buffer[16];
  UInt32 again = ~version;
  require(StringToVers(VersToString(version, buffer, true), again) == noErr && again == version);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  constexpr UInt32 kUntouched = 0xDEADBEEF;
  UInt32 version = kUntouched;
  const OSErr result = StringToVers(text.c_str(), version);
  require(result == noErr || (result == paramErr && version == kUntouched));
  if (!hasLongNumber(text)) checkAgainstScanner(text, result, version);
  if (result == noErr) checkWayBack(version);
  return 0;
}
