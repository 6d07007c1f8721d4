// Licence: MIT, see LICENSE.
#include <HIServices/Processes.h>

#include <cstring>
#include <optional>

#include "platform/appleevents/Coercion.h"
#include "platform/appleevents/Conversions.h"

namespace platform::appleevents {
namespace {

template <typename T>
std::optional<T> valueIn(Bytes data) {
  T value;
  if (data.size() != sizeof value) return std::nullopt;
  std::memcpy(&value, data.data(), sizeof value);
  return value;
}

template <typename T>
OSErr makeValue(DescType type, const T& value, AEDesc* result) {
  return makeDesc(type, std::as_bytes(std::span(&value, 1)), result);
}

std::optional<OSType> signatureOf(const ProcessSerialNumber& psn) {
  ProcessInfoRec info{};
  info.processInfoLength = sizeof info;
  if (GetProcessInformation(&psn, &info) != noErr) return std::nullopt;
  return info.processSignature;
}

std::optional<ProcessSerialNumber> firstWithSignature(OSType signature) {
  ProcessSerialNumber psn = {0, kNoProcess};
  while (GetNextProcess(&psn) == noErr) {
    if (signatureOf(psn) == signature) return psn;
  }
  return std::nullopt;
}

std::optional<ProcessSerialNumber> processOf(const Source& from) {
  if (from.type == typeProcessSerialNumber) return valueIn<ProcessSerialNumber>(from.data);
  const std::optional<UInt32> word = valueIn<UInt32>(from.data);
  if (!word) return std::nullopt;
  if (from.type == typeApplSignature) return firstWithSignature(*word);
  ProcessSerialNumber psn;
  if (GetProcessForPID(static_cast<int>(*word), &psn) != noErr) return std::nullopt;
  return psn;
}

OSErr makeProcess(const ProcessSerialNumber& psn, DescType toType, AEDesc* result) {
  if (toType == typeProcessSerialNumber) return makeValue(toType, psn, result);
  int pid = 0;
  if (GetProcessPID(&psn, &pid) != noErr) return errAECoercionFail;
  return makeValue(toType, SInt32{pid}, result);
}

}  // namespace

OSErr processToProcess(const Source& from, DescType toType, AEDesc* result) {
  const std::optional<ProcessSerialNumber> psn = processOf(from);
  return psn ? makeProcess(*psn, toType, result) : OSErr{errAECoercionFail};
}

OSErr processToCode(const Source& from, DescType toType, AEDesc* result) {
  if (toType != typeApplSignature) return errAECoercionFail;
  const std::optional<ProcessSerialNumber> psn = processOf(from);
  const std::optional<OSType> signature = psn ? signatureOf(*psn) : std::nullopt;
  return signature ? makeValue(toType, *signature, result) : OSErr{errAECoercionFail};
}

OSErr codeToProcess(const Source& from, DescType toType, AEDesc* result) {
  if (from.type != typeApplSignature) return errAECoercionFail;
  return processToProcess(from, toType, result);
}

}  // namespace platform::appleevents
