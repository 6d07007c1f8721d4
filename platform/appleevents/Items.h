// Licence: MIT, see LICENSE.
// The form of lists, records and events, in memory and on the wire alike. All words are big-endian.
//
//   list, record   count of items | items
//   event          mark | count of attributes | bytes of attributes | count of parameters |
//                  attributes | parameters
//   item           keyword ('****' in a list) | type | length of data | data | 0 to 3 zero bytes
//
// Data of an item that is itself a list, record or event has that form again. Nothing here trusts a
// length: a walk ends where the bytes make no sense.
#ifndef PLATFORM_APPLEEVENTS_ITEMS_H
#define PLATFORM_APPLEEVENTS_ITEMS_H

#include <optional>

#include "platform/appleevents/ByteOrder.h"
#include "platform/appleevents/Storage.h"

namespace platform::appleevents {

inline constexpr std::size_t kWord = 4;
inline constexpr std::size_t kItemHeader = 3 * kWord;
inline constexpr std::size_t kListHeader = kWord;
inline constexpr std::size_t kEventHeader = 4 * kWord;
inline constexpr UInt32 kEventMark = 0x61650001;  // "ae", version 1

inline bool hasItems(DescType type) {
  return type == typeAEList || type == typeAERecord || type == typeAppleEvent;
}

struct Item {
  AEKeyword keyword;
  DescType type;
  Bytes data;
  std::size_t offset;  // of its header in the block
  UInt32 index;        // from 1

  std::size_t end() const { return offset + kItemHeader + paddedSize(data.size()); }
  static constexpr std::size_t paddedSize(std::size_t size) {
    return (size + kWord - 1) / kWord * kWord;
  }
};

/// Which items of a block: all of a list or record are kParameters.
enum class Part { kParameters, kAttributes };

/// The stretch of a block in which items lie.
struct Region {
  std::size_t begin;
  std::size_t end;
  UInt32 count;
};

/// Nothing if the block of this type is too short or its header does not fit it.
std::optional<Region> findRegion(DescType type, Bytes block, Part part);

/// Items in their order; nothing behind the last one, or where the bytes make no sense.
std::optional<Item> firstItem(Bytes block, const Region& region);
std::optional<Item> nextItem(Bytes block, const Region& region, const Item& item);
std::optional<Item> findItem(Bytes block, const Region& region, AEKeyword keyword);
/// An attribute of an event.
std::optional<Item> findAttribute(const Storage& event, const Region& attributes,
                                  AEKeyword keyword);
/// The item whose header is at `offset`.
std::optional<Item> itemAt(Bytes block, const Region& region, std::size_t offset, UInt32 index);

/// The items of a descriptor. It lives no longer than the descriptor and does not outlast another's
/// change to it.
class Items final {
 public:
  /// Results as <AE/AEDataModel.h> has them for a descriptor of the wrong kind.
  static OSErr open(const AEDesc* desc, Part part, std::optional<Items>& items);

  UInt32 count() const { return region.count; }
  std::optional<Item> first() const { return firstItem(block(), region); }
  std::optional<Item> next(const Item& item) const { return nextItem(block(), region, item); }
  std::optional<Item> find(AEKeyword keyword) const;
  std::optional<Item> at(UInt32 index) const;

  /// Writes an item in the place of another, or at the end. `data` is in the host's order, and is
  /// not part of the same block.
  OSErr put(const std::optional<Item>& replaced, AEKeyword keyword, DescType type, Bytes data);
  /// Puts under a keyword, replacing.
  OSErr putKey(AEKeyword keyword, DescType type, Bytes data);
  void remove(const Item& item);

  Storage& storage() const { return *owner; }

 private:
  Items(Storage& storage, DescType type, Part part, const Region& found);
  Bytes block() const { return owner->bytes(); }
  void setExtent(UInt32 count, std::size_t end);

  Storage* owner;
  DescType type;
  Part part;
  Region region;
};

/// The block of an empty list or record; null without memory.
std::unique_ptr<Storage> makeEmpty();

/// Makes a descriptor of an item.
OSErr makeDesc(const Item& item, AEDesc* result);

// Every look at an event walks through its items, so the step from one to the next is inline.

inline std::optional<Item> itemAt(Bytes block, const Region& region, std::size_t offset,
                                  UInt32 index) {
  if (index > region.count || region.end - offset < kItemHeader) return std::nullopt;
  const std::byte* header = block.data() + offset;
  const std::size_t room = region.end - offset - kItemHeader;
  const std::size_t length = loadWord(header + 2 * kWord);
  if (length > room || Item::paddedSize(length) > room) return std::nullopt;
  return Item{loadWord(header), loadWord(header + kWord),
              block.subspan(offset + kItemHeader, length), offset, index};
}

inline std::optional<Item> firstItem(Bytes block, const Region& region) {
  return itemAt(block, region, region.begin, 1);
}

inline std::optional<Item> nextItem(Bytes block, const Region& region, const Item& item) {
  return itemAt(block, region, item.end(), item.index + 1);
}

}  // namespace platform::appleevents

#endif
