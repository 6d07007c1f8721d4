// Licence: MIT, see LICENSE.
/// Bytes for a person to read. Both calls return the buffer, take a count below 0 for 0 and do
/// nothing without a source or a buffer. Any thread.
#ifndef QUORVANT_UTIL_BYTEDUMPS_H
#define QUORVANT_UTIL_BYTEDUMPS_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>

/// Flags: whether a terminating zero follows. The two calls have different ones.
enum { kHexDumpTerminate = 2, kASCIICharDumpTerminate = 1 };

/// Writes that many upper-case hexadecimal digits of the bytes in the order in which they stand.
/// The source may be read up to the end of the four bytes that the last digit is in.
QRL_EXPORT char* HexDump(const void* source, char* buffer, int digits, UInt32 flags);

/// Copies that many bytes, with a full stop for each that is not printable ASCII.
QRL_EXPORT char* ASCIICharDump(const void* source, char* buffer, int count, UInt32 flags);

#endif
