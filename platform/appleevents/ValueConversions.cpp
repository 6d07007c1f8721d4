// Licence: MIT, see LICENSE.
#include <cstring>
#include <string_view>

#include "platform/appleevents/Coercion.h"
#include "platform/appleevents/Conversions.h"
#include "platform/appleevents/Number.h"

namespace platform::appleevents {
namespace {

/// Any text as MacRoman bytes.
class PlainText final {
 public:
  OSErr decode(const Source& from) {
    if (from.type == typeChar) {
      bytes = from.data;
      return noErr;
    }
    const OSErr status = textToText(from, typeChar, held.out());
    bytes = bytesOf(held.get());
    return status;
  }

  std::string_view text() const {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }

 private:
  HeldDesc held;
  Bytes bytes;
};

OSErr makeText(std::string_view text, DescType toType, AEDesc* result) {
  const Bytes bytes = std::as_bytes(std::span(text));
  if (toType == typeChar) return makeDesc(toType, bytes, result);
  return textToText({typeChar, bytes}, toType, result);
}

OSErr makeNumber(const std::optional<Number>& number, DescType type, AEDesc* result) {
  NumberBytes bytes;
  if (!number || !storeNumber(*number, type, bytes)) return errAECoercionFail;
  return makeDesc(type, bytes.bytes(), result);
}

std::optional<bool> truthOf(const Source& from) {
  if (from.type == typeTrue || from.type == typeFalse) return from.type == typeTrue;
  if (from.data.size() != 1) return std::nullopt;
  return from.data[0] != std::byte{0};
}

OSErr makeTruth(std::optional<bool> truth, DescType type, AEDesc* result) {
  if (!truth) return errAECoercionFail;
  const std::byte byte{*truth};
  if (type == typeBoolean) return makeDesc(type, {&byte, 1}, result);
  if ((type == typeTrue) != *truth) return errAECoercionFail;
  return makeDesc(type, {}, result);
}

std::optional<UInt32> codeIn(const Source& from) {
  UInt32 code;
  if (from.data.size() != sizeof code) return std::nullopt;
  std::memcpy(&code, from.data.data(), sizeof code);
  return code;
}

OSErr makeCode(UInt32 code, DescType type, AEDesc* result) {
  return makeDesc(type, std::as_bytes(std::span(&code, 1)), result);
}

std::optional<bool> truthOfCode(UInt32 code) {
  switch (code) {
    case typeTrue:
    case 'yes ':
      return true;
    case typeFalse:
    case 'no  ':
      return false;
    default:
      return std::nullopt;
  }
}

}  // namespace

OSErr numberToNumber(const Source& from, DescType toType, AEDesc* result) {
  return makeNumber(loadNumber(from.type, from.data), toType, result);
}

OSErr numberToText(const Source& from, DescType toType, AEDesc* result) {
  const std::optional<Number> number = loadNumber(from.type, from.data);
  if (!number) return errAECoercionFail;
  std::array<char, kLongestNumber> text;
  return makeText(formatNumber(*number, text), toType, result);
}

OSErr numberToTruth(const Source& from, DescType toType, AEDesc* result) {
  const std::optional<Number> number = loadNumber(from.type, from.data);
  NumberBytes bytes;
  if (!number || !storeNumber(*number, typeUInt16, bytes)) return errAECoercionFail;
  UInt16 value;
  std::memcpy(&value, bytes.bytes().data(), sizeof value);
  if (value > 1) return errAECoercionFail;
  return makeTruth(value == 1, toType, result);
}

OSErr textToNumber(const Source& from, DescType toType, AEDesc* result) {
  PlainText plain;
  const OSErr status = plain.decode(from);
  return status == noErr ? makeNumber(parseNumber(plain.text()), toType, result) : status;
}

OSErr textToTruth(const Source& from, DescType toType, AEDesc* result) {
  PlainText plain;
  const OSErr status = plain.decode(from);
  if (status != noErr) return status;
  if (plain.text() != "true" && plain.text() != "false") return errAECoercionFail;
  return makeTruth(plain.text() == "true", toType, result);
}

/// A code and its four characters: the code's bytes from the highest on.
OSErr textToCode(const Source& from, DescType toType, AEDesc* result) {
  PlainText plain;
  const OSErr status = plain.decode(from);
  if (status != noErr) return status;
  if (plain.text().size() != sizeof(UInt32)) return errAECoercionFail;
  UInt32 code = 0;
  for (const char character : plain.text()) code = code << 8 | static_cast<UInt8>(character);
  return makeCode(code, toType, result);
}

OSErr truthToNumber(const Source& from, DescType toType, AEDesc* result) {
  const std::optional<bool> truth = truthOf(from);
  if (!truth) return errAECoercionFail;
  return makeNumber(Number::ofUnsigned(*truth), toType, result);
}

OSErr truthToTruth(const Source& from, DescType toType, AEDesc* result) {
  return makeTruth(truthOf(from), toType, result);
}

OSErr truthToText(const Source& from, DescType toType, AEDesc* result) {
  const std::optional<bool> truth = truthOf(from);
  if (!truth) return errAECoercionFail;
  return makeText(*truth ? "true" : "false", toType, result);
}

OSErr truthToCode(const Source& from, DescType toType, AEDesc* result) {
  const std::optional<bool> truth = truthOf(from);
  if (!truth || toType != typeEnumerated) return errAECoercionFail;
  return makeCode(*truth ? typeTrue : typeFalse, toType, result);
}

OSErr codeToCode(const Source& from, DescType toType, AEDesc* result) {
  const std::optional<UInt32> code = codeIn(from);
  return code ? makeCode(*code, toType, result) : OSErr{errAECoercionFail};
}

OSErr codeToText(const Source& from, DescType toType, AEDesc* result) {
  const std::optional<UInt32> code = codeIn(from);
  if (!code) return errAECoercionFail;
  std::array<char, 4> text;
  for (int i = 0; i < 4; ++i) text[i] = static_cast<char>(*code >> (24 - 8 * i) & 0xFF);
  return makeText({text.data(), text.size()}, toType, result);
}

OSErr codeToTruth(const Source& from, DescType toType, AEDesc* result) {
  const std::optional<UInt32> code = codeIn(from);
  if (!code || from.type != typeEnumerated) return errAECoercionFail;
  return makeTruth(truthOfCode(*code), toType, result);
}

}  // namespace platform::appleevents
