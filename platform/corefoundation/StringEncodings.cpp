// Licence: MIT, see LICENSE.
#include "platform/corefoundation/StringEncodings.h"

#include <algorithm>
#include <bit>

#include "platform/text/MacRoman.h"

namespace platform::corefoundation {

namespace {

constexpr UInt32 kByteOrderMark = 0xFEFF;
constexpr UInt32 kFirstSupplementary = 0x10000;
constexpr UInt32 kLastCharacter = 0x10FFFF;

constexpr bool isHighSurrogate(UInt32 unit) { return unit >= 0xD800 && unit < 0xDC00; }
constexpr bool isLowSurrogate(UInt32 unit) { return unit >= 0xDC00 && unit < 0xE000; }
constexpr bool isSurrogate(UInt32 unit) { return unit >= 0xD800 && unit < 0xE000; }

constexpr bool isUTF16(CFStringEncoding encoding) {
  return encoding == kCFStringEncodingUnicode || encoding == kCFStringEncodingUTF16BE ||
         encoding == kCFStringEncodingUTF16LE;
}

constexpr bool isBigEndian(CFStringEncoding encoding) {
  if (encoding == kCFStringEncodingUnicode) return std::endian::native == std::endian::big;
  return encoding == kCFStringEncodingUTF16BE;
}

UniChar unitFrom(const UInt8* bytes, bool bigEndian) {
  return static_cast<UniChar>(bigEndian ? bytes[0] << 8 | bytes[1] : bytes[1] << 8 | bytes[0]);
}

// How a lead byte of UTF-8 begins: length of the sequence, bits of its own, smallest character of
// that length. Length 0: no lead byte.
struct LeadByte {
  std::size_t length;
  UInt32 bits;
  UInt32 smallest;
};

LeadByte leadByte(UInt8 byte) {
  if (byte < 0x80) return {1, byte, 0};
  if (byte < 0xC0) return {0, 0, 0};
  if (byte < 0xE0) return {2, byte & 0x1FU, 0x80};
  if (byte < 0xF0) return {3, byte & 0x0FU, 0x800};
  if (byte < 0xF8) return {4, byte & 0x07U, kFirstSupplementary};
  return {0, 0, 0};
}

// Takes one character off the front; nothing if the bytes do not start with a well-formed one.
std::optional<UInt32> takeUTF8(Bytes& bytes) {
  const LeadByte lead = leadByte(bytes[0]);
  if (lead.length == 0 || lead.length > bytes.size()) return std::nullopt;
  UInt32 character = lead.bits;
  for (const UInt8 byte : bytes.subspan(1, lead.length - 1)) {
    if ((byte & 0xC0) != 0x80) return std::nullopt;
    character = character << 6 | (byte & 0x3FU);
  }
  if (character < lead.smallest || character > kLastCharacter || isSurrogate(character)) {
    return std::nullopt;
  }
  bytes = bytes.subspan(lead.length);
  return character;
}

std::optional<CFIndex> lengthOfUTF8(Bytes bytes) {
  CFIndex length = 0;
  while (!bytes.empty()) {
    const std::optional<UInt32> character = takeUTF8(bytes);
    if (!character) return std::nullopt;
    length += *character < kFirstSupplementary ? 1 : 2;
  }
  return length;
}

void decodeUTF8(Bytes bytes, UniChar* units) {
  while (!bytes.empty()) {
    const UInt32 character = takeUTF8(bytes).value_or(0xFFFD);
    if (character < kFirstSupplementary) {
      *units++ = static_cast<UniChar>(character);
    } else {
      *units++ = static_cast<UniChar>(0xD800 + ((character - kFirstSupplementary) >> 10));
      *units++ = static_cast<UniChar>(0xDC00 + (character & 0x3FF));
    }
  }
}

void decodeUTF16(Bytes bytes, bool bigEndian, UniChar* units) {
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    *units++ = unitFrom(bytes.data() + i, bigEndian);
  }
}

// The first character of a text, and the units that it has. A lone surrogate stands for itself.
UInt32 firstCharacter(Units text, CFIndex& units) {
  units = 1;
  if (!isHighSurrogate(text[0]) || text.size() < 2 || !isLowSurrogate(text[1])) return text[0];
  units = 2;
  return kFirstSupplementary + ((text[0] - 0xD800U) << 10) + (text[1] - 0xDC00U);
}

void encodeUTF8(UInt32 character, EncodedCharacter& made) {
  const auto continuation = [character](int shift) {
    return static_cast<UInt8>(0x80 | (character >> shift & 0x3F));
  };
  if (character < 0x80) {
    made = {{static_cast<UInt8>(character)}, 1, made.units};
  } else if (character < 0x800) {
    made = {{static_cast<UInt8>(0xC0 | character >> 6), continuation(0)}, 2, made.units};
  } else if (isSurrogate(character)) {
    made.size = 0;
  } else if (character < kFirstSupplementary) {
    made = {{static_cast<UInt8>(0xE0 | character >> 12), continuation(6), continuation(0)},
            3,
            made.units};
  } else {
    made = {{static_cast<UInt8>(0xF0 | character >> 18), continuation(12), continuation(6),
             continuation(0)},
            4,
            made.units};
  }
}

void encodeUTF16(Units text, bool bigEndian, EncodedCharacter& made) {
  for (CFIndex i = 0; i < made.units; ++i) {
    const UniChar unit = text[static_cast<std::size_t>(i)];
    const UInt8 high = static_cast<UInt8>(unit >> 8);
    const UInt8 low = static_cast<UInt8>(unit & 0xFF);
    made.bytes[2 * i] = bigEndian ? high : low;
    made.bytes[2 * i + 1] = bigEndian ? low : high;
  }
  made.size = 2 * made.units;
}

std::optional<UInt8> encodeByte(UInt32 character, CFStringEncoding encoding) {
  if (character < 0x80) return static_cast<UInt8>(character);
  if (encoding == kCFStringEncodingISOLatin1 && character < 0x100) {
    return static_cast<UInt8>(character);
  }
  if (encoding != kCFStringEncodingMacRoman || character >= kFirstSupplementary) {
    return std::nullopt;
  }
  return text::toMacRoman(static_cast<UniChar>(character));
}

}  // namespace

bool isByteEncoding(CFStringEncoding encoding) {
  return encoding == kCFStringEncodingMacRoman || encoding == kCFStringEncodingISOLatin1 ||
         encoding == kCFStringEncodingASCII || encoding == kCFStringEncodingUTF8;
}

bool isKnownEncoding(CFStringEncoding encoding) {
  return isByteEncoding(encoding) || isUTF16(encoding);
}

CFIndex bytesPerUnit(CFStringEncoding encoding) {
  if (isUTF16(encoding)) return 2;
  if (encoding == kCFStringEncodingUTF8) return 3;  // a pair of units takes 4 bytes
  return isByteEncoding(encoding) ? 1 : 0;
}

bool isASCII(Bytes bytes) {
  return std::ranges::all_of(bytes, [](UInt8 byte) { return byte < 0x80; });
}

bool isASCII(Units units) {
  return std::ranges::all_of(units, [](UniChar unit) { return unit < 0x80; });
}

CFStringEncoding takeByteOrderMark(Bytes& bytes, CFStringEncoding encoding) {
  if (encoding == kCFStringEncodingUTF8) {
    constexpr UInt8 kMark[] = {0xEF, 0xBB, 0xBF};
    if (bytes.size() >= 3 && std::ranges::equal(bytes.first(3), kMark)) bytes = bytes.subspan(3);
    return encoding;
  }
  if (!isUTF16(encoding)) return encoding;
  if (encoding == kCFStringEncodingUnicode) {
    const bool little = bytes.size() >= 2 && unitFrom(bytes.data(), false) == kByteOrderMark;
    encoding = little ? kCFStringEncodingUTF16LE : kCFStringEncodingUTF16BE;
  }
  if (bytes.size() >= 2 && unitFrom(bytes.data(), isBigEndian(encoding)) == kByteOrderMark) {
    bytes = bytes.subspan(2);
  }
  return encoding;
}

std::optional<CFIndex> decodedLength(Bytes bytes, CFStringEncoding encoding) {
  if (encoding == kCFStringEncodingUTF8) return lengthOfUTF8(bytes);
  if (isUTF16(encoding)) {
    if (bytes.size() % 2 != 0) return std::nullopt;
    return static_cast<CFIndex>(bytes.size() / 2);
  }
  if (!isKnownEncoding(encoding)) return std::nullopt;
  if (encoding == kCFStringEncodingASCII && !isASCII(bytes)) return std::nullopt;
  return static_cast<CFIndex>(bytes.size());
}

void decode(Bytes bytes, CFStringEncoding encoding, UniChar* units) {
  if (encoding == kCFStringEncodingUTF8) {
    decodeUTF8(bytes, units);
  } else if (isUTF16(encoding)) {
    decodeUTF16(bytes, isBigEndian(encoding), units);
  } else if (encoding == kCFStringEncodingMacRoman) {
    std::ranges::transform(bytes, units, text::fromMacRoman);
  } else {
    std::ranges::copy(bytes, units);
  }
}

EncodedCharacter encodeFirst(Units text, CFStringEncoding encoding) {
  EncodedCharacter made;
  const UInt32 character = firstCharacter(text, made.units);
  if (encoding == kCFStringEncodingUTF8) {
    encodeUTF8(character, made);
  } else if (isUTF16(encoding)) {
    encodeUTF16(text, isBigEndian(encoding), made);
  } else if (const std::optional<UInt8> byte = encodeByte(character, encoding)) {
    made.bytes[0] = *byte;
    made.size = 1;
  }
  return made;
}

}  // namespace platform::corefoundation
