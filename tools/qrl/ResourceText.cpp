// Licence: MIT, see LICENSE.
#include "tools/qrl/ResourceText.h"

#include <CarbonCore/Resources.h>

#include <algorithm>

#include "tools/qrl/Codes.h"
#include "tools/qrl/Output.h"
#include "tools/qrl/Text.h"

namespace qrl {
namespace {

struct AttributeName {
  SInt16 bit;
  const char* word;
};

constexpr AttributeName kAttributeNames[] = {
    {resSysHeap, "sysheap"},     {resPurgeable, "purgeable"}, {resLocked, "locked"},
    {resProtected, "protected"}, {resPreload, "preload"},
};

constexpr std::size_t kBytesInLine = 16;

bool isLineEnd(char byte) { return byte == '\r' || byte == '\n'; }

bool isControl(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return code < 0x20 || code == 0x7F;
}

char printable(char byte) {
  return isControl(byte) || static_cast<unsigned char>(byte) > 0x7F ? '.' : byte;
}

std::string placeOf(std::size_t offset) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(offset >> shift);
  return formatHexadecimal(bytes);
}

std::string dumpLine(std::string_view bytes) {
  std::string line;
  for (std::size_t i = 0; i < kBytesInLine; ++i) {
    line += ' ';
    line += i < bytes.size() ? formatHexadecimal(bytes.substr(i, 1)) : "  ";
  }
  line += "  ";
  std::ranges::transform(bytes, std::back_inserter(line), printable);
  return line;
}

}  // namespace

std::vector<std::string> attributeWords(SInt16 attributes) {
  std::vector<std::string> words;
  for (const auto& [bit, word] : kAttributeNames) {
    if ((attributes & bit) != 0) words.emplace_back(word);
  }
  return words;
}

bool isText(std::string_view bytes) {
  return std::ranges::none_of(
      bytes, [](char byte) { return isControl(byte) && byte != '\t' && !isLineEnd(byte); });
}

std::string textLines(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const auto end = std::ranges::find_if(bytes, isLineEnd);
    const auto length = static_cast<std::size_t>(end - bytes.begin());
    text += withoutControls(utf8FromMacRoman(bytes.substr(0, length))) + '\n';
    const std::size_t ending = bytes.substr(length, 2) == "\r\n" ? 2 : 1;
    bytes.remove_prefix(std::min(bytes.size(), length + ending));
  }
  return text;
}

std::string hexDump(std::string_view bytes) {
  std::string dump;
  for (std::size_t offset = 0; offset < bytes.size(); offset += kBytesInLine) {
    dump += placeOf(offset) + ' ' + dumpLine(bytes.substr(offset, kBytesInLine)) + '\n';
  }
  return dump;
}

}  // namespace qrl
