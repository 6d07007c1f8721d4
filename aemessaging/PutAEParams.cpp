// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/PutAEParams.h>

#include <cstring>

namespace {

template <typename T>
OSErr putValue(AppleEvent& event, AEKeyword keyword, DescType type, const T* value) {
  return AEPutParamPtr(&event, keyword, type, value, sizeof *value);
}

// A count that no block of memory has cannot be right: let the Apple Event Manager refuse it.
template <typename T>
OSErr putArray(AppleEvent& event, AEKeyword keyword, DescType type, const T* array, SInt32 count) {
  constexpr SInt32 kMost = 0x7FFFFFFF / static_cast<SInt32>(sizeof(T));
  const Size size = count > kMost ? -1 : static_cast<Size>(count) * static_cast<Size>(sizeof(T));
  return AEPutParamPtr(&event, keyword, type, array, count < 0 ? -1 : size);
}

}  // namespace

OSErr PutAEBoolean(AppleEvent& event, AEKeyword keyword, bool* value) {
  const unsigned char byte = *value;
  return putValue(event, keyword, typeBoolean, &byte);
}

OSErr PutAEBoolean(AppleEvent& event, AEKeyword keyword, unsigned char* value) {
  return putValue(event, keyword, typeBoolean, value);
}

OSErr PutAEShort(AppleEvent& event, AEKeyword keyword, SInt16* value) {
  return putValue(event, keyword, typeSInt16, value);
}

OSErr PutAELong(AppleEvent& event, AEKeyword keyword, SInt32* value) {
  return putValue(event, keyword, typeSInt32, value);
}

OSErr PutAEInteger(AppleEvent& event, AEKeyword keyword, int* value) {
  return putValue(event, keyword, typeSInt32, value);
}

OSErr PutAELongLong(AppleEvent& event, AEKeyword keyword, SInt64* value) {
  return putValue(event, keyword, typeSInt64, value);
}

OSErr PutAEUInt64(AppleEvent& event, AEKeyword keyword, UInt64* value) {
  return putValue(event, keyword, typeSInt64, value);
}

OSErr PutAEFloat(AppleEvent& event, AEKeyword keyword, float* value) {
  return putValue(event, keyword, typeIEEE32BitFloatingPoint, value);
}

OSErr PutAEDouble(AppleEvent& event, AEKeyword keyword, double* value) {
  return putValue(event, keyword, typeIEEE64BitFloatingPoint, value);
}

OSErr PutAEOSType(AppleEvent& event, AEKeyword keyword, OSType* code) {
  return putValue(event, keyword, typeType, code);
}

OSErr PutAECString(AppleEvent& event, AEKeyword keyword, const char* text) {
  return AEPutParamPtr(&event, keyword, typeChar, text, static_cast<Size>(std::strlen(text)));
}

OSErr PutAEPString(AppleEvent& event, AEKeyword keyword, const unsigned char* text) {
  return AEPutParamPtr(&event, keyword, typeChar, text + 1, text[0]);
}

OSErr PutAEText(AppleEvent& event, AEKeyword keyword, const unsigned char* text, SInt32 size) {
  return AEPutParamPtr(&event, keyword, typeChar, text, size);
}

OSErr PutAEShortArray(AppleEvent& event, AEKeyword keyword, SInt16* array, SInt32 count) {
  return putArray(event, keyword, typeSInt16, array, count);
}

OSErr PutAELongArray(AppleEvent& event, AEKeyword keyword, SInt32* array, SInt32 count) {
  return putArray(event, keyword, typeSInt32, array, count);
}
