// Licence: MIT, see LICENSE.
#include "platform/mach/NameTable.h"

#include <utility>

namespace platform::mach {

namespace {

constexpr unsigned kGenerationBits = 8;
// The first indices belong to the names that every process has from the start.
constexpr std::uint32_t kFirstIndex = 16;
constexpr std::uint32_t kLastIndex = (1u << (32 - kGenerationBits)) - 2;

std::uint32_t slotOf(mach_port_name_t name) { return (name >> kGenerationBits) - kFirstIndex; }

mach_port_name_t nameOf(std::uint32_t slot, std::uint8_t generation) {
  return (slot + kFirstIndex) << kGenerationBits | generation;
}

}  // namespace

mach_port_name_t NameTable::add(Entry entry) {
  std::uint32_t slot = 0;
  if (!freed.empty()) {
    slot = freed.back();
    freed.pop_back();
  } else {
    if (slots.size() + kFirstIndex > kLastIndex) return MACH_PORT_NULL;
    slot = static_cast<std::uint32_t>(slots.size());
    slots.emplace_back();
  }
  slots[slot].entry = std::move(entry);
  slots[slot].held = true;
  return nameOf(slot, slots[slot].generation);
}

Entry* NameTable::find(mach_port_name_t name) {
  const std::uint32_t slot = slotOf(name);
  if (slot >= slots.size() || !slots[slot].held) return nullptr;
  return nameOf(slot, slots[slot].generation) == name ? &slots[slot].entry : nullptr;
}

Entry NameTable::remove(mach_port_name_t name) {
  Slot& slot = slots[slotOf(name)];
  slot.held = false;
  ++slot.generation;
  freed.push_back(slotOf(name));
  return std::exchange(slot.entry, Entry{});
}

}  // namespace platform::mach
