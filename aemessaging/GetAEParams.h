// Licence: MIT, see LICENSE.
/// Typed reading of an event's parameters, or a record's fields: GetAE... and what PutAEParams.h
/// wrote.
///
/// Each reads with AEGetParamPtr, which coerces the parameter to the type asked for, and returns
/// its result: errAEDescNotFound for a parameter that is missing, errAECoercionFail for one that
/// cannot be had as that type. Unless it is said otherwise the destination is untouched on failure.
/// Nothing is checked but what is said here. Any thread.
#ifndef QUORVANT_AEMESSAGING_GETAEPARAMS_H
#define QUORVANT_AEMESSAGING_GETAEPARAMS_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>

/// 1 if the parameter exists, 0 if it does not or cannot be read. Never writes `exists`.
QRL_EXPORT OSErr GetAEParamExists(const AppleEvent& event, AEKeyword keyword, bool& exists);

QRL_EXPORT OSErr GetAEBoolean(const AppleEvent& event, AEKeyword keyword, bool* value);
/// Stores the byte as it is.
QRL_EXPORT OSErr GetAEBoolean(const AppleEvent& event, AEKeyword keyword, unsigned char* value);
QRL_EXPORT OSErr GetAEShort(const AppleEvent& event, AEKeyword keyword, SInt16* value);
QRL_EXPORT OSErr GetAELong(const AppleEvent& event, AEKeyword keyword, SInt32* value);
QRL_EXPORT OSErr GetAELongLong(const AppleEvent& event, AEKeyword keyword, SInt64* value);
/// The bits of a signed number: the type that travels is the same.
QRL_EXPORT OSErr GetAEUInt64(const AppleEvent& event, AEKeyword keyword, UInt64* value);
QRL_EXPORT OSErr GetAEOSType(const AppleEvent& event, AEKeyword keyword, OSType* code);

/// Reads text with a terminating 0. `bufferSize` counts the terminator; paramErr, and nothing
/// written, for a null buffer or a size below 1. On any other failure the buffer holds "".
///
/// The sender is trusted to keep to the buffer's size: of a longer text bufferSize - 1 bytes are
/// copied, but the 0 is written behind the text's whole length. Read text of strangers with
/// AECopyParamData.
QRL_EXPORT OSErr GetAECString(const AppleEvent& event, AEKeyword keyword, char* buffer,
                              SInt32 bufferSize);
/// Reads text behind a length byte, which `bufferSize` counts. The length byte is the text's whole
/// length, 255 at most, even when less was copied. paramErr as above; on any other failure the
/// length byte is 0.
QRL_EXPORT OSErr GetAEPString(const AppleEvent& event, AEKeyword keyword, unsigned char* buffer,
                              SInt32 bufferSize);
/// Reads at most `size` bytes of text, without a terminator. Sets `size` to the text's whole
/// length, which may be more than what was copied.
QRL_EXPORT OSErr GetAEText(const AppleEvent& event, AEKeyword keyword, unsigned char* buffer,
                           SInt32& size);

/// Read at most `count` numbers. Set `count` to how many the parameter has.
QRL_EXPORT OSErr GetAELongArray(const AppleEvent& event, AEKeyword keyword, SInt32* array,
                                SInt32& count);
QRL_EXPORT OSErr GetAEShortArray(const AppleEvent& event, AEKeyword keyword, SInt16* array,
                                 SInt32& count);

#endif
