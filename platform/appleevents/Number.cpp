// Licence: MIT, see LICENSE.
#include "platform/appleevents/Number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace platform::appleevents {
namespace {

enum class Kind { kSigned, kUnsigned, kReal };

struct NumberType {
  DescType type;
  Kind kind;
  std::size_t size;
};
constexpr NumberType kNumberTypes[] = {
    {typeSInt16, Kind::kSigned, 2},
    {typeUInt16, Kind::kUnsigned, 2},
    {typeSInt32, Kind::kSigned, 4},
    {typeUInt32, Kind::kUnsigned, 4},
    {typeSInt64, Kind::kSigned, 8},
    {typeUInt64, Kind::kUnsigned, 8},
    {typeIEEE32BitFloatingPoint, Kind::kReal, 4},
    {typeIEEE64BitFloatingPoint, Kind::kReal, 8},
};

const NumberType* numberType(DescType type) {
  const auto* found = std::ranges::find(kNumberTypes, type, &NumberType::type);
  return found == std::end(kNumberTypes) ? nullptr : found;
}

template <typename T>
T load(Bytes data) {
  T value;
  std::memcpy(&value, data.data(), sizeof value);
  return value;
}

template <typename T>
bool store(T value, NumberBytes& bytes) {
  std::memcpy(bytes.storage.data(), &value, sizeof value);
  bytes.size = sizeof value;
  return true;
}

template <typename T>
bool storeWhole(const Number& whole, NumberBytes& bytes) {
  const UInt64 highest = static_cast<UInt64>(std::numeric_limits<T>::max());
  if (!whole.isNegative) {
    return whole.magnitude <= highest && store(static_cast<T>(whole.magnitude), bytes);
  }
  const UInt64 lowest = std::numeric_limits<T>::is_signed ? highest + 1 : 0;
  return whole.magnitude <= lowest && store(static_cast<T>(0 - whole.magnitude), bytes);
}

std::optional<Number> rounded(Float64 real) {
  constexpr Float64 kTwoTo64 = 18446744073709551616.0;
  const Float64 whole = std::nearbyint(real);
  if (!(std::fabs(whole) < kTwoTo64)) return std::nullopt;  // not a number included
  return Number{Number::Form::kWhole, whole < 0, static_cast<UInt64>(std::fabs(whole)), 0};
}

Float64 realOf(const Number& number) {
  if (number.form != Number::Form::kWhole) return number.real;
  const Float64 magnitude = static_cast<Float64>(number.magnitude);
  return number.isNegative ? -magnitude : magnitude;
}

bool storeReal(Float64 real, std::size_t size, NumberBytes& bytes) {
  if (size == sizeof(Float64)) return store(real, bytes);
  if (std::isfinite(real) && std::fabs(real) > std::numeric_limits<Float32>::max()) return false;
  return store(static_cast<Float32>(real), bytes);
}

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t\r\n");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

template <typename T>
bool parseWhole(std::string_view text, T& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

Number Number::ofSigned(SInt64 value) {
  const UInt64 bits = static_cast<UInt64>(value);
  return {Form::kWhole, value < 0, value < 0 ? 0 - bits : bits, 0};
}

bool isNumber(DescType type) { return numberType(type) != nullptr; }

std::optional<Number> loadNumber(DescType type, Bytes data) {
  const NumberType* known = numberType(type);
  if (known == nullptr || data.size() != known->size) return std::nullopt;
  switch (type) {
    case typeSInt16:
      return Number::ofSigned(load<SInt16>(data));
    case typeUInt16:
      return Number::ofUnsigned(load<UInt16>(data));
    case typeSInt32:
      return Number::ofSigned(load<SInt32>(data));
    case typeUInt32:
      return Number::ofUnsigned(load<UInt32>(data));
    case typeSInt64:
      return Number::ofSigned(load<SInt64>(data));
    case typeUInt64:
      return Number::ofUnsigned(load<UInt64>(data));
    case typeIEEE32BitFloatingPoint:
      return Number::ofSingle(load<Float32>(data));
    default:
      return Number::ofDouble(load<Float64>(data));
  }
}

bool storeNumber(const Number& number, DescType type, NumberBytes& bytes) {
  const NumberType* known = numberType(type);
  if (known == nullptr) return false;
  if (known->kind == Kind::kReal) return storeReal(realOf(number), known->size, bytes);
  const std::optional<Number> whole =
      number.form == Number::Form::kWhole ? number : rounded(number.real);
  if (!whole) return false;
  switch (type) {
    case typeSInt16:
      return storeWhole<SInt16>(*whole, bytes);
    case typeUInt16:
      return storeWhole<UInt16>(*whole, bytes);
    case typeSInt32:
      return storeWhole<SInt32>(*whole, bytes);
    case typeUInt32:
      return storeWhole<UInt32>(*whole, bytes);
    case typeSInt64:
      return storeWhole<SInt64>(*whole, bytes);
    default:
      return storeWhole<UInt64>(*whole, bytes);
  }
}

std::optional<Number> parseNumber(std::string_view text) {
  std::string_view digits = withoutBlanks(text);
  const bool isNegative = digits.starts_with('-');
  if (isNegative || digits.starts_with('+')) digits.remove_prefix(1);
  // Neither a second sign nor the words for infinity and "not a number" are numbers here.
  if (digits.find_first_not_of("0123456789.eE+-") != std::string_view::npos) return std::nullopt;
  if (digits.starts_with('-')) return std::nullopt;
  UInt64 magnitude = 0;
  if (parseWhole(digits, magnitude)) {
    return Number{Number::Form::kWhole, isNegative, magnitude, 0};
  }
  Float64 real = 0;
  if (!parseWhole(digits, real)) return std::nullopt;
  return Number::ofDouble(isNegative ? -real : real);
}

std::string_view formatNumber(const Number& number, std::span<char, kLongestNumber> text) {
  char* at = text.data();
  char* const end = at + text.size();
  if (number.form == Number::Form::kSingle) {
    at = std::to_chars(at, end, static_cast<Float32>(number.real)).ptr;
  } else if (number.form == Number::Form::kDouble) {
    at = std::to_chars(at, end, number.real).ptr;
  } else {
    if (number.isNegative) *at++ = '-';
    at = std::to_chars(at, end, number.magnitude).ptr;
  }
  return {text.data(), static_cast<std::size_t>(at - text.data())};
}

}  // namespace platform::appleevents
