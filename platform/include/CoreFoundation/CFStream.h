/* Licence: MIT, see LICENSE. */
/*
 * Streams of bytes: read from a file or from memory, written to a file or into memory. A stream is
 * opened once, used by one thread at a time, and closed at the latest with its last reference.
 *
 * A null argument, one of another type or a stream in another state than the call needs gives -1,
 * null or false, and leaves everything as it is.
 */
#ifndef COREFOUNDATION_CFSTREAM_H
#define COREFOUNDATION_CFSTREAM_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFURL.h>

typedef struct __CFReadStream* CFReadStreamRef;
typedef struct __CFWriteStream* CFWriteStreamRef;

typedef CFIndex CFStreamStatus;
enum {
  kCFStreamStatusNotOpen = 0,
  kCFStreamStatusOpening = 1,
  kCFStreamStatusOpen = 2,
  kCFStreamStatusReading = 3,
  kCFStreamStatusWriting = 4,
  kCFStreamStatusAtEnd = 5, /* nothing more can be read or written */
  kCFStreamStatusClosed = 6,
  kCFStreamStatusError = 7 /* for good; see the stream's error */
};

typedef CFIndex CFStreamErrorDomain;
enum { kCFStreamErrorDomainPOSIX = 1 /* the codes of <errno.h> */ };

typedef struct {
  CFStreamErrorDomain domain;
  SInt32 error; /* 0: none */
} CFStreamError;

EXTERN_API_BEGIN

/* Read from a write stream to memory: the bytes written so far, as data (a copy). */
extern const CFStringRef kCFStreamPropertyDataWritten;
/* Set to true on a write stream to a file before it is opened: the file keeps what it has. */
extern const CFStringRef kCFStreamPropertyAppendToFile;
/* Of an open stream of a file: a number, the offset of the next byte. May be set, to one that is
 * not negative. */
extern const CFStringRef kCFStreamPropertyFileCurrentOffset;

CFTypeID CFReadStreamGetTypeID(void);
CFTypeID CFWriteStreamGetTypeID(void);

/* The bytes are given back to the deallocator (null: the default allocator) with the stream; with
 * kCFAllocatorNull they stay the caller's and must outlive it. Where null is returned they stay the
 * caller's too. */
CFReadStreamRef CFReadStreamCreateWithBytesNoCopy(CFAllocatorRef allocator, const UInt8* bytes,
                                                  CFIndex length, CFAllocatorRef bytesDeallocator);
CFReadStreamRef CFReadStreamCreateWithFile(CFAllocatorRef allocator, CFURLRef fileURL);

/* Into the caller's memory, which must outlive the stream. */
CFWriteStreamRef CFWriteStreamCreateWithBuffer(CFAllocatorRef allocator, UInt8* buffer,
                                               CFIndex capacity);
/* Into memory of the allocator, as much as it takes. */
CFWriteStreamRef CFWriteStreamCreateWithAllocatedBuffers(CFAllocatorRef allocator,
                                                         CFAllocatorRef bufferAllocator);
/* The file is made, or emptied, when the stream is opened. */
CFWriteStreamRef CFWriteStreamCreateWithFile(CFAllocatorRef allocator, CFURLRef fileURL);

/* False if it fails, with the reason in the stream's error, or is not the first time. */
Boolean CFReadStreamOpen(CFReadStreamRef stream);
Boolean CFWriteStreamOpen(CFWriteStreamRef stream);
void CFReadStreamClose(CFReadStreamRef stream);
void CFWriteStreamClose(CFWriteStreamRef stream);
/* Of null: not open, no error. */
CFStreamStatus CFReadStreamGetStatus(CFReadStreamRef stream);
CFStreamStatus CFWriteStreamGetStatus(CFWriteStreamRef stream);
CFStreamError CFReadStreamGetError(CFReadStreamRef stream);
CFStreamError CFWriteStreamGetError(CFWriteStreamRef stream);

/* The number of bytes read, 0 only at the end, -1 if it fails. A stream of memory is at its end
 * when its last byte is read, one of a file when nothing was left to read. */
CFIndex CFReadStreamRead(CFReadStreamRef stream, UInt8* buffer, CFIndex bufferSize);
Boolean CFReadStreamHasBytesAvailable(CFReadStreamRef stream);
/* Bytes in the stream's own memory that count as read, valid until the next call; at most as many
 * as asked for (0: no limit). Null where the stream has no memory, and at the end. */
const UInt8* CFReadStreamGetBuffer(CFReadStreamRef stream, CFIndex maximum, CFIndex* readBytes);

/* The number of bytes written, which may be fewer than given, 0 when the caller's memory is full,
 * -1 if it fails. */
CFIndex CFWriteStreamWrite(CFWriteStreamRef stream, const UInt8* bytes, CFIndex length);
Boolean CFWriteStreamCanAcceptBytes(CFWriteStreamRef stream);

/* Null, or false, for a property that the stream has not got or cannot set. */
CFTypeRef CFReadStreamCopyProperty(CFReadStreamRef stream, CFStringRef name);
CFTypeRef CFWriteStreamCopyProperty(CFWriteStreamRef stream, CFStringRef name);
Boolean CFReadStreamSetProperty(CFReadStreamRef stream, CFStringRef name, CFTypeRef value);
Boolean CFWriteStreamSetProperty(CFWriteStreamRef stream, CFStringRef name, CFTypeRef value);

EXTERN_API_END

#endif
