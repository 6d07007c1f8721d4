// Licence: MIT, see LICENSE.
// Four-character codes and bytes as they are written. A code is four characters of MacRoman, or 0x
// and eight hexadecimal digits.
#ifndef TOOLS_QRL_CODES_H
#define TOOLS_QRL_CODES_H

#include <CarbonCore/MacTypes.h>

#include <optional>
#include <string>
#include <string_view>

namespace qrl {

std::optional<OSType> codeIn(std::string_view text);
/// Throws UsageError when the text is no code.
OSType parseCode(std::string_view text);
/// The four characters, or hexadecimal where one of them is a control character.
std::string formatCode(OSType code);
/// Always in hexadecimal.
std::string formatCodeAsNumber(OSType code);

/// Throws UsageError when the text is not pairs of digits.
std::string parseHexadecimal(std::string_view text);
std::string formatHexadecimal(std::string_view bytes);

bool hasControls(std::string_view bytes);
/// The text in quotation marks, for a message.
std::string quoted(std::string_view text);

}  // namespace qrl

#endif
