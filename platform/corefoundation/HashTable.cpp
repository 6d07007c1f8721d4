// Licence: MIT, see LICENSE.
#include "platform/corefoundation/HashTable.h"

#include <algorithm>
#include <limits>

namespace platform::corefoundation {

namespace {

constexpr CFIndex kSmallestCapacity = 8;
constexpr CFIndex kLargestCapacity =
    std::numeric_limits<CFIndex>::max() / static_cast<CFIndex>(2 * sizeof(HashEntry));

}  // namespace

// Hashes made of addresses or small numbers differ in few bits; spread them.
CFHashCode HashTable::home(CFHashCode hash) const {
  constexpr CFHashCode kGolden =
      static_cast<CFHashCode>(sizeof(CFHashCode) == 8 ? 0x9E3779B97F4A7C15U : 0x9E3779B9U);
  const CFHashCode spread = hash * kGolden;
  return (spread ^ (spread >> (4 * sizeof(CFHashCode)))) & mask;
}

bool HashTable::reserveOne(CFAllocatorRef allocator) {
  // At most three quarters full, so that every search ends.
  if (4 * (used + 1) <= 3 * capacity()) return true;
  const CFIndex wanted = std::max(kSmallestCapacity, 2 * capacity());
  if (wanted > kLargestCapacity) return false;
  HashTable larger;
  larger.entries = static_cast<HashEntry*>(
      CFAllocatorAllocate(allocator, wanted * static_cast<CFIndex>(sizeof(HashEntry)), 0));
  if (larger.entries == nullptr) return false;
  larger.mask = static_cast<CFHashCode>(wanted - 1);
  std::fill_n(larger.entries, wanted, HashEntry{});
  CFHashCode place = 0;
  while (const HashEntry* entry = next(place)) {
    larger.insert(entry->key, entry->value, entry->hash);
    ++place;
  }
  swap(larger);
  larger.release(allocator);
  return true;
}

void HashTable::insert(const void* key, const void* value, CFHashCode hash) {
  CFHashCode i = home(hash);
  while (entries[i].isUsed) i = (i + 1) & mask;
  entries[i] = {key, value, hash, true};
  ++used;
}

// An entry behind the gap moves into it unless its home lies between the gap and itself.
void HashTable::remove(HashEntry* entry) {
  CFHashCode gap = static_cast<CFHashCode>(entry - entries);
  for (CFHashCode i = (gap + 1) & mask; entries[i].isUsed; i = (i + 1) & mask) {
    const CFHashCode fromHome = (i - home(entries[i].hash)) & mask;
    if (fromHome < ((i - gap) & mask)) continue;
    entries[gap] = entries[i];
    gap = i;
  }
  entries[gap] = {};
  --used;
}

const HashEntry* HashTable::next(CFHashCode& place) const {
  for (; place < static_cast<CFHashCode>(capacity()); ++place) {
    if (entries[place].isUsed) return &entries[place];
  }
  return nullptr;
}

void HashTable::release(CFAllocatorRef allocator) {
  CFAllocatorDeallocate(allocator, entries);
  entries = nullptr;
  mask = 0;
  used = 0;
}

}  // namespace platform::corefoundation
