// Licence: MIT, see LICENSE.
// The value of a number: an integer of up to 64 bits or a floating-point value, and how it is
// turned into each type.
#ifndef PLATFORM_COREFOUNDATION_NUMBERVALUE_H
#define PLATFORM_COREFOUNDATION_NUMBERVALUE_H

#include <CoreFoundation/CFNumber.h>

#include <optional>

namespace platform::corefoundation {

/// The type of fixed width that a type stands for on this host; nothing for an unknown code.
std::optional<CFNumberType> fixedType(CFNumberType type);
/// Of a type of fixed width.
CFIndex byteSize(CFNumberType fixed);
bool isFloatType(CFNumberType fixed);
const char* typeCodeName(CFNumberType fixed);

class NumberValue {
 public:
  static NumberValue load(CFNumberType fixed, const void* from);

  /// Stores the nearest value that the type holds; whether it is the exact one.
  bool store(CFNumberType fixed, void* to) const;
  CFComparisonResult compare(const NumberValue& other) const;
  /// The same for equal values, integer or not.
  CFHashCode hash() const;

  bool isFloat() const { return isReal; }
  SInt64 asInteger() const { return integer; }
  double asReal() const { return real; }

 private:
  template <typename T>
  bool storeInteger(void* to) const;
  template <typename T>
  bool storeReal(void* to) const;

  bool isReal = false;
  SInt64 integer = 0;
  double real = 0;
};

}  // namespace platform::corefoundation

#endif
