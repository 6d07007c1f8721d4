// Licence: MIT, see LICENSE.
// The components that this process has registered.
#ifndef PLATFORM_COMPONENTS_COMPONENTREGISTRY_H
#define PLATFORM_COMPONENTS_COMPONENTREGISTRY_H

#include <CarbonCore/Components.h>

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace platform::components {

/// What the data of a 'thng' resource says; nothing if it is too short. Its fields, big-endian:
/// the description (type, subtype, manufacturer, flags, mask of flags), then four references to
/// resources (type, ID) for code, name, information and icon.
std::optional<ComponentDescription> parseComponent(std::span<const std::byte> data);

/// Whether a component is what is looked for.
bool fits(const ComponentDescription& component, const ComponentDescription& looking);

class ComponentRegistry final {
 public:
  /// The process's own.
  static ComponentRegistry& shared();

  Component add(const ComponentDescription& description, const std::string& path);
  bool remove(Component component);

  /// The first one behind a component that fits; all fit null.
  Component next(Component after, const ComponentDescription* looking);
  SInt32 count(const ComponentDescription* looking);
  /// The file that a component's resources are in; nothing if it is not registered.
  std::optional<std::string> fileOf(Component component);

 private:
  struct Entry {
    Component component;
    ComponentDescription description;
    std::string path;
  };
  std::vector<Entry>::iterator find(Component component);

  std::mutex mutex;
  std::vector<Entry> entries;
  std::uintptr_t lastNumber = 0;
};

}  // namespace platform::components

#endif
