// Licence: MIT, see LICENSE.
// Handlers for pairs of codes, in an application's table and, behind it, the system's. Either code
// may be typeWildCard, which matches any. Any thread.
#ifndef PLATFORM_APPLEEVENTS_PAIRTABLES_H
#define PLATFORM_APPLEEVENTS_PAIRTABLES_H

#include <AE/AEDataModel.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <new>
#include <optional>
#include <vector>

#include "platform/memory/Allocation.h"

namespace platform::appleevents {

template <typename Handler>
class PairTables final {
 public:
  /// The handlers that match a pair: the application's before the system's, and of each table both
  /// codes named before the first, the first before the second, and the second before none.
  class Matches final {
   public:
    const Handler* begin() const { return handlers.data(); }
    const Handler* end() const { return handlers.data() + count; }

   private:
    friend class PairTables;
    std::array<Handler, 8> handlers;
    std::size_t count = 0;
  };

  Matches matching(UInt32 first, UInt32 second) {
    const UInt32 any = typeWildCard;
    const std::pair<UInt32, UInt32> kinds[] = {
        {first, second}, {first, any}, {any, second}, {any, any}};
    Matches found;
    const std::lock_guard lock(mutex);
    for (Table* table : {&application, &system}) {
      if (table->empty()) continue;
      for (const auto& [firstWanted, secondWanted] : kinds) {
        const auto entry = find(*table, firstWanted, secondWanted);
        if (entry != table->end()) found.handlers[found.count++] = entry->handler;
      }
    }
    return found;
  }

  /// Takes the place of one for the same pair. memFullErr.
  OSErr install(UInt32 first, UInt32 second, const Handler& handler, bool isSystem) {
    const std::lock_guard lock(mutex);
    Table& table = of(isSystem);
    const auto entry = find(table, first, second);
    if (entry != table.end()) {
      entry->handler = handler;
      return noErr;
    }
    if (!memory::mayAllocate()) return memFullErr;
    try {
      table.push_back({first, second, handler});
    } catch (const std::bad_alloc&) {
      return memFullErr;
    }
    return noErr;
  }

  /// Removes what was installed for exactly this pair if `isMeant` says so: else
  /// errAEHandlerNotFound.
  template <typename Predicate>
  OSErr remove(UInt32 first, UInt32 second, bool isSystem, Predicate isMeant) {
    const std::lock_guard lock(mutex);
    Table& table = of(isSystem);
    const auto entry = find(table, first, second);
    if (entry == table.end() || !isMeant(entry->handler)) return errAEHandlerNotFound;
    table.erase(entry);
    return noErr;
  }

  /// What was installed for exactly this pair.
  std::optional<Handler> at(UInt32 first, UInt32 second, bool isSystem) {
    const std::lock_guard lock(mutex);
    Table& table = of(isSystem);
    const auto entry = find(table, first, second);
    if (entry == table.end()) return std::nullopt;
    return entry->handler;
  }

 private:
  struct Entry {
    UInt32 first;
    UInt32 second;
    Handler handler;
  };
  using Table = std::vector<Entry>;

  static typename Table::iterator find(Table& table, UInt32 first, UInt32 second) {
    return std::ranges::find_if(
        table, [=](const Entry& entry) { return entry.first == first && entry.second == second; });
  }
  Table& of(bool isSystem) { return isSystem ? system : application; }

  std::mutex mutex;
  Table application;
  Table system;
};

}  // namespace platform::appleevents

#endif
