// Licence: MIT, see LICENSE.
#include "platform/appleevents/Coercion.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "platform/appleevents/ByteOrder.h"
#include "platform/appleevents/Items.h"
#include "platform/appleevents/Number.h"
#include "platform/appleevents/Validation.h"

namespace platform::appleevents {
namespace {

/// Types that are converted alike.
enum class Family { kNumber, kBoolean, kText, kCode, kList, kRecord, kEvent, kOther, kAny };

Family familyOf(DescType type) {
  switch (type) {
    case typeBoolean:
    case typeTrue:
    case typeFalse:
      return Family::kBoolean;
    case typeChar:
      return Family::kText;
    case typeType:
    case typeEnumerated:
    case typeKeyword:
    case typeProperty:
    case typeApplSignature:
      return Family::kCode;
    case typeAEList:
      return Family::kList;
    case typeAERecord:
      return Family::kRecord;
    case typeAppleEvent:
      return Family::kEvent;
    default:
      return isNumber(type) ? Family::kNumber : Family::kOther;
  }
}

struct Source {
  DescType type;
  Bytes data;
};

std::string_view textOf(const Source& from) {
  return {reinterpret_cast<const char*>(from.data.data()), from.data.size()};
}

OSErr makeText(std::string_view text, AEDesc* result) {
  return makeDesc(typeChar, std::as_bytes(std::span(text)), result);
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

OSErr makeTruth(bool truth, DescType type, AEDesc* result) {
  const std::byte byte{truth};
  if (type == typeBoolean) return makeDesc(type, {&byte, 1}, result);
  if ((type == typeTrue) != truth) return errAECoercionFail;
  return makeDesc(type, {}, result);
}

OSErr numberToNumber(const Source& from, DescType toType, AEDesc* result) {
  return makeNumber(loadNumber(from.type, from.data), toType, result);
}

OSErr numberToText(const Source& from, DescType, AEDesc* result) {
  const std::optional<Number> number = loadNumber(from.type, from.data);
  if (!number) return errAECoercionFail;
  std::array<char, kLongestNumber> text;
  return makeText(formatNumber(*number, text), result);
}

OSErr textToNumber(const Source& from, DescType toType, AEDesc* result) {
  return makeNumber(parseNumber(textOf(from)), toType, result);
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

OSErr truthToNumber(const Source& from, DescType toType, AEDesc* result) {
  const std::optional<bool> truth = truthOf(from);
  if (!truth) return errAECoercionFail;
  return makeNumber(Number::ofUnsigned(*truth), toType, result);
}

OSErr truthToTruth(const Source& from, DescType toType, AEDesc* result) {
  const std::optional<bool> truth = truthOf(from);
  if (!truth) return errAECoercionFail;
  return makeTruth(*truth, toType, result);
}

OSErr truthToText(const Source& from, DescType, AEDesc* result) {
  const std::optional<bool> truth = truthOf(from);
  if (!truth) return errAECoercionFail;
  return makeText(*truth ? "true" : "false", result);
}

OSErr textToTruth(const Source& from, DescType toType, AEDesc* result) {
  const std::string_view text = textOf(from);
  if (text != "true" && text != "false") return errAECoercionFail;
  return makeTruth(text == "true", toType, result);
}

OSErr codeToCode(const Source& from, DescType toType, AEDesc* result) {
  return makeDesc(toType, from.data, result);
}

/// A code and its four characters: the code's bytes from the highest on.
OSErr codeToText(const Source& from, DescType, AEDesc* result) {
  if (from.data.size() != sizeof(UInt32)) return errAECoercionFail;
  UInt32 code;
  std::memcpy(&code, from.data.data(), sizeof code);
  std::array<char, 4> text;
  for (int i = 0; i < 4; ++i) text[i] = static_cast<char>(code >> (24 - 8 * i) & 0xFF);
  return makeText({text.data(), text.size()}, result);
}

OSErr textToCode(const Source& from, DescType toType, AEDesc* result) {
  if (from.data.size() != sizeof(UInt32)) return errAECoercionFail;
  UInt32 code = 0;
  for (const std::byte character : from.data) code = code << 8 | std::to_integer<UInt32>(character);
  return makeDesc(toType, std::as_bytes(std::span(&code, 1)), result);
}

OSErr anyToList(const Source& from, DescType, AEDesc* result) {
  OSErr status = AECreateList(nullptr, 0, false, result);
  if (status != noErr) return status;
  status = AEPutPtr(result, 0, from.type, from.data.data(), static_cast<Size>(from.data.size()));
  if (status != noErr) AEDisposeDesc(result);
  return status;
}

/// A list of one is as good as its item.
OSErr listToAny(const Source& from, DescType toType, AEDesc* result) {
  const std::optional<Region> region = findRegion(from.type, from.data, Part::kParameters);
  if (!region || region->count != 1) return errAECoercionFail;
  const std::optional<Item> item = firstItem(from.data, *region);
  if (!item) return errAECorruptData;
  HeldDesc held;
  const OSErr status = makeDesc(*item, held.out());
  return status == noErr ? AECoerceDesc(&held.get(), toType, result) : status;
}

/// An event's parameters without its attributes.
OSErr eventToRecord(const Source& from, DescType, AEDesc* result) {
  const std::optional<Region> region = findRegion(from.type, from.data, Part::kParameters);
  if (!region) return errAECorruptData;
  std::unique_ptr<Storage> record = makeEmpty(typeAERecord);
  if (record == nullptr) return memFullErr;
  const Bytes items = from.data.subspan(region->begin);
  std::byte* room = record->splice(kListHeader, 0, items.size());
  if (room == nullptr) return memFullErr;
  std::ranges::copy(items, room);
  storeWord(record->writable().data(), region->count);
  *result = {typeAERecord, record.release()};
  return noErr;
}

/// The first row that fits is the conversion; where none fits there is none.
struct Row {
  Family from;
  Family to;
  OSErr (*convert)(const Source& from, DescType toType, AEDesc* result);
};
constexpr Row kRows[] = {
    {Family::kNumber, Family::kNumber, numberToNumber},
    {Family::kNumber, Family::kText, numberToText},
    {Family::kNumber, Family::kBoolean, numberToTruth},
    {Family::kText, Family::kNumber, textToNumber},
    {Family::kText, Family::kBoolean, textToTruth},
    {Family::kText, Family::kCode, textToCode},
    {Family::kBoolean, Family::kBoolean, truthToTruth},
    {Family::kBoolean, Family::kNumber, truthToNumber},
    {Family::kBoolean, Family::kText, truthToText},
    {Family::kCode, Family::kCode, codeToCode},
    {Family::kCode, Family::kText, codeToText},
    {Family::kEvent, Family::kRecord, eventToRecord},
    {Family::kAny, Family::kList, anyToList},
    {Family::kList, Family::kAny, listToAny},
};

const Row* findRow(Family from, Family to) {
  const auto* row = std::ranges::find_if(kRows, [=](const Row& candidate) {
    return (candidate.from == from || candidate.from == Family::kAny) &&
           (candidate.to == to || candidate.to == Family::kAny);
  });
  return row == std::end(kRows) ? nullptr : row;
}

}  // namespace

OSErr coerce(DescType type, Bytes data, DescType toType, AEDesc* result) {
  *result = kNullDesc;
  if (satisfies(type, toType)) return makeDesc(type, data, result);
  const Row* row = findRow(familyOf(type), familyOf(toType));
  if (row == nullptr) return errAECoercionFail;
  return row->convert({type, data}, toType, result);
}

OSErr makeDesc(DescType type, Bytes data, AEDesc* result) {
  *result = kNullDesc;
  if (type == typeNull) return noErr;
  if (!isWellFormed(type, data)) return errAECorruptData;
  std::unique_ptr<Storage> storage = Storage::make(data.size());
  if (storage == nullptr) return memFullErr;
  std::ranges::copy(data, storage->writable().begin());
  *result = {type, storage.release()};
  return noErr;
}

}  // namespace platform::appleevents

OSErr AECoercePtr(DescType type, const void* data, Size size, DescType toType, AEDesc* result) {
  using namespace platform::appleevents;
  if (result == nullptr) return paramErr;
  *result = kNullDesc;
  if (!isBlock(data, size)) return paramErr;
  return coerce(type, blockOf(data, size), toType, result);
}

OSErr AECoerceDesc(const AEDesc* desc, DescType toType, AEDesc* result) {
  using namespace platform::appleevents;
  if (desc == nullptr || result == nullptr) return paramErr;
  const AEDesc source = *desc;  // which the result may be
  return coerce(source.descriptorType, bytesOf(source), toType, result);
}
