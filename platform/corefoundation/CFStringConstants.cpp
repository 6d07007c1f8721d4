// Licence: MIT, see LICENSE.
//
// Constant strings are found by their text in a table that only grows: an entry, once linked at the
// head of its bucket, stays as it is, so that only making one takes a lock, not looking it up.
#include <CoreFoundation/CFString.h>

#include <array>
#include <atomic>
#include <mutex>
#include <new>

#include "platform/corefoundation/StringObject.h"

namespace platform::corefoundation {

namespace {

struct Entry {
  CFStringRef string;
  const Entry* next;
};

constexpr std::size_t kBuckets = 1024;
constinit std::array<std::atomic<const Entry*>, kBuckets> gBuckets{};
constinit std::mutex gMaking;

std::size_t bucketOf(Bytes text) {
  UInt32 hash = 2166136261U;
  for (const UInt8 byte : text) hash = (hash ^ byte) * 16777619U;
  return hash % kBuckets;
}

CFStringRef find(const Entry* entry, Bytes text) {
  const TextView wanted{text.data(), nullptr, static_cast<CFIndex>(text.size())};
  for (; entry != nullptr; entry = entry->next) {
    if (stringOf(entry->string)->text() == wanted) return entry->string;
  }
  return nullptr;
}

// Under the lock, after nobody else has made it meanwhile.
CFStringRef make(std::atomic<const Entry*>& bucket, Bytes text) {
  const Entry* head = bucket.load(std::memory_order_acquire);
  if (const CFStringRef found = find(head, text)) return found;
  String* string = String::ofBytes(kCFAllocatorSystemDefault, text);
  if (string == nullptr) return nullptr;
  Held owned(referenceTo<CFStringRef>(string));
  Entry* fresh = new (std::nothrow) Entry{owned.get(), head};
  if (fresh == nullptr) return nullptr;
  string->makeImmortal();
  bucket.store(fresh, std::memory_order_release);
  return fresh->string;
}

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFStringRef __CFStringMakeConstantString(const char* text) {
  if (text == nullptr) return nullptr;
  const Bytes bytes = bytesOf(text);
  std::atomic<const Entry*>& bucket = gBuckets[bucketOf(bytes)];
  if (const CFStringRef found = find(bucket.load(std::memory_order_acquire), bytes)) return found;
  const std::lock_guard lock(gMaking);
  return make(bucket, bytes);
}
