// Licence: MIT, see LICENSE.
#include <AE/AEHelpers.h>
#include <CarbonCore/MacMemory.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string_view>

#include "platform/appleevents/ByteOrder.h"
#include "platform/appleevents/Conversions.h"
#include "platform/appleevents/Items.h"
#include "platform/appleevents/Number.h"
#include "platform/appleevents/Validation.h"

namespace platform::appleevents {
namespace {

bool isControl(char character) {
  const auto code = static_cast<unsigned char>(character);
  return code < 0x20 || code == 0x7F;
}

/// Text that grows. What fails is remembered, so that printing need not look after each step.
class Line final {
 public:
  void add(std::string_view text) {
    if (state != noErr) return;
    if (storage == nullptr) storage = Storage::make(0, kFirstRoom);
    std::byte* at =
        storage == nullptr ? nullptr : storage->splice(storage->bytes().size(), 0, text.size());
    if (at == nullptr) {
      state = memFullErr;
    } else {
      std::ranges::copy(std::as_bytes(std::span(text)), at);
    }
  }
  void fail(OSErr status) { state = status; }

  OSErr status() const { return state; }
  Bytes bytes() const { return storage->bytes(); }

 private:
  static constexpr std::size_t kFirstRoom = 256;
  std::unique_ptr<Storage> storage;
  OSErr state = noErr;
};

void printHex(Bytes bytes, Line& line) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  line.add("$");
  for (const std::byte byte : bytes) {
    const auto value = std::to_integer<unsigned>(byte);
    const char digits[] = {kDigits[value >> 4], kDigits[value & 0xF]};
    line.add({digits, 2});
  }
  line.add("$");
}

/// A code's characters, or nothing if they would not read as a code between quotation marks.
std::optional<std::array<char, 4>> charactersOf(UInt32 code) {
  std::array<char, 4> characters;
  storeWord(reinterpret_cast<std::byte*>(characters.data()), code);
  const bool isPlain = std::ranges::none_of(characters, [](char character) {
    return isControl(character) || character == '\'' || character == '\\';
  });
  return isPlain ? std::optional(characters) : std::nullopt;
}

void printCode(UInt32 code, Line& line) {
  if (const auto characters = charactersOf(code)) {
    line.add("'");
    line.add({characters->data(), characters->size()});
    line.add("'");
    return;
  }
  std::array<std::byte, kWord> bytes;
  storeWord(bytes.data(), code);
  printHex(bytes, line);
}

/// TYPE(what `print` prints)
template <typename Print>
void printTyped(DescType type, Line& line, Print print) {
  printCode(type, line);
  line.add("(");
  print();
  line.add(")");
}

void printQuoted(std::string_view text, Line& line) {
  line.add("\"");
  for (const char& character : text) {
    if (character == '"' || character == '\\') line.add("\\");
    line.add({&character, 1});
  }
  line.add("\"");
}

bool printNumber(const Source& value, Line& line) {
  const std::optional<Number> number = loadNumber(value.type, value.data);
  if (!number || !std::isfinite(number->real)) return false;
  std::array<char, kLongestNumber> room;
  const std::string_view text = formatNumber(*number, room);
  if (value.type == typeSInt32) {
    line.add(text);
  } else {
    printTyped(value.type, line, [&] { line.add(text); });
  }
  return true;
}

bool printTruth(const Source& value, Line& line) {
  if (value.data.size() != 1 || value.data[0] > std::byte{1}) return false;
  const bool truth = value.data[0] == std::byte{1};
  printTyped(value.type, line, [&] { printQuoted(truth ? "true" : "false", line); });
  return true;
}

bool printCodeValue(const Source& value, Line& line) {
  UInt32 code;
  if (value.data.size() != sizeof code) return false;
  std::memcpy(&code, value.data.data(), sizeof code);
  if (!charactersOf(code)) return false;
  if (value.type == typeEnumerated) {
    printCode(code, line);
  } else {
    printTyped(value.type, line, [&] { printCode(code, line); });
  }
  return true;
}

bool printText(const Source& value, Line& line) {
  HeldDesc plain;
  const OSErr status = textToText(value, typeChar, plain.out());
  if (status == memFullErr) line.fail(status);
  if (status != noErr) return false;
  const Bytes bytes = bytesOf(plain.get());
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (std::ranges::any_of(text, isControl)) return false;
  if (value.type == typeChar) {
    printQuoted(text, line);
  } else {
    printTyped(value.type, line, [&] { printQuoted(text, line); });
  }
  return true;
}

/// False if it is no value of its type.
bool printAsItsType(const Source& value, Line& line) {
  if (isText(value.type)) return printText(value, line);
  if (isNumber(value.type)) return printNumber(value, line);
  switch (value.type) {
    case typeBoolean:
      return printTruth(value, line);
    case typeType:
    case typeEnumerated:
    case typeKeyword:
    case typeProperty:
    case typeApplSignature:
      return printCodeValue(value, line);
    default:
      return false;
  }
}

void printAsBytes(const Source& value, Line& line) {
  if (value.data.empty()) {
    printTyped(value.type, line, [] {});
    return;
  }
  const std::unique_ptr<Storage> travelling = Storage::make(value.data.size());
  if (travelling == nullptr) {
    line.fail(memFullErr);
    return;
  }
  reorder(value.type, value.data, travelling->writable());
  printTyped(value.type, line, [&] { printHex(travelling->bytes(), line); });
}

void printValue(const Source& value, Line& line) {
  if (!printAsItsType(value, line) && line.status() == noErr) printAsBytes(value, line);
}

void printContainer(DescType type, Bytes block, Line& line);

void printItem(const Item& item, Line& line) {
  if (hasItems(item.type)) {
    printContainer(item.type, item.data, line);
    return;
  }
  HeldDesc value;
  const OSErr status = makeDesc(item, value.out());
  if (status != noErr) line.fail(status);
  printValue({item.type, bytesOf(value.get())}, line);
}

/// KEY:VALUE, of an attribute &KEY:VALUE.
void printKeyed(const Item& item, Part part, Line& line) {
  if (part == Part::kAttributes) line.add("&");
  printCode(item.keyword, line);
  line.add(":");
  printItem(item, line);
}

bool isInEveryEvent(AEKeyword keyword) {
  const FixedAttribute* rule = fixedAttribute(keyword);
  return rule != nullptr && rule->isRequired;
}

/// Prints the items of a part, and a comma between all items printed.
void printItems(DescType type, Bytes block, Part part, bool& isFirst, Line& line) {
  const std::optional<Region> region = findRegion(type, block, part);
  if (!region) {
    line.fail(errAECorruptData);
    return;
  }
  for (auto item = firstItem(block, *region); item; item = nextItem(block, *region, *item)) {
    if (part == Part::kAttributes && isInEveryEvent(item->keyword)) continue;
    if (!std::exchange(isFirst, false)) line.add(", ");
    if (type == typeAEList) {
      printItem(*item, line);
    } else {
      printKeyed(*item, part, line);
    }
  }
}

void printEventKind(Bytes block, Line& line) {
  const std::optional<Region> region = findRegion(typeAppleEvent, block, Part::kAttributes);
  for (const AEKeyword keyword : {keyEventClassAttr, keyEventIDAttr}) {
    const auto item = region ? findItem(block, *region, keyword) : std::nullopt;
    const bool isCode = item && item->data.size() == kWord;
    if (keyword == keyEventIDAttr) line.add("\\");
    printCode(isCode ? loadWord(item->data.data()) : UInt32{typeNull}, line);
  }
}

void printContainer(DescType type, Bytes block, Line& line) {
  bool isFirst = true;
  if (type == typeAppleEvent) printEventKind(block, line);
  line.add(type == typeAEList ? "[" : "{");
  printItems(type, block, Part::kParameters, isFirst, line);
  if (type == typeAppleEvent) printItems(type, block, Part::kAttributes, isFirst, line);
  line.add(type == typeAEList ? "]" : "}");
}

}  // namespace
}  // namespace platform::appleevents

OSStatus AEPrintDescToHandle(const AEDesc* desc, Handle* result) {
  using namespace platform::appleevents;
  if (desc == nullptr || result == nullptr) return paramErr;
  *result = nullptr;
  Line line;
  const Bytes bytes = bytesOf(*desc);
  if (hasItems(desc->descriptorType)) {
    printContainer(desc->descriptorType, bytes, line);
  } else {
    printValue({desc->descriptorType, bytes}, line);
  }
  if (line.status() != noErr) return line.status();
  const Handle text = NewHandle(static_cast<Size>(line.bytes().size()));
  if (text == nullptr) return memFullErr;
  std::memcpy(*text, line.bytes().data(), line.bytes().size());
  *result = text;
  return noErr;
}
