// Licence: MIT, see LICENSE.
#include "platform/corefoundation/DictionaryObject.h"

#include <CoreFoundation/CFString.h>

#include "platform/corefoundation/ObjectCallBacks.h"

namespace platform::corefoundation {

bool Dictionary::equals(const Object& other) const {
  const Dictionary& dictionary = static_cast<const Dictionary&>(other);
  const bool isComparable = count() == dictionary.count() &&
                            callBacks.key.equal == dictionary.callBacks.key.equal &&
                            callBacks.key.hash == dictionary.callBacks.key.hash &&
                            callBacks.value.equal == dictionary.callBacks.value.equal;
  if (!isComparable) return false;
  CFHashCode place = 0;
  for (const HashEntry* entry = next(place); entry != nullptr; entry = next(++place)) {
    const HashEntry* match = dictionary.find(entry->key);
    if (match == nullptr || !areEqual(callBacks.value, entry->value, match->value)) return false;
  }
  return true;
}

CFStringRef Dictionary::copyDescription() const {
  const Held text(CFStringCreateMutable(nullptr, 0));
  CFStringAppendFormat(text.get(), nullptr,
                       CFSTR("<CFDictionary %p [%p]>{type = %s, count = %ld, pairs = (\n"), this,
                       allocator(), changes ? "mutable" : "immutable", static_cast<long>(count()));
  CFHashCode place = 0;
  for (const HashEntry* entry = next(place); entry != nullptr; entry = next(++place)) {
    CFStringAppend(text.get(), CFSTR("\t"));
    describeValue(callBacks.key, entry->key, text.get());
    CFStringAppend(text.get(), CFSTR(" = "));
    describeValue(callBacks.value, entry->value, text.get());
    CFStringAppend(text.get(), CFSTR("\n"));
  }
  CFStringAppend(text.get(), CFSTR(")}"));
  return CFStringCreateCopy(nullptr, text.get());
}

CFHashCode Dictionary::hashOf(const void* key) const {
  return callBacks.key.hash != nullptr ? callBacks.key.hash(key)
                                       : reinterpret_cast<CFHashCode>(key);
}

HashEntry* Dictionary::find(const void* key) const {
  return table.find(hashOf(key),
                    [this, key](const void* other) { return areEqual(callBacks.key, other, key); });
}

void Dictionary::releaseEntry(const HashEntry& entry) const {
  releaseValue(callBacks.key, allocator(), entry.key);
  releaseValue(callBacks.value, allocator(), entry.value);
}

bool Dictionary::add(const void* key, const void* value) {
  if (maximumCount > 0 && count() >= maximumCount) return false;
  if (!table.reserveOne(allocator())) return false;
  const void* keptKey = nullptr;
  const void* keptValue = nullptr;
  if (!keepValue(callBacks.key, allocator(), key, keptKey)) return false;
  if (!keepValue(callBacks.value, allocator(), value, keptValue)) {
    releaseValue(callBacks.key, allocator(), keptKey);
    return false;
  }
  table.insert(keptKey, keptValue, hashOf(keptKey));
  return true;
}

void Dictionary::replace(HashEntry& entry, const void* value) {
  const void* kept = nullptr;
  if (!keepValue(callBacks.value, allocator(), value, kept)) return;
  std::swap(entry.value, kept);
  releaseValue(callBacks.value, allocator(), kept);
}

void Dictionary::remove(HashEntry* entry) {
  const HashEntry removed = *entry;
  table.remove(entry);
  releaseEntry(removed);
}

void Dictionary::removeAll() {
  HashTable removed;
  removed.swap(table);
  CFHashCode place = 0;
  for (const HashEntry* entry = removed.next(place); entry != nullptr;
       entry = removed.next(++place)) {
    releaseEntry(*entry);
  }
  removed.release(allocator());
}

bool Dictionary::addAllOf(const Dictionary& other) {
  CFHashCode place = 0;
  for (const HashEntry* entry = other.next(place); entry != nullptr; entry = other.next(++place)) {
    if (!add(entry->key, entry->value)) return false;
  }
  return true;
}

}  // namespace platform::corefoundation
