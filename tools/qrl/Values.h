// Licence: MIT, see LICENSE.
// The written form of an event's parameters: KEY=TYPE:VALUE, or KEY=TYPE#HEX for bytes.
//
// A code (a key, a type, an event's class or ID) is written as its four characters, or as 0x and
// eight hexadecimal digits. A type may also be a word, such as sint32 for "long". The types below
// have values of their own; of any other type VALUE is the bytes in hexadecimal, as after a "#":
//
//   short long comp magn     whole numbers of 16, 32, 64 bits, and 32 bits without a sign
//   sing doub                floating-point numbers of 32 and 64 bits
//   bool                     true or false
//   TEXT                     text
//   type enum                a code
//   psn                      a process serial number, HIGH:LOW or LOW
//
// What is printed can be given back. Bytes after "#" are in the order of the wire, high byte first.
#ifndef TOOLS_QRL_VALUES_H
#define TOOLS_QRL_VALUES_H

#include <CarbonCore/MacTypes.h>

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace qrl {

/// A descriptor's type and its data, numbers in this machine's byte order.
struct Value {
  OSType type = 0;
  std::string bytes;
  friend bool operator==(const Value&, const Value&) = default;
};

struct Parameter {
  OSType key = 0;
  Value value;
  friend bool operator==(const Parameter&, const Parameter&) = default;
};

// All of these throw UsageError, with a line that names what is wrong.
Value parseValue(std::string_view text);  // TYPE:VALUE
Parameter parseParameter(std::string_view text);
ProcessSerialNumber parseSerialNumber(std::string_view text);

std::string formatValue(const Value& value);
std::string formatSerialNumber(const ProcessSerialNumber& psn);

/// {"type": "long", "value": 5}, or with "hex" in place of "value" for mere bytes.
nlohmann::ordered_json jsonOf(const Value& value);

}  // namespace qrl

#endif
