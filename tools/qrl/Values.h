// Licence: MIT, see LICENSE.
// The written form of an event's parameters: KEY=TYPE:VALUE, or KEY=TYPE#HEX for bytes.
//
// A code (a key, a type, an event's class or ID) is written as its four characters, or as 0x and
// eight hexadecimal digits. A type may also be a word, such as sint32 for "long". Kinds.cpp has the
// types whose values have a form of their own; several numbers, codes or the like with commas
// between them are an array. Of any other type VALUE is the bytes in hexadecimal, as after a "#".
//
// The items of a list are written as KEY[1]=TYPE:VALUE and so on, those of a record as
// KEY.ITEM=TYPE:VALUE, to any depth; without items these are KEY=list: and KEY=reco:.
//
// What is printed can be given back. Bytes after "#" are in the order of the wire, high byte first.
#ifndef TOOLS_QRL_VALUES_H
#define TOOLS_QRL_VALUES_H

#include <CarbonCore/MacTypes.h>

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace qrl {

/// A descriptor's type and its data, numbers in this machine's byte order.
struct Value {
  OSType type = 0;
  std::string bytes;
  friend bool operator==(const Value&, const Value&) = default;
};

/// One step into a list or a record.
struct Step {
  enum class To { kItem, kField };
  To to = To::kItem;
  UInt32 place = 0;  // from 1; of a field the keyword
  friend bool operator==(const Step&, const Step&) = default;
};

struct Parameter {
  OSType key = 0;
  Value value;
  std::vector<Step> steps = {};  // from the parameter to the value
  friend bool operator==(const Parameter&, const Parameter&) = default;
};

// All of these throw UsageError, with a line that names what is wrong.
Value parseValue(std::string_view text);  // TYPE:VALUE
Parameter parseParameter(std::string_view text);
ProcessSerialNumber parseSerialNumber(std::string_view text);

std::string formatValue(const Value& value);
std::string formatStep(const Step& step);
std::string formatSerialNumber(const ProcessSerialNumber& psn);

/// {"type": "long", "value": 5}, or with "hex" in place of "value" for mere bytes. The value of an
/// array is an array.
nlohmann::ordered_json jsonOf(const Value& value);

}  // namespace qrl

#endif
