// Licence: MIT, see LICENSE.
#include "platform/files/Names.h"

#include <algorithm>
#include <array>

#include "platform/corefoundation/StringEncodings.h"
#include "platform/text/MacRoman.h"

namespace platform::files {
namespace {

constexpr std::size_t kLongestHostName = 255;  // in bytes
constexpr std::size_t kLongestExtension = 5;   // the full stop included
constexpr std::size_t kSumLength = 9;          // "#" and eight digits
constexpr std::string_view kDigits = "0123456789ABCDEF";

void exchange(std::string& name, char from, char to) {
  std::replace(name.begin(), name.end(), from, to);
}

/// The bytes of the first character; one byte if that is not UTF-8.
std::size_t firstLength(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  std::size_t length = first < 0xC0 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (length > text.size()) return 1;
  const auto* bytes = reinterpret_cast<const UInt8*>(text.data());
  return corefoundation::decodedLength({bytes, length}, kCFStringEncodingUTF8) ? length : 1;
}

/// As many characters as there is room for.
std::string lossyMacRoman(std::string_view text, std::size_t room) {
  std::string result;
  while (!text.empty() && result.size() < room) {
    const std::size_t length = firstLength(text);
    result += text::macRomanFromUTF8(text.substr(0, length)).value_or("_");
    text.remove_prefix(length);
  }
  return result;
}

std::string hexadecimal(UInt32 value) {
  std::string digits;
  for (int shift = 28; shift >= 0; shift -= 4) digits += kDigits[value >> shift & 0xF];
  return digits;
}

/// The extension that a shortened name keeps, with its full stop; empty for none.
std::string extensionOf(std::string_view name) {
  const auto stop = name.rfind('.');
  if (stop == std::string_view::npos || stop == 0) return {};
  const auto extension = text::macRomanFromUTF8(name.substr(stop));
  const bool fits = extension && extension->size() > 1 && extension->size() <= kLongestExtension;
  return fits ? *extension : std::string();
}

std::string shortened(std::string_view name) {
  const std::string extension = extensionOf(name);
  const std::string_view stem = extension.empty() ? name : name.substr(0, name.rfind('.'));
  std::string result = lossyMacRoman(stem, kLongestName - kSumLength - extension.size());
  result += "#" + hexadecimal(sumOf(name)) + extension;
  exchange(result, ':', '/');
  return result;
}

}  // namespace

UInt32 sumOf(std::string_view hostName) {
  UInt32 sum = 0x811C9DC5;
  for (char byte : hostName) sum = (sum ^ static_cast<UInt8>(byte)) * 0x01000193U;
  return sum;
}

bool looksShortened(std::string_view macName) {
  const auto stop = macName.rfind('.');
  const bool extends = stop != std::string_view::npos && macName.size() - stop > 1 &&
                       macName.size() - stop <= kLongestExtension;
  const std::string_view stem = extends ? macName.substr(0, stop) : macName;
  if (stem.size() < kSumLength || stem[stem.size() - kSumLength] != '#') return false;
  return stem.find_first_not_of(kDigits, stem.size() - kSumLength + 1) == std::string_view::npos;
}

std::string macNameOf(std::string_view hostName) {
  auto name = text::macRomanFromUTF8(hostName);
  if (!name || name->size() > kLongestName || looksShortened(*name)) return shortened(hostName);
  exchange(*name, ':', '/');
  return *name;
}

std::optional<std::string> hostNameOf(std::string_view macName) {
  constexpr std::string_view kForbidden(":\0", 2);
  if (macName.empty() || macName == "." || macName == "..") return std::nullopt;
  if (macName.find_first_of(kForbidden) != std::string_view::npos) return std::nullopt;
  std::string name = text::utf8FromMacRoman(macName);
  if (name.size() > kLongestHostName) return std::nullopt;
  exchange(name, '/', ':');
  return name;
}

HFSUniStr255 unicodeNameOf(std::string_view hostName) {
  HFSUniStr255 result{};
  const auto append = [&result](UniChar unit) {
    if (result.length < std::size(result.unicode)) result.unicode[result.length++] = unit;
  };
  while (!hostName.empty()) {
    const std::size_t length = firstLength(hostName);
    const auto* bytes = reinterpret_cast<const UInt8*>(hostName.data());
    std::array<UniChar, 2> units{};
    const auto count = corefoundation::decodedLength({bytes, length}, kCFStringEncodingUTF8);
    if (count) {
      corefoundation::decode({bytes, length}, kCFStringEncodingUTF8, units.data());
      for (CFIndex i = 0; i < *count; ++i) append(units[i] == ':' ? '/' : units[i]);
    } else {
      append('%');
      append(static_cast<UniChar>(kDigits[*bytes >> 4]));
      append(static_cast<UniChar>(kDigits[*bytes & 0xF]));
    }
    hostName.remove_prefix(length);
  }
  return result;
}

}  // namespace platform::files
