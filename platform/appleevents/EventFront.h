// Licence: MIT, see LICENSE.
// The attributes that every event has, in the order and of the sizes in which makeEvent lays them
// out: each lies at a place of its own that is known beforehand. An event whose bytes have been
// found to start like that is read and changed there without walking.
#ifndef PLATFORM_APPLEEVENTS_EVENTFRONT_H
#define PLATFORM_APPLEEVENTS_EVENTFRONT_H

#include <AE/AppleEvents.h>

#include <algorithm>
#include <array>

#include "platform/appleevents/Items.h"

namespace platform::appleevents {

struct FrontAttribute {
  AEKeyword keyword;
  DescType type;
  UInt32 size;
  std::size_t offset;  // of its header
  UInt32 index;        // from 1
};

inline constexpr auto kFront = [] {
  std::array<FrontAttribute, 9> front = {{
      {keyEventClassAttr, typeType, 4, 0, 0},
      {keyEventIDAttr, typeType, 4, 0, 0},
      {keyReturnIDAttr, typeSInt16, 2, 0, 0},
      {keyTransactionIDAttr, typeSInt32, 4, 0, 0},
      {keyReplyRequestedAttr, typeBoolean, 1, 0, 0},
      {keyTimeoutAttr, typeSInt32, 4, 0, 0},
      {keyInteractLevelAttr, typeSInt32, 4, 0, 0},
      {keyEventSourceAttr, typeSInt16, 2, 0, 0},
      {keyOriginalAddressAttr, typeProcessSerialNumber, 8, 0, 0},
  }};
  std::size_t offset = kEventHeader;
  UInt32 index = 0;
  for (FrontAttribute& attribute : front) {
    attribute.offset = offset;
    attribute.index = ++index;
    offset += kItemHeader + Item::paddedSize(attribute.size);
  }
  return front;
}();

inline constexpr std::size_t kFrontEnd =
    kFront.back().offset + kItemHeader + Item::paddedSize(kFront.back().size);

/// Null for an attribute that is not among them.
constexpr const FrontAttribute* frontAttribute(AEKeyword keyword) {
  const auto* found = std::ranges::find(kFront, keyword, &FrontAttribute::keyword);
  return found == kFront.end() ? nullptr : found;
}

/// Where the data of one of them lies in an event.
constexpr std::size_t frontData(AEKeyword keyword) {
  return frontAttribute(keyword)->offset + kItemHeader;
}

/// What is known of an event's bytes: whether they start with these attributes.
enum class Front { kThere, kUnknown };

/// Whether the bytes of an event start with them.
bool startsWithFront(Bytes event);

/// One of them in an event that has them.
inline Item frontItem(Bytes event, const FrontAttribute& attribute) {
  return {attribute.keyword, attribute.type,
          event.subspan(attribute.offset + kItemHeader, attribute.size), attribute.offset,
          attribute.index};
}

/// The attributes behind them.
inline Region behindFront(const Region& attributes) {
  return {kFrontEnd, attributes.end, attributes.count - static_cast<UInt32>(kFront.size())};
}

}  // namespace platform::appleevents

#endif
