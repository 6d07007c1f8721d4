// Licence: MIT, see LICENSE.
#include "platform/appleevents/EventForm.h"

#include <algorithm>

#include "platform/appleevents/ByteOrder.h"

namespace platform::appleevents {
namespace {

// Room for the attributes and some parameters, so that few events have to grow.
constexpr std::size_t kUsualEvent = 512;

constexpr std::size_t kSerialNumberSize = 2 * kWord;

constexpr UInt32 kHalfShift = 16;  // of a number of two bytes in the word that it fills
constexpr UInt32 kByteShift = 24;

/// Writes items one behind the other. Numbers of less than a word leave zeros behind them.
class ItemWriter final {
 public:
  explicit ItemWriter(std::byte* begin) : at(begin) {}

  WritableBytes add(AEKeyword keyword, DescType type, std::size_t size) {
    storeWord(at, keyword);
    storeWord(at + kWord, type);
    storeWord(at + 2 * kWord, static_cast<UInt32>(size));
    const WritableBytes data(at + kItemHeader, size);
    at = data.data() + Item::paddedSize(size);
    return data;
  }
  void addWord(AEKeyword keyword, DescType type, UInt32 value) {
    storeWord(add(keyword, type, kWord).data(), value);
  }
  void addHalf(AEKeyword keyword, DescType type, SInt16 value) {
    storeWord(add(keyword, type, sizeof value).data(), static_cast<UInt32>(value) << kHalfShift);
  }
  void addByte(AEKeyword keyword, DescType type, UInt8 value) {
    storeWord(add(keyword, type, sizeof value).data(), UInt32{value} << kByteShift);
  }
  void addData(AEKeyword keyword, DescType type, Bytes data) {
    const WritableBytes room = add(keyword, type, data.size());
    reorder(type, data, room);
    std::fill(room.data() + room.size(), at, std::byte{0});
  }

 private:
  std::byte* at;
};

void storeSerialNumber(std::byte* at, const ProcessSerialNumber& number) {
  storeWord(at, number.highLongOfPSN);
  storeWord(at + kWord, number.lowLongOfPSN);
}

void addPostmark(ItemWriter& items, const Postmark& mark) {
  items.addByte(keyReplyRequestedAttr, typeBoolean, mark.wantsReply());
  items.addWord(keyTimeoutAttr, typeSInt32, static_cast<UInt32>(mark.timeOutInTicks));
  items.addWord(keyInteractLevelAttr, typeSInt32, static_cast<UInt32>(mark.interactionLevel()));
  items.addHalf(keyEventSourceAttr, typeSInt16, mark.source);
  storeSerialNumber(
      items.add(keyOriginalAddressAttr, typeProcessSerialNumber, kSerialNumberSize).data(),
      mark.sender);
}

void writeHeader(std::byte* at, std::size_t attributes, std::size_t attributeBytes) {
  storeWord(at, kEventMark);
  storeWord(at + kWord, static_cast<UInt32>(attributes));
  storeWord(at + 2 * kWord, static_cast<UInt32>(attributeBytes));
  storeWord(at + 3 * kWord, 0);  // parameters
}

bool isOf(const Item& item, DescType type, std::size_t size) {
  return item.type == type && item.data.size() == size;
}

/// Writes a part of a postmark over the attribute that holds it. False if it is none.
bool writePart(const Item& item, std::byte* data, const Postmark& mark) {
  switch (item.keyword) {
    case keyReplyRequestedAttr:
      if (!isOf(item, typeBoolean, 1)) return false;
      *data = static_cast<std::byte>(mark.wantsReply());
      return true;
    case keyTimeoutAttr:
      if (!isOf(item, typeSInt32, kWord)) return false;
      storeWord(data, static_cast<UInt32>(mark.timeOutInTicks));
      return true;
    case keyInteractLevelAttr:
      if (!isOf(item, typeSInt32, kWord)) return false;
      storeWord(data, static_cast<UInt32>(mark.interactionLevel()));
      return true;
    case keyEventSourceAttr:
      if (!isOf(item, typeSInt16, sizeof mark.source)) return false;
      storeWord(data, static_cast<UInt32>(mark.source) << kHalfShift);
      return true;
    case keyOriginalAddressAttr:
      if (!isOf(item, typeProcessSerialNumber, kSerialNumberSize)) return false;
      storeSerialNumber(data, mark.sender);
      return true;
    default:
      return false;
  }
}

constexpr int kPostmarkParts = 5;

/// Calls with each attribute and with where its data can be written.
template <typename Visit>
void visitAttributes(WritableBytes event, Front known, Visit visit) {
  std::optional<Region> region = findRegion(typeAppleEvent, event, Part::kAttributes);
  if (!region) return;
  if (known == Front::kThere) region = behindFront(*region);
  for (auto item = firstItem(event, *region); item; item = nextItem(event, *region, *item)) {
    visit(*item, event.data() + item->offset + kItemHeader);
  }
}

}  // namespace

std::unique_ptr<Storage> makeEvent(const Beginning& beginning, const Postmark& mark) {
  const bool hasAddress = beginning.addressType != typeNull;
  const std::size_t addressSize =
      hasAddress ? kItemHeader + Item::paddedSize(beginning.address.size()) : 0;
  if (addressSize > Storage::kMaxSize - kFrontEnd) return nullptr;
  const std::size_t size = kFrontEnd + addressSize;
  std::unique_ptr<Storage> storage = Storage::make(size, std::max(size, kUsualEvent));
  if (storage == nullptr) return nullptr;
  std::byte* block = storage->writable().data();
  writeHeader(block, kFront.size() + (hasAddress ? 1 : 0), size - kEventHeader);
  ItemWriter items(block + kEventHeader);
  items.addWord(keyEventClassAttr, typeType, beginning.eventClass);
  items.addWord(keyEventIDAttr, typeType, beginning.eventID);
  items.addHalf(keyReturnIDAttr, typeSInt16, beginning.returnID);
  items.addWord(keyTransactionIDAttr, typeSInt32, static_cast<UInt32>(beginning.transactionID));
  addPostmark(items, mark);
  if (hasAddress) items.addData(keyAddressAttr, beginning.addressType, beginning.address);
  storage->setHasFront();
  return storage;
}

void writeOverFront(WritableBytes event, const Postmark& mark) {
  std::byte* at = event.data();
  at[frontData(keyReplyRequestedAttr)] = static_cast<std::byte>(mark.wantsReply());
  storeWord(at + frontData(keyTimeoutAttr), static_cast<UInt32>(mark.timeOutInTicks));
  storeWord(at + frontData(keyInteractLevelAttr), static_cast<UInt32>(mark.interactionLevel()));
  storeWord(at + frontData(keyEventSourceAttr), static_cast<UInt32>(mark.source) << kHalfShift);
  storeSerialNumber(at + frontData(keyOriginalAddressAttr), mark.sender);
}

bool writeOver(WritableBytes event, const Postmark& mark) {
  int written = 0;
  visitAttributes(event, Front::kUnknown, [&](const Item& item, std::byte* data) {
    if (writePart(item, data, mark)) ++written;
  });
  return written == kPostmarkParts;
}

void writeArrival(WritableBytes message, mach_port_name_t receiver, bool isOwn, Front front) {
  const auto correctSource = [isOwn](std::byte* data) {
    if (isOwn && loadWord(data) >> kHalfShift == UInt32{kAESameProcess}) return;
    storeWord(data, UInt32{kAELocalProcess} << kHalfShift);
  };
  if (front == Front::kThere) correctSource(message.data() + frontData(keyEventSourceAttr));
  visitAttributes(message, front, [&](const Item& item, std::byte* data) {
    if (item.keyword == keyAddressAttr && isOf(item, typeMachPort, kWord)) {
      storeWord(data, receiver);
    } else if (item.keyword == keyEventSourceAttr) {
      correctSource(data);
    }
  });
}

std::optional<Item> findAttribute(const AppleEvent& event, AEKeyword keyword) {
  if (event.descriptorType != typeAppleEvent) return std::nullopt;
  const Bytes block = bytesOf(event);
  if (event.dataHandle != nullptr && event.dataHandle->hasFront()) {
    if (const FrontAttribute* front = frontAttribute(keyword)) return frontItem(block, *front);
  }
  const std::optional<Region> region = findRegion(typeAppleEvent, block, Part::kAttributes);
  return region ? findAttribute(*event.dataHandle, *region, keyword) : std::nullopt;
}

}  // namespace platform::appleevents
