// Licence: MIT, see LICENSE.
#include "platform/appleevents/Items.h"

#include <algorithm>

#include "platform/appleevents/ByteOrder.h"
#include "platform/appleevents/EventFront.h"

namespace platform::appleevents {
namespace {

// Offsets of the words of an event's header.
constexpr std::size_t kAttributeCountAt = 1 * kWord;
constexpr std::size_t kAttributeBytesAt = 2 * kWord;
constexpr std::size_t kParameterCountAt = 3 * kWord;

}  // namespace

std::optional<Region> findRegion(DescType type, Bytes block, Part part) {
  if (type != typeAppleEvent) {
    if (!hasItems(type) || block.size() < kListHeader) return std::nullopt;
    return Region{kListHeader, block.size(), loadWord(block.data())};
  }
  if (block.size() < kEventHeader || loadWord(block.data()) != kEventMark) return std::nullopt;
  const std::size_t attributeBytes = loadWord(block.data() + kAttributeBytesAt);
  if (attributeBytes > block.size() - kEventHeader) return std::nullopt;
  const std::size_t middle = kEventHeader + attributeBytes;
  if (part == Part::kAttributes) {
    return Region{kEventHeader, middle, loadWord(block.data() + kAttributeCountAt)};
  }
  return Region{middle, block.size(), loadWord(block.data() + kParameterCountAt)};
}

std::optional<Item> findItem(Bytes block, const Region& region, AEKeyword keyword) {
  std::size_t offset = region.begin;
  for (UInt32 index = 1; index <= region.count; ++index) {
    const std::optional<Item> item = itemAt(block, region, offset, index);
    if (!item || item->keyword == keyword) return item;
    offset = item->end();
  }
  return std::nullopt;
}

std::optional<Item> findAttribute(const Storage& event, const Region& attributes,
                                  AEKeyword keyword) {
  if (!event.hasFront()) return findItem(event.bytes(), attributes, keyword);
  if (const FrontAttribute* front = frontAttribute(keyword)) {
    return frontItem(event.bytes(), *front);
  }
  std::optional<Item> item = findItem(event.bytes(), behindFront(attributes), keyword);
  if (item) item->index += static_cast<UInt32>(kFront.size());
  return item;
}

Items::Items(Storage& storage, DescType ofType, Part ofPart, const Region& found)
    : owner(&storage), type(ofType), part(ofPart), region(found) {}

OSErr Items::open(const AEDesc* desc, Part part, std::optional<Items>& items) {
  if (desc == nullptr) return paramErr;
  const DescType type = desc->descriptorType;
  if (part == Part::kAttributes && type != typeAppleEvent) return errAENotAppleEvent;
  if (type == typeNull || (hasItems(type) && desc->dataHandle == nullptr)) return errAENotAEDesc;
  if (!hasItems(type)) return errAEWrongDataType;
  const std::optional<Region> region = findRegion(type, bytesOf(*desc), part);
  if (!region) return errAECorruptData;
  items = Items(*desc->dataHandle, type, part, *region);
  return noErr;
}

std::optional<Item> Items::find(AEKeyword keyword) const {
  if (part == Part::kAttributes) return findAttribute(*owner, region, keyword);
  return owner->keys.find(block(), region, keyword);
}

std::optional<Item> Items::at(UInt32 index) const {
  if (index < 1 || index > region.count) return std::nullopt;
  const Cursor::Place known = part == Part::kParameters ? owner->cursor.get() : Cursor::Place{0, 0};
  std::optional<Item> item = known.index != 0 && known.index <= index
                                 ? itemAt(block(), region, known.offset, known.index)
                                 : first();
  while (item && item->index != index) item = next(*item);
  if (item && part == Part::kParameters) {
    owner->cursor.set({index, static_cast<UInt32>(item->offset)});
  }
  return item;
}

OSErr Items::put(const std::optional<Item>& replaced, AEKeyword keyword, DescType dataType,
                 Bytes data) {
  if (data.size() > Storage::kMaxSize - kItemHeader - kWord) return memFullErr;
  const std::size_t offset = replaced ? replaced->offset : region.end;
  const std::size_t removed = replaced ? replaced->end() - offset : 0;
  const std::size_t extent = kItemHeader + Item::paddedSize(data.size());
  std::byte* at = owner->splice(offset, removed, extent);
  if (at == nullptr) return memFullErr;
  storeWord(at, keyword);
  storeWord(at + kWord, dataType);
  storeWord(at + 2 * kWord, static_cast<UInt32>(data.size()));
  const WritableBytes room(at + kItemHeader, extent - kItemHeader);
  reorder(dataType, data, room.first(data.size()));
  std::ranges::fill(room.subspan(data.size()), std::byte{0});
  setExtent(region.count + (replaced ? 0 : 1), region.end - removed + extent);
  return noErr;
}

OSErr Items::putKey(AEKeyword keyword, DescType dataType, Bytes data) {
  const std::optional<Item> replaced = find(keyword);
  const UInt32 before = region.count;
  const OSErr status = put(replaced, keyword, dataType, data);
  if (status == noErr && !replaced && part == Part::kParameters) {
    owner->keys.noteAppended(before, keyword);
  }
  return status;
}

void Items::remove(const Item& item) {
  const std::size_t removed = item.end() - item.offset;
  owner->splice(item.offset, removed, 0);  // never grows, so it cannot fail
  setExtent(region.count - 1, region.end - removed);
}

void Items::setExtent(UInt32 count, std::size_t end) {
  region.count = count;
  region.end = end;
  std::byte* header = owner->writable().data();
  if (type != typeAppleEvent) {
    storeWord(header, count);
  } else if (part == Part::kParameters) {
    storeWord(header + kParameterCountAt, count);
  } else {
    storeWord(header + kAttributeCountAt, count);
    storeWord(header + kAttributeBytesAt, static_cast<UInt32>(end - kEventHeader));
  }
}

std::unique_ptr<Storage> makeEmpty() {
  std::unique_ptr<Storage> storage = Storage::make(kListHeader);
  if (storage != nullptr) std::ranges::fill(storage->writable(), std::byte{0});
  return storage;
}

OSErr makeDesc(const Item& item, AEDesc* result) {
  *result = kNullDesc;
  if (item.type == typeNull) return noErr;
  std::unique_ptr<Storage> storage = Storage::make(item.data.size());
  if (storage == nullptr) return memFullErr;
  reorder(item.type, item.data, storage->writable());
  *result = {item.type, storage.release()};
  return noErr;
}

}  // namespace platform::appleevents
