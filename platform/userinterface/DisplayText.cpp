// Licence: MIT, see LICENSE.
#include "platform/userinterface/DisplayText.h"

#include <CoreFoundation/CFString.h>

#include <array>

namespace platform::userinterface {
namespace {

/// One MacRoman character beyond ASCII.
std::string converted(char character) {
  const auto byte = static_cast<UInt8>(character);
  std::array<char, 8> text{};
  CFStringRef string =
      CFStringCreateWithBytes(kCFAllocatorDefault, &byte, 1, kCFStringEncodingMacRoman, 0);
  if (string == nullptr) return "?";
  const bool fits =
      CFStringGetCString(string, text.data(), text.size(), kCFStringEncodingUTF8) != 0;
  CFRelease(string);
  return fits ? text.data() : "?";
}

}  // namespace

std::string displayText(std::string_view macRoman) {
  std::string text;
  for (char character : macRoman) {
    const auto code = static_cast<unsigned char>(character);
    if (character == '\r' || character == '\n') {
      text += '\n';
    } else if (code < 0x20 || code == 0x7F) {
      text += ' ';
    } else if (code < 0x80) {
      text += character;
    } else {
      text += converted(character);
    }
  }
  return text;
}

}  // namespace platform::userinterface
