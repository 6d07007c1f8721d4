// Licence: MIT, see LICENSE.
// Records by keyword, and the parameters of events, which are the same.
#include <AE/AEDataModel.h>

#include "platform/appleevents/ItemCalls.h"

using namespace platform::appleevents;

namespace {

OSErr openRecord(const AERecord* record, std::optional<Items>& items) {
  const OSErr status = Items::open(record, Part::kParameters, items);
  if (status != noErr) return status;
  if (record->descriptorType == typeAEList) return errAEWrongDataType;
  return noErr;
}

OSErr putKey(AERecord* record, AEKeyword keyword, const Incoming& incoming) {
  if (record == nullptr) return paramErr;
  if (incoming.status() != noErr) return incoming.status();
  std::optional<Items> items;
  const OSErr status = openRecord(record, items);
  return status == noErr ? items->putKey(keyword, incoming.type(), incoming.data()) : status;
}

OSErr findKey(const AERecord* record, AEKeyword keyword, std::optional<Items>& items,
              std::optional<Item>& item) {
  const OSErr status = openRecord(record, items);
  if (status != noErr) return status;
  item = items->find(keyword);
  if (!item) return errAEDescNotFound;
  return noErr;
}

}  // namespace

Boolean AECheckIsRecord(const AEDesc* desc) {
  return desc != nullptr && desc->dataHandle != nullptr &&
         (desc->descriptorType == typeAERecord || desc->descriptorType == typeAppleEvent);
}

OSErr AEPutKeyPtr(AERecord* record, AEKeyword keyword, DescType type, const void* data, Size size) {
  return putKey(record, keyword, Incoming(type, data, size));
}

OSErr AEPutKeyDesc(AERecord* record, AEKeyword keyword, const AEDesc* desc) {
  return putKey(record, keyword, Incoming(desc, record));
}

OSErr AEGetKeyPtr(const AERecord* record, AEKeyword keyword, DescType desiredType,
                  DescType* actualType, void* data, Size maximumSize, Size* actualSize) {
  std::optional<Items> items;
  OSErr status = openRecord(record, items);
  if (status != noErr) return status;
  const std::optional<Item> item = items->find(keyword);
  if (!item) return errAEDescNotFound;
  status = getItem(*item, {desiredType, actualType, data, maximumSize, actualSize});
  if (status == noErr) items->storage().markRead(item->index);
  return status;
}

OSErr AEGetKeyDesc(const AERecord* record, AEKeyword keyword, DescType desiredType,
                   AEDesc* result) {
  if (result == nullptr) return paramErr;
  std::optional<Items> items;
  std::optional<Item> item;
  OSErr status = findKey(record, keyword, items, item);
  *result = kNullDesc;
  if (status == noErr) status = getItem(*item, desiredType, result);
  if (status == noErr) items->storage().markRead(item->index);
  return status;
}

OSErr AESizeOfKeyDesc(const AERecord* record, AEKeyword keyword, DescType* type, Size* size) {
  std::optional<Items> items;
  std::optional<Item> item;
  const OSErr status = findKey(record, keyword, items, item);
  return status == noErr ? describeItem(*item, type, size) : status;
}

OSErr AEDeleteKeyDesc(AERecord* record, AEKeyword keyword) {
  std::optional<Items> items;
  std::optional<Item> item;
  const OSErr status = findKey(record, keyword, items, item);
  // Bytes from elsewhere may hold a keyword twice; it is to be gone altogether.
  for (; item; item = items->find(keyword)) items->remove(*item);
  return status;
}

OSErr AEPutParamPtr(AppleEvent* event, AEKeyword keyword, DescType type, const void* data,
                    Size size) {
  return AEPutKeyPtr(event, keyword, type, data, size);
}

OSErr AEPutParamDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* desc) {
  return AEPutKeyDesc(event, keyword, desc);
}

OSErr AEGetParamPtr(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                    DescType* actualType, void* data, Size maximumSize, Size* actualSize) {
  return AEGetKeyPtr(event, keyword, desiredType, actualType, data, maximumSize, actualSize);
}

OSErr AEGetParamDesc(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                     AEDesc* result) {
  return AEGetKeyDesc(event, keyword, desiredType, result);
}

OSErr AESizeOfParam(const AppleEvent* event, AEKeyword keyword, DescType* type, Size* size) {
  return AESizeOfKeyDesc(event, keyword, type, size);
}

OSErr AEDeleteParam(AppleEvent* event, AEKeyword keyword) {
  return AEDeleteKeyDesc(event, keyword);
}
