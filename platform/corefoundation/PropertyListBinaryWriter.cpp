// Licence: MIT, see LICENSE.
// Writes the binary form. Objects are numbered in the order in which they are met, a dictionary's
// keys before its values. Leaves that are the same are one object; containers never are, so that a
// reader need not share what may be changed. Numbers are as narrow as they can be, of 1, 2, 4 or 8
// bytes.
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>

#include <bit>
#include <unordered_map>

#include "platform/corefoundation/PropertyListBuilder.h"
#include "platform/corefoundation/PropertyListWriting.h"
#include "platform/corefoundation/StringObject.h"

namespace platform::corefoundation {

namespace {

// Leaves are told apart by more than their values: 1, 1.0 and 1.0 in 32 bits are three objects, and
// so are the two zeros.
struct Leaf {
  CFTypeRef object;
  NodeKind kind;
  CFIndex width;  // of a real number
  UInt64 bits;
  friend bool operator==(const Leaf& a, const Leaf& b) {
    return a.kind == b.kind && a.width == b.width && a.bits == b.bits &&
           CFEqual(a.object, b.object);
  }
};

struct LeafHash {
  std::size_t operator()(const Leaf& leaf) const {
    return static_cast<std::size_t>(CFHash(leaf.object)) ^ static_cast<std::size_t>(leaf.kind);
  }
};

UInt64 bitsOf(CFNumberRef real) {
  double value = 0;
  CFNumberGetValue(real, kCFNumberFloat64Type, &value);
  return std::bit_cast<UInt64>(value);
}

Leaf leafOf(CFTypeRef object, NodeKind kind) {
  if (kind != NodeKind::kReal) return {object, kind, 0, 0};
  const auto number = static_cast<CFNumberRef>(object);
  return {object, kind, CFNumberGetByteSize(number), bitsOf(number)};
}

std::size_t widthFor(UInt64 value) {
  if (value <= 0xFF) return 1;
  if (value <= 0xFFFF) return 2;
  return value <= 0xFFFFFFFF ? 4 : 8;
}

class BinaryWriter final {
 public:
  explicit BinaryWriter(std::string& target) : to(target) {}

  const char* write(CFTypeRef top);

 private:
  struct Node {
    CFTypeRef object;
    NodeKind kind;
    std::vector<UInt32> references;
  };

  const char* number(CFTypeRef object, int depth, UInt32& index);
  UInt32 numberLeaf(CFTypeRef object, NodeKind kind);
  const char* numberArray(CFArrayRef array, int depth, std::vector<UInt32>& references);
  const char* numberDictionary(CFDictionaryRef dictionary, int depth,
                               std::vector<UInt32>& references);
  UInt32 add(CFTypeRef object, NodeKind kind) {
    nodes.push_back({object, kind, {}});
    return static_cast<UInt32>(nodes.size() - 1);
  }

  void append(UInt64 value, std::size_t width);
  void appendInteger(SInt64 value);
  void appendStart(unsigned kind, std::size_t count);
  void appendReal(CFNumberRef number);
  void appendText(CFStringRef string);
  void appendData(CFDataRef data);
  void appendReferences(const std::vector<UInt32>& references);
  void appendNode(const Node& node);
  void appendTrailer(const std::vector<std::size_t>& offsets);

  std::string& to;
  std::vector<Node> nodes;
  std::unordered_map<Leaf, UInt32, LeafHash> leaves;
  std::size_t referenceSize = 1;
};

UInt32 BinaryWriter::numberLeaf(CFTypeRef object, NodeKind kind) {
  const auto next = static_cast<UInt32>(nodes.size());
  const auto [place, isNew] = leaves.try_emplace(leafOf(object, kind), next);
  if (isNew) add(object, kind);
  return place->second;
}

const char* BinaryWriter::number(CFTypeRef object, int depth, UInt32& index) {
  const NodeKind kind = nodeKind(object);
  if (kind == NodeKind::kNone) return kNoList;
  const bool isArray = kind == NodeKind::kArray;
  if (!isArray && kind != NodeKind::kDictionary) {
    index = numberLeaf(object, kind);
    return nullptr;
  }
  if (depth >= kMaximumDepth) return kTooDeepToWrite;
  index = add(object, kind);
  const UInt32 own = index;
  std::vector<UInt32> references;
  const char* reason =
      isArray ? numberArray(static_cast<CFArrayRef>(object), depth, references)
              : numberDictionary(static_cast<CFDictionaryRef>(object), depth, references);
  nodes[own].references = std::move(references);
  return reason;
}

const char* BinaryWriter::numberArray(CFArrayRef array, int depth,
                                      std::vector<UInt32>& references) {
  const CFIndex count = CFArrayGetCount(array);
  references.resize(static_cast<std::size_t>(count));
  for (CFIndex i = 0; i < count; ++i) {
    UInt32& index = references[static_cast<std::size_t>(i)];
    const char* reason = number(CFArrayGetValueAtIndex(array, i), depth + 1, index);
    if (reason != nullptr) return reason;
  }
  return nullptr;
}

const char* BinaryWriter::numberDictionary(CFDictionaryRef dictionary, int depth,
                                           std::vector<UInt32>& references) {
  const auto entries = sortedEntries(dictionary);
  if (!entries) return kNoTextKey;
  references.resize(2 * entries->size());
  std::size_t next = 0;
  for (const ListEntry& entry : *entries)
    references[next++] = numberLeaf(entry.first, NodeKind::kString);
  for (const ListEntry& entry : *entries) {
    if (const char* reason = number(entry.second, depth + 1, references[next++])) return reason;
  }
  return nullptr;
}

void BinaryWriter::append(UInt64 value, std::size_t width) {
  for (std::size_t i = width; i > 0; --i) to += static_cast<char>(value >> (8 * (i - 1)) & 0xFF);
}

// Only eight bytes have a sign.
void BinaryWriter::appendInteger(SInt64 value) {
  const std::size_t width = value < 0 ? 8 : widthFor(static_cast<UInt64>(value));
  to += static_cast<char>(0x10 | std::countr_zero(width));
  append(static_cast<UInt64>(value), width);
}

void BinaryWriter::appendStart(unsigned kind, std::size_t count) {
  constexpr std::size_t kCountBehind = 15;
  to += static_cast<char>(kind << 4 | std::min(count, kCountBehind));
  if (count >= kCountBehind) appendInteger(static_cast<SInt64>(count));
}

void BinaryWriter::appendReal(CFNumberRef number) {
  if (CFNumberGetByteSize(number) == 4) {
    Float32 value = 0;
    CFNumberGetValue(number, kCFNumberFloat32Type, &value);
    to += '\x22';
    append(std::bit_cast<UInt32>(value), 4);
  } else {
    to += '\x23';
    append(bitsOf(number), 8);
  }
}

void BinaryWriter::appendText(CFStringRef string) {
  const TextView& text = stringOf(string)->text();
  const bool isNarrow = text.wide != nullptr ? isASCII(text.units()) : isASCII(text.bytes());
  appendStart(isNarrow ? 5 : 6, static_cast<std::size_t>(text.length));
  for (CFIndex i = 0; i < text.length; ++i) append(text[i], isNarrow ? 1 : 2);
}

void BinaryWriter::appendData(CFDataRef data) {
  const auto length = static_cast<std::size_t>(CFDataGetLength(data));
  appendStart(4, length);
  if (length > 0) to.append(reinterpret_cast<const char*>(CFDataGetBytePtr(data)), length);
}

void BinaryWriter::appendReferences(const std::vector<UInt32>& references) {
  for (const UInt32 reference : references) append(reference, referenceSize);
}

void BinaryWriter::appendNode(const Node& node) {
  SInt64 integer = 0;
  switch (node.kind) {
    case NodeKind::kString:
      return appendText(static_cast<CFStringRef>(node.object));
    case NodeKind::kInteger:
      CFNumberGetValue(static_cast<CFNumberRef>(node.object), kCFNumberSInt64Type, &integer);
      return appendInteger(integer);
    case NodeKind::kReal:
      return appendReal(static_cast<CFNumberRef>(node.object));
    case NodeKind::kDate:
      to += '\x33';
      return append(
          std::bit_cast<UInt64>(CFDateGetAbsoluteTime(static_cast<CFDateRef>(node.object))), 8);
    case NodeKind::kData:
      return appendData(static_cast<CFDataRef>(node.object));
    case NodeKind::kArray:
      appendStart(0xA, node.references.size());
      return appendReferences(node.references);
    case NodeKind::kDictionary:
      appendStart(0xD, node.references.size() / 2);
      return appendReferences(node.references);
    case NodeKind::kBoolean:
    case NodeKind::kNone:
      to += node.object == kCFBooleanTrue ? '\x09' : '\x08';
  }
}

void BinaryWriter::appendTrailer(const std::vector<std::size_t>& offsets) {
  const std::size_t table = to.size();
  const std::size_t offsetSize = widthFor(table);
  for (const std::size_t offset : offsets) append(offset, offsetSize);
  append(0, 6);
  append(offsetSize, 1);
  append(referenceSize, 1);
  append(offsets.size(), 8);
  append(0, 8);
  append(table, 8);
}

const char* BinaryWriter::write(CFTypeRef top) {
  UInt32 first = 0;
  if (const char* reason = number(top, 0, first)) return reason;
  referenceSize = widthFor(nodes.size());
  to = kBinaryHeader;
  std::vector<std::size_t> offsets;
  offsets.reserve(nodes.size());
  for (const Node& node : nodes) {
    offsets.push_back(to.size());
    appendNode(node);
  }
  appendTrailer(offsets);
  return nullptr;
}

}  // namespace

const char* writeBinary(CFPropertyListRef list, std::string& to) {
  return BinaryWriter(to).write(list);
}

}  // namespace platform::corefoundation
