// Licence: MIT, see LICENSE.
// Events and their attributes.
#include <AE/AEMach.h>
#include <AE/AppleEvents.h>

#include <atomic>
#include <cstring>

#include "platform/appleevents/Attributes.h"
#include "platform/appleevents/ByteOrder.h"
#include "platform/appleevents/ItemCalls.h"
#include "platform/appleevents/Validation.h"

using namespace platform::appleevents;

namespace {

/// A return ID that is not the one that asks for it, and comes round after 32767 others.
AEReturnID nextReturnID() {
  static std::atomic<UInt32> last{0};
  return static_cast<AEReturnID>(last.fetch_add(1, std::memory_order_relaxed) % 0x7FFF + 1);
}

OSErr putUnchecked(AppleEvent* event, AEKeyword keyword, DescType type, Bytes data) {
  std::optional<Items> attributes;
  const OSErr status = Items::open(event, Part::kAttributes, attributes);
  return status == noErr ? attributes->putKey(keyword, type, data) : status;
}

OSErr putFixed(AppleEvent* event, const FixedAttribute& rule, const Incoming& incoming) {
  HeldDesc coerced;
  const OSErr status =
      AECoercePtr(incoming.type(), incoming.data().data(),
                  static_cast<Size>(incoming.data().size()), rule.type, coerced.out());
  if (status != noErr) return status;
  const Bytes data = bytesOf(coerced.get());
  if (data.size() != rule.size) return errAECoercionFail;
  return putUnchecked(event, rule.keyword, rule.type, data);
}

OSErr putAttributeData(AppleEvent* event, AEKeyword keyword, const Incoming& incoming) {
  if (event == nullptr || keyword == keyMissedKeywordAttr) return paramErr;
  if (incoming.status() != noErr) return incoming.status();
  const FixedAttribute* rule = fixedAttribute(keyword);
  if (rule == nullptr || (incoming.type() == rule->type && incoming.data().size() == rule->size)) {
    return putUnchecked(event, keyword, incoming.type(), incoming.data());
  }
  return putFixed(event, *rule, incoming);
}

/// Whether the event's list of optional parameters names a keyword.
bool isOptional(const AppleEvent& event, AEKeyword keyword) {
  HeldDesc list;
  if (AEGetAttributeDesc(&event, keyOptionalKeywordAttr, typeAEList, list.out()) != noErr) {
    return false;
  }
  std::optional<Items> names;
  if (Items::open(&list.get(), Part::kParameters, names) != noErr) return false;
  for (auto name = names->first(); name; name = names->next(*name)) {
    if (name->data.size() == kWord && loadWord(name->data.data()) == keyword) return true;
  }
  return false;
}

/// Makes an item of the first parameter that is neither read nor optional.
OSErr findMissed(const AppleEvent* event, std::byte (&word)[kWord], std::optional<Item>& missed) {
  std::optional<Items> parameters;
  const OSErr status = Items::open(event, Part::kParameters, parameters);
  if (status != noErr) return status;
  auto item = parameters->first();
  while (item &&
         (parameters->storage().wasRead(item->index) || isOptional(*event, item->keyword))) {
    item = parameters->next(*item);
  }
  if (!item) return errAEDescNotFound;
  storeWord(word, item->keyword);
  missed = Item{keyMissedKeywordAttr, typeKeyword, Bytes(word), 0, 1};
  return noErr;
}

OSErr findAttribute(const AppleEvent* event, AEKeyword keyword, std::byte (&word)[kWord],
                    std::optional<Item>& item) {
  std::optional<Items> attributes;
  const OSErr status = Items::open(event, Part::kAttributes, attributes);
  if (status != noErr) return status;
  if (keyword == keyMissedKeywordAttr) return findMissed(event, word, item);
  item = attributes->find(keyword);
  if (!item) return errAEDescNotFound;
  return noErr;
}

constexpr Postmark kUnsent = {kAENoReply, kAEDefaultTimeout, kAEUnknownSource, {0, 0}};

OSErr create(const Beginning& beginning, AppleEvent* result) {
  std::unique_ptr<Storage> storage = makeEvent(beginning, kUnsent);
  if (storage == nullptr) return memFullErr;
  *result = {typeAppleEvent, storage.release()};
  return noErr;
}

/// Puts the parts of a postmark one by one.
OSErr putPostmark(AppleEvent& event, const Postmark& mark) {
  OSErr status = putAttribute(event, keyReplyRequestedAttr, typeBoolean, mark.wantsReply());
  if (status == noErr) {
    status = putAttribute(event, keyTimeoutAttr, typeSInt32, mark.timeOutInTicks);
  }
  if (status == noErr) {
    status = putAttribute(event, keyInteractLevelAttr, typeSInt32, mark.interactionLevel());
  }
  if (status == noErr) status = putAttribute(event, keyEventSourceAttr, typeSInt16, mark.source);
  if (status != noErr) return status;
  return putAttribute(event, keyOriginalAddressAttr, typeProcessSerialNumber, mark.sender);
}

}  // namespace

namespace platform::appleevents {

OSErr stamp(const AppleEvent& event, const Postmark& mark) {
  Storage& storage = *event.dataHandle;
  if (storage.hasFront()) {
    writeOverFront(storage.writable(), mark);
    return noErr;
  }
  if (writeOver(storage.writable(), mark)) return noErr;
  AppleEvent changed = event;  // the same storage
  return putPostmark(changed, mark);
}

OSErr trackReads(const AppleEvent& event) {
  std::optional<Items> parameters;
  const OSErr status = Items::open(&event, Part::kParameters, parameters);
  if (status != noErr) return status;
  if (!parameters->storage().trackReads(parameters->count())) return memFullErr;
  return noErr;
}

OSErr createReply(const AppleEvent& event, DescType addressType, Bytes address, AppleEvent* reply) {
  const auto returnID = attribute<AEReturnID>(event, keyReturnIDAttr, typeSInt16);
  const auto transactionID = attribute<AETransactionID>(event, keyTransactionIDAttr, typeSInt32);
  return create({kCoreEventClass, kAEAnswer, returnID.value_or(0),
                 transactionID.value_or(kAnyTransactionID), addressType, address},
                reply);
}

}  // namespace platform::appleevents

OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc* target,
                         AEReturnID returnID, AETransactionID transactionID, AppleEvent* result) {
  if (result == nullptr) return paramErr;
  const AEAddressDesc address = target == nullptr ? kNullDesc : *target;  // the result may be it
  *result = kNullDesc;
  const Incoming addressData(&address, nullptr);
  if (addressData.status() != noErr) return addressData.status();
  if (returnID == kAutoGenerateReturnID) returnID = nextReturnID();
  return create(
      {eventClass, eventID, returnID, transactionID, addressData.type(), addressData.data()},
      result);
}

OSErr AEPutAttributePtr(AppleEvent* event, AEKeyword keyword, DescType type, const void* data,
                        Size size) {
  return putAttributeData(event, keyword, Incoming(type, data, size));
}

OSErr AEPutAttributeDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* desc) {
  return putAttributeData(event, keyword, Incoming(desc, event));
}

OSErr AEGetAttributePtr(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                        DescType* actualType, void* data, Size maximumSize, Size* actualSize) {
  std::byte word[kWord];
  std::optional<Item> item;
  const OSErr status = findAttribute(event, keyword, word, item);
  if (status != noErr) return status;
  return getItem(*item, {desiredType, actualType, data, maximumSize, actualSize});
}

OSErr AEGetAttributeDesc(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                         AEDesc* result) {
  if (result == nullptr) return paramErr;
  std::byte word[kWord];
  std::optional<Item> item;
  const OSErr status = findAttribute(event, keyword, word, item);
  *result = kNullDesc;
  return status == noErr ? getItem(*item, desiredType, result) : status;
}

OSErr AESizeOfAttribute(const AppleEvent* event, AEKeyword keyword, DescType* type, Size* size) {
  std::byte word[kWord];
  std::optional<Item> item;
  const OSErr status = findAttribute(event, keyword, word, item);
  return status == noErr ? describeItem(*item, type, size) : status;
}
