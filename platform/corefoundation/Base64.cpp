// Licence: MIT, see LICENSE.
#include "platform/corefoundation/Base64.h"

#include <array>

namespace platform::corefoundation {

namespace {

constexpr std::string_view kLetters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr UInt8 kNoLetter = 255;
constexpr UInt8 kSkipped = 254;

constexpr std::array<UInt8, 256> kValues = [] {
  std::array<UInt8, 256> values{};
  values.fill(kNoLetter);
  for (std::size_t i = 0; i < kLetters.size(); ++i) {
    values[static_cast<UInt8>(kLetters[i])] = static_cast<UInt8>(i);
  }
  for (const char blank : {' ', '\t', '\r', '\n', '\v', '\f'}) {
    values[static_cast<UInt8>(blank)] = kSkipped;
  }
  return values;
}();

}  // namespace

void appendBase64(std::string& to, std::span<const UInt8> bytes) {
  for (; bytes.size() >= 3; bytes = bytes.subspan(3)) {
    const UInt32 group = static_cast<UInt32>(bytes[0] << 16 | bytes[1] << 8 | bytes[2]);
    for (int shift = 18; shift >= 0; shift -= 6) to += kLetters[group >> shift & 63];
  }
  if (bytes.empty()) return;
  const UInt32 group = static_cast<UInt32>(bytes[0] << 16 | (bytes.size() > 1 ? bytes[1] << 8 : 0));
  to += kLetters[group >> 18];
  to += kLetters[group >> 12 & 63];
  to += bytes.size() > 1 ? kLetters[group >> 6 & 63] : '=';
  to += '=';
}

std::size_t parseBase64(std::string_view text, std::vector<UInt8>& bytes) {
  bytes.reserve(bytes.size() + text.size() / 4 * 3 + 2);
  UInt32 group = 0;
  int letters = 0;
  int padding = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const UInt8 value = kValues[static_cast<UInt8>(text[i])];
    if (value == kSkipped) continue;
    if (text[i] == '=' && letters >= 2 && letters + padding < 4) {
      ++padding;
      continue;
    }
    if (value == kNoLetter || padding > 0) return i;
    group = group << 6 | value;
    if (++letters < 4) continue;
    for (const int shift : {16, 8, 0}) bytes.push_back(static_cast<UInt8>(group >> shift));
    group = 0;
    letters = 0;
  }
  if (letters == 1) return text.size() - 1;
  if (letters > 1) bytes.push_back(static_cast<UInt8>(group >> (letters == 2 ? 4 : 10)));
  if (letters > 2) bytes.push_back(static_cast<UInt8>(group >> 2));
  return text.size();
}

}  // namespace platform::corefoundation
