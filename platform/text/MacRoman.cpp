// Licence: MIT, see LICENSE.
// Both directions are table look-ups. Most text is ASCII, which is copied eight bytes at a time;
// the bytes of a group that is not go through the tables one by one.
#include "platform/text/MacRoman.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace platform::text {
namespace {

// The characters of MacRoman from 0x80 on, with the euro sign at 0xDB.
constexpr std::array<UniChar, 128> kMacRoman = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3,
    0x00E5, 0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3,
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3,
    0x00A7, 0x2022, 0x00B6, 0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8,
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA,
    0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB,
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D,
    0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02,
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1, 0x00CB, 0x00C8, 0x00CD, 0x00CE,
    0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC,
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,
};

constexpr std::size_t kGroup = 8;  // bytes that are looked at together

struct UTF8Form {
  char bytes[3];
  UInt8 length;
};

constexpr UTF8Form utf8Form(UniChar unit) {
  const auto continuation = [unit](int shift) {
    return static_cast<char>(0x80 | (unit >> shift & 0x3F));
  };
  if (unit < 0x80) return {{static_cast<char>(unit), 0, 0}, 1};
  if (unit < 0x800) return {{static_cast<char>(0xC0 | unit >> 6), continuation(0), 0}, 2};
  return {{static_cast<char>(0xE0 | unit >> 12), continuation(6), continuation(0)}, 3};
}

constexpr std::array<UTF8Form, 256> kToUTF8 = [] {
  std::array<UTF8Form, 256> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    table[i] = utf8Form(i < 0x80 ? static_cast<UniChar>(i) : kMacRoman[i - 0x80]);
  }
  return table;
}();

// The way back, in pages of 64 units, which is what the last byte of a character in UTF-8 tells
// apart; the bytes before it tell the page. Page 0 is the empty one, and 0 stands for no character:
// ASCII is in none of the pages.
struct Pages {
  std::array<UInt8, 0x10000 / 64> number{};
  std::array<UInt8, 0x10000 / 64> numberOfThree{};  // for forms of three bytes; the longer ones
  std::array<std::array<UInt8, 64>, 24> page{};

  constexpr UInt8 find(UInt32 unit) const { return page[number[unit / 64]][unit % 64]; }
};

constexpr Pages kFromUnicode = [] {
  constexpr UniChar kFirstOfThree = 0x800;
  Pages pages;
  UInt8 used = 0;
  for (std::size_t i = 0; i < kMacRoman.size(); ++i) {
    const UniChar unit = kMacRoman[i];
    UInt8& number = pages.number[unit / 64];
    if (number == 0) number = ++used;
    if (unit >= kFirstOfThree) pages.numberOfThree[unit / 64] = number;
    pages.page[number][unit % 64] = static_cast<UInt8>(0x80 + i);
  }
  return pages;
}();

template <typename Byte>
std::size_t distance(const Byte* at, const Byte* stop) {
  return static_cast<std::size_t>(stop - at);
}

bool isASCIIGroup(const void* group) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, group, sizeof bits);
  return (bits & 0x8080808080808080U) == 0;
}

/// Writes a character's form with a byte behind it, which the next one overwrites.
char* putForm(char* to, char character) {
  const UTF8Form& form = kToUTF8[static_cast<UInt8>(character)];
  std::memcpy(to, &form, sizeof form);
  return to + form.length;
}

/// Takes one character beyond ASCII, of which three bytes may be read. False, with nothing taken,
/// if MacRoman lacks it or it is not well-formed: a longer form than need be is in no page, and the
/// top bits of a continuation byte are no others than 10.
inline bool takeHigh(const UInt8*& from, UInt8*& to) {
  const UInt8 lead = from[0];
  const unsigned int second = from[1] ^ 0x80U;
  if (lead < 0xE0) {
    const UInt8 character =
        lead < 0xC0 || second >= 64 ? 0 : kFromUnicode.find((lead & 0x1FU) << 6 | second);
    if (character == 0) return false;
    *to++ = character;
    from += 2;
    return true;
  }
  const unsigned int third = from[2] ^ 0x80U;
  if (lead > 0xEF || (second | third) >= 64) return false;
  const UInt8 page = kFromUnicode.numberOfThree[(lead & 0x0FU) << 6 | second];
  const UInt8 character = kFromUnicode.page[page][third];
  if (character == 0) return false;
  *to++ = character;
  from += 3;
  return true;
}

inline bool takeOne(const UInt8*& from, UInt8*& to) {
  if (*from >= 0x80) return takeHigh(from, to);
  *to++ = *from++;
  return true;
}

/// The same of a character near the end of its text, behind which nothing may be read.
bool takeLast(const UInt8*& from, std::size_t left, UInt8*& to) {
  UInt8 bytes[3] = {};
  std::memcpy(bytes, from, std::min(left, sizeof bytes));
  const UInt8* copy = bytes;
  if (!takeOne(copy, to)) return false;
  from += copy - bytes;
  return true;
}

}  // namespace

UniChar fromMacRoman(UInt8 byte) { return byte < 0x80 ? byte : kMacRoman[byte - 0x80U]; }

std::optional<UInt8> toMacRoman(UniChar unit) {
  if (unit < 0x80) return static_cast<UInt8>(unit);
  const UInt8 found = kFromUnicode.find(unit);
  if (found == 0) return std::nullopt;
  return found;
}

Converted macRomanToUTF8(std::string_view macRoman, char* buffer, std::size_t room) {
  const char* from = macRoman.data();
  const char* const end = from + macRoman.size();
  char* to = buffer;
  const char* const limit = buffer + room;
  constexpr std::size_t kMostOfGroup = kGroup * kUTF8PerMacRoman + 1;
  while (distance(from, end) >= kGroup && distance(to, limit) >= kMostOfGroup) {
    if (isASCIIGroup(from)) {
      std::memcpy(to, from, kGroup);
      to += kGroup;
    } else {
      for (std::size_t i = 0; i < kGroup; ++i) to = putForm(to, from[i]);
    }
    from += kGroup;
  }
  for (; from != end; ++from) {
    const UTF8Form& form = kToUTF8[static_cast<UInt8>(*from)];
    if (form.length > distance(to, limit)) break;
    std::memcpy(to, form.bytes, form.length);
    to += form.length;
  }
  return {distance(macRoman.data(), from), distance(buffer, to)};
}

Converted macRomanFromUTF8(std::string_view utf8, char* buffer, std::size_t room) {
  constexpr std::size_t kInARow = 4;  // characters; looking at each group for ASCII would cost more
  const auto* const text = reinterpret_cast<const UInt8*>(utf8.data());
  const UInt8* from = text;
  const UInt8* const end = text + utf8.size();
  auto* const start = reinterpret_cast<UInt8*>(buffer);
  UInt8* to = start;
  const UInt8* const limit = start + room;
  bool isGood = true;
  while (isGood && distance(from, end) >= kInARow * kUTF8PerMacRoman &&
         distance(to, limit) >= kGroup) {
    if (isASCIIGroup(from)) {
      std::memcpy(to, from, kGroup);
      from += kGroup;
      to += kGroup;
    } else {
      for (std::size_t i = 0; i < kInARow && isGood; ++i) isGood = takeOne(from, to);
    }
  }
  while (isGood && from != end && to != limit) isGood = takeLast(from, distance(from, end), to);
  return {distance(text, from), distance(start, to)};
}

std::string utf8FromMacRoman(std::string_view macRoman) {
  std::string text(macRoman.size() * kUTF8PerMacRoman, '\0');
  text.resize(macRomanToUTF8(macRoman, text.data(), text.size()).made);
  return text;
}

std::optional<std::string> macRomanFromUTF8(std::string_view utf8) {
  std::string text(utf8.size(), '\0');
  const Converted done = macRomanFromUTF8(utf8, text.data(), text.size());
  if (done.taken != utf8.size()) return std::nullopt;
  text.resize(done.made);
  return text;
}

}  // namespace platform::text
