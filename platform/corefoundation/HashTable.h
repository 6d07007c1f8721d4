// Licence: MIT, see LICENSE.
// The storage of a dictionary: open addressing with linear probing. Removing closes the gap, so
// that there are no marks of former entries. Knows nothing of who holds keys and values.
#ifndef PLATFORM_COREFOUNDATION_HASHTABLE_H
#define PLATFORM_COREFOUNDATION_HASHTABLE_H

#include <CoreFoundation/CFBase.h>

#include <utility>

namespace platform::corefoundation {

struct HashEntry {
  const void* key;
  const void* value;
  CFHashCode hash;
  bool isUsed;
};

class HashTable {
 public:
  HashTable() = default;
  HashTable(const HashTable&) = delete;
  HashTable& operator=(const HashTable&) = delete;

  CFIndex count() const { return used; }

  /// The entry whose key has this hash and is taken for equal; else null.
  template <typename IsEqual>
  HashEntry* find(CFHashCode hash, const IsEqual& isEqual) const {
    if (used == 0) return nullptr;
    for (CFHashCode i = home(hash); entries[i].isUsed; i = (i + 1) & mask) {
      if (entries[i].hash == hash && isEqual(entries[i].key)) return &entries[i];
    }
    return nullptr;
  }

  /// Makes room for one more entry, so that the next insert does not fail. False: no memory.
  bool reserveOne(CFAllocatorRef allocator);
  /// A key that is not there yet. Needs room.
  void insert(const void* key, const void* value, CFHashCode hash);
  void remove(HashEntry* entry);

  /// The used entry at this place or the next one behind it; null at the end. Bounded even if the
  /// table changes between calls.
  const HashEntry* next(CFHashCode& place) const;

  void swap(HashTable& other) {
    std::swap(entries, other.entries);
    std::swap(mask, other.mask);
    std::swap(used, other.used);
  }
  void release(CFAllocatorRef allocator);

 private:
  CFHashCode home(CFHashCode hash) const;
  CFIndex capacity() const { return entries != nullptr ? static_cast<CFIndex>(mask) + 1 : 0; }

  HashEntry* entries = nullptr;
  CFHashCode mask = 0;  // capacity - 1; the capacity is a power of two
  CFIndex used = 0;
};

}  // namespace platform::corefoundation

#endif
