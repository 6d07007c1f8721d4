// Licence: MIT, see LICENSE.
#include "platform/appleevents/EventFront.h"

namespace platform::appleevents {

bool startsWithFront(Bytes event) {
  const std::optional<Region> attributes = findRegion(typeAppleEvent, event, Part::kAttributes);
  if (!attributes || attributes->count < kFront.size() || attributes->end < kFrontEnd) return false;
  return std::ranges::all_of(kFront, [&](const FrontAttribute& attribute) {
    const std::byte* header = event.data() + attribute.offset;
    return loadWord(header) == attribute.keyword && loadWord(header + kWord) == attribute.type &&
           loadWord(header + 2 * kWord) == attribute.size;
  });
}

}  // namespace platform::appleevents
