// Licence: MIT, see LICENSE.
#include <quorvant/util/OSTypeStrings.h>

#include <quorvant/util/StringUtils.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>

namespace {

constexpr UInt32 kLastDecimal = 0x7FFF;
constexpr size_t kCodeLength = 4;
constexpr int kDigitsAfterPrefix = 8;

bool isPrintable(UInt8 character) { return character >= 0x20 && character <= 0x7E; }

UInt8 characterOf(UInt32 type, int index) { return static_cast<UInt8>(type >> (24 - 8 * index)); }

bool isPrintableCode(UInt32 type) {
  return isPrintable(characterOf(type, 0)) && isPrintable(characterOf(type, 1)) &&
         isPrintable(characterOf(type, 2)) && isPrintable(characterOf(type, 3));
}

UInt32 codeOf(const char* characters) {
  UInt32 code = 0;
  for (size_t i = 0; i < kCodeLength; ++i) code = code << 8 | static_cast<UInt8>(characters[i]);
  return code;
}

void writeQuoted(UInt32 type, unsigned char* text) {
  text[0] = kCodeLength + 2;
  text[1] = '\'';
  for (int i = 0; i < static_cast<int>(kCodeLength); ++i) text[2 + i] = characterOf(type, i);
  text[kCodeLength + 2] = '\'';
}

void writeHexadecimal(UInt32 type, unsigned char* text) {
  text[0] = 2 + kDigitsAfterPrefix;
  text[1] = '0';
  text[2] = 'x';
  for (int i = 0; i < kDigitsAfterPrefix; ++i) {
    text[3 + i] = static_cast<unsigned char>("0123456789abcdef"[type >> (28 - 4 * i) & 0xF]);
  }
}

bool isQuotedCode(const char* text) {
  return std::strlen(text) == kCodeLength + 2 && text[0] == '\'' && text[kCodeLength + 1] == '\'';
}

/// Reads what "0x%8u" does: behind the prefix white space, then a decimal number of up to eight
/// characters with its sign.
std::optional<UInt32> numberAfterPrefix(const char* text) {
  if (std::strncmp(text, "0x", 2) != 0) return std::nullopt;
  text += 2;
  while (std::isspace(static_cast<unsigned char>(*text)) != 0) ++text;
  const char* const limit = text + strnlen(text, kDigitsAfterPrefix);
  const bool isNegative = *text == '-';
  if (*text == '+' || *text == '-') ++text;
  UInt32 number = 0;
  const char* const digits = text;
  for (; text < limit && *text >= '0' && *text <= '9'; ++text) {
    number = number * 10 + static_cast<UInt32>(*text - '0');
  }
  if (text == digits) return std::nullopt;
  return isNegative ? 0 - number : number;
}

/// Reads what "%ld" does where a long has 32 bits: a number out of range is the nearest there is.
std::optional<UInt32> decimalNumber(const char* text) {
  char* end = nullptr;
  const long number = std::strtol(text, &end, 10);
  if (end == text) return std::nullopt;
  constexpr long kLeast = std::numeric_limits<SInt32>::min();
  constexpr long kMost = std::numeric_limits<SInt32>::max();
  return static_cast<UInt32>(std::clamp(number, kLeast, kMost));
}

std::optional<UInt32> readType(const char* text) {
  if (isQuotedCode(text)) return codeOf(text + 1);
  if (const std::optional<UInt32> number = numberAfterPrefix(text)) return number;
  if (const std::optional<UInt32> number = decimalNumber(text)) return number;
  if (std::strlen(text) == kCodeLength) return codeOf(text);
  return std::nullopt;
}

}  // namespace

char* OSTypeToCString(UInt32 type, char* buffer, int size) {
  Str255 text;
  if (isPrintableCode(type)) {
    writeQuoted(type, text);
  } else if (type <= kLastDecimal) {
    NumToString(static_cast<SInt32>(type), text);
  } else {
    writeHexadecimal(type, text);
  }
  return pcstrcpy(buffer, text, size);
}

char* OSTypestrcpy(char* buffer, UInt32 type, int size) {
  return OSTypeToCString(type, buffer, size);
}

char* OSTypestrcat(char* buffer, UInt32 type, int size) {
  if (buffer == nullptr || size < 1) return buffer;
  const int used = static_cast<int>(strnlen(buffer, static_cast<size_t>(size)));
  if (used < size) OSTypeToCString(type, buffer + used, size - used);
  return buffer;
}

OSErr CStringToOSType(const char* text, UInt32& type) {
  const std::optional<UInt32> read = text == nullptr ? std::nullopt : readType(text);
  if (!read) return paramErr;
  type = *read;
  return noErr;
}
