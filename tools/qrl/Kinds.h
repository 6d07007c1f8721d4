// Licence: MIT, see LICENSE.
// The types whose values have a written form of their own.
#ifndef TOOLS_QRL_KINDS_H
#define TOOLS_QRL_KINDS_H

#include <CarbonCore/MacTypes.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace qrl {

/// One type. A value that has a width may stand several times in a row, which is an array.
struct Kind {
  OSType type;
  std::size_t width;  // of one value, or 0 where it varies
  std::size_t word;   // the units in it that the wire turns round
  bool holdsCommas;   // one value may be written with a comma
  // Of one value. `parse` throws UsageError; the others give nothing for bytes that could not be
  // read back, and `format` for what would break a line.
  std::string (*parse)(std::string_view text);
  std::optional<std::string> (*format)(const std::string& bytes);
  std::optional<nlohmann::ordered_json> (*json)(const std::string& bytes);
};

/// Null for a type that is mere bytes.
const Kind* kindOf(OSType type);

/// The type that a word such as "sint32" stands for.
std::optional<OSType> typeOfWord(std::string_view text);

}  // namespace qrl

#endif
