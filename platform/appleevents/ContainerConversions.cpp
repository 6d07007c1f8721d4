// Licence: MIT, see LICENSE.
#include <algorithm>

#include "platform/appleevents/ByteOrder.h"
#include "platform/appleevents/Conversions.h"
#include "platform/appleevents/Items.h"

namespace platform::appleevents {

OSErr anyToList(const Source& from, DescType, AEDesc* result) {
  HeldDesc list;
  OSErr status = AECreateList(nullptr, 0, false, list.out());
  if (status != noErr) return status;
  status =
      AEPutPtr(list.out(), 0, from.type, from.data.data(), static_cast<Size>(from.data.size()));
  if (status == noErr) *result = list.take();
  return status;
}

/// A list of one is as good as its item.
OSErr listToAny(const Source& from, DescType toType, AEDesc* result) {
  const std::optional<Region> region = findRegion(from.type, from.data, Part::kParameters);
  if (!region || region->count != 1) return errAECoercionFail;
  const std::optional<Item> item = firstItem(from.data, *region);
  if (!item) return errAECorruptData;
  HeldDesc held;
  const OSErr status = makeDesc(*item, held.out());
  return status == noErr ? AECoerceDesc(&held.get(), toType, result) : status;
}

/// An event's parameters without its attributes.
OSErr eventToRecord(const Source& from, DescType, AEDesc* result) {
  const std::optional<Region> region = findRegion(from.type, from.data, Part::kParameters);
  if (!region) return errAECorruptData;
  std::unique_ptr<Storage> record = makeEmpty();
  if (record == nullptr) return memFullErr;
  const Bytes items = from.data.subspan(region->begin);
  std::byte* room = record->splice(kListHeader, 0, items.size());
  if (room == nullptr) return memFullErr;
  std::ranges::copy(items, room);
  storeWord(record->writable().data(), region->count);
  *result = {typeAERecord, record.release()};
  return noErr;
}

}  // namespace platform::appleevents
