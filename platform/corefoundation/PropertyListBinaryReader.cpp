// Licence: MIT, see LICENSE.
// Reads the binary form: objects that refer to each other by number, a table of their offsets and a
// trailer of 32 bytes that says how wide all these are.
//
// An object that several refer to is made once and shared, unless it is a container that may be
// changed. Either way all that is reached is counted as often as it is reached: a few bytes can
// stand for a tree of any size, which nobody could then walk or write.
#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <vector>

#include "platform/corefoundation/PropertyListReading.h"

namespace platform::corefoundation {

namespace {

constexpr std::size_t kTrailerSize = 32;
constexpr UInt32 kSpareObjects = 1024;

// What stands in the upper half of an object's first byte.
enum ObjectKind : UInt8 {
  kSimple = 0x0,
  kInteger = 0x1,
  kReal = 0x2,
  kDate = 0x3,
  kData = 0x4,
  kASCII = 0x5,
  kUnicode = 0x6,
  kUniqueID = 0x8,
  kArray = 0xA,
  kDictionary = 0xD
};
constexpr UInt8 kFalse = 0x08;
constexpr UInt8 kTrue = 0x09;
constexpr UInt8 kLongCount = 0x0F;

UInt64 bigEndian(Bytes bytes) {
  UInt64 value = 0;
  for (const UInt8 byte : bytes) value = value << 8 | byte;
  return value;
}

// An object's place in the file, with what its first bytes say.
struct Item {
  std::size_t offset = 0;
  UInt8 kind = 0;
  UInt8 low = 0;
  std::size_t count = 0;
  std::size_t content = 0;  // where its bytes or references are
};

class BinaryReader final {
 public:
  BinaryReader(Bytes source, const PropertyListBuilder& maker, ReadingFault& firstFault)
      : file(source), builder(maker), fault(firstFault) {}

  Held<CFTypeRef> readFile();

 private:
  using Value = Held<CFTypeRef>;

  // An object that has been met. One that is only being read is not made yet.
  struct Met {
    Value made;
    UInt32 size = 0;  // objects in its tree
    bool isBeingRead = false;
  };

  bool fail(const char* reason, std::size_t where) {
    fault.set(reason, where);
    return false;
  }
  Value failed(const char* reason, std::size_t where) {
    fault.set(reason, where);
    return {};
  }
  Value made(Value value, const Item& item) {
    return value ? std::move(value) : failed(kNoMemory, item.offset);
  }

  bool readTrailer();
  bool count(UInt32 objects, std::size_t where);
  bool readItem(std::size_t number, Item& item);
  bool readCount(Item& item);
  bool findContent(Item& item, std::size_t each);
  Bytes bytesOf(const Item& item, std::size_t length) const {
    return file.subspan(item.content, length);
  }
  std::size_t referenceOf(const Item& item, std::size_t index) const {
    return static_cast<std::size_t>(
        bigEndian(file.subspan(item.content + index * referenceSize, referenceSize)));
  }

  Value readObject(std::size_t number, int depth);
  Value readLeaf(const Item& item);
  Value readContainer(Item& item, int depth);
  Value readSimple(const Item& item);
  Value readInteger(const Item& item);
  Value readReal(const Item& item);
  Value readDate(const Item& item);
  Value readData(Item& item);
  Value readText(Item& item, CFStringEncoding encoding);
  Value readUniqueID(const Item& item);
  Value readArray(Item& item, int depth);
  Value readDictionary(Item& item, int depth);
  Held<CFStringRef> readKey(std::size_t number, const Item& item);

  const Bytes file;
  const PropertyListBuilder& builder;
  ReadingFault& fault;
  std::size_t end = 0;  // of the objects, where the table begins
  std::size_t offsetSize = 0;
  std::size_t referenceSize = 0;
  std::size_t top = 0;
  std::vector<Met> met;
  UInt32 reached = 0;
};

bool BinaryReader::readTrailer() {
  if (file.size() < kBinaryHeader.size() + kTrailerSize + 2)
    return fail("the file is too short", 0);
  if (!std::ranges::equal(file.first(kBinaryHeader.size()), kBinaryHeader)) {
    return fail("the version is not known", 0);
  }
  const std::size_t start = file.size() - kTrailerSize;
  const Bytes trailer = file.subspan(start);
  offsetSize = trailer[6];
  referenceSize = trailer[7];
  const UInt64 objects = bigEndian(trailer.subspan(8, 8));
  const UInt64 topObject = bigEndian(trailer.subspan(16, 8));
  const UInt64 table = bigEndian(trailer.subspan(24, 8));
  if (offsetSize < 1 || offsetSize > 8 || referenceSize < 1 || referenceSize > 8) {
    return fail("numbers have no possible width", start + 6);
  }
  if (table <= kBinaryHeader.size() || table >= start) return fail("there is no table", start + 24);
  end = static_cast<std::size_t>(table);
  if (objects == 0 || objects > (start - end) / offsetSize) {
    return fail("the table does not hold that many objects", start + 8);
  }
  if (topObject >= objects) return fail("there is no top object", start + 16);
  top = static_cast<std::size_t>(topObject);
  met.resize(static_cast<std::size_t>(objects));
  return true;
}

bool BinaryReader::count(UInt32 objects, std::size_t where) {
  const UInt64 most =
      std::min<UInt64>(UInt64{file.size()} * 2 + kSpareObjects, std::numeric_limits<UInt32>::max());
  if (objects > most - reached) return fail("too much is shared", where);
  reached += objects;
  return true;
}

bool BinaryReader::readItem(std::size_t number, Item& item) {
  const std::size_t entry = end + number * offsetSize;
  const UInt64 offset = bigEndian(file.subspan(entry, offsetSize));
  if (offset < kBinaryHeader.size() || offset >= end)
    return fail("the offset leads nowhere", entry);
  item.offset = static_cast<std::size_t>(offset);
  item.kind = static_cast<UInt8>(file[item.offset] >> 4);
  item.low = file[item.offset] & 0x0F;
  item.content = item.offset + 1;
  return true;
}

// How many bytes, units or references there are: in the first byte, or a number behind it.
bool BinaryReader::readCount(Item& item) {
  item.count = item.low;
  if (item.low != kLongCount) return true;
  const UInt8 first = item.content < end ? file[item.content] : UInt8{0};
  const std::size_t width = std::size_t{1} << (first & 0x0F);
  if (first >> 4 != kInteger || width > 8 || end - item.content - 1 < width) {
    return fail("the count is no number", item.offset);
  }
  const UInt64 value = bigEndian(file.subspan(item.content + 1, width));
  if (value > end) return fail("the object is longer than the file", item.offset);
  item.count = static_cast<std::size_t>(value);
  item.content += 1 + width;
  return true;
}

// The count, and whether all that it counts is there, each so many bytes wide.
bool BinaryReader::findContent(Item& item, std::size_t each) {
  if (!readCount(item)) return false;
  if (item.count <= (end - item.content) / each) return true;
  return fail("the object is longer than the file", item.offset);
}

Held<CFTypeRef> BinaryReader::readFile() {
  if (!readTrailer()) return {};
  return readObject(top, 0);
}

Held<CFTypeRef> BinaryReader::readObject(std::size_t number, int depth) {
  if (number >= met.size()) return failed("there is no such object", end);
  if (met[number].made) {
    if (!count(met[number].size, end)) return {};
    return builder.leaf(met[number].made);
  }
  Item item;
  if (!readItem(number, item) || !count(1, item.offset)) return {};
  if (met[number].isBeingRead) return failed("the object refers to itself", item.offset);
  const bool isLeaf = item.kind != kArray && item.kind != kDictionary && item.kind != kUniqueID;
  if (isLeaf) {
    met[number].made = readLeaf(item);
    met[number].size = 1;
    return met[number].made ? made(builder.leaf(met[number].made), item) : Value();
  }
  if (depth >= kMaximumDepth) return failed(kTooDeep, item.offset);
  const UInt32 before = reached - 1;
  met[number].isBeingRead = true;
  Value value = readContainer(item, depth);
  met[number].isBeingRead = false;
  if (!builder.hasMutableContainers()) met[number].made = value;
  met[number].size = reached - before;
  return value;
}

Held<CFTypeRef> BinaryReader::readLeaf(const Item& item) {
  Item counted = item;
  switch (item.kind) {
    case kSimple:
      return readSimple(item);
    case kInteger:
      return readInteger(item);
    case kReal:
      return readReal(item);
    case kDate:
      return readDate(item);
    case kData:
      return readData(counted);
    case kASCII:
      return readText(counted, kCFStringEncodingASCII);
    case kUnicode:
      return readText(counted, kCFStringEncodingUTF16BE);
    default:
      return failed("the kind of object is not known", item.offset);
  }
}

Held<CFTypeRef> BinaryReader::readContainer(Item& item, int depth) {
  if (item.kind == kUniqueID) return readUniqueID(item);
  return item.kind == kArray ? readArray(item, depth) : readDictionary(item, depth);
}

Held<CFTypeRef> BinaryReader::readSimple(const Item& item) {
  if (item.low != kFalse && item.low != kTrue) {
    return failed("the kind of object is not known", item.offset);
  }
  return PropertyListBuilder::boolean(item.low == kTrue);
}

// One, two and four bytes have no sign; sixteen are for what needs more than eight.
Held<CFTypeRef> BinaryReader::readInteger(const Item& item) {
  const std::size_t width = std::size_t{1} << item.low;
  if (width > 16 || width > end - item.content) {
    return failed("the number has no possible width", item.offset);
  }
  const Bytes bytes = bytesOf(item, width);
  const Bytes upper = bytes.first(width > 8 ? 8 : 0);
  const auto value = static_cast<SInt64>(bigEndian(bytes.subspan(upper.size())));
  const UInt8 sign = value < 0 ? 0xFF : 0;
  if (std::ranges::any_of(upper, [sign](UInt8 byte) { return byte != sign; })) {
    return failed("the number needs more than 64 bits", item.offset);
  }
  return made(builder.integer(value), item);
}

Held<CFTypeRef> BinaryReader::readReal(const Item& item) {
  const std::size_t width = std::size_t{1} << item.low;
  if ((width != 4 && width != 8) || width > end - item.content) {
    return failed("the number has no possible width", item.offset);
  }
  const UInt64 bits = bigEndian(bytesOf(item, width));
  return made(width == 4 ? builder.real(std::bit_cast<Float32>(static_cast<UInt32>(bits)))
                         : builder.real(std::bit_cast<Float64>(bits)),
              item);
}

Held<CFTypeRef> BinaryReader::readDate(const Item& item) {
  constexpr UInt8 kEightBytes = 3;
  if (item.low != kEightBytes || end - item.content < 8) {
    return failed("the date has no possible width", item.offset);
  }
  const double time = std::bit_cast<double>(bigEndian(bytesOf(item, 8)));
  if (!std::isfinite(time)) return failed("this is no date", item.offset);
  return made(builder.date(time), item);
}

Held<CFTypeRef> BinaryReader::readData(Item& item) {
  if (!findContent(item, 1)) return {};
  return made(Value(builder.data(bytesOf(item, item.count)).take()), item);
}

Held<CFTypeRef> BinaryReader::readText(Item& item, CFStringEncoding encoding) {
  const std::size_t each = encoding == kCFStringEncodingASCII ? 1 : 2;
  if (!findContent(item, each)) return {};
  const Bytes bytes = bytesOf(item, item.count * each);
  if (each == 1 && !isASCII(bytes)) return failed("the text is not ASCII", item.offset);
  return made(Value(builder.text(bytes, encoding).take()), item);
}

Held<CFTypeRef> BinaryReader::readUniqueID(const Item& item) {
  const std::size_t width = std::size_t{item.low} + 1;
  if (width > 8 || width > end - item.content) {
    return failed("the unique ID has no possible width", item.offset);
  }
  const UInt64 number = bigEndian(bytesOf(item, width));
  if (number > static_cast<UInt64>(std::numeric_limits<SInt64>::max())) {
    return failed("the number needs more than 64 bits", item.offset);
  }
  Value dictionary = builder.dictionary();
  const Held<CFStringRef> key = Held<CFStringRef>::retaining(CFSTR("CF$UID"));
  const bool isSet =
      dictionary &&
      PropertyListBuilder::set(dictionary, key, builder.integer(static_cast<SInt64>(number)));
  return isSet ? dictionary : failed(kNoMemory, item.offset);
}

Held<CFTypeRef> BinaryReader::readArray(Item& item, int depth) {
  if (!findContent(item, referenceSize)) return {};
  Value array = builder.array();
  if (!array) return failed(kNoMemory, item.offset);
  for (std::size_t i = 0; i < item.count; ++i) {
    const Value value = readObject(referenceOf(item, i), depth + 1);
    if (!value) return {};
    if (!PropertyListBuilder::append(array, value)) return failed(kNoMemory, item.offset);
  }
  return array;
}

Held<CFStringRef> BinaryReader::readKey(std::size_t number, const Item& item) {
  if (number < met.size() && !met[number].made) {
    Item key;
    if (!readItem(number, key)) return {};
    if (key.kind == kASCII || key.kind == kUnicode) {
      met[number].made = readLeaf(key);
      met[number].size = 1;
      if (!met[number].made) return {};
    }
  }
  const Value& name = number < met.size() ? met[number].made : Value();
  if (!name || CFGetTypeID(name.get()) != CFStringGetTypeID()) {
    fault.set("the key is not text", item.offset);
    return {};
  }
  return Held<CFStringRef>::retaining(static_cast<CFStringRef>(name.get()));
}

Held<CFTypeRef> BinaryReader::readDictionary(Item& item, int depth) {
  if (!findContent(item, 2 * referenceSize)) return {};
  Value dictionary = builder.dictionary();
  if (!dictionary) return failed(kNoMemory, item.offset);
  for (std::size_t i = 0; i < item.count; ++i) {
    const Held<CFStringRef> key = readKey(referenceOf(item, i), item);
    if (!key) return {};
    const Value value = readObject(referenceOf(item, item.count + i), depth + 1);
    if (!value) return {};
    if (!PropertyListBuilder::set(dictionary, key, value)) return failed(kNoMemory, item.offset);
  }
  return dictionary;
}

}  // namespace

Held<CFTypeRef> readBinary(Bytes file, const PropertyListBuilder& builder, ReadingFault& fault) {
  return BinaryReader(file, builder, fault).readFile();
}

}  // namespace platform::corefoundation
