// Licence: MIT, see LICENSE.
// The set of blocks that are alive, so that a stale or wild address is told from a block without
// looking at what it points to.
#ifndef PLATFORM_MEMORY_BLOCKTABLE_H
#define PLATFORM_MEMORY_BLOCKTABLE_H

#include <cstdint>
#include <mutex>
#include <new>
#include <optional>
#include <unordered_map>

#include "platform/memory/Allocation.h"

namespace platform::memory {

/// Records by the address of their block. Any thread. Addresses are kept disguised: the table must
/// not be what keeps a leaked block looking reachable to a leak checker.
template <typename Record>
class BlockTable {
 public:
  /// std::bad_alloc is the caller's.
  void add(const void* address, const Record& record) {
    if (!mayAllocate()) throw std::bad_alloc();
    std::lock_guard lock(mutex);
    records.insert_or_assign(disguise(address), record);
  }

  std::optional<Record> find(const void* address) const {
    std::lock_guard lock(mutex);
    auto found = records.find(disguise(address));
    if (found == records.end()) return std::nullopt;
    return found->second;
  }

  /// Takes a record out; nothing if the block is not alive, so that one of two callers wins.
  std::optional<Record> remove(const void* address) {
    std::lock_guard lock(mutex);
    auto node = records.extract(disguise(address));
    if (node.empty()) return std::nullopt;
    return node.mapped();
  }

  /// Changes the record of a block that is alive. It must not throw.
  template <typename Change>
  bool update(const void* address, Change change) {
    std::lock_guard lock(mutex);
    auto found = records.find(disguise(address));
    if (found == records.end()) return false;
    change(found->second);
    return true;
  }

 private:
  static std::uintptr_t disguise(const void* address) {
    return ~reinterpret_cast<std::uintptr_t>(address);
  }

  mutable std::mutex mutex;
  std::unordered_map<std::uintptr_t, Record> records;
};

}  // namespace platform::memory

#endif
