// Licence: MIT, see LICENSE.
// Text that can be appended to.
#include <CoreFoundation/CFString.h>

#include "platform/corefoundation/MutableSharing.h"
#include "platform/corefoundation/StringObject.h"

namespace platform::corefoundation {

bool MutableString::stopSharing() {
  if (!shared) return true;
  const CFIndex length = content.length;
  if (!units.append(allocator(), nullptr, length)) return false;
  if (length > 0) content.copyTo(units.data(), {0, length});
  content = {nullptr, length > 0 ? units.data() : kEmpty, length};
  shared = Held<CFStringRef>();
  return true;
}

UniChar* MutableString::extend(const UniChar* source, CFIndex added) {
  const CFIndex before = units.size();
  if (limit > 0 && added > limit - before) return nullptr;
  if (!units.append(allocator(), source, added)) return nullptr;
  if (units.data() != nullptr) content.wide = units.data();
  content.length = units.size();
  return units.data() + before;
}

bool MutableString::append(const TextView& text) {
  if (text.length == 0) return true;
  if (!stopSharing()) return false;
  if (text.wide != nullptr) return extend(text.wide, text.length) != nullptr;
  UniChar* room = extend(nullptr, text.length);
  if (room != nullptr) text.copyTo(room, {0, text.length});
  return room != nullptr;
}

bool MutableString::append(Bytes text, CFStringEncoding encoding) {
  const std::optional<CFIndex> length = decodedLength(text, encoding);
  if (!length) return false;
  if (*length == 0) return true;
  if (!stopSharing()) return false;
  UniChar* room = extend(nullptr, *length);
  if (room != nullptr) decode(text, encoding, room);
  return room != nullptr;
}

CFMutableStringRef createMutableSharing(CFAllocatorRef allocator, Held<CFStringRef> string) {
  return referenceTo<CFMutableStringRef>(create<MutableString>(allocator, std::move(string)));
}

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFMutableStringRef CFStringCreateMutable(CFAllocatorRef allocator, CFIndex maximumLength) {
  if (maximumLength < 0) return nullptr;
  return referenceTo<CFMutableStringRef>(create<MutableString>(allocator, maximumLength));
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef allocator, CFIndex maximumLength,
                                             CFStringRef string) {
  const String* original = stringOf(string);
  if (original == nullptr || maximumLength < 0) return nullptr;
  Held<CFStringRef> made(CFStringCreateMutable(allocator, maximumLength));
  if (!made) return nullptr;
  MutableString* copy = objectOf<MutableString>(made.get());
  return copy->append(original->text()) ? const_cast<CFMutableStringRef>(made.take()) : nullptr;
}

void CFStringAppend(CFMutableStringRef string, CFStringRef appended) {
  MutableString* object = mutableStringOf(string);
  const String* other = stringOf(appended);
  if (object != nullptr && other != nullptr) object->append(other->text());
}

void CFStringAppendCharacters(CFMutableStringRef string, const UniChar* characters, CFIndex count) {
  MutableString* object = mutableStringOf(string);
  if (object != nullptr && characters != nullptr && count > 0) {
    object->append(TextView{nullptr, characters, count});
  }
}

void CFStringAppendCString(CFMutableStringRef string, const char* text, CFStringEncoding encoding) {
  MutableString* object = mutableStringOf(string);
  if (object != nullptr && text != nullptr && isByteEncoding(encoding)) {
    object->append(bytesOf(text), encoding);
  }
}

void CFStringAppendPascalString(CFMutableStringRef string, ConstStr255Param text,
                                CFStringEncoding encoding) {
  MutableString* object = mutableStringOf(string);
  if (object != nullptr && text != nullptr && isByteEncoding(encoding)) {
    object->append(bytesOf(text), encoding);
  }
}
