// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/GetAEParams.h>

#include <algorithm>
#include <limits>

namespace {

template <typename T>
OSErr getValue(const AppleEvent& event, AEKeyword keyword, DescType type, T* value) {
  return AEGetParamPtr(&event, keyword, type, nullptr, value, sizeof *value, nullptr);
}

// `shift` is how often an element's size doubles a byte.
template <typename T>
OSErr getArray(const AppleEvent& event, AEKeyword keyword, DescType type, T* array, SInt32& count,
               int shift) {
  constexpr SInt64 kMostBytes = std::numeric_limits<SInt32>::max();
  const SInt64 room = static_cast<SInt64>(count) * static_cast<SInt64>(sizeof(T));
  Size actualSize = 0;
  const OSErr err =
      AEGetParamPtr(&event, keyword, type, nullptr, array,
                    static_cast<Size>(std::clamp(room, -kMostBytes, kMostBytes)), &actualSize);
  if (err == noErr) count = static_cast<SInt32>(actualSize >> shift);
  return err;
}

}  // namespace

OSErr GetAEParamExists(const AppleEvent& event, AEKeyword keyword, bool&) {
  AEDesc found;
  AEInitializeDesc(&found);
  if (AEGetParamDesc(&event, keyword, typeWildCard, &found) != noErr) return 0;
  AEDisposeDesc(&found);
  return 1;
}

OSErr GetAEBoolean(const AppleEvent& event, AEKeyword keyword, bool* value) {
  unsigned char byte = 0;
  const OSErr err = getValue(event, keyword, typeBoolean, &byte);
  if (err == noErr) *value = byte != 0;
  return err;
}

OSErr GetAEBoolean(const AppleEvent& event, AEKeyword keyword, unsigned char* value) {
  return getValue(event, keyword, typeBoolean, value);
}

OSErr GetAEShort(const AppleEvent& event, AEKeyword keyword, SInt16* value) {
  return getValue(event, keyword, typeSInt16, value);
}

OSErr GetAELong(const AppleEvent& event, AEKeyword keyword, SInt32* value) {
  return getValue(event, keyword, typeSInt32, value);
}

OSErr GetAELongLong(const AppleEvent& event, AEKeyword keyword, SInt64* value) {
  return getValue(event, keyword, typeSInt64, value);
}

OSErr GetAEUInt64(const AppleEvent& event, AEKeyword keyword, UInt64* value) {
  return getValue(event, keyword, typeSInt64, value);
}

OSErr GetAEOSType(const AppleEvent& event, AEKeyword keyword, OSType* code) {
  return getValue(event, keyword, typeType, code);
}

OSErr GetAECString(const AppleEvent& event, AEKeyword keyword, char* buffer, SInt32 bufferSize) {
  if (buffer == nullptr || bufferSize < 1) return paramErr;
  buffer[0] = 0;
  DescType actualType = typeNull;
  Size actualSize = 0;
  const OSErr err =
      AEGetParamPtr(&event, keyword, typeChar, &actualType, buffer, bufferSize - 1, &actualSize);
  if (err == noErr) buffer[actualSize] = 0;
  return err;
}

OSErr GetAEPString(const AppleEvent& event, AEKeyword keyword, unsigned char* buffer,
                   SInt32 bufferSize) {
  if (buffer == nullptr || bufferSize < 1) return paramErr;
  buffer[0] = 0;
  Size actualSize = 0;
  const OSErr err =
      AEGetParamPtr(&event, keyword, typeChar, nullptr, buffer + 1, bufferSize - 1, &actualSize);
  if (err == noErr) buffer[0] = static_cast<unsigned char>(std::min(actualSize, Size{255}));
  return err;
}

OSErr GetAEText(const AppleEvent& event, AEKeyword keyword, unsigned char* buffer, SInt32& size) {
  Size actualSize = 0;
  const OSErr err = AEGetParamPtr(&event, keyword, typeChar, nullptr, buffer, size, &actualSize);
  if (err == noErr) size = static_cast<SInt32>(actualSize);
  return err;
}

OSErr GetAELongArray(const AppleEvent& event, AEKeyword keyword, SInt32* array, SInt32& count) {
  return getArray(event, keyword, typeSInt32, array, count, 2);
}

OSErr GetAEShortArray(const AppleEvent& event, AEKeyword keyword, SInt16* array, SInt32& count) {
  return getArray(event, keyword, typeSInt16, array, count, 1);
}
