// Licence: MIT, see LICENSE.
#include "tools/qrl/Values.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>

#include "tools/qrl/Codes.h"
#include "tools/qrl/ExitStatus.h"
#include "tools/qrl/Text.h"

namespace qrl {
namespace {

using Json = nlohmann::ordered_json;

template <typename T>
std::string bytesOf(T value) {
  return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

template <typename T>
T numberIn(const std::string& bytes) {
  T value;
  std::memcpy(&value, bytes.data(), sizeof value);
  return value;
}

template <typename T>
T parseNumber(std::string_view text) {
  T value{};
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || end != text.data() + text.size() || error == std::errc::invalid_argument) {
    throw UsageError(quoted(text) + " is not a number of this type");
  }
  if (error != std::errc()) throw UsageError(std::string(text) + " does not fit its type");
  return value;
}

template <typename T>
std::string formatNumber(T value) {
  std::array<char, 32> text;
  auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
  return std::string(text.data(), end);
}

// One type whose values have a written form of their own. `word` is the size of the units that the
// wire turns round, `width` the size of the whole or 0 where it varies.
struct Kind {
  OSType type;
  std::size_t width;
  std::size_t word;
  std::string (*parse)(std::string_view text);
  std::optional<std::string> (*format)(const std::string& bytes);  // nothing: not printable
  Json (*json)(const std::string& bytes);
};

template <typename T>
constexpr Kind numberKind(OSType type) {
  return {type,
          sizeof(T),
          sizeof(T),
          [](std::string_view text) { return bytesOf(parseNumber<T>(text)); },
          [](const std::string& bytes) -> std::optional<std::string> {
            return formatNumber(numberIn<T>(bytes));
          },
          [](const std::string& bytes) {
            T value = numberIn<T>(bytes);
            // JSON has no infinity and no NaN.
            if constexpr (std::is_floating_point_v<T>) {
              if (!std::isfinite(value)) return Json(formatNumber(value));
            }
            return Json(value);
          }};
}

std::string parseBoolean(std::string_view text) {
  if (text == "true") return "\1";
  if (text == "false") return std::string(1, '\0');
  throw UsageError(quoted(text) + " is neither true nor false");
}

std::optional<std::string> formatBoolean(const std::string& bytes) {
  if (bytes[0] == 1) return "true";
  if (bytes[0] == 0) return "false";
  return std::nullopt;
}

std::string parseText(std::string_view text) {
  std::optional<std::string> bytes = macRomanFromUtf8(text);
  if (!bytes) throw UsageError("the text has characters that MacRoman lacks");
  return *bytes;
}

std::optional<std::string> formatText(const std::string& bytes) {
  if (hasControls(bytes)) return std::nullopt;
  return utf8FromMacRoman(bytes);
}

std::optional<std::string> formatCodeIn(const std::string& bytes) {
  return formatCode(numberIn<OSType>(bytes));
}

std::string formatSerialNumberIn(const std::string& bytes) {
  return formatSerialNumber(numberIn<ProcessSerialNumber>(bytes));
}

constexpr Kind codeKind(OSType type) {
  return {type,
          4,
          4,
          [](std::string_view text) { return bytesOf(parseCode(text)); },
          formatCodeIn,
          [](const std::string& bytes) { return Json(*formatCodeIn(bytes)); }};
}

const Kind kKinds[] = {
    numberKind<SInt16>('shor'),
    numberKind<SInt32>('long'),
    numberKind<SInt64>('comp'),
    numberKind<UInt32>('magn'),
    numberKind<Float32>('sing'),
    numberKind<Float64>('doub'),
    {'bool', 1, 1, parseBoolean, formatBoolean,
     [](const std::string& bytes) { return Json(bytes[0] != 0); }},
    {'TEXT', 0, 1, parseText, formatText,
     [](const std::string& bytes) { return Json(utf8FromMacRoman(bytes)); }},
    codeKind('type'),
    codeKind('enum'),
    {'psn ', 8, 4, [](std::string_view text) { return bytesOf(parseSerialNumber(text)); },
     [](const std::string& bytes) -> std::optional<std::string> {
       return formatSerialNumberIn(bytes);
     },
     [](const std::string& bytes) { return Json(formatSerialNumberIn(bytes)); }},
};

const Kind* kindOf(OSType type) {
  const Kind* kind = std::ranges::find(kKinds, type, &Kind::type);
  return kind == std::end(kKinds) ? nullptr : kind;
}

bool hasWidthOf(const Kind& kind, const std::string& bytes) {
  return kind.width == 0 || bytes.size() == kind.width;
}

struct Word {
  std::string_view word;
  OSType type;
};

constexpr Word kWords[] = {
    {"sint16", 'shor'}, {"short", 'shor'},  {"sint32", 'long'},
    {"sint64", 'comp'}, {"uint32", 'magn'}, {"float", 'sing'},
    {"double", 'doub'}, {"text", 'TEXT'},   {"psn", 'psn '},
};

std::optional<OSType> typeOfWord(std::string_view text) {
  const Word* word = std::ranges::find(kWords, text, &Word::word);
  if (word == std::end(kWords)) return std::nullopt;
  return word->type;
}

std::optional<OSType> typeIn(std::string_view text) {
  if (std::optional<OSType> type = typeOfWord(text)) return type;
  return codeIn(text);
}

// A code may hold the separator itself: the first place before which there is a code counts.
template <typename Find>
std::size_t endOfCode(std::string_view text, const char* separators, Find find) {
  for (std::size_t at = text.find_first_of(separators); at != text.npos;
       at = text.find_first_of(separators, at + 1)) {
    if (find(text.substr(0, at))) return at;
  }
  return text.npos;
}

// Between the order of the wire and this machine's, for a type whose numbers are turned round.
std::string turned(const Kind* kind, std::string bytes) {
  if (std::endian::native == std::endian::big || kind == nullptr || !hasWidthOf(*kind, bytes)) {
    return bytes;
  }
  for (auto at = bytes.begin(); at != bytes.end(); at += static_cast<long>(kind->word)) {
    std::reverse(at, at + static_cast<long>(kind->word));
  }
  return bytes;
}

// A code that reads as a word of another type must not be written as its characters.
std::string formatType(OSType type) {
  std::string text = formatCode(type);
  if (typeIn(text) == type) return text;
  return formatCodeAsNumber(type);
}

}  // namespace

Value parseValue(std::string_view text) {
  std::size_t end = endOfCode(text, ":#", typeIn);
  if (end == text.npos) {
    throw UsageError(quoted(text.substr(0, text.find_first_of(":#"))) +
                     " is not a type followed by \":\" or \"#\"");
  }
  OSType type = *typeIn(text.substr(0, end));
  std::string_view written = text.substr(end + 1);
  const Kind* kind = kindOf(type);
  if (kind != nullptr && text[end] == ':') return {type, kind->parse(written)};
  return {type, turned(kind, parseHexadecimal(written))};
}

Parameter parseParameter(std::string_view text) {
  std::size_t end = endOfCode(text, "=", codeIn);
  if (end == text.npos) {
    if (text.find('=') == text.npos) throw UsageError(quoted(text) + " is not KEY=TYPE:VALUE");
    end = text.find('=');
  }
  OSType key = parseCode(text.substr(0, end));
  return {key, parseValue(text.substr(end + 1))};
}

ProcessSerialNumber parseSerialNumber(std::string_view text) {
  std::size_t colon = text.find(':');
  if (colon == text.npos) return {0, parseNumber<UInt32>(text)};
  return {parseNumber<UInt32>(text.substr(0, colon)), parseNumber<UInt32>(text.substr(colon + 1))};
}

std::string formatValue(const Value& value) {
  const Kind* kind = kindOf(value.type);
  if (kind == nullptr) return formatType(value.type) + ':' + formatHexadecimal(value.bytes);
  if (hasWidthOf(*kind, value.bytes)) {
    if (std::optional<std::string> text = kind->format(value.bytes)) {
      return formatType(value.type) + ':' + *text;
    }
  }
  return formatType(value.type) + '#' + formatHexadecimal(turned(kind, value.bytes));
}

std::string formatSerialNumber(const ProcessSerialNumber& psn) {
  return formatNumber(psn.highLongOfPSN) + ':' + formatNumber(psn.lowLongOfPSN);
}

Json jsonOf(const Value& value) {
  Json json{{"type", formatCode(value.type)}};
  const Kind* kind = kindOf(value.type);
  if (kind != nullptr && hasWidthOf(*kind, value.bytes)) {
    json["value"] = kind->json(value.bytes);
  } else {
    json["hex"] = formatHexadecimal(turned(kind, value.bytes));
  }
  return json;
}

}  // namespace qrl
