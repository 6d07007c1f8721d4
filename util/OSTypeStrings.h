// Licence: MIT, see LICENSE.
/// Four-character codes as C strings. `size` is the full size of the buffer, terminator included;
/// what does not fit is cut; nothing happens for a null buffer or a size below 1. Any thread.
#ifndef QUORVANT_UTIL_OSTYPESTRINGS_H
#define QUORVANT_UTIL_OSTYPESTRINGS_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>

/// The code in single quotes if all its characters are printable ASCII; else the number, in decimal
/// up to 0x7FFF, above as 0x and eight digits. Returns the buffer.
QRL_EXPORT char* OSTypeToCString(UInt32 type, char* buffer, int size);
QRL_EXPORT char* OSTypestrcpy(char* buffer, UInt32 type, int size);
/// Appends it to the string in the buffer; nothing if that fills the buffer already.
QRL_EXPORT char* OSTypestrcat(char* buffer, UInt32 type, int size);

/// Reads the first that fits of: a code in single quotes; after 0x up to eight characters of a
/// number, which is DECIMAL in spite of its prefix; a decimal number; a bare code of exactly four
/// characters. So a bare code that begins with digits is a number. Numbers may have white space and
/// a sign before them, and anything behind them. paramErr, with the type untouched, for a null text
/// and where nothing fits.
QRL_EXPORT OSErr CStringToOSType(const char* text, UInt32& type);

#endif
