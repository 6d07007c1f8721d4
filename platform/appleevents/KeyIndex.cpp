// Licence: MIT, see LICENSE.
#include "platform/appleevents/KeyIndex.h"

#include <algorithm>
#include <bit>

#include "platform/appleevents/ByteOrder.h"
#include "platform/appleevents/Items.h"
#include "platform/memory/Allocation.h"

namespace platform::appleevents {
namespace {

/// So many times all items are walked before they are indexed: a change in between that moves items
/// must not cost more than it did without an index.
constexpr UInt32 kPatience = 4;
/// More items are walked. They have 200 MB at least.
constexpr UInt32 kMostItems = 1 << 24;

constexpr UInt32 kIndexBits = 5;  // of an index in a small record, or of the one behind it
static_assert(KeyIndex::kSmallest + 1 < 1 << kIndexBits);

UInt32 hashOf(AEKeyword keyword) { return keyword * 0x9E3779B1u; }

std::uint64_t bitOfKeyword(AEKeyword keyword) {
  return std::uint64_t{1} << (hashOf(keyword) >> 26);
}

/// Looks at nothing but keywords and lengths on the way.
std::optional<Item> walkTo(Bytes block, const Region& region, AEKeyword keyword) {
  std::size_t offset = region.begin;
  for (UInt32 index = 1; index <= region.count; ++index) {
    const std::size_t room = region.end - offset;
    if (room < kItemHeader) return std::nullopt;
    const std::byte* header = block.data() + offset;
    if (loadWord(header) == keyword) return itemAt(block, region, offset, index);
    const std::size_t length = loadWord(header + 2 * kWord);
    if (length > room || kItemHeader + Item::paddedSize(length) > room) return std::nullopt;
    offset += kItemHeader + Item::paddedSize(length);
  }
  return std::nullopt;
}

}  // namespace

std::optional<Item> KeyIndex::find(Bytes block, const Region& region, AEKeyword keyword) {
  if (region.count <= kSmallest && region.count == putCount) {
    return findPut(block, region, keyword);
  }
  if (region.count <= kSmallest || region.count > kMostItems ||
      busy.test_and_set(std::memory_order_acquire)) {
    return walkTo(block, region, keyword);
  }
  std::optional<Item> item = findWhileHeld(block, region, keyword);
  busy.clear(std::memory_order_release);
  return item;
}

std::optional<Item> KeyIndex::findPut(Bytes block, const Region& region, AEKeyword keyword) {
  if ((putKeywords & bitOfKeyword(keyword)) == 0) return std::nullopt;
  const UInt32 next = likelyNext.load(std::memory_order_relaxed);
  std::optional<Item> item =
      next == 0 ? firstItem(block, region)
                : itemAt(block, region, next >> kIndexBits, next & ((1u << kIndexBits) - 1));
  if (!item || item->keyword != keyword) item = walkTo(block, region, keyword);
  if (!item) return std::nullopt;
  const std::size_t behind = item->end();
  const bool fits = behind <= UINT32_MAX >> kIndexBits;
  likelyNext.store(fits ? static_cast<UInt32>(behind) << kIndexBits | (item->index + 1) : 0,
                   std::memory_order_relaxed);
  return item;
}

void KeyIndex::noteAppended(UInt32 count, AEKeyword keyword) {
  if (count != putCount) return;
  ++putCount;
  putKeywords |= bitOfKeyword(keyword);
}

std::optional<Item> KeyIndex::findWhileHeld(Bytes block, const Region& region, AEKeyword keyword) {
  if (slots == nullptr && walked < kPatience * region.count) return walk(block, region, keyword);
  if (covered < region.count && !addUpTo(block, region)) {
    clear();
    return walk(block, region, keyword);
  }
  const Slot& slot = slotFor(keyword);
  if (slot.index == 0) return std::nullopt;
  return itemAt(block, region, slot.offset, slot.index);
}

std::optional<Item> KeyIndex::walk(Bytes block, const Region& region, AEKeyword keyword) {
  std::optional<Item> item = walkTo(block, region, keyword);
  walked += item ? item->index : region.count;
  return item;
}

/// Adds the items that it does not cover yet. False without memory.
bool KeyIndex::addUpTo(Bytes block, const Region& region) {
  if (!reserve(region.count)) return false;
  std::optional<Item> item = itemAt(block, region, covered == 0 ? region.begin : end, covered + 1);
  for (; item; item = nextItem(block, region, *item)) {
    add({item->keyword, static_cast<UInt32>(item->offset), item->index});
    covered = item->index;
    end = static_cast<UInt32>(item->end());
  }
  covered = region.count;  // behind bytes that make no sense nothing is found either way
  return true;
}

bool KeyIndex::reserve(UInt32 count) {
  if (count <= capacity / 2) return true;
  const UInt32 roomy = std::bit_ceil(count) * 2;
  auto* fresh = static_cast<Slot*>(memory::allocateCleared(roomy * sizeof(Slot)));
  if (fresh == nullptr) return false;
  const std::unique_ptr<Slot[], Free> old =
      std::exchange(slots, std::unique_ptr<Slot[], Free>(fresh));
  const UInt32 oldCapacity = std::exchange(capacity, roomy);
  for (const Slot& slot : std::span(old.get(), oldCapacity)) {
    if (slot.index != 0) add(slot);
  }
  return true;
}

KeyIndex::Slot& KeyIndex::slotFor(AEKeyword keyword) const {
  UInt32 at = hashOf(keyword) >> (32 - std::bit_width(capacity - 1));
  while (slots[at].index != 0 && slots[at].keyword != keyword) at = (at + 1) & (capacity - 1);
  return slots[at];
}

/// Of several items under one keyword the first counts.
void KeyIndex::add(const Slot& slot) {
  Slot& place = slotFor(slot.keyword);
  if (place.index == 0) place = slot;
}

void KeyIndex::clear() {
  slots.reset();
  capacity = covered = end = walked = putCount = 0;
  putKeywords = 0;
  likelyNext.store(0, std::memory_order_relaxed);
}

}  // namespace platform::appleevents
