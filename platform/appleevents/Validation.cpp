// Licence: MIT, see LICENSE.
#include "platform/appleevents/Validation.h"

#include <AE/AEMach.h>

#include <algorithm>
#include <array>
#include <utility>

namespace platform::appleevents {
namespace {

constexpr std::array<FixedAttribute, 10> kFixedAttributes = {{
    {keyEventClassAttr, typeType, 4, true},
    {keyEventIDAttr, typeType, 4, true},
    {keyReturnIDAttr, typeSInt16, 2, true},
    {keyTransactionIDAttr, typeSInt32, 4, true},
    {keyOriginalAddressAttr, typeProcessSerialNumber, 8, true},
    {keyEventSourceAttr, typeSInt16, 2, true},
    {keyReplyRequestedAttr, typeBoolean, 1, true},
    {keyTimeoutAttr, typeSInt32, 4, true},
    {keyInteractLevelAttr, typeSInt32, 4, true},
    {keyReplyPortAttr, typeMachPort, 4, false},
}};
constexpr std::ptrdiff_t kRequiredAttributes =
    std::ranges::count(kFixedAttributes, true, &FixedAttribute::isRequired);
// The front is made of all that are required, and they come first here.
static_assert(kFront.size() == kRequiredAttributes);
static_assert(std::ranges::all_of(kFront, [](const FrontAttribute& attribute) {
  const auto* const end = kFixedAttributes.begin() + kRequiredAttributes;
  const auto* rule = std::find_if(
      kFixedAttributes.begin(), end,
      [&](const FixedAttribute& candidate) { return candidate.keyword == attribute.keyword; });
  return rule != end && rule->type == attribute.type && rule->size == attribute.size;
}));

bool areWellFormed(Bytes block, const std::optional<Region>& region, bool keyed, unsigned depth) {
  if (!region) return false;
  std::size_t end = region->begin;
  UInt32 count = 0;
  for (auto item = firstItem(block, *region); item; item = nextItem(block, *region, *item)) {
    if (!keyed && item->keyword != typeWildCard) return false;
    if (!isWellFormed(item->type, item->data, depth - 1)) return false;
    end = item->end();
    count = item->index;
  }
  return count == region->count && end == region->end;
}

bool isAddress(const Item& item) {
  return (item.type == typeProcessSerialNumber && item.data.size() == 8) ||
         (item.type == typeMachPort && item.data.size() == 4);
}

void forgetPortsIn(WritableBytes block, const std::optional<Region>& region) {
  if (!region) return;
  for (auto item = firstItem(block, *region); item; item = nextItem(block, *region, *item)) {
    forgetPorts(item->type, block.subspan(item->offset + kItemHeader, item->data.size()));
  }
}

}  // namespace

bool isWellFormed(DescType type, Bytes block, unsigned depth) {
  if (!hasItems(type)) return true;
  if (depth == 0 || block.size() > Storage::kMaxSize) return false;
  const bool keyed = type != typeAEList;
  if (!areWellFormed(block, findRegion(type, block, Part::kParameters), keyed, depth)) return false;
  return type != typeAppleEvent ||
         areWellFormed(block, findRegion(type, block, Part::kAttributes), keyed, depth);
}

const FixedAttribute* fixedAttribute(AEKeyword keyword) {
  const auto* found = std::ranges::find(kFixedAttributes, keyword, &FixedAttribute::keyword);
  return found == kFixedAttributes.end() ? nullptr : found;
}

bool isMessage(Bytes block, Front front) {
  if (block.size() > Storage::kMaxSize) return false;
  if (!areWellFormed(block, findRegion(typeAppleEvent, block, Part::kParameters), true,
                     kMaxDepth)) {
    return false;
  }
  std::optional<Region> region = findRegion(typeAppleEvent, block, Part::kAttributes);
  std::array<bool, kFixedAttributes.size()> seen{};
  std::ptrdiff_t required = 0;
  if (front == Front::kThere) {
    region = behindFront(*region);
    std::ranges::fill_n(seen.begin(), kRequiredAttributes, true);
    required = kRequiredAttributes;
  }
  if (!areWellFormed(block, region, true, kMaxDepth)) return false;
  std::size_t addresses = 0;
  for (auto item = firstItem(block, *region); item; item = nextItem(block, *region, *item)) {
    if (item->keyword == keyAddressAttr) {
      if (!isAddress(*item)) return false;
      ++addresses;
    } else if (const FixedAttribute* rule = fixedAttribute(item->keyword)) {
      if (item->type != rule->type || item->data.size() != rule->size) return false;
      if (std::exchange(seen[static_cast<std::size_t>(rule - kFixedAttributes.data())], true)) {
        return false;
      }
      if (rule->isRequired) ++required;
    }
  }
  return addresses == 1 && required == kRequiredAttributes;
}

void forgetPorts(DescType type, WritableBytes block, Front front) {
  if (type == typeMachPort) std::ranges::fill(block, std::byte{0});
  if (!hasItems(type)) return;
  forgetPortsIn(block, findRegion(type, block, Part::kParameters));
  if (type != typeAppleEvent) return;
  const std::optional<Region> attributes = findRegion(type, block, Part::kAttributes);
  forgetPortsIn(block,
                attributes && front == Front::kThere ? behindFront(*attributes) : attributes);
}

}  // namespace platform::appleevents
