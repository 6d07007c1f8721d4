// Licence: MIT, see LICENSE.
#include "platform/appleevents/Coercion.h"

#include <algorithm>

#include "platform/appleevents/CoercionHandlers.h"
#include "platform/appleevents/Conversions.h"
#include "platform/appleevents/Number.h"
#include "platform/appleevents/Validation.h"

namespace platform::appleevents {
namespace {

/// Types that are converted alike.
enum class Family { kNumber, kTruth, kText, kCode, kProcess, kList, kRecord, kEvent, kOther, kAny };

Family familyOf(DescType type) {
  switch (type) {
    case typeBoolean:
    case typeTrue:
    case typeFalse:
      return Family::kTruth;
    case typeType:
    case typeEnumerated:
    case typeKeyword:
    case typeProperty:
    case typeApplSignature:
      return Family::kCode;
    case typeProcessSerialNumber:
    case typeKernelProcessID:
      return Family::kProcess;
    case typeAEList:
      return Family::kList;
    case typeAERecord:
      return Family::kRecord;
    case typeAppleEvent:
      return Family::kEvent;
    default:
      if (isNumber(type)) return Family::kNumber;
      return isText(type) ? Family::kText : Family::kOther;
  }
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
    {Family::kNumber, Family::kTruth, numberToTruth},
    {Family::kText, Family::kNumber, textToNumber},
    {Family::kText, Family::kText, textToText},
    {Family::kText, Family::kTruth, textToTruth},
    {Family::kText, Family::kCode, textToCode},
    {Family::kTruth, Family::kNumber, truthToNumber},
    {Family::kTruth, Family::kText, truthToText},
    {Family::kTruth, Family::kTruth, truthToTruth},
    {Family::kTruth, Family::kCode, truthToCode},
    {Family::kCode, Family::kText, codeToText},
    {Family::kCode, Family::kTruth, codeToTruth},
    {Family::kCode, Family::kCode, codeToCode},
    {Family::kCode, Family::kProcess, codeToProcess},
    {Family::kProcess, Family::kCode, processToCode},
    {Family::kProcess, Family::kProcess, processToProcess},
    {Family::kEvent, Family::kRecord, eventToRecord},
    {Family::kAny, Family::kList, anyToList},
    {Family::kList, Family::kAny, listToAny},
};

OSErr coerceByTable(const Source& from, DescType toType, AEDesc* result) {
  const Family fromFamily = familyOf(from.type);
  const Family toFamily = familyOf(toType);
  const auto* row = std::ranges::find_if(kRows, [=](const Row& candidate) {
    return (candidate.from == fromFamily || candidate.from == Family::kAny) &&
           (candidate.to == toFamily || candidate.to == Family::kAny);
  });
  return row == std::end(kRows) ? OSErr{errAECoercionFail} : row->convert(from, toType, result);
}

/// `desc` is the data as a descriptor, or null where there is none.
OSErr coerce(const Source& from, const AEDesc* desc, DescType toType, AEDesc* result) {
  *result = kNullDesc;
  if (satisfies(from.type, toType)) return makeDesc(from.type, from.data, result);
  const OSErr status = coerceByHandler(from, desc, toType, result);
  return status == errAECoercionFail ? coerceByTable(from, toType, result) : status;
}

}  // namespace

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
  const Bytes block = blockOf(data, size);
  if (!isWellFormed(type, block)) return errAECorruptData;
  return coerce({type, block}, nullptr, toType, result);
}

OSErr AECoerceDesc(const AEDesc* desc, DescType toType, AEDesc* result) {
  using namespace platform::appleevents;
  if (desc == nullptr || result == nullptr) return paramErr;
  const AEDesc source = *desc;  // which the result may be
  return coerce({source.descriptorType, bytesOf(source)}, &source, toType, result);
}
