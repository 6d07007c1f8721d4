// Licence: MIT, see LICENSE.
// Lists and records by index.
#include <AE/AEDataModel.h>

#include "platform/appleevents/ItemCalls.h"

using namespace platform::appleevents;

namespace {

OSErr putItem(AEDescList* list, SInt32 index, const Incoming& incoming) {
  if (list == nullptr) return paramErr;
  if (incoming.status() != noErr) return incoming.status();
  std::optional<Items> items;
  const OSErr status = Items::open(list, Part::kParameters, items);
  if (status != noErr) return status;
  if (list->descriptorType != typeAEList) return errAEWrongDataType;
  const auto place = static_cast<UInt32>(index);
  if (index < 0 || place > items->count() + 1) return errAEIllegalIndex;
  std::optional<Item> replaced;
  if (place != 0 && place <= items->count()) {
    replaced = items->at(place);
    if (!replaced) return errAECorruptData;
  }
  return items->put(replaced, typeWildCard, incoming.type(), incoming.data());
}

/// The item at an index, counted as read; `missing` is the result when there is none.
OSErr findItem(const AEDescList* list, SInt32 index, OSErr missing, std::optional<Items>& items,
               std::optional<Item>& item) {
  const OSErr status = Items::open(list, Part::kParameters, items);
  if (status != noErr) return status;
  if (index >= 1) item = items->at(static_cast<UInt32>(index));
  if (!item) return missing;
  return noErr;
}

}  // namespace

OSErr AECreateList(const void* factoring, Size factoredSize, Boolean isRecord, AEDescList* result) {
  if (result == nullptr) return paramErr;
  *result = kNullDesc;
  if (factoring != nullptr && factoredSize < 0) return paramErr;
  const DescType type = isRecord ? typeAERecord : typeAEList;
  std::unique_ptr<Storage> storage = makeEmpty();
  if (storage == nullptr) return memFullErr;
  *result = {type, storage.release()};
  return noErr;
}

OSErr AECountItems(const AEDescList* list, SInt32* count) {
  if (count == nullptr) return paramErr;
  std::optional<Items> items;
  const OSErr status = Items::open(list, Part::kParameters, items);
  if (status == noErr) *count = static_cast<SInt32>(items->count());
  return status;
}

OSErr AEPutPtr(AEDescList* list, SInt32 index, DescType type, const void* data, Size size) {
  return putItem(list, index, Incoming(type, data, size));
}

OSErr AEPutDesc(AEDescList* list, SInt32 index, const AEDesc* desc) {
  return putItem(list, index, Incoming(desc, list));
}

OSErr AEGetNthPtr(const AEDescList* list, SInt32 index, DescType desiredType, AEKeyword* keyword,
                  DescType* actualType, void* data, Size maximumSize, Size* actualSize) {
  std::optional<Items> items;
  std::optional<Item> item;
  OSErr status = findItem(list, index, errAEDescNotFound, items, item);
  if (status != noErr) return status;
  status = getItem(*item, {desiredType, actualType, data, maximumSize, actualSize});
  if (status != noErr) return status;
  if (keyword != nullptr) *keyword = item->keyword;
  items->storage().markRead(item->index);
  return noErr;
}

OSErr AEGetNthDesc(const AEDescList* list, SInt32 index, DescType desiredType, AEKeyword* keyword,
                   AEDesc* result) {
  if (result == nullptr) return paramErr;
  std::optional<Items> items;
  std::optional<Item> item;
  OSErr status = findItem(list, index, errAEDescNotFound, items, item);
  *result = kNullDesc;
  if (status == noErr) status = getItem(*item, desiredType, result);
  if (status != noErr) return status;
  if (keyword != nullptr) *keyword = item->keyword;
  items->storage().markRead(item->index);
  return noErr;
}

OSErr AESizeOfNthItem(const AEDescList* list, SInt32 index, DescType* type, Size* size) {
  std::optional<Items> items;
  std::optional<Item> item;
  const OSErr status = findItem(list, index, errAEDescNotFound, items, item);
  return status == noErr ? describeItem(*item, type, size) : status;
}

OSErr AEDeleteItem(AEDescList* list, SInt32 index) {
  std::optional<Items> items;
  std::optional<Item> item;
  const OSErr status = findItem(list, index, errAEIllegalIndex, items, item);
  if (status == noErr) items->remove(*item);
  return status;
}
