// Licence: MIT, see LICENSE.
#include "tools/qrl/Values.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <optional>

#include "tools/qrl/Codes.h"
#include "tools/qrl/ExitStatus.h"
#include "tools/qrl/Kinds.h"

namespace qrl {
namespace {

using Json = nlohmann::ordered_json;

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

bool isWholeValues(const Kind& kind, const std::string& bytes) {
  return kind.width == 0 || (!bytes.empty() && bytes.size() % kind.width == 0);
}

// Between the order of the wire and this machine's, for a type whose numbers are turned round.
std::string turned(const Kind* kind, std::string bytes) {
  if (std::endian::native == std::endian::big || kind == nullptr || kind->word == 1) return bytes;
  const auto word = static_cast<std::ptrdiff_t>(kind->word);
  for (auto at = bytes.begin(); bytes.end() - at >= word; at += word) std::reverse(at, at + word);
  return bytes;
}

// A code that reads as a word of another type must not be written as its characters.
std::string formatType(OSType type) {
  std::string text = formatCode(type);
  if (typeIn(text) == type) return text;
  return formatCodeAsNumber(type);
}

std::string parseValues(const Kind& kind, std::string_view text) {
  const bool isOne = kind.width == 0 || text.find(',') == text.npos ||
                     (kind.holdsCommas && codeIn(text).has_value());
  if (isOne) return kind.parse(text);
  std::string bytes;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    bytes += kind.parse(text.substr(at, end - at));
    at = end + 1;
  }
  return bytes;
}

// The written values with commas between them; nothing if they would not read as the same bytes.
std::optional<std::string> formatValues(const Kind& kind, const std::string& bytes) {
  if (!isWholeValues(kind, bytes)) return std::nullopt;
  if (kind.width == 0 || bytes.size() == kind.width) return kind.format(bytes);
  std::string text;
  for (std::size_t at = 0; at < bytes.size(); at += kind.width) {
    const std::optional<std::string> one = kind.format(bytes.substr(at, kind.width));
    if (!one || one->find(',') != one->npos) return std::nullopt;
    if (at > 0) text += ',';
    text += *one;
  }
  return text;
}

std::optional<Json> jsonOfValues(const Kind& kind, const std::string& bytes) {
  if (!isWholeValues(kind, bytes)) return std::nullopt;
  if (kind.width == 0 || bytes.size() == kind.width) return kind.json(bytes);
  Json values = Json::array();
  for (std::size_t at = 0; at < bytes.size(); at += kind.width) {
    values.push_back(*kind.json(bytes.substr(at, kind.width)));
  }
  return values;
}

bool isIndex(std::string_view text, UInt32& index) {
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
  return error == std::errc() && end == text.data() + text.size() && index > 0;
}

// Takes "[1]" or ".code" off the front of what stands before the equals sign.
bool takeStep(std::string_view& text, std::vector<Step>& steps) {
  Step step;
  std::size_t end = 0;
  if (text.starts_with('[')) {
    end = text.find(']');
    if (end == text.npos || !isIndex(text.substr(1, end - 1), step.place)) return false;
    ++end;
  } else if (text.starts_with('.')) {
    const std::string_view name = text.substr(1);
    end = endOfCode(name, ".[=", codeIn);
    if (end == name.npos) return false;
    step = {Step::To::kField, *codeIn(name.substr(0, end))};
    ++end;
  } else {
    return false;
  }
  steps.push_back(step);
  text.remove_prefix(end);
  return true;
}

[[noreturn]] void refuseKey(std::string_view text) {
  if (text.find('=') == text.npos) throw UsageError(quoted(text) + " is not KEY=TYPE:VALUE");
  parseCode(text.substr(0, text.find('=')));
  throw UsageError(quoted(text.substr(0, text.find('='))) + " is not a key");
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
  if (kind != nullptr && text[end] == ':') return {type, parseValues(*kind, written)};
  return {type, turned(kind, parseHexadecimal(written))};
}

Parameter parseParameter(std::string_view text) {
  const std::size_t end = endOfCode(text, ".[=", codeIn);
  if (end == text.npos) refuseKey(text);
  Parameter parameter{*codeIn(text.substr(0, end)), {}};
  std::string_view rest = text.substr(end);
  while (!rest.starts_with('=')) {
    if (!takeStep(rest, parameter.steps)) refuseKey(text);
  }
  parameter.value = parseValue(rest.substr(1));
  return parameter;
}

std::string formatValue(const Value& value) {
  const Kind* kind = kindOf(value.type);
  if (kind == nullptr) return formatType(value.type) + ':' + formatHexadecimal(value.bytes);
  if (std::optional<std::string> text = formatValues(*kind, value.bytes)) {
    return formatType(value.type) + ':' + *text;
  }
  return formatType(value.type) + '#' + formatHexadecimal(turned(kind, value.bytes));
}

std::string formatStep(const Step& step) {
  if (step.to == Step::To::kItem) return '[' + std::to_string(step.place) + ']';
  return '.' + formatCode(step.place);
}

Json jsonOf(const Value& value) {
  Json json{{"type", formatCode(value.type)}};
  const Kind* kind = kindOf(value.type);
  const std::optional<Json> values =
      kind == nullptr ? std::nullopt : jsonOfValues(*kind, value.bytes);
  if (values) {
    json["value"] = *values;
  } else {
    json["hex"] = formatHexadecimal(turned(kind, value.bytes));
  }
  return json;
}

}  // namespace qrl
