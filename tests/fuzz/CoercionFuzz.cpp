// Licence: MIT, see LICENSE.
// Coerces a block of any type to any type. What can be coerced must be of the type asked for,
// print, and survive being copied; texts and numbers that were made must not change any more on
// their way there and back. Input: a byte for each of the two types, or 0xFF and the type itself;
// then data.
#include <AE/AEHelpers.h>
#include <CarbonCore/MacMemory.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

#include "platform/appleevents/ByteOrder.h"
#include "platform/appleevents/Storage.h"

namespace {

using platform::appleevents::Bytes;
using platform::appleevents::bytesOf;
using platform::appleevents::HeldDesc;

void require(bool holds) {
  if (!holds) std::abort();
}

/// Those that look running processes up are left out: they depend on more than the input.
constexpr DescType kTypes[] = {typeBoolean,
                               typeTrue,
                               typeFalse,
                               typeChar,
                               typeCString,
                               typePString,
                               typeEncodedString,
                               typeUnicodeText,
                               typeStyledUnicodeText,
                               typeUTF16ExternalRepresentation,
                               typeUTF8Text,
                               typeSInt16,
                               typeUInt16,
                               typeSInt32,
                               typeUInt32,
                               typeSInt64,
                               typeUInt64,
                               typeIEEE32BitFloatingPoint,
                               typeIEEE64BitFloatingPoint,
                               typeType,
                               typeEnumerated,
                               typeKeyword,
                               typeProperty,
                               typeQDPoint,
                               typeQDRectangle,
                               typeLongDateTime,
                               typeMachPort,
                               typeAEList,
                               typeAERecord,
                               typeAppleEvent,
                               typeNull,
                               typeWildCard,
                               typeBest};

bool isKnown(DescType type) {
  return std::find(std::begin(kTypes), std::end(kTypes), type) != std::end(kTypes);
}

DescType takeType(Bytes& input) {
  if (input.empty()) return typeNull;
  const auto choice = std::to_integer<std::uint8_t>(input[0]);
  input = input.subspan(1);
  if (choice != 0xFF || input.size() < 4) return kTypes[choice % std::size(kTypes)];
  const DescType type = platform::appleevents::loadWord(input.data());
  input = input.subspan(4);
  // Processes would be looked up.
  const bool isProcess =
      type == typeProcessSerialNumber || type == typeKernelProcessID || type == typeApplSignature;
  return isProcess ? DescType{typeNull} : type;
}

void print(const AEDesc& desc) {
  Handle text = nullptr;
  require(AEPrintDescToHandle(&desc, &text) == noErr);
  require(GetHandleSize(text) > 0);
  DisposeHandle(text);
}

bool isSame(const AEDesc& left, const AEDesc& right) {
  return left.descriptorType == right.descriptorType &&
         std::ranges::equal(bytesOf(left), bytesOf(right));
}

/// What went through another type once and could come back, comes back the same from now on.
void goThereAndBack(const AEDesc& made, DescType through) {
  HeldDesc back;
  if (AECoerceDesc(&made, through, back.out()) != noErr) return;
  HeldDesc again;
  if (AECoerceDesc(&back.get(), made.descriptorType, again.out()) != noErr) return;
  HeldDesc third;
  require(AECoerceDesc(&again.get(), through, third.out()) == noErr);
  HeldDesc fourth;
  require(AECoerceDesc(&third.get(), made.descriptorType, fourth.out()) == noErr);
  require(isSame(again.get(), fourth.get()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes input = std::as_bytes(std::span(data, size));
  const DescType from = takeType(input);
  const DescType to = takeType(input);
  HeldDesc source;
  const OSErr created =
      AECreateDesc(from, input.data(), static_cast<Size>(input.size()), source.out());
  HeldDesc made;
  const OSErr status =
      AECoercePtr(from, input.data(), static_cast<Size>(input.size()), to, made.out());
  if (created != noErr) {
    require(created == errAECorruptData);
    require(status != noErr && made.get().dataHandle == nullptr);
    return 0;
  }
  print(source.get());
  if (status != noErr) {
    require(status == errAECoercionFail || status == errAECorruptData);
    require(made.get().dataHandle == nullptr && made.get().descriptorType == typeNull);
    return 0;
  }
  require(made.get().descriptorType == to || to == typeWildCard || to == typeBest);
  print(made.get());
  HeldDesc fromDesc;
  require(AECoerceDesc(&source.get(), to, fromDesc.out()) == noErr);
  require(isSame(made.get(), fromDesc.get()));
  if (isKnown(from)) goThereAndBack(made.get(), from);
  return 0;
}
