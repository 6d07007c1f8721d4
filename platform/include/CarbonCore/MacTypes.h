/* Licence: MIT, see LICENSE. */
/*
 * The basic types of the Macintosh interfaces. Integer types keep the width that their names
 * promise on every host: the 32-bit ones are `long` where that is 32 bits and `int` elsewhere, as
 * the original headers have it, so that a 32-bit build has the original signatures.
 */
#ifndef CARBONCORE_MACTYPES_H
#define CARBONCORE_MACTYPES_H

#include <stddef.h>
#include <stdint.h>

#include <CarbonCore/ConditionalMacros.h>

typedef unsigned char UInt8;
typedef signed char SInt8;
typedef unsigned short UInt16;
typedef signed short SInt16;
#if __SIZEOF_LONG__ == 4
typedef unsigned long UInt32;
typedef signed long SInt32;
#else
typedef unsigned int UInt32;
typedef signed int SInt32;
#endif
typedef unsigned long long UInt64;
typedef signed long long SInt64;
typedef float Float32;
typedef double Float64;

/* A 64-bit value as two words, high word first whatever the host's byte order. */
typedef struct UnsignedWide {
  UInt32 hi;
  UInt32 lo;
} UnsignedWide;

typedef unsigned char Boolean;
typedef char* Ptr;
typedef Ptr* Handle; /* a relocatable block: a pointer to its master pointer */
typedef long Size;
typedef SInt16 OSErr;
typedef SInt32 OSStatus;
typedef UInt32 FourCharCode;
typedef FourCharCode OSType;
typedef FourCharCode ResType;
typedef SInt16 ResID;
typedef SInt16 ScriptCode;
typedef UInt16 UniChar;
typedef unsigned long UniCharCount;
typedef UInt32 OptionBits;
typedef SInt32 Duration;
typedef UnsignedWide AbsoluteTime;

/* Pascal strings: a length byte, then that many MacRoman characters. */
typedef unsigned char Str255[256];
typedef unsigned char Str63[64];
typedef unsigned char Str31[32];
typedef unsigned char* StringPtr;
typedef const unsigned char* ConstStringPtr;
typedef const unsigned char* ConstStr255Param;

#pragma pack(push, 2)
typedef struct Point {
  SInt16 v;
  SInt16 h;
} Point;

typedef struct Rect {
  SInt16 top;
  SInt16 left;
  SInt16 bottom;
  SInt16 right;
} Rect;
#pragma pack(pop)

typedef struct ProcessSerialNumber {
  UInt32 highLongOfPSN;
  UInt32 lowLongOfPSN;
} ProcessSerialNumber;
typedef ProcessSerialNumber* ProcessSerialNumberPtr;

enum { noErr = 0, kNilOptions = 0 };

EXTERN_API_BEGIN

/*
 * Stops in the debugger that is attached to this process; where none is, writes one line to the
 * system log and returns.
 */
void Debugger(void);

EXTERN_API_END

#endif
