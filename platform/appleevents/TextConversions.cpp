// Licence: MIT, see LICENSE.
// Texts in all forms, by way of UTF-16. Nothing is lost on the way: a character that a form lacks
// makes the conversion fail.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "platform/appleevents/ByteOrder.h"
#include "platform/appleevents/Coercion.h"
#include "platform/appleevents/Conversions.h"
#include "platform/appleevents/Items.h"
#include "platform/corefoundation/StringEncodings.h"

namespace platform::appleevents {
namespace {

namespace encodings = platform::corefoundation;

constexpr std::size_t kLongestPString = 255;
constexpr UniChar kByteOrderMark = 0xFEFF;
constexpr UniChar kReversedMark = 0xFFFE;  // no character

encodings::Bytes octets(Bytes bytes) {
  return {reinterpret_cast<const UInt8*>(bytes.data()), bytes.size()};
}

/// Text without what a form has around it.
struct EncodedText {
  encodings::Bytes bytes;
  CFStringEncoding encoding;
};

using MaybeText = std::optional<EncodedText>;

EncodedText withoutMark(Bytes data, CFStringEncoding encoding) {
  encodings::Bytes bytes = octets(data);
  encoding = encodings::takeByteOrderMark(bytes, encoding);
  return {bytes, encoding};
}

/// UTF-16 is in the host's order unless a mark at its beginning says otherwise.
EncodedText hostUnicode(Bytes data) {
  UInt16 first = 0;
  if (data.size() >= sizeof first) std::memcpy(&first, data.data(), sizeof first);
  if (first == kByteOrderMark || first == kReversedMark)
    return withoutMark(data, kCFStringEncodingUnicode);
  return {octets(data), std::endian::native == std::endian::big ? kCFStringEncodingUTF16BE
                                                                : kCFStringEncodingUTF16LE};
}

MaybeText pascalText(Bytes data) {
  if (data.empty()) return std::nullopt;
  const auto length = std::to_integer<std::size_t>(data[0]);
  if (length > data.size() - 1) return std::nullopt;
  return EncodedText{octets(data.subspan(1, length)), kCFStringEncodingMacRoman};
}

MaybeText taggedText(Bytes data) {
  if (data.size() < kWord) return std::nullopt;
  return withoutMark(data.subspan(kWord), loadWord(data.data()));
}

MaybeText encodedText(const Source& from) {
  switch (from.type) {
    case typeCString: {
      const auto length = std::ranges::find(from.data, std::byte{0}) - from.data.begin();
      return EncodedText{octets(from.data.first(static_cast<std::size_t>(length))),
                         kCFStringEncodingMacRoman};
    }
    case typePString:
      return pascalText(from.data);
    case typeEncodedString:
      return taggedText(from.data);
    case typeUnicodeText:
    case typeStyledUnicodeText:
      return hostUnicode(from.data);
    case typeUTF16ExternalRepresentation:
      return withoutMark(from.data, kCFStringEncodingUnicode);
    case typeUTF8Text:
      return withoutMark(from.data, kCFStringEncodingUTF8);
    default:
      return EncodedText{octets(from.data), kCFStringEncodingMacRoman};
  }
}

/// A text's UTF-16 units.
class Characters final {
 public:
  OSErr decode(const Source& from) {
    const MaybeText text = encodedText(from);
    if (!text) return errAECoercionFail;
    const auto length = encodings::decodedLength(text->bytes, text->encoding);
    if (!length) return errAECoercionFail;
    storage = Storage::make(static_cast<std::size_t>(*length) * sizeof(UniChar));
    if (storage == nullptr) return memFullErr;
    encodings::decode(text->bytes, text->encoding,
                      reinterpret_cast<UniChar*>(storage->writable().data()));
    return noErr;
  }

  /// Without marks, of which there may be more than one: they are no characters in front of a text.
  encodings::Units units() const {
    const Bytes bytes = storage->bytes();
    encodings::Units all(reinterpret_cast<const UniChar*>(bytes.data()),
                         bytes.size() / sizeof(UniChar));
    while (!all.empty() && all[0] == kByteOrderMark) all = all.subspan(1);
    return all;
  }

 private:
  std::unique_ptr<Storage> storage;
};

/// Hands the units' bytes in an encoding out, character by character. False if it lacks one.
template <typename Visit>
bool encode(encodings::Units units, CFStringEncoding encoding, Visit visit) {
  while (!units.empty()) {
    const encodings::EncodedCharacter made = encodings::encodeFirst(units, encoding);
    if (made.size == 0) return false;
    visit(std::as_bytes(std::span(made.bytes)).first(static_cast<std::size_t>(made.size)));
    units = units.subspan(static_cast<std::size_t>(made.units));
  }
  return true;
}

std::optional<std::size_t> encodedSize(encodings::Units units, CFStringEncoding encoding) {
  std::size_t size = 0;
  if (!encode(units, encoding, [&](Bytes bytes) { size += bytes.size(); })) return std::nullopt;
  return size;
}

/// What a form has around its text.
struct Frame {
  std::size_t before = 0;
  std::size_t after = 0;
};

OSErr makeText(encodings::Units units, CFStringEncoding encoding, Frame frame, DescType type,
               AEDesc* result) {
  const std::optional<std::size_t> size = encodedSize(units, encoding);
  if (!size) return errAECoercionFail;
  if (type == typePString && *size > kLongestPString) return errAECoercionFail;
  std::unique_ptr<Storage> storage = Storage::make(frame.before + *size + frame.after);
  if (storage == nullptr) return memFullErr;
  const WritableBytes room = storage->writable();
  auto at = room.begin() + static_cast<std::ptrdiff_t>(frame.before);
  encode(units, encoding, [&](Bytes bytes) { at = std::ranges::copy(bytes, at).out; });
  std::fill(at, room.end(), std::byte{0});
  if (type == typePString) room[0] = static_cast<std::byte>(*size);
  if (type == typeEncodedString) storeWord(room.data(), encoding);
  *result = {type, storage.release()};
  return noErr;
}

/// In front of UTF-16 it would turn all that follows round.
bool beginsWithReversedMark(encodings::Units units) {
  return !units.empty() && units[0] == kReversedMark;
}

OSErr makeText(encodings::Units units, DescType toType, AEDesc* result) {
  switch (toType) {
    case typeCString:
      if (std::ranges::find(units, UniChar{0}) != units.end()) return errAECoercionFail;
      return makeText(units, kCFStringEncodingMacRoman, {.after = 1}, toType, result);
    case typePString:
      return makeText(units, kCFStringEncodingMacRoman, {.before = 1}, toType, result);
    case typeEncodedString: {
      const CFStringEncoding encoding = encodedSize(units, kCFStringEncodingMacRoman)
                                            ? kCFStringEncodingMacRoman
                                            : kCFStringEncodingUTF8;
      return makeText(units, encoding, {.before = kWord}, toType, result);
    }
    case typeUnicodeText:
    case typeStyledUnicodeText:
      if (beginsWithReversedMark(units)) return errAECoercionFail;
      return makeText(units, kCFStringEncodingUnicode, {}, toType, result);
    case typeUTF16ExternalRepresentation:
      if (beginsWithReversedMark(units)) return errAECoercionFail;
      return makeText(units, kCFStringEncodingUTF16BE, {}, toType, result);
    case typeUTF8Text:
      return makeText(units, kCFStringEncodingUTF8, {}, toType, result);
    default:
      return makeText(units, kCFStringEncodingMacRoman, {}, toType, result);
  }
}

}  // namespace

bool isText(DescType type) {
  constexpr std::array<DescType, 8> kTexts = {
      typeChar,        typeCString,           typePString,  typeEncodedString,
      typeUnicodeText, typeStyledUnicodeText, typeUTF8Text, typeUTF16ExternalRepresentation};
  return std::ranges::find(kTexts, type) != kTexts.end();
}

OSErr textToText(const Source& from, DescType toType, AEDesc* result) {
  Characters characters;
  const OSErr status = characters.decode(from);
  return status == noErr ? makeText(characters.units(), toType, result) : status;
}

}  // namespace platform::appleevents
