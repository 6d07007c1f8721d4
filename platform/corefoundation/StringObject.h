// Licence: MIT, see LICENSE.
// What a CFStringRef points to. Immutable text is stored behind the object, in MacRoman (ASCII
// included) or in UTF-16; mutable text in UTF-16 in a buffer of its own.
#ifndef PLATFORM_COREFOUNDATION_STRINGOBJECT_H
#define PLATFORM_COREFOUNDATION_STRINGOBJECT_H

#include <CoreFoundation/CFString.h>

#include <limits>

#include "platform/corefoundation/CFRuntime.h"
#include "platform/corefoundation/GrowingBuffer.h"
#include "platform/corefoundation/StringEncodings.h"
#include "platform/text/MacRoman.h"

namespace platform::corefoundation {

/// Text in either storage; exactly one of the pointers is used.
struct TextView {
  const UInt8* narrow = nullptr;
  const UniChar* wide = nullptr;
  CFIndex length = 0;

  UniChar operator[](CFIndex index) const {
    return wide != nullptr ? wide[index] : platform::text::fromMacRoman(narrow[index]);
  }
  Bytes bytes() const { return {narrow, static_cast<std::size_t>(length)}; }
  Units units() const { return {wide, static_cast<std::size_t>(length)}; }
  void copyTo(UniChar* to, CFRange range) const;
};

bool operator==(const TextView& a, const TextView& b);

class String : public Object {
 public:
  static CFTypeID type() {
    static const CFTypeID id = registerType("CFString");
    return id;
  }
  /// Whether text can have so many bytes or units at all, before any of them is looked at.
  static bool isPossibleLength(CFIndex length) {
    return length >= 0 && length <= std::numeric_limits<CFIndex>::max() / 4;
  }
  /// Text of MacRoman.
  static String* ofBytes(CFAllocatorRef allocator, Bytes text);
  static String* ofUnits(CFAllocatorRef allocator, Units text);
  static String* ofView(CFAllocatorRef allocator, const TextView& text);
  /// Text of any encoding, null if it is not valid.
  static String* decoding(CFAllocatorRef allocator, Bytes text, CFStringEncoding encoding);

  CFTypeID typeID() const final { return type(); }
  bool equals(const Object& other) const final;
  CFHashCode hash() const final;
  CFStringRef copyDescription() const final;
  CFStringRef copyFormatted() const final;

  virtual bool isMutable() const { return false; }
  const TextView& text() const { return content; }

 protected:
  enum class Width { kNarrow, kWide };

  String() = default;
  String(Width width, CFIndex length);

  TextView content;

 private:
  template <typename T, typename... Arguments>
  friend T* createWithSpace(CFAllocatorRef allocator, std::size_t space, Arguments&&... arguments);

  static String* withSpace(CFAllocatorRef allocator, Width width, CFIndex length);
  UInt8* narrowSpace() { return reinterpret_cast<UInt8*>(this + 1); }
  UniChar* wideSpace() { return reinterpret_cast<UniChar*>(this + 1); }

  mutable std::atomic<CFHashCode> knownHash{0};  // of immutable text; 0: not yet known
};

class MutableString final : public String {
 public:
  explicit MutableString(CFIndex maximumLength) : limit(maximumLength) { content.wide = kEmpty; }
  /// Shares the text of an immutable string until it is changed.
  explicit MutableString(Held<CFStringRef> original) : limit(0), shared(std::move(original)) {
    content = objectOf<String>(shared.get())->text();
  }
  ~MutableString() override { units.release(allocator()); }

  bool isMutable() const override { return true; }
  /// Nothing is appended if it does not fit or there is no memory; then it answers false.
  bool append(const TextView& text);
  bool append(Bytes text, CFStringEncoding encoding);

 private:
  static constexpr UniChar kEmpty[1] = {};

  // Has text of its own from now on.
  bool stopSharing();
  // Room for so many more units at the end, or null.
  UniChar* extend(const UniChar* source, CFIndex added);

  const CFIndex limit;
  Held<CFStringRef> shared;
  GrowingBuffer<UniChar> units;
};

inline String* stringOf(CFStringRef reference) { return checkedObject<String>(reference); }
/// Null for what is not mutable text.
inline MutableString* mutableStringOf(CFMutableStringRef reference) {
  String* string = stringOf(reference);
  return string != nullptr && string->isMutable() ? static_cast<MutableString*>(string) : nullptr;
}

/// A C or Pascal string's bytes.
Bytes bytesOf(const char* text);
Bytes bytesOf(ConstStr255Param text);

}  // namespace platform::corefoundation

#endif
