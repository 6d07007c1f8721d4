// Licence: MIT, see LICENSE.
#include <quorvant/util/ByteDumps.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

struct DigitPair {
  char digits[2];
};

constexpr std::array<DigitPair, 256> kPairs = [] {
  std::array<DigitPair, 256> pairs{};
  for (size_t i = 0; i < pairs.size(); ++i) pairs[i] = {{kDigits[i >> 4], kDigits[i & 0xF]}};
  return pairs;
}();

}  // namespace

char* HexDump(const void* source, char* buffer, int digits, UInt32 flags) {
  if (source == nullptr || buffer == nullptr) return buffer;
  const auto* bytes = static_cast<const UInt8*>(source);
  const size_t count = static_cast<size_t>(std::max(digits, 0));
  char* to = buffer;
  for (size_t i = 0; i < count / 2; ++i, to += 2) std::memcpy(to, kPairs[bytes[i]].digits, 2);
  if (count % 2 != 0) *to++ = kPairs[bytes[count / 2]].digits[0];
  if ((flags & kHexDumpTerminate) != 0) *to = '\0';
  return buffer;
}

char* ASCIICharDump(const void* source, char* buffer, int count, UInt32 flags) {
  if (source == nullptr || buffer == nullptr) return buffer;
  const auto* bytes = static_cast<const UInt8*>(source);
  char* const end = std::transform(bytes, bytes + std::max(count, 0), buffer, [](UInt8 byte) {
    return byte < 0x20 || byte >= 0x7F ? '.' : static_cast<char>(byte);
  });
  if ((flags & kASCIICharDumpTerminate) != 0) *end = '\0';
  return buffer;
}
