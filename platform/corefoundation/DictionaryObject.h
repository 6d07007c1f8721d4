// Licence: MIT, see LICENSE.
// What a CFDictionaryRef points to. Keys and values are retained before others are released, and
// the dictionary is whole again when a release call-back runs.
#ifndef PLATFORM_COREFOUNDATION_DICTIONARYOBJECT_H
#define PLATFORM_COREFOUNDATION_DICTIONARYOBJECT_H

#include <CoreFoundation/CFDictionary.h>

#include "platform/corefoundation/CFRuntime.h"
#include "platform/corefoundation/HashTable.h"

namespace platform::corefoundation {

struct DictionaryCallBacks {
  CFDictionaryKeyCallBacks key = {};
  CFDictionaryValueCallBacks value = {};
};

class Dictionary final : public Object {
 public:
  enum class Kind { kImmutable, kMutable };

  static CFTypeID type() {
    static const CFTypeID id = registerType("CFDictionary");
    return id;
  }

  /// A limit of 0 is none.
  Dictionary(Kind kind, const DictionaryCallBacks& functions, CFIndex limit)
      : callBacks(functions), maximumCount(limit), changes(kind == Kind::kMutable) {}
  ~Dictionary() override { removeAll(); }

  CFTypeID typeID() const override { return type(); }
  bool equals(const Object& other) const override;
  CFHashCode hash() const override { return static_cast<CFHashCode>(count()); }
  CFStringRef copyDescription() const override;

  bool isMutable() const { return changes; }
  CFIndex count() const { return table.count(); }
  HashEntry* find(const void* key) const;
  const HashEntry* next(CFHashCode& place) const { return table.next(place); }

  // Each does all or, if something is not taken, does not fit or there is no memory, nothing.
  bool add(const void* key, const void* value);  // a key that is not there
  void replace(HashEntry& entry, const void* value);
  void remove(HashEntry* entry);
  void removeAll();
  bool addAllOf(const Dictionary& other);

  const DictionaryCallBacks callBacks;

 private:
  CFHashCode hashOf(const void* key) const;
  void releaseEntry(const HashEntry& entry) const;

  const CFIndex maximumCount;
  const bool changes;
  HashTable table;
};

}  // namespace platform::corefoundation

#endif
