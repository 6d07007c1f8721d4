/* Licence: MIT, see LICENSE. */
/*
 * Text: a sequence of UTF-16 units, however it is stored.
 *
 * Immutable strings may be used on several threads at once, a mutable one by one thread at a time.
 * An argument that is null, of another type, out of range or (where text is to be changed) not
 * mutable gives null, 0 or false, or leaves everything as it is; so does a lack of memory.
 */
#ifndef COREFOUNDATION_CFSTRING_H
#define COREFOUNDATION_CFSTRING_H

#include <stdarg.h>

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>

typedef UInt32 CFStringEncoding;
enum {
  kCFStringEncodingMacRoman = 0,
  kCFStringEncodingUnicode = 0x0100, /* UTF-16 in the host's order */
  kCFStringEncodingUTF16 = 0x0100,
  kCFStringEncodingISOLatin1 = 0x0201,
  kCFStringEncodingASCII = 0x0600,
  kCFStringEncodingUTF8 = 0x08000100,
  kCFStringEncodingUTF16BE = 0x10000100,
  kCFStringEncodingUTF16LE = 0x14000100
};

/* How CFStringCompare compares; other options have no effect. */
enum {
  kCFCompareCaseInsensitive = 1,
  kCFCompareNumerically = 64 /* runs of the digits 0 to 9 by their value: "a9" before "a10" */
};

/*
 * The constant string of a literal: the same object for the same text in the whole process, on
 * every thread, for good. Characters beyond ASCII are taken as MacRoman.
 */
#define CFSTR(literal) __CFStringMakeConstantString("" literal "")

EXTERN_API_BEGIN

CFStringRef __CFStringMakeConstantString(const char* text);

CFTypeID CFStringGetTypeID(void);

/*
 * Creation. Text that is not valid in its encoding gives null: bytes beyond 127 in ASCII,
 * ill-formed UTF-8, half a UTF-16 unit, an encoding not listed above. C and Pascal strings are of
 * the 8-bit encodings only.
 */
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text,
                                      CFStringEncoding encoding);
CFStringRef CFStringCreateWithPascalString(CFAllocatorRef allocator, ConstStr255Param text,
                                           CFStringEncoding encoding);
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* characters,
                                         CFIndex count);
/*
 * An external representation may start with a byte order mark, which is no part of the text. The
 * mark decides the order of kCFStringEncodingUnicode, which without one is big-endian outside.
 */
CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation);
/* The text as it is now, immutable: the same object again where that is as good. */
CFStringRef CFStringCreateCopy(CFAllocatorRef allocator, CFStringRef string);
CFStringRef CFStringCreateWithSubstring(CFAllocatorRef allocator, CFStringRef string,
                                        CFRange range);

/*
 * Formatting as printf does, with arguments by position (%2$d) too, and besides:
 * %@ an object: a string's text, a number's or boolean's value, the description of any other,
 * "(null)"; %C a UniChar, %S a UniChar string, %s a MacRoman string, %D %U %O as %d %u %o, and q
 * before an integer conversion as ll. %n stores nothing. The options are reserved: null.
 */
CFStringRef CFStringCreateWithFormat(CFAllocatorRef allocator, CFDictionaryRef formatOptions,
                                     CFStringRef format, ...);
CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef allocator,
                                                 CFDictionaryRef formatOptions, CFStringRef format,
                                                 va_list arguments);

/* Access. */
CFIndex CFStringGetLength(CFStringRef string);
UniChar CFStringGetCharacterAtIndex(CFStringRef string, CFIndex index);
void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer);

/*
 * The text with its terminator or length byte, whole or not at all: false, and the buffer holds an
 * empty string, when it does not fit or a character is not in the encoding.
 */
Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding);
Boolean CFStringGetPascalString(CFStringRef string, StringPtr buffer, CFIndex bufferSize,
                                CFStringEncoding encoding);

/*
 * As many whole characters of the range as fit and can be converted; the number of UTF-16 units
 * taken is the result, of bytes made *usedBytes (may be null). A non-zero loss byte replaces each
 * character that the encoding lacks; with 0 conversion stops there. Without a buffer bytes are only
 * counted. An external representation in kCFStringEncodingUnicode starts with a byte order mark.
 */
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding,
                         UInt8 lossByte, Boolean isExternalRepresentation, UInt8* buffer,
                         CFIndex bufferSize, CFIndex* usedBytes);

/* Bytes that so many UTF-16 units may need, without a terminator; kCFNotFound if there is no such
 * number. */
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

/* By the values of the UTF-16 units, if the options say nothing else. Null comes before any text.
 */
CFComparisonResult CFStringCompare(CFStringRef a, CFStringRef b, CFOptionFlags options);

/* Mutable strings. Beyond a maximum length (0: none) nothing is appended. */
CFMutableStringRef CFStringCreateMutable(CFAllocatorRef allocator, CFIndex maximumLength);
CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef allocator, CFIndex maximumLength,
                                             CFStringRef string);
void CFStringAppend(CFMutableStringRef string, CFStringRef appended);
void CFStringAppendCharacters(CFMutableStringRef string, const UniChar* characters, CFIndex count);
void CFStringAppendCString(CFMutableStringRef string, const char* text, CFStringEncoding encoding);
void CFStringAppendPascalString(CFMutableStringRef string, ConstStr255Param text,
                                CFStringEncoding encoding);
void CFStringAppendFormat(CFMutableStringRef string, CFDictionaryRef formatOptions,
                          CFStringRef format, ...);
void CFStringAppendFormatAndArguments(CFMutableStringRef string, CFDictionaryRef formatOptions,
                                      CFStringRef format, va_list arguments);

EXTERN_API_END

#endif
