// Licence: MIT, see LICENSE.
#include "platform/corefoundation/NumberValue.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "platform/corefoundation/Order.h"

namespace platform::corefoundation {

namespace {

// 2^63, the first value beyond a 64-bit integer; exact as a double.
constexpr double kIntegerEnd = 9223372036854775808.0;

struct TypeRow {
  CFNumberType fixed;
  CFIndex size;
  const char* name;
};

constexpr CFNumberType integerOfSize(std::size_t size) {
  switch (size) {
    case 1:
      return kCFNumberSInt8Type;
    case 2:
      return kCFNumberSInt16Type;
    case 4:
      return kCFNumberSInt32Type;
    default:
      return kCFNumberSInt64Type;
  }
}

// By the codes of the types; the first row is no type.
constexpr std::array<CFNumberType, kCFNumberMaxType + 1> kFixedTypes = {
    CFNumberType{},
    kCFNumberSInt8Type,
    kCFNumberSInt16Type,
    kCFNumberSInt32Type,
    kCFNumberSInt64Type,
    kCFNumberFloat32Type,
    kCFNumberFloat64Type,
    integerOfSize(sizeof(char)),
    integerOfSize(sizeof(short)),
    integerOfSize(sizeof(int)),
    integerOfSize(sizeof(long)),
    integerOfSize(sizeof(long long)),
    kCFNumberFloat32Type,
    kCFNumberFloat64Type,
    integerOfSize(sizeof(CFIndex))};

constexpr std::array<TypeRow, 7> kRows = {{{CFNumberType{}, 0, ""},
                                           {kCFNumberSInt8Type, 1, "kCFNumberSInt8Type"},
                                           {kCFNumberSInt16Type, 2, "kCFNumberSInt16Type"},
                                           {kCFNumberSInt32Type, 4, "kCFNumberSInt32Type"},
                                           {kCFNumberSInt64Type, 8, "kCFNumberSInt64Type"},
                                           {kCFNumberFloat32Type, 4, "kCFNumberFloat32Type"},
                                           {kCFNumberFloat64Type, 8, "kCFNumberFloat64Type"}}};

template <typename T>
T loadAs(const void* from) {
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

template <typename T>
SInt64 loadSigned(const void* from) {
  return 0 + loadAs<T>(from);
}

template <typename T>
void storeAs(void* to, T value) {
  std::memcpy(to, &value, sizeof value);
}

CFComparisonResult reversed(CFComparisonResult result) {
  return static_cast<CFComparisonResult>(-result);
}

bool isWithinInteger(double value) { return value >= -kIntegerEnd && value < kIntegerEnd; }

// Not-a-number comes first.
CFComparisonResult compareReals(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return order(!std::isnan(a), !std::isnan(b));
  return order(a, b);
}

CFComparisonResult compareMixed(SInt64 a, double b) {
  if (std::isnan(b) || b < -kIntegerEnd) return kCFCompareGreaterThan;
  if (b >= kIntegerEnd) return kCFCompareLessThan;
  const double whole = std::trunc(b);
  const CFComparisonResult result = order(a, static_cast<SInt64>(whole));
  return result != kCFCompareEqualTo ? result : order(whole, b);
}

}  // namespace

std::optional<CFNumberType> fixedType(CFNumberType type) {
  if (type < kCFNumberSInt8Type || type > kCFNumberMaxType) return std::nullopt;
  return kFixedTypes[static_cast<std::size_t>(type)];
}

CFIndex byteSize(CFNumberType fixed) { return kRows[static_cast<std::size_t>(fixed)].size; }

bool isFloatType(CFNumberType fixed) {
  return fixed == kCFNumberFloat32Type || fixed == kCFNumberFloat64Type;
}

const char* typeCodeName(CFNumberType fixed) { return kRows[static_cast<std::size_t>(fixed)].name; }

NumberValue NumberValue::load(CFNumberType fixed, const void* from) {
  NumberValue value;
  value.isReal = isFloatType(fixed);
  switch (fixed) {
    case kCFNumberSInt8Type:
      value.integer = loadSigned<SInt8>(from);
      break;
    case kCFNumberSInt16Type:
      value.integer = loadSigned<SInt16>(from);
      break;
    case kCFNumberSInt32Type:
      value.integer = loadSigned<SInt32>(from);
      break;
    case kCFNumberSInt64Type:
      value.integer = loadSigned<SInt64>(from);
      break;
    case kCFNumberFloat32Type:
      value.real = loadAs<Float32>(from);
      break;
    default:
      value.real = loadAs<Float64>(from);
  }
  return value;
}

template <typename T>
bool NumberValue::storeInteger(void* to) const {
  constexpr SInt64 kHighest = std::numeric_limits<SInt64>::max() >> (64 - 8 * sizeof(T));
  constexpr SInt64 kLowest = -kHighest - 1;
  SInt64 whole = integer;
  bool isExact = true;
  if (isReal) {
    isExact = isWithinInteger(real) && std::trunc(real) == real;
    if (isWithinInteger(real)) {
      whole = static_cast<SInt64>(real);
    } else if (std::isnan(real)) {
      whole = 0;
    } else {
      whole = real < 0 ? std::numeric_limits<SInt64>::min() : std::numeric_limits<SInt64>::max();
    }
  }
  const SInt64 nearest = std::clamp(whole, kLowest, kHighest);
  storeAs<T>(to, static_cast<T>(nearest));
  return isExact && nearest == whole;
}

template <typename T>
bool NumberValue::storeReal(void* to) const {
  const T nearest = isReal ? static_cast<T>(real) : static_cast<T>(integer);
  storeAs<T>(to, nearest);
  NumberValue stored;
  stored.isReal = true;
  stored.real = nearest;
  return compare(stored) == kCFCompareEqualTo;
}

bool NumberValue::store(CFNumberType fixed, void* to) const {
  switch (fixed) {
    case kCFNumberSInt8Type:
      return storeInteger<SInt8>(to);
    case kCFNumberSInt16Type:
      return storeInteger<SInt16>(to);
    case kCFNumberSInt32Type:
      return storeInteger<SInt32>(to);
    case kCFNumberSInt64Type:
      return storeInteger<SInt64>(to);
    case kCFNumberFloat32Type:
      return storeReal<Float32>(to);
    default:
      return storeReal<Float64>(to);
  }
}

CFComparisonResult NumberValue::compare(const NumberValue& other) const {
  if (isReal && other.isReal) return compareReals(real, other.real);
  if (isReal) return reversed(compareMixed(other.integer, real));
  if (other.isReal) return compareMixed(integer, other.real);
  return order(integer, other.integer);
}

CFHashCode NumberValue::hash() const {
  UInt64 bits = static_cast<UInt64>(integer);
  if (isReal && isWithinInteger(real) && std::trunc(real) == real) {
    bits = static_cast<UInt64>(static_cast<SInt64>(real));
  } else if (isReal) {
    bits = std::isnan(real) ? 1 : std::bit_cast<UInt64>(real);
  }
  return static_cast<CFHashCode>(bits ^ (sizeof(CFHashCode) == 8 ? 0 : bits >> 32));
}

}  // namespace platform::corefoundation
