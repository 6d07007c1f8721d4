// Licence: MIT, see LICENSE.
#include "tools/qrl/Kinds.h"

#include <AE/AEDataModel.h>
#include <CarbonCore/MacErrors.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

#include "tools/qrl/Codes.h"
#include "tools/qrl/ExitStatus.h"
#include "tools/qrl/Text.h"
#include "tools/qrl/Values.h"

namespace qrl {
namespace {

using Json = nlohmann::ordered_json;
using MaybeJson = std::optional<Json>;
using MaybeString = std::optional<std::string>;

// ---- Numbers
// -------------------------------------------------------------------------------------

template <typename T>
std::string rawBytesOf(T value) {
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

template <typename T>
Json numberJson(T value) {
  // JSON has no infinity and no NaN.
  if constexpr (std::is_floating_point_v<T>) {
    if (!std::isfinite(value)) return Json(formatNumber(value));
  }
  return Json(value);
}

template <typename T>
constexpr Kind numberKind(OSType type) {
  return {type,
          sizeof(T),
          sizeof(T),
          false,
          [](std::string_view text) { return rawBytesOf(parseNumber<T>(text)); },
          [](const std::string& bytes) { return MaybeString(formatNumber(numberIn<T>(bytes))); },
          [](const std::string& bytes) { return MaybeJson(numberJson(numberIn<T>(bytes))); }};
}

// ---- Booleans, codes and processes
// ---------------------------------------------------------------

std::string parseBoolean(std::string_view text) {
  if (text == "true") return "\1";
  if (text == "false") return std::string(1, '\0');
  throw UsageError(quoted(text) + " is neither true nor false");
}

MaybeString formatBoolean(const std::string& bytes) {
  if (bytes[0] == 1) return "true";
  if (bytes[0] == 0) return "false";
  return std::nullopt;
}

std::string formatCodeIn(const std::string& bytes) { return formatCode(numberIn<OSType>(bytes)); }

constexpr Kind codeKind(OSType type) {
  return {type,
          4,
          4,
          true,
          [](std::string_view text) { return rawBytesOf(parseCode(text)); },
          [](const std::string& bytes) { return MaybeString(formatCodeIn(bytes)); },
          [](const std::string& bytes) { return MaybeJson(formatCodeIn(bytes)); }};
}

std::string formatSerialNumberIn(const std::string& bytes) {
  return formatSerialNumber(numberIn<ProcessSerialNumber>(bytes));
}

// ---- Text
// ----------------------------------------------------------------------------------------

std::string parseMacRoman(std::string_view text) {
  MaybeString bytes = macRomanFromUtf8(text);
  if (!bytes) throw UsageError("the text has characters that MacRoman lacks");
  return *bytes;
}

MaybeString formatMacRoman(const std::string& bytes) {
  if (hasControls(bytes)) return std::nullopt;
  return utf8FromMacRoman(bytes);
}

MaybeString coerced(std::string_view bytes, OSType from, OSType to) {
  AEDesc desc;
  if (AECoercePtr(from, bytes.data(), static_cast<Size>(bytes.size()), to, &desc) != noErr) {
    return std::nullopt;
  }
  std::string result(static_cast<std::size_t>(AEGetDescDataSize(&desc)), '\0');
  AEGetDescData(&desc, result.data(), static_cast<Size>(result.size()));
  AEDisposeDesc(&desc);
  return result;
}

// By way of UTF-16, so that UTF-8 is looked at too.
MaybeString textBetween(std::string_view bytes, OSType from, OSType to) {
  MaybeString units = coerced(bytes, from, typeUTF16ExternalRepresentation);
  return units ? coerced(*units, typeUTF16ExternalRepresentation, to) : std::nullopt;
}

template <OSType kType>
std::string parseText(std::string_view text) {
  MaybeString bytes = textBetween(text, typeUTF8Text, kType);
  if (!bytes) throw UsageError("the text cannot be had as " + formatCode(kType));
  return *bytes;
}

// The text as UTF-8, if the bytes are exactly what it is written as.
template <OSType kType>
MaybeString textIn(const std::string& bytes) {
  MaybeString text = textBetween(bytes, kType, typeUTF8Text);
  if (!text || textBetween(*text, typeUTF8Text, kType) != bytes) return std::nullopt;
  return text;
}

template <OSType kType>
constexpr Kind textKind() {
  return {kType,
          0,
          kType == typeUnicodeText || kType == typeStyledUnicodeText ? 2 : 1,
          true,
          parseText<kType>,
          [](const std::string& bytes) -> MaybeString {
            MaybeString text = textIn<kType>(bytes);
            return text && isOneLine(*text) ? text : std::nullopt;
          },
          [](const std::string& bytes) -> MaybeJson {
            MaybeString text = textIn<kType>(bytes);
            return text ? MaybeJson(*text) : std::nullopt;
          }};
}

// ---- The table
// -----------------------------------------------------------------------------------

const Kind kKinds[] = {
    numberKind<SInt16>(typeSInt16),
    numberKind<UInt16>(typeUInt16),
    numberKind<SInt32>(typeSInt32),
    numberKind<UInt32>(typeUInt32),
    numberKind<SInt64>(typeSInt64),
    numberKind<UInt64>(typeUInt64),
    numberKind<Float32>(typeIEEE32BitFloatingPoint),
    numberKind<Float64>(typeIEEE64BitFloatingPoint),
    numberKind<SInt16>(typeQDPoint),
    numberKind<SInt16>(typeQDRectangle),
    numberKind<SInt64>(typeLongDateTime),
    numberKind<SInt32>(typeKernelProcessID),
    numberKind<UInt32>(typeMachPort),
    {typeBoolean, 1, 1, false, parseBoolean, formatBoolean,
     [](const std::string& bytes) { return MaybeJson(bytes[0] != 0); }},
    codeKind(typeType),
    codeKind(typeEnumerated),
    codeKind(typeKeyword),
    codeKind(typeProperty),
    codeKind(typeApplSignature),
    {typeProcessSerialNumber, 8, 4, false,
     [](std::string_view text) { return rawBytesOf(parseSerialNumber(text)); },
     [](const std::string& bytes) { return MaybeString(formatSerialNumberIn(bytes)); },
     [](const std::string& bytes) { return MaybeJson(formatSerialNumberIn(bytes)); }},
    {typeChar, 0, 1, true, parseMacRoman, formatMacRoman,
     [](const std::string& bytes) { return MaybeJson(utf8FromMacRoman(bytes)); }},
    textKind<typeCString>(),
    textKind<typePString>(),
    textKind<typeEncodedString>(),
    textKind<typeUnicodeText>(),
    textKind<typeStyledUnicodeText>(),
    textKind<typeUTF16ExternalRepresentation>(),
    textKind<typeUTF8Text>(),
};

struct Word {
  std::string_view word;
  OSType type;
};

constexpr Word kWords[] = {
    {"sint16", typeSInt16},
    {"short", typeSInt16},
    {"uint16", typeUInt16},
    {"sint32", typeSInt32},
    {"uint32", typeUInt32},
    {"sint64", typeSInt64},
    {"uint64", typeUInt64},
    {"float", typeIEEE32BitFloatingPoint},
    {"double", typeIEEE64BitFloatingPoint},
    {"text", typeChar},
    {"unicode", typeUnicodeText},
    {"psn", typeProcessSerialNumber},
    {"pid", typeKernelProcessID},
    {"record", typeAERecord},
};

}  // namespace

const Kind* kindOf(OSType type) {
  const Kind* kind = std::ranges::find(kKinds, type, &Kind::type);
  return kind == std::end(kKinds) ? nullptr : kind;
}

std::optional<OSType> typeOfWord(std::string_view text) {
  const Word* word = std::ranges::find(kWords, text, &Word::word);
  if (word == std::end(kWords)) return std::nullopt;
  return word->type;
}

ProcessSerialNumber parseSerialNumber(std::string_view text) {
  std::size_t colon = text.find(':');
  if (colon == text.npos) return {0, parseNumber<UInt32>(text)};
  return {parseNumber<UInt32>(text.substr(0, colon)), parseNumber<UInt32>(text.substr(colon + 1))};
}

std::string formatSerialNumber(const ProcessSerialNumber& psn) {
  return formatNumber(psn.highLongOfPSN) + ':' + formatNumber(psn.lowLongOfPSN);
}

}  // namespace qrl
