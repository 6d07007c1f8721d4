// Licence: MIT, see LICENSE.
// printf's formats and Core Foundation's additions to them.
#ifndef PLATFORM_COREFOUNDATION_FORMATTING_H
#define PLATFORM_COREFOUNDATION_FORMATTING_H

#include <cstdarg>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/corefoundation/StringObject.h"

namespace platform::corefoundation {

/// What the caller passed for one argument.
enum class ArgumentType : UInt8 {
  kUnused,
  kInt,
  kLong,
  kLongLong,
  kSize,
  kPointerDifference,
  kMaximum,
  kDouble,
  kLongDouble,
  kPointer
};

/// A width or precision: absent, a number, or an argument.
struct Amount {
  bool given = false;
  int value = 0;
  int argument = -1;
};

/// A literal run of the format and the conversion behind it.
struct FormatPiece {
  CFIndex literalStart = 0;
  CFIndex literalEnd = 0;
  std::string flags;
  Amount width;
  Amount precision;
  std::string lengthModifier;
  char conversion = 0;  // 0: none, the format ends here
  int argument = -1;
  ArgumentType type = ArgumentType::kUnused;
};

/// Splits a format. What is no conversion stays literal text. Throws bad_alloc.
std::vector<FormatPiece> parseFormat(const TextView& format);

/// The formatted text. Throws bad_alloc.
std::vector<UniChar> format(const TextView& format, va_list arguments);

}  // namespace platform::corefoundation

#endif
