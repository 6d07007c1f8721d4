// Licence: MIT, see LICENSE.
// Text in bytes to UTF-16 and back. Decoding is strict: text is valid as a whole or not at all.
#ifndef PLATFORM_COREFOUNDATION_STRINGENCODINGS_H
#define PLATFORM_COREFOUNDATION_STRINGENCODINGS_H

#include <CoreFoundation/CFString.h>

#include <optional>
#include <span>

namespace platform::corefoundation {

using Bytes = std::span<const UInt8>;
using Units = std::span<const UniChar>;

/// Whether text of this encoding can be converted at all.
bool isKnownEncoding(CFStringEncoding encoding);
/// Whether it consists of single bytes and ASCII is itself in it.
bool isByteEncoding(CFStringEncoding encoding);
/// The most bytes that one UTF-16 unit takes, 0 for an unknown encoding.
CFIndex bytesPerUnit(CFStringEncoding encoding);

bool isASCII(Bytes bytes);
bool isASCII(Units units);

/// Takes a byte order mark off the front of the bytes. Gives the encoding that it or, where there
/// is none, the outer world's convention says.
CFStringEncoding takeByteOrderMark(Bytes& bytes, CFStringEncoding encoding);

/// The number of UTF-16 units that the bytes stand for; nothing if they are not valid.
std::optional<CFIndex> decodedLength(Bytes bytes, CFStringEncoding encoding);
/// Decodes bytes whose length decodedLength has found, into that many units.
void decode(Bytes bytes, CFStringEncoding encoding, UniChar* units);

/// The first character of a text in another encoding.
struct EncodedCharacter {
  UInt8 bytes[4] = {};
  CFIndex size = 0;   // of the bytes; 0 if the encoding lacks the character
  CFIndex units = 1;  // that the character has in UTF-16
};
EncodedCharacter encodeFirst(Units text, CFStringEncoding encoding);

}  // namespace platform::corefoundation

#endif
