// Licence: MIT, see LICENSE.
/// Pascal strings (a length byte, then up to 255 characters) and C strings: bounded copies between
/// the forms, appending, comparison.
///
/// `size` is always the full size of the destination in bytes, length byte or terminator included.
/// Unless told otherwise, nothing happens for a null destination or a size below 1, a null source
/// is an empty string, source and destination may be the same place, and the result is the
/// destination. Any thread; nothing here allocates memory or blocks.
#ifndef QUORVANT_UTIL_STRINGUTILS_H
#define QUORVANT_UTIL_STRINGUTILS_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>

// ---- Copy. p is a Pascal string, c a C string, the destination's form comes last in the name's
// first letters: pcstrcpy makes a C string of a Pascal string.

/// The length byte is copied as it stands, also when the characters are cut: it may promise more
/// than there is.
QRL_EXPORT unsigned char* pstrcpy(unsigned char* destination, const unsigned char* source,
                                  int size);
QRL_EXPORT char* pcstrcpy(char* destination, const unsigned char* source, int size);
/// Never more than 255 characters, whatever the size.
QRL_EXPORT unsigned char* cpstrcpy(unsigned char* destination, const char* source, int size);
/// A source that is too long fills the destination to its last byte and leaves it UNTERMINATED,
/// unless the size is 1, which makes it an empty string.
QRL_EXPORT char* cstrcpy(char* destination, const char* source, int size);

// ---- Append. The Pascal destinations and sources must not be null. Nothing is appended where
// there is no room.

/// The number of characters appended is added to the length byte modulo 256, so that a size above
/// 256 is for callers who know that the result is short enough.
QRL_EXPORT unsigned char* pstrcat(unsigned char* destination, const unsigned char* source,
                                  int size);
QRL_EXPORT unsigned char* cpstrcat(unsigned char* destination, const char* source, int size);
/// Cuts as cstrcpy does, unterminated.
QRL_EXPORT char* cstrcat(char* destination, const char* source, int size);
QRL_EXPORT char* pcstrcat(char* destination, const unsigned char* source, int size);

// ---- Comparison by RelString: -1, 0 or 1. Only the first 254 characters of a C string count.

QRL_EXPORT int stricmp(const char* a, const char* b, bool caseSensitive, bool diacriticalSensitive);
QRL_EXPORT int pcstricmp(const unsigned char* a, const char* b, bool caseSensitive,
                         bool diacriticalSensitive);

// ---- Numbers

/// In decimal.
QRL_EXPORT char* NumToCString(SInt32 value, char* buffer, int size);
/// Makes a string of both forms of `length` characters that already stand behind the length byte.
/// It is cut to size - 2, and its length byte never says more than 254.
QRL_EXPORT void MakePCString(unsigned char* buffer, int length, int size);

// ---- Bytes

/// A C string of bytes. The last byte of the source is never taken, even if it fits.
QRL_EXPORT char* BufToCString(char* buffer, const char* source, int sourceLength, int size);
/// Ends the string at the first such character.
QRL_EXPORT void TruncToCStr(char* buffer, char ch, UInt32 length);

#endif
