// Licence: MIT, see LICENSE.
#include "platform/components/ComponentRegistry.h"

#include <algorithm>
#include <bit>

#include "platform/resources/BigEndian.h"

namespace platform::components {
namespace {

constexpr std::size_t kReferences = 4;
constexpr std::size_t kReferenceSize = 6;

bool agrees(OSType has, OSType wanted) { return wanted == kAnyComponentType || wanted == has; }

}  // namespace

std::optional<ComponentDescription> parseComponent(std::span<const std::byte> data) {
  resources::Reader reader(data);
  ComponentDescription description;
  description.componentType = reader.u32();
  description.componentSubType = reader.u32();
  description.componentManufacturer = reader.u32();
  description.componentFlags = reader.u32();
  description.componentFlagsMask = reader.u32();
  reader.take(kReferences * kReferenceSize);
  if (reader.failed()) return std::nullopt;
  return description;
}

bool fits(const ComponentDescription& component, const ComponentDescription& looking) {
  return agrees(component.componentType, looking.componentType) &&
         agrees(component.componentSubType, looking.componentSubType) &&
         agrees(component.componentManufacturer, looking.componentManufacturer) &&
         ((component.componentFlags ^ looking.componentFlags) & looking.componentFlagsMask) == 0;
}

ComponentRegistry& ComponentRegistry::shared() {
  static auto* registry = new ComponentRegistry;
  return *registry;
}

Component ComponentRegistry::add(const ComponentDescription& description, const std::string& path) {
  std::lock_guard lock(mutex);
  auto* component = std::bit_cast<Component>(lastNumber + 1);
  entries.push_back({component, description, path});
  ++lastNumber;
  return component;
}

bool ComponentRegistry::remove(Component component) {
  std::lock_guard lock(mutex);
  const auto entry = find(component);
  if (entry == entries.end()) return false;
  entries.erase(entry);
  return true;
}

Component ComponentRegistry::next(Component after, const ComponentDescription* looking) {
  std::lock_guard lock(mutex);
  const auto last = find(after);
  const auto start = last == entries.end() ? entries.begin() : last + 1;
  const auto found = std::find_if(start, entries.end(), [looking](const Entry& entry) {
    return looking == nullptr || fits(entry.description, *looking);
  });
  return found == entries.end() ? nullptr : found->component;
}

SInt32 ComponentRegistry::count(const ComponentDescription* looking) {
  std::lock_guard lock(mutex);
  return static_cast<SInt32>(std::ranges::count_if(entries, [looking](const Entry& entry) {
    return looking == nullptr || fits(entry.description, *looking);
  }));
}

std::optional<std::string> ComponentRegistry::fileOf(Component component) {
  std::lock_guard lock(mutex);
  const auto entry = find(component);
  return entry == entries.end() ? std::nullopt : std::optional(entry->path);
}

std::vector<ComponentRegistry::Entry>::iterator ComponentRegistry::find(Component component) {
  return std::ranges::find(entries, component, &Entry::component);
}

}  // namespace platform::components
