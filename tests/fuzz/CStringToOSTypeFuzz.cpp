// Licence: MIT, see LICENSE.
// Feeds a text to the reader of four-character codes, which must read what the C library's scanner
// reads, and its first four bytes as a code to the writer, which must keep to every size.
#include <quorvant/util/OSTypeStrings.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "tests/fuzz/ScannedText.h"

namespace {

using tests::hasLongNumber;
using tests::require;

UInt32 codeOf(const char* characters) {
  UInt32 code = 0;
  for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<UInt8>(characters[i]);
  return code;
}

bool scan(const char* text, UInt32& type) {
  const std::size_t length = std::strlen(text);
  unsigned int behindPrefix = 0;
  long number = 0;
  if (length == 6 && text[0] == '\'' && text[5] == '\'') {
    type = codeOf(text + 1);
  } else if (std::sscanf(text, "0x%8ux", &behindPrefix) == 1) {
    type = behindPrefix;
  } else if (std::sscanf(text, "%ld", &number) == 1) {
    type = static_cast<UInt32>(number);
  } else if (length == 4) {
    type = codeOf(text);
  } else {
    return false;
  }
  return true;
}

void checkReading(const std::string& text) {
  constexpr UInt32 kUntouched = 0xDEADBEEF;
  UInt32 type = kUntouched;
  const OSErr result = CStringToOSType(text.c_str(), type);
  require(result == noErr || (result == paramErr && type == kUntouched));
  if (hasLongNumber(text) && text.compare(0, 2, "0x") != 0) return;
  UInt32 scanned = kUntouched;
  require((result == noErr) == scan(text.c_str(), scanned));
  require(type == scanned);
}

void checkWriting(UInt32 type) {
  char whole[12];
  OSTypeToCString(type, whole, sizeof whole);
  const std::size_t length = std::strlen(whole);
  for (int size = 0; size <= static_cast<int>(length) + 1; ++size) {
    char buffer[12];
    std::memset(buffer, '#', sizeof buffer);
    OSTypestrcpy(buffer, type, size);
    require(size == 0 ||
            std::string(buffer) == std::string(whole, static_cast<std::size_t>(size) - 1));
    for (std::size_t i = static_cast<std::size_t>(size); i < sizeof buffer; ++i) {
      require(buffer[i] == '#');
    }
  }
  UInt32 again = ~type;
  if (whole[0] == '\'' || type <= 0x7FFF) {
    require(CStringToOSType(whole, again) == noErr && again == type);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  checkReading(text);
  if (size >= 4) checkWriting(codeOf(text.data()));
  return 0;
}
