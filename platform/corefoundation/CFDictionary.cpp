// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFDictionary.h>

#include <optional>

#include "platform/corefoundation/DictionaryObject.h"
#include "platform/corefoundation/ObjectCallBacks.h"

using namespace platform::corefoundation;

namespace {

Dictionary* dictionaryOf(CFDictionaryRef reference) { return checkedObject<Dictionary>(reference); }

Dictionary* mutableDictionaryOf(CFMutableDictionaryRef reference) {
  Dictionary* dictionary = dictionaryOf(reference);
  return dictionary != nullptr && dictionary->isMutable() ? dictionary : nullptr;
}

HashEntry* find(CFDictionaryRef reference, const void* key) {
  const Dictionary* dictionary = dictionaryOf(reference);
  return dictionary != nullptr ? dictionary->find(key) : nullptr;
}

// Null stands for no call-backs; ones of an unknown version are refused.
std::optional<DictionaryCallBacks> checked(const CFDictionaryKeyCallBacks* key,
                                           const CFDictionaryValueCallBacks* value) {
  DictionaryCallBacks callBacks;
  if (key != nullptr) callBacks.key = *key;
  if (value != nullptr) callBacks.value = *value;
  if (callBacks.key.version != 0 || callBacks.value.version != 0) return std::nullopt;
  return callBacks;
}

Held<CFDictionaryRef> make(CFAllocatorRef allocator, Dictionary::Kind kind,
                           const DictionaryCallBacks& callBacks, CFIndex limit) {
  return Held(referenceTo<CFDictionaryRef>(create<Dictionary>(allocator, kind, callBacks, limit)));
}

CFDictionaryRef copy(CFAllocatorRef allocator, Dictionary::Kind kind, CFIndex limit,
                     CFDictionaryRef reference) {
  const Dictionary* original = dictionaryOf(reference);
  if (original == nullptr || limit < 0) return nullptr;
  Held<CFDictionaryRef> made = make(allocator, kind, original->callBacks, limit);
  if (!made || !dictionaryOf(made.get())->addAllOf(*original)) return nullptr;
  return made.take();
}

}  // namespace

const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {
    0, retainObject, releaseObject, CFCopyDescription, CFEqual, CFHash};
const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks = {
    0, copyString, releaseObject, CFCopyDescription, CFEqual, CFHash};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {0, retainObject, releaseObject,
                                                                    CFCopyDescription, CFEqual};

CFTypeID CFDictionaryGetTypeID(void) { return Dictionary::type(); }

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values,
                                   CFIndex count, const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
  const std::optional<DictionaryCallBacks> callBacks = checked(keyCallBacks, valueCallBacks);
  if (!callBacks || count < 0) return nullptr;
  if (count > 0 && (keys == nullptr || values == nullptr)) return nullptr;
  Held<CFDictionaryRef> made = make(allocator, Dictionary::Kind::kImmutable, *callBacks, 0);
  if (!made) return nullptr;
  Dictionary* dictionary = dictionaryOf(made.get());
  for (CFIndex i = 0; i < count; ++i) {
    if (dictionary->find(keys[i]) == nullptr && !dictionary->add(keys[i], values[i])) {
      return nullptr;
    }
  }
  return made.take();
}

CFDictionaryRef CFDictionaryCreateCopy(CFAllocatorRef allocator, CFDictionaryRef dictionary) {
  return copy(allocator, Dictionary::Kind::kImmutable, 0, dictionary);
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks) {
  const std::optional<DictionaryCallBacks> callBacks = checked(keyCallBacks, valueCallBacks);
  if (!callBacks || capacity < 0) return nullptr;
  return const_cast<CFMutableDictionaryRef>(
      make(allocator, Dictionary::Kind::kMutable, *callBacks, capacity).take());
}

CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity,
                                                     CFDictionaryRef dictionary) {
  return const_cast<CFMutableDictionaryRef>(
      copy(allocator, Dictionary::Kind::kMutable, capacity, dictionary));
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
  const Dictionary* object = dictionaryOf(dictionary);
  return object != nullptr ? object->count() : 0;
}

CFIndex CFDictionaryGetCountOfKey(CFDictionaryRef dictionary, const void* key) {
  return find(dictionary, key) != nullptr ? 1 : 0;
}

CFIndex CFDictionaryGetCountOfValue(CFDictionaryRef dictionary, const void* value) {
  const Dictionary* object = dictionaryOf(dictionary);
  if (object == nullptr) return 0;
  CFIndex count = 0;
  CFHashCode place = 0;
  for (const HashEntry* entry = object->next(place); entry != nullptr;
       entry = object->next(++place)) {
    if (areEqual(object->callBacks.value, entry->value, value)) ++count;
  }
  return count;
}

Boolean CFDictionaryContainsKey(CFDictionaryRef dictionary, const void* key) {
  return find(dictionary, key) != nullptr;
}

Boolean CFDictionaryContainsValue(CFDictionaryRef dictionary, const void* value) {
  return CFDictionaryGetCountOfValue(dictionary, value) > 0;
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
  const HashEntry* entry = find(dictionary, key);
  return entry != nullptr ? entry->value : nullptr;
}

Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, const void* key,
                                      const void** value) {
  const HashEntry* entry = find(dictionary, key);
  if (entry != nullptr && value != nullptr) *value = entry->value;
  return entry != nullptr;
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys,
                                  const void** values) {
  const Dictionary* object = dictionaryOf(dictionary);
  if (object == nullptr) return;
  CFHashCode place = 0;
  for (const HashEntry* entry = object->next(place); entry != nullptr;
       entry = object->next(++place)) {
    if (keys != nullptr) *keys++ = entry->key;
    if (values != nullptr) *values++ = entry->value;
  }
}

void CFDictionaryApplyFunction(CFDictionaryRef dictionary, CFDictionaryApplierFunction applier,
                               void* context) {
  const Dictionary* object = dictionaryOf(dictionary);
  if (object == nullptr || applier == nullptr) return;
  CFHashCode place = 0;
  for (const HashEntry* entry = object->next(place); entry != nullptr;
       entry = object->next(++place)) {
    applier(entry->key, entry->value, context);
  }
}

void CFDictionaryAddValue(CFMutableDictionaryRef dictionary, const void* key, const void* value) {
  Dictionary* object = mutableDictionaryOf(dictionary);
  if (object != nullptr && object->find(key) == nullptr) object->add(key, value);
}

void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key, const void* value) {
  Dictionary* object = mutableDictionaryOf(dictionary);
  if (object == nullptr) return;
  if (HashEntry* entry = object->find(key)) {
    object->replace(*entry, value);
  } else {
    object->add(key, value);
  }
}

void CFDictionaryReplaceValue(CFMutableDictionaryRef dictionary, const void* key,
                              const void* value) {
  Dictionary* object = mutableDictionaryOf(dictionary);
  HashEntry* entry = object != nullptr ? object->find(key) : nullptr;
  if (entry != nullptr) object->replace(*entry, value);
}

void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, const void* key) {
  Dictionary* object = mutableDictionaryOf(dictionary);
  HashEntry* entry = object != nullptr ? object->find(key) : nullptr;
  if (entry != nullptr) object->remove(entry);
}

void CFDictionaryRemoveAllValues(CFMutableDictionaryRef dictionary) {
  Dictionary* object = mutableDictionaryOf(dictionary);
  if (object != nullptr) object->removeAll();
}
