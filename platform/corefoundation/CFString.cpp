// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <cstring>

#include "platform/corefoundation/StringObject.h"

namespace platform::corefoundation {

namespace {

// FNV-1a over UTF-16 units, so that it does not depend on the storage.
constexpr bool kIs64Bit = sizeof(CFHashCode) == 8;
constexpr CFHashCode kHashBasis =
    static_cast<CFHashCode>(kIs64Bit ? 14695981039346656037U : 2166136261U);
constexpr CFHashCode kHashPrime = static_cast<CFHashCode>(kIs64Bit ? 1099511628211U : 16777619U);

CFHashCode hashOf(const TextView& text) {
  CFHashCode hash = kHashBasis;
  for (CFIndex i = 0; i < text.length; ++i) hash = (hash ^ text[i]) * kHashPrime;
  return hash;
}

TextView part(const TextView& text, CFRange range) {
  TextView view{nullptr, nullptr, range.length};
  if (text.wide != nullptr) view.wide = text.wide + range.location;
  if (text.narrow != nullptr) view.narrow = text.narrow + range.location;
  return view;
}

}  // namespace

void TextView::copyTo(UniChar* to, CFRange range) const {
  for (CFIndex i = 0; i < range.length; ++i) to[i] = (*this)[range.location + i];
}

bool operator==(const TextView& a, const TextView& b) {
  if (a.length != b.length) return false;
  if (a.wide == nullptr && b.wide == nullptr) return std::ranges::equal(a.bytes(), b.bytes());
  if (a.wide != nullptr && b.wide != nullptr) return std::ranges::equal(a.units(), b.units());
  for (CFIndex i = 0; i < a.length; ++i) {
    if (a[i] != b[i]) return false;
  }
  return true;
}

String::String(Width width, CFIndex length) {
  content.length = length;
  if (width == Width::kNarrow) {
    content.narrow = narrowSpace();
  } else {
    content.wide = wideSpace();
  }
}

String* String::withSpace(CFAllocatorRef allocator, Width width, CFIndex length) {
  if (!isPossibleLength(length)) return nullptr;
  const std::size_t unit = width == Width::kNarrow ? 1 : sizeof(UniChar);
  return createWithSpace<String>(allocator, unit * static_cast<std::size_t>(length), width, length);
}

String* String::ofBytes(CFAllocatorRef allocator, Bytes text) {
  String* made = withSpace(allocator, Width::kNarrow, static_cast<CFIndex>(text.size()));
  if (made != nullptr) std::ranges::copy(text, made->narrowSpace());
  return made;
}

String* String::ofUnits(CFAllocatorRef allocator, Units text) {
  const Width width = isASCII(text) ? Width::kNarrow : Width::kWide;
  String* made = withSpace(allocator, width, static_cast<CFIndex>(text.size()));
  if (made == nullptr) return nullptr;
  if (width == Width::kNarrow) {
    std::ranges::transform(text, made->narrowSpace(),
                           [](UniChar unit) { return static_cast<UInt8>(unit); });
  } else {
    std::ranges::copy(text, made->wideSpace());
  }
  return made;
}

String* String::ofView(CFAllocatorRef allocator, const TextView& text) {
  return text.wide != nullptr ? ofUnits(allocator, text.units()) : ofBytes(allocator, text.bytes());
}

String* String::decoding(CFAllocatorRef allocator, Bytes text, CFStringEncoding encoding) {
  if (encoding == kCFStringEncodingMacRoman || (isByteEncoding(encoding) && isASCII(text))) {
    return ofBytes(allocator, text);
  }
  const std::optional<CFIndex> length = decodedLength(text, encoding);
  if (!length) return nullptr;
  String* made = withSpace(allocator, Width::kWide, *length);
  if (made != nullptr) decode(text, encoding, made->wideSpace());
  return made;
}

bool String::equals(const Object& other) const {
  return content == static_cast<const String&>(other).content;
}

CFHashCode String::hash() const {
  if (isMutable()) return hashOf(content);
  CFHashCode hash = knownHash.load(std::memory_order_relaxed);
  if (hash != 0) return hash;
  hash = hashOf(content);
  knownHash.store(hash, std::memory_order_relaxed);
  return hash;
}

CFStringRef String::copyDescription() const {
  return CFStringCreateWithFormat(nullptr, nullptr, CFSTR("<CFString %p [%p]>{contents = \"%@\"}"),
                                  this, allocator(), this);
}

CFStringRef String::copyFormatted() const {
  return CFStringCreateCopy(nullptr, referenceTo<CFStringRef>(this));
}

Bytes bytesOf(const char* text) {
  return {reinterpret_cast<const UInt8*>(text), std::strlen(text)};
}

Bytes bytesOf(ConstStr255Param text) { return {text + 1, text[0]}; }

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFTypeID CFStringGetTypeID(void) { return String::type(); }

CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text,
                                      CFStringEncoding encoding) {
  if (text == nullptr || !isByteEncoding(encoding)) return nullptr;
  return referenceTo<CFStringRef>(String::decoding(allocator, bytesOf(text), encoding));
}

CFStringRef CFStringCreateWithPascalString(CFAllocatorRef allocator, ConstStr255Param text,
                                           CFStringEncoding encoding) {
  if (text == nullptr || !isByteEncoding(encoding)) return nullptr;
  return referenceTo<CFStringRef>(String::decoding(allocator, bytesOf(text), encoding));
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* characters,
                                         CFIndex count) {
  if (!String::isPossibleLength(count) || (characters == nullptr && count > 0)) return nullptr;
  return referenceTo<CFStringRef>(
      String::ofUnits(allocator, {characters, static_cast<std::size_t>(count)}));
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation) {
  if (!String::isPossibleLength(count) || (bytes == nullptr && count > 0)) return nullptr;
  Bytes text(bytes, static_cast<std::size_t>(count));
  if (isExternalRepresentation) encoding = takeByteOrderMark(text, encoding);
  return referenceTo<CFStringRef>(String::decoding(allocator, text, encoding));
}

CFStringRef CFStringCreateCopy(CFAllocatorRef allocator, CFStringRef string) {
  const String* original = stringOf(string);
  if (original == nullptr) return nullptr;
  if (allocator == nullptr) allocator = CFAllocatorGetDefault();
  if (!original->isMutable() && original->allocator() == allocator) {
    CFRetain(string);
    return string;
  }
  return referenceTo<CFStringRef>(String::ofView(allocator, original->text()));
}

CFStringRef CFStringCreateWithSubstring(CFAllocatorRef allocator, CFStringRef string,
                                        CFRange range) {
  const String* original = stringOf(string);
  if (original == nullptr || !isWithin(range, original->text().length)) return nullptr;
  return referenceTo<CFStringRef>(String::ofView(allocator, part(original->text(), range)));
}

CFIndex CFStringGetLength(CFStringRef string) {
  const String* object = stringOf(string);
  return object != nullptr ? object->text().length : 0;
}

UniChar CFStringGetCharacterAtIndex(CFStringRef string, CFIndex index) {
  const String* object = stringOf(string);
  if (object == nullptr || index < 0 || index >= object->text().length) return 0;
  return object->text()[index];
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) {
  const String* object = stringOf(string);
  if (object == nullptr || buffer == nullptr || !isWithin(range, object->text().length)) return;
  object->text().copyTo(buffer, range);
}
