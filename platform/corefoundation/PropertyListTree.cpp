// Licence: MIT, see LICENSE.
// The objects of a property list as trees: what they are, their order, copies.
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>

#include <algorithm>

#include "platform/corefoundation/PropertyListBuilder.h"
#include "platform/corefoundation/PropertyListWriting.h"
#include "platform/corefoundation/WithoutMemory.h"

namespace platform::corefoundation {

namespace {

bool isOldStyleKind(NodeKind kind) {
  return kind == NodeKind::kString || kind == NodeKind::kData || kind == NodeKind::kArray ||
         kind == NodeKind::kDictionary;
}

class Validator final {
 public:
  explicit Validator(CFPropertyListFormat wanted) : format(wanted) {}

  bool isValid(CFTypeRef object, int depth) const {
    const NodeKind kind = nodeKind(object);
    if (kind == NodeKind::kNone) return false;
    if (format == kCFPropertyListOpenStepFormat && !isOldStyleKind(kind)) return false;
    if (kind == NodeKind::kArray) return isValidArray(static_cast<CFArrayRef>(object), depth);
    return kind != NodeKind::kDictionary || isValidDictionary(object, depth);
  }

 private:
  bool isValidArray(CFArrayRef array, int depth) const {
    if (depth >= kMaximumDepth) return false;
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
      if (!isValid(CFArrayGetValueAtIndex(array, i), depth + 1)) return false;
    }
    return true;
  }
  bool isValidDictionary(CFTypeRef dictionary, int depth) const {
    if (depth >= kMaximumDepth) return false;
    const auto entries = sortedEntries(dictionary);
    return entries && std::ranges::all_of(*entries, [this, depth](const ListEntry& entry) {
             return isValid(entry.second, depth + 1);
           });
  }

  const CFPropertyListFormat format;
};

class Copier final {
 public:
  Copier(CFAllocatorRef owner, CFOptionFlags mutability)
      : allocator(owner), builder(owner, mutability) {}

  Held<CFTypeRef> copy(CFTypeRef object, int depth) const;

 private:
  Held<CFTypeRef> copyArray(CFArrayRef array, int depth) const;
  Held<CFTypeRef> copyDictionary(CFTypeRef dictionary, int depth) const;

  const CFAllocatorRef allocator;
  const PropertyListBuilder builder;
};

Held<CFTypeRef> Copier::copyArray(CFArrayRef array, int depth) const {
  Held<CFTypeRef> made = builder.array();
  for (CFIndex i = 0; made && i < CFArrayGetCount(array); ++i) {
    const Held<CFTypeRef> value = copy(CFArrayGetValueAtIndex(array, i), depth + 1);
    if (!PropertyListBuilder::append(made, value)) return {};
  }
  return made;
}

Held<CFTypeRef> Copier::copyDictionary(CFTypeRef dictionary, int depth) const {
  const auto entries = sortedEntries(dictionary);
  if (!entries) return {};
  Held<CFTypeRef> made = builder.dictionary();
  for (const ListEntry& entry : *entries) {
    const Held<CFStringRef> key(CFStringCreateCopy(allocator, entry.first));
    const Held<CFTypeRef> value = copy(entry.second, depth + 1);
    if (!made || !PropertyListBuilder::set(made, key, value)) return {};
  }
  return made;
}

Held<CFTypeRef> Copier::copy(CFTypeRef object, int depth) const {
  const NodeKind kind = nodeKind(object);
  const bool isContainer = kind == NodeKind::kArray || kind == NodeKind::kDictionary;
  if (kind == NodeKind::kNone || (isContainer && depth >= kMaximumDepth)) return {};
  if (kind == NodeKind::kArray) return copyArray(static_cast<CFArrayRef>(object), depth);
  if (kind == NodeKind::kDictionary) return copyDictionary(object, depth);
  if (kind == NodeKind::kString) {
    const auto string = static_cast<CFStringRef>(object);
    return builder.leaf(Held<CFTypeRef>(CFStringCreateCopy(allocator, string)));
  }
  if (kind == NodeKind::kData) {
    const auto data = static_cast<CFDataRef>(object);
    return builder.leaf(Held<CFTypeRef>(CFDataCreateCopy(allocator, data)));
  }
  return Held<CFTypeRef>::retaining(object);
}

}  // namespace

NodeKind nodeKind(CFTypeRef object) {
  if (object == nullptr) return NodeKind::kNone;
  const CFTypeID type = CFGetTypeID(object);
  if (type == CFStringGetTypeID()) return NodeKind::kString;
  if (type == CFDictionaryGetTypeID()) return NodeKind::kDictionary;
  if (type == CFArrayGetTypeID()) return NodeKind::kArray;
  if (type == CFBooleanGetTypeID()) return NodeKind::kBoolean;
  if (type == CFDataGetTypeID()) return NodeKind::kData;
  if (type == CFDateGetTypeID()) return NodeKind::kDate;
  if (type != CFNumberGetTypeID()) return NodeKind::kNone;
  return CFNumberIsFloatType(static_cast<CFNumberRef>(object)) ? NodeKind::kReal
                                                               : NodeKind::kInteger;
}

std::optional<std::vector<ListEntry>> sortedEntries(CFTypeRef dictionary) {
  const auto source = static_cast<CFDictionaryRef>(dictionary);
  const auto count = static_cast<std::size_t>(CFDictionaryGetCount(source));
  std::vector<const void*> keys(count);
  std::vector<const void*> values(count);
  CFDictionaryGetKeysAndValues(source, keys.data(), values.data());
  std::vector<ListEntry> entries;
  entries.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    if (nodeKind(keys[i]) != NodeKind::kString) return std::nullopt;
    entries.emplace_back(static_cast<CFStringRef>(keys[i]), values[i]);
  }
  std::ranges::sort(entries, [](const ListEntry& a, const ListEntry& b) {
    return CFStringCompare(a.first, b.first, 0) == kCFCompareLessThan;
  });
  return entries;
}

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFPropertyListRef CFPropertyListCreateDeepCopy(CFAllocatorRef allocator,
                                               CFPropertyListRef propertyList,
                                               CFOptionFlags mutabilityOption) {
  return nullWithoutMemory(
      [&] { return Copier(allocator, mutabilityOption).copy(propertyList, 0).take(); });
}

Boolean CFPropertyListIsValid(CFPropertyListRef propertyList, CFPropertyListFormat format) {
  return nullWithoutMemory([&]() -> Boolean { return Validator(format).isValid(propertyList, 0); });
}
