// Licence: MIT, see LICENSE.
#include "platform/userinterface/DisplayText.h"

#include <algorithm>

#include "platform/text/MacRoman.h"

namespace platform::userinterface {
namespace {

char displayed(char character) {
  const auto code = static_cast<unsigned char>(character);
  if (character == '\r' || character == '\n') return '\n';
  return code < 0x20 || code == 0x7F ? ' ' : character;
}

}  // namespace

std::string displayText(std::string_view macRoman) {
  std::string text(macRoman);
  std::ranges::transform(text, text.begin(), displayed);
  return platform::text::utf8FromMacRoman(text);
}

}  // namespace platform::userinterface
