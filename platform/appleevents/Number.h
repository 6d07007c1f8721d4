// Licence: MIT, see LICENSE.
// The numeric types of descriptors, and a number that holds any of their values.
#ifndef PLATFORM_APPLEEVENTS_NUMBER_H
#define PLATFORM_APPLEEVENTS_NUMBER_H

#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "platform/appleevents/Storage.h"

namespace platform::appleevents {

/// A whole number as sign and magnitude, or a real one.
struct Number {
  enum class Form { kWhole, kSingle, kDouble };

  Form form;
  bool isNegative;  // these two of a whole number
  UInt64 magnitude;
  Float64 real;  // of the others

  static Number ofUnsigned(UInt64 value) { return {Form::kWhole, false, value, 0}; }
  static Number ofSigned(SInt64 value);
  static Number ofSingle(Float32 value) { return {Form::kSingle, false, 0, value}; }
  static Number ofDouble(Float64 value) { return {Form::kDouble, false, 0, value}; }
};

/// A number's bytes in the host's order.
struct NumberBytes {
  std::array<std::byte, 8> storage;
  std::size_t size;
  Bytes bytes() const { return {storage.data(), size}; }
};

bool isNumber(DescType type);

/// Nothing unless the data is exactly one number of the type.
std::optional<Number> loadNumber(DescType type, Bytes data);

/// False if the value does not fit the type. A real becomes the nearest whole number where one is
/// asked for, the even one of two.
bool storeNumber(const Number& number, DescType type, NumberBytes& bytes);

/// The number that a text is, with blanks around it allowed; nothing if it is none.
std::optional<Number> parseNumber(std::string_view text);

/// The shortest text that reads back as the number.
inline constexpr std::size_t kLongestNumber = 32;
std::string_view formatNumber(const Number& number, std::span<char, kLongestNumber> text);

}  // namespace platform::appleevents

#endif
