// Licence: MIT, see LICENSE.
// Writing property lists. std::bad_alloc is the caller's.
#ifndef PLATFORM_COREFOUNDATION_PROPERTYLISTWRITING_H
#define PLATFORM_COREFOUNDATION_PROPERTYLISTWRITING_H

#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFString.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace platform::corefoundation {

/// What an object of a property list is.
enum class NodeKind {
  kNone,
  kString,
  kInteger,
  kReal,
  kBoolean,
  kDate,
  kData,
  kArray,
  kDictionary
};
NodeKind nodeKind(CFTypeRef object);

/// A dictionary's entries in the order in which they are written; nothing if a key is not text.
using ListEntry = std::pair<CFStringRef, CFTypeRef>;
std::optional<std::vector<ListEntry>> sortedEntries(CFTypeRef dictionary);

/// The whole file. Null, with `to` in any state, is success; else the reason why it cannot be.
const char* writeXML(CFPropertyListRef list, std::string& to);
const char* writeBinary(CFPropertyListRef list, std::string& to);

constexpr const char* kNoList = "an object is none of a property list";
constexpr const char* kNoTextKey = "a key is not text";
constexpr const char* kTooDeepToWrite = "the nesting is too deep, or a container is within itself";

}  // namespace platform::corefoundation

#endif
