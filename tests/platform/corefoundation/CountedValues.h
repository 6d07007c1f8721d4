// Licence: MIT, see LICENSE.
// Values of collections that count how often they are retained and released. Keys and values are
// plain numbers as pointers; two are equal if they are the same modulo 100.
#ifndef TESTS_PLATFORM_COREFOUNDATION_COUNTEDVALUES_H
#define TESTS_PLATFORM_COREFOUNDATION_COUNTEDVALUES_H

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>

#include <cstdint>
#include <map>

namespace tests {

inline const void* value(std::uintptr_t number) { return reinterpret_cast<const void*>(number); }
inline std::uintptr_t numberIn(const void* pointer) {
  return reinterpret_cast<std::uintptr_t>(pointer);
}

/// References held on each value, and how often the call-backs ran, in this test.
struct Counted {
  std::map<std::uintptr_t, int> references;
  int retains = 0;
  int releases = 0;
  CFAllocatorRef allocator = nullptr;

  int held() const {
    int sum = 0;
    for (const auto& [number, count] : references) sum += count;
    return sum;
  }
};
inline Counted counted;

inline const void* retainCounted(CFAllocatorRef allocator, const void* pointer) {
  ++counted.references[numberIn(pointer)];
  ++counted.retains;
  counted.allocator = allocator;
  return pointer;
}
inline void releaseCounted(CFAllocatorRef, const void* pointer) {
  --counted.references[numberIn(pointer)];
  ++counted.releases;
}
inline CFStringRef describeCounted(const void* pointer) {
  return CFStringCreateWithFormat(nullptr, nullptr, CFSTR("no. %d"),
                                  static_cast<int>(numberIn(pointer)));
}
inline Boolean equalCounted(const void* a, const void* b) {
  return numberIn(a) % 100 == numberIn(b) % 100;
}
inline CFHashCode hashCounted(const void* pointer) { return numberIn(pointer) % 100; }

inline constexpr CFArrayCallBacks kCountedArray = {0, retainCounted, releaseCounted,
                                                   describeCounted, equalCounted};
inline constexpr CFDictionaryKeyCallBacks kCountedKeys = {
    0, retainCounted, releaseCounted, describeCounted, equalCounted, hashCounted};
inline constexpr CFDictionaryValueCallBacks kCountedValues = {0, retainCounted, releaseCounted,
                                                              describeCounted, equalCounted};

}  // namespace tests

#endif
