// Licence: MIT, see LICENSE.
// What the data handle of a descriptor points to. Data of plain types is in the host's order, as a
// caller gave it; a list, record or event is one growing block in the form in which it travels (see
// Items.h), so that it is sent and received without being copied.
#ifndef PLATFORM_APPLEEVENTS_STORAGE_H
#define PLATFORM_APPLEEVENTS_STORAGE_H

#include <AE/AEDataModel.h>

#include <atomic>
#include <memory>
#include <span>
#include <utility>

#include "platform/appleevents/KeyIndex.h"
#include "platform/mach/PortSpace.h"

namespace platform::appleevents {

using mach::Bytes;
using WritableBytes = std::span<std::byte>;

/// The right to answer a message. A reply event and its duplicates share it; the last of them gives
/// it up unless one was sent.
class ReplyRight final {
 public:
  explicit ReplyRight(mach_port_name_t sendOnce) : port(sendOnce) {}
  ~ReplyRight();
  ReplyRight(const ReplyRight&) = delete;
  ReplyRight& operator=(const ReplyRight&) = delete;

  mach_port_name_t name() const { return port; }
  void markSpent() { spent.store(true, std::memory_order_relaxed); }

 private:
  mach_port_name_t port;
  std::atomic<bool> spent{false};
};

/// Where the item last asked for by index lies, so that walking a list does not start over at each
/// item. Readers of one list on several threads do without it when they meet.
class Cursor final {
 public:
  struct Place {
    UInt32 index;  // from 1; 0 is nowhere
    UInt32 offset;
  };
  Place get();
  void set(Place to);

 private:
  std::atomic_flag busy = ATOMIC_FLAG_INIT;
  Place place{0, 0};
};

}  // namespace platform::appleevents

struct OpaqueAEDataStorageType final {
  using Bytes = platform::mach::Bytes;

  /// Nothing is null where memory is exhausted.
  static std::unique_ptr<OpaqueAEDataStorageType> make(std::size_t size);
  /// With room to grow to a size without moving.
  static std::unique_ptr<OpaqueAEDataStorageType> make(std::size_t size, std::size_t room);
  static std::unique_ptr<OpaqueAEDataStorageType> adopt(platform::mach::Buffer buffer);
  std::unique_ptr<OpaqueAEDataStorageType> duplicate() const;

  Bytes bytes() const { return block.bytes(); }
  std::span<std::byte> writable() { return {block.memory.get(), block.size}; }

  /// Replaces a stretch of the block by as many bytes of room as `inserted` says, and gives the
  /// room; null, and nothing changed, if there is no memory.
  std::byte* splice(std::size_t offset, std::size_t removed, std::size_t inserted);

  /// Starts to remember which of an arrived event's parameters are read, until something is put or
  /// deleted. False without memory.
  bool trackReads(UInt32 parameters);
  void markRead(UInt32 index);  // from 1
  bool wasRead(UInt32 index) const;

  /// Whether this is an event that has been found to start as EventFront.h says, and still does.
  bool hasFront() const { return front; }
  void setHasFront() { front = true; }

  platform::appleevents::Cursor cursor;
  platform::appleevents::KeyIndex keys;
  std::shared_ptr<platform::appleevents::ReplyRight> replyRight;

  /// No descriptor grows beyond this.
  static constexpr std::size_t kMaxSize = 0x7FFFFFFF;

 private:
  bool reserve(std::size_t size);
  bool moveToLarge(std::size_t size, std::size_t roomy);

  platform::mach::Buffer block;
  std::size_t capacity = 0;
  UInt32 readCount = 0;             // 0: not tracked
  std::atomic<UInt32> fewReads{0};  // a bit for each, while they are few
  std::unique_ptr<std::atomic<bool>[]> reads;
  bool front = false;
};

namespace platform::appleevents {

using Storage = ::OpaqueAEDataStorageType;

inline constexpr AEDesc kNullDesc = {typeNull, nullptr};

/// The bytes that a descriptor holds.
inline Bytes bytesOf(const AEDesc& desc) {
  return desc.dataHandle == nullptr ? Bytes() : desc.dataHandle->bytes();
}

/// Whether a caller's block is one: a size that is not negative, and memory if it is above 0.
inline bool isBlock(const void* data, Size size) {
  return size >= 0 && (data != nullptr || size == 0);
}
inline Bytes blockOf(const void* data, Size size) {
  return {static_cast<const std::byte*>(data), static_cast<std::size_t>(size)};
}

/// Owns a descriptor until it is handed out.
class HeldDesc final {
 public:
  HeldDesc() = default;
  ~HeldDesc() { delete desc.dataHandle; }
  HeldDesc(const HeldDesc&) = delete;
  HeldDesc& operator=(const HeldDesc&) = delete;

  AEDesc* out() { return &desc; }
  const AEDesc& get() const { return desc; }
  AEDesc take() { return std::exchange(desc, kNullDesc); }

 private:
  AEDesc desc = kNullDesc;
};

}  // namespace platform::appleevents

#endif
