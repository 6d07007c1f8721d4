// Licence: MIT, see LICENSE.
/// Typed writing of an event's parameters, or a record's fields.
///
/// Each is one AEPutParamPtr of the type that it names and returns its result. A parameter of the
/// same keyword is replaced. The three forms of text travel alike, without terminator and length;
/// an array travels as its numbers back to back. One thread changes an event at a time.
#ifndef QUORVANT_AEMESSAGING_PUTAEPARAMS_H
#define QUORVANT_AEMESSAGING_PUTAEPARAMS_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>

/// typeBoolean
QRL_EXPORT OSErr PutAEBoolean(AppleEvent& event, AEKeyword keyword, bool* value);
/// typeBoolean, the byte as it is.
QRL_EXPORT OSErr PutAEBoolean(AppleEvent& event, AEKeyword keyword, unsigned char* value);
/// typeSInt16
QRL_EXPORT OSErr PutAEShort(AppleEvent& event, AEKeyword keyword, SInt16* value);
/// typeSInt32, as the next
QRL_EXPORT OSErr PutAELong(AppleEvent& event, AEKeyword keyword, SInt32* value);
QRL_EXPORT OSErr PutAEInteger(AppleEvent& event, AEKeyword keyword, int* value);
/// typeSInt64, as the next
QRL_EXPORT OSErr PutAELongLong(AppleEvent& event, AEKeyword keyword, SInt64* value);
QRL_EXPORT OSErr PutAEUInt64(AppleEvent& event, AEKeyword keyword, UInt64* value);
/// typeIEEE32BitFloatingPoint
QRL_EXPORT OSErr PutAEFloat(AppleEvent& event, AEKeyword keyword, float* value);
/// typeIEEE64BitFloatingPoint
QRL_EXPORT OSErr PutAEDouble(AppleEvent& event, AEKeyword keyword, double* value);
/// typeType
QRL_EXPORT OSErr PutAEOSType(AppleEvent& event, AEKeyword keyword, OSType* code);

/// typeChar, of text up to a 0, behind a length byte, or of a given size
QRL_EXPORT OSErr PutAECString(AppleEvent& event, AEKeyword keyword, const char* text);
QRL_EXPORT OSErr PutAEPString(AppleEvent& event, AEKeyword keyword, const unsigned char* text);
QRL_EXPORT OSErr PutAEText(AppleEvent& event, AEKeyword keyword, const unsigned char* text,
                           SInt32 size);

/// typeSInt16 and typeSInt32, `count` of them
QRL_EXPORT OSErr PutAEShortArray(AppleEvent& event, AEKeyword keyword, SInt16* array, SInt32 count);
QRL_EXPORT OSErr PutAELongArray(AppleEvent& event, AEKeyword keyword, SInt32* array, SInt32 count);

#endif
