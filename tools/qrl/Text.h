// Licence: MIT, see LICENSE.
// Text between the terminal, which speaks UTF-8, and Apple events, which speak MacRoman.
#ifndef TOOLS_QRL_TEXT_H
#define TOOLS_QRL_TEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace qrl {

/// Nothing if the text is not UTF-8 or holds a character that MacRoman lacks.
std::optional<std::string> macRomanFromUtf8(std::string_view text);

/// Every byte of MacRoman stands for a character.
std::string utf8FromMacRoman(std::string_view bytes);

/// Whether UTF-8 text can be printed: without control characters, line separators and those that
/// turn the direction of what follows.
bool isOneLine(std::string_view text);

}  // namespace qrl

#endif
