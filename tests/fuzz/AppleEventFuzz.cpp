// Licence: MIT, see LICENSE.
// Feeds a message's body to the decoder of Apple events and then uses the event as handlers do.
// What has been decoded must be readable throughout, and must decode again in the form in which it
// would be sent on.
#include <AE/AEMach.h>
#include <AE/AppleEvents.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/appleevents/Dispatch.h"
#include "platform/appleevents/Storage.h"
#include "platform/mach/MessageBlock.h"

namespace {

using platform::appleevents::Bytes;
using platform::appleevents::bytesOf;
using platform::appleevents::HeldDesc;

void require(bool holds) {
  if (!holds) std::abort();
}

platform::mach::Message messageOf(Bytes body) {
  platform::mach::Message message;
  message.id = platform::mach::kAppleEventMessageID;
  message.body.memory.reset(static_cast<std::byte*>(std::malloc(body.size() + 1)));
  if (!body.empty()) std::memcpy(message.body.memory.get(), body.data(), body.size());
  message.body.size = body.size();
  return message;
}

/// Everything that the table knows, and a stranger.
constexpr DescType kTypes[] = {typeBoolean,  typeTrue,        typeFalse,
                               typeChar,     typeUnicodeText, typeSInt16,
                               typeUInt16,   typeSInt32,      typeUInt32,
                               typeSInt64,   typeUInt64,      typeIEEE32BitFloatingPoint,
                               typeType,     typeEnumerated,  typeIEEE64BitFloatingPoint,
                               typeAEList,   typeAERecord,    typeProcessSerialNumber,
                               typeMachPort, typeAppleEvent,  typeNull,
                               typeWildCard, 'zzzz'};

void coerceToEverything(const AEDesc& desc) {
  for (const DescType type : kTypes) {
    HeldDesc coerced;
    const OSErr status = AECoerceDesc(&desc, type, coerced.out());
    if (status != noErr) require(coerced.get().dataHandle == nullptr);
  }
}

void walk(const AEDesc& container);

void useItem(const AEDesc& container, SInt32 index) {
  AEKeyword keyword = 0;
  DescType type = 0;
  Size size = -1;
  HeldDesc item;
  require(AESizeOfNthItem(&container, index, &type, &size) == noErr && size >= 0);
  require(AEGetNthDesc(&container, index, typeWildCard, &keyword, item.out()) == noErr);
  require(type == typeNull || AEGetDescDataSize(&item.get()) == size);
  std::array<std::byte, 5> beginning;
  require(AEGetNthPtr(&container, index, typeWildCard, nullptr, &type, beginning.data(),
                      beginning.size(), &size) == noErr);
  if (type != typeNull) {
    const Bytes whole = bytesOf(item.get());
    const std::size_t count = std::min(whole.size(), beginning.size());
    require(std::equal(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(count),
                       beginning.begin()));
  }
  if (container.descriptorType != typeAEList) {
    require(AESizeOfKeyDesc(&container, keyword, nullptr, nullptr) == noErr);
  }
  coerceToEverything(item.get());
  walk(item.get());
}

void useAttributes(const AppleEvent& event) {
  for (const AEKeyword keyword :
       {keyEventClassAttr, keyEventIDAttr, keyReturnIDAttr, keyTransactionIDAttr, keyAddressAttr,
        keyOriginalAddressAttr, keyEventSourceAttr, keyReplyRequestedAttr, keyTimeoutAttr,
        keyInteractLevelAttr, keyOptionalKeywordAttr, keyMissedKeywordAttr}) {
    HeldDesc attribute;
    if (AEGetAttributeDesc(&event, keyword, typeWildCard, attribute.out()) == noErr) {
      coerceToEverything(attribute.get());
      walk(attribute.get());
    }
  }
}

void walk(const AEDesc& container) {
  SInt32 count = 0;
  if (AECountItems(&container, &count) != noErr) return;
  for (SInt32 index = 1; index <= count; ++index) useItem(container, index);
  require(AESizeOfNthItem(&container, count + 1, nullptr, nullptr) == errAEDescNotFound);
  if (container.descriptorType == typeAppleEvent) useAttributes(container);
}

/// Changes an event as a handler that passes it on would.
void change(const AppleEvent& event) {
  HeldDesc copy;
  require(AEDuplicateDesc(&event, copy.out()) == noErr);
  require(AEPutParamPtr(copy.out(), 'mark', typeChar, "mark", 4) == noErr);
  require(AEPutAttributePtr(copy.out(), 'mark', typeChar, "attribute", 9) == noErr);
  AEKeyword keyword = 0;
  DescType type = 0;
  require(AEGetNthPtr(&copy.get(), 1, typeWildCard, &keyword, &type, nullptr, 0, nullptr) == noErr);
  require(AEDeleteItem(copy.out(), 1) == noErr);
  HeldDesc again;
  require(platform::appleevents::decodeMessage(messageOf(bytesOf(copy.get())), again.out(),
                                               nullptr) == noErr);
}

/// A handler for everything, which uses what it is handed. The reply is of no use to it.
OSErr handle(const AppleEvent* event, AppleEvent* reply, SInt32) {
  require(reply->descriptorType == typeNull);
  walk(*event);
  return eventNotHandledErr;
}

/// Has the event handled as one that a run loop took from a port.
void dispatch(Bytes body, OSStatus decoded) {
  static const OSErr installed =
      AEInstallEventHandler(typeWildCard, typeWildCard, NewAEEventHandlerUPP(handle), 0, false);
  require(installed == noErr);
  const OSStatus status = platform::appleevents::processMessage(messageOf(body));
  require(status == (decoded == noErr ? OSStatus{eventNotHandledErr} : decoded));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes body = std::as_bytes(std::span(data, size));
  HeldDesc event;
  HeldDesc reply;
  static_cast<void>(platform::appleevents::peekKind(body));
  const OSStatus status =
      platform::appleevents::decodeMessage(messageOf(body), event.out(), reply.out());
  require(reply.get().dataHandle == nullptr);
  dispatch(body, status);
  if (status != noErr) {
    require(status == errAECorruptData && event.get().dataHandle == nullptr);
    return 0;
  }
  require(platform::appleevents::peekKind(body).has_value());
  walk(event.get());
  change(event.get());

  HeldDesc again;
  require(platform::appleevents::decodeMessage(messageOf(bytesOf(event.get())), again.out(),
                                               nullptr) == noErr);
  require(std::ranges::equal(bytesOf(event.get()), bytesOf(again.get())));
  return 0;
}
