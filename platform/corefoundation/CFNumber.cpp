// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>

#include <charconv>

#include "platform/corefoundation/CFRuntime.h"
#include "platform/corefoundation/NumberValue.h"

namespace platform::corefoundation {

namespace {

class Number final : public Object {
 public:
  static CFTypeID type() {
    static const CFTypeID id = registerType("CFNumber");
    return id;
  }

  Number(CFNumberType storedType, const NumberValue& content) : fixed(storedType), value(content) {}

  CFTypeID typeID() const override { return type(); }
  bool equals(const Object& other) const override {
    return value.compare(static_cast<const Number&>(other).value) == kCFCompareEqualTo;
  }
  CFHashCode hash() const override { return value.hash(); }
  CFStringRef copyDescription() const override {
    return CFStringCreateWithFormat(nullptr, nullptr,
                                    CFSTR("<CFNumber %p [%p]>{value = %@, type = %s}"), this,
                                    allocator(), this, typeCodeName(fixed));
  }
  CFStringRef copyFormatted() const override;

  const CFNumberType fixed;
  const NumberValue value;
};

// The fewest digits that give the value back.
CFStringRef Number::copyFormatted() const {
  char text[40] = {};
  char* const end = text + sizeof text - 1;
  if (!value.isFloat()) {
    std::to_chars(text, end, value.asInteger());
  } else if (fixed == kCFNumberFloat32Type) {
    std::to_chars(text, end, static_cast<Float32>(value.asReal()));
  } else {
    std::to_chars(text, end, value.asReal());
  }
  return CFStringCreateWithCString(nullptr, text, kCFStringEncodingASCII);
}

const Number* numberOf(CFNumberRef reference) { return checkedObject<Number>(reference); }

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFTypeID CFNumberGetTypeID(void) { return Number::type(); }

CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value) {
  const std::optional<CFNumberType> fixed = fixedType(type);
  if (!fixed || value == nullptr) return nullptr;
  return referenceTo<CFNumberRef>(
      create<Number>(allocator, *fixed, NumberValue::load(*fixed, value)));
}

CFNumberType CFNumberGetType(CFNumberRef number) {
  const Number* object = numberOf(number);
  return object != nullptr ? object->fixed : CFNumberType{};
}

CFIndex CFNumberGetByteSize(CFNumberRef number) {
  const Number* object = numberOf(number);
  return object != nullptr ? byteSize(object->fixed) : 0;
}

Boolean CFNumberIsFloatType(CFNumberRef number) {
  const Number* object = numberOf(number);
  return object != nullptr && object->value.isFloat();
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
  const Number* object = numberOf(number);
  const std::optional<CFNumberType> fixed = fixedType(type);
  if (object == nullptr || !fixed || value == nullptr) return false;
  return object->value.store(*fixed, value);
}

CFComparisonResult CFNumberCompare(CFNumberRef a, CFNumberRef b, void*) {
  const Number* first = numberOf(a);
  const Number* second = numberOf(b);
  if (first != nullptr && second != nullptr) return first->value.compare(second->value);
  if ((first == nullptr) == (second == nullptr)) return kCFCompareEqualTo;
  return first == nullptr ? kCFCompareLessThan : kCFCompareGreaterThan;
}
