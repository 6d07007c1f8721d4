// Licence: MIT, see LICENSE.
// Text of a string in other encodings.
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <array>
#include <limits>

#include "platform/corefoundation/StringObject.h"

namespace platform::corefoundation {

namespace {

constexpr CFIndex kLongestPascalString = 255;

// Bytes that are stored while they fit, or only counted where there is no buffer.
class ByteSink {
 public:
  ByteSink(UInt8* buffer, CFIndex size) : bytes(buffer), room(size) {}

  bool put(const UInt8* source, CFIndex count) {
    if (bytes != nullptr) {
      if (count > room - used) return false;
      std::copy_n(source, count, bytes + used);
    }
    used += count;
    return true;
  }
  CFIndex count() const { return used; }

 private:
  UInt8* bytes;
  CFIndex room;
  CFIndex used = 0;
};

// The first character of the text from an index on, looking at no unit past `end`.
EncodedCharacter encodeAt(const TextView& text, CFIndex index, CFIndex end,
                          CFStringEncoding encoding) {
  const std::array<UniChar, 2> units = {text[index], index + 1 < end ? text[index + 1] : UniChar{}};
  return encodeFirst(Units(units).first(index + 1 < end ? 2 : 1), encoding);
}

bool putByteOrderMark(ByteSink& sink) {
  const UniChar mark[] = {0xFEFF};
  const EncodedCharacter made = encodeFirst(mark, kCFStringEncodingUnicode);
  return sink.put(made.bytes, made.size);
}

// How many units of the range were taken.
CFIndex encodeRange(const TextView& text, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                    ByteSink& sink) {
  const CFIndex end = range.location + range.length;
  CFIndex index = range.location;
  while (index < end) {
    EncodedCharacter made = encodeAt(text, index, end, encoding);
    if (made.size == 0) {
      if (lossByte == 0) break;
      made.bytes[0] = lossByte;
      made.size = 1;
    }
    if (!sink.put(made.bytes, made.size)) break;
    index += made.units;
  }
  return index - range.location;
}

// The whole text, or nothing: the number of bytes made, kNone if there is something wrong.
constexpr CFIndex kNone = -1;
CFIndex encodeWhole(CFStringRef string, CFStringEncoding encoding, UInt8* buffer, CFIndex room) {
  const String* object = stringOf(string);
  if (object == nullptr || !isByteEncoding(encoding)) return kNone;
  const TextView& text = object->text();
  ByteSink sink(buffer, room);
  const CFIndex taken = encodeRange(text, {0, text.length}, encoding, 0, sink);
  return taken == text.length ? sink.count() : kNone;
}

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding) {
  if (buffer == nullptr || bufferSize <= 0) return false;
  const CFIndex made =
      encodeWhole(string, encoding, reinterpret_cast<UInt8*>(buffer), bufferSize - 1);
  buffer[made == kNone ? 0 : made] = '\0';
  return made != kNone;
}

Boolean CFStringGetPascalString(CFStringRef string, StringPtr buffer, CFIndex bufferSize,
                                CFStringEncoding encoding) {
  if (buffer == nullptr || bufferSize <= 0) return false;
  const CFIndex room = std::min(bufferSize - 1, kLongestPascalString);
  const CFIndex made = encodeWhole(string, encoding, buffer + 1, room);
  buffer[0] = static_cast<UInt8>(made == kNone ? 0 : made);
  return made != kNone;
}

CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding,
                         UInt8 lossByte, Boolean isExternalRepresentation, UInt8* buffer,
                         CFIndex bufferSize, CFIndex* usedBytes) {
  if (usedBytes != nullptr) *usedBytes = 0;
  const String* object = stringOf(string);
  if (object == nullptr || !isKnownEncoding(encoding)) return 0;
  if (!isWithin(range, object->text().length) || (buffer != nullptr && bufferSize < 0)) return 0;
  ByteSink sink(buffer, bufferSize);
  if (isExternalRepresentation && encoding == kCFStringEncodingUnicode && range.length > 0) {
    if (!putByteOrderMark(sink)) return 0;
  }
  const CFIndex taken = encodeRange(object->text(), range, encoding, lossByte, sink);
  if (usedBytes != nullptr) *usedBytes = sink.count();
  return taken;
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
  const CFIndex each = bytesPerUnit(encoding);
  if (each == 0 || length < 0 || length > std::numeric_limits<CFIndex>::max() / each) {
    return kCFNotFound;
  }
  return length * each;
}
