// Licence: MIT, see LICENSE.
// Where the items of a large record or event lie, by keyword, so that neither putting a parameter
// nor reading one walks all that come before. It is made as items are looked for, goes on with
// those that have been appended since, and starts anew when items have moved.
//
// A small record is walked. Where its items have been put one after the other, a mask tells without
// a walk that a keyword is new, and whoever reads them in their order finds each at once.
#ifndef PLATFORM_APPLEEVENTS_KEYINDEX_H
#define PLATFORM_APPLEEVENTS_KEYINDEX_H

#include <AE/AEDataModel.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>

namespace platform::appleevents {

struct Item;
struct Region;

class KeyIndex final {
 public:
  /// The first item under a keyword. Readers of one record on several threads do without the index
  /// when they meet, and so does everybody while there is no memory for it.
  std::optional<Item> find(std::span<const std::byte> block, const Region& region,
                           AEKeyword keyword);
  /// Notes that an item has been put behind `count` others, none of which has its keyword.
  void noteAppended(UInt32 count, AEKeyword keyword);
  /// Forgets all items, because they may have moved.
  void clear();

  /// Up to this many items walking them is as fast.
  static constexpr UInt32 kSmallest = 24;

 private:
  struct Slot {
    AEKeyword keyword;
    UInt32 offset;
    UInt32 index;  // 0: free
  };
  struct Free {
    void operator()(Slot* block) const { std::free(block); }
  };

  std::optional<Item> findPut(std::span<const std::byte> block, const Region& region,
                              AEKeyword keyword);
  std::optional<Item> findWhileHeld(std::span<const std::byte> block, const Region& region,
                                    AEKeyword keyword);
  bool addUpTo(std::span<const std::byte> block, const Region& region);
  std::optional<Item> walk(std::span<const std::byte> block, const Region& region,
                           AEKeyword keyword);
  bool reserve(UInt32 count);
  Slot& slotFor(AEKeyword keyword) const;
  void add(const Slot& slot);

  std::atomic_flag busy = ATOMIC_FLAG_INIT;
  std::unique_ptr<Slot[], Free> slots;
  UInt32 capacity = 0;  // a power of two, of which at most half is used
  UInt32 covered = 0;   // items, from the first on
  UInt32 end = 0;       // of the last of them
  UInt32 walked = 0;    // items, since it was given up

  std::uint64_t putKeywords = 0;      // a bit for each keyword of the items that were put
  UInt32 putCount = 0;                // of them, from the first on; no two have one keyword
  std::atomic<UInt32> likelyNext{0};  // behind the item found last: its offset and index; 0: none
};

}  // namespace platform::appleevents

#endif
