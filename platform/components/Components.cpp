// Licence: MIT, see LICENSE.
#include <CarbonCore/Components.h>
#include <CarbonCore/MacErrors.h>

#include <new>

#include "platform/components/ComponentRegistry.h"
#include "platform/resources/ResourceCalls.h"

namespace platform::components {
namespace {

SInt32 registerAllOf(SInt16 number) try {
  resources::HeldFiles files;
  const resources::OpenFile* file = files->numbered(number);
  if (file == nullptr) return resFNotFound;
  SInt32 count = 0;
  for (const resources::OpenResource& resource : file->resources) {
    if (resource.entry.type != kComponentResourceType) continue;
    const auto description = parseComponent(resource.data);
    if (!description) continue;
    ComponentRegistry::shared().add(*description, file->path);
    ++count;
  }
  return count;
} catch (const std::bad_alloc&) {
  return memFullErr;
}

OSErr openFileOf(Component component, SInt16& number) try {
  const auto path = ComponentRegistry::shared().fileOf(component);
  if (!path) return invalidComponentID;
  return resources::openResourceFileOnce(*path, fsRdPerm, number);
} catch (const std::bad_alloc&) {
  return memFullErr;
}

}  // namespace
}  // namespace platform::components

using namespace platform::components;

SInt32 RegisterComponentResourceFile(SInt16 resRefNum, SInt16) { return registerAllOf(resRefNum); }

OSErr UnregisterComponent(Component component) {
  return ComponentRegistry::shared().remove(component) ? OSErr{noErr} : OSErr{invalidComponentID};
}

Component FindNextComponent(Component component, ComponentDescription* looking) {
  return ComponentRegistry::shared().next(component, looking);
}

SInt32 CountComponents(ComponentDescription* looking) {
  return ComponentRegistry::shared().count(looking);
}

OSErr OpenAComponentResFile(Component component, SInt16* refNum) {
  if (refNum == nullptr) return paramErr;
  *refNum = kResFileNotOpened;
  return openFileOf(component, *refNum);
}

OSErr CloseComponentResFile(SInt16 refNum) {
  if (refNum == kSystemResFile) return resFNotFound;
  return platform::resources::HeldFiles()->close(refNum);
}
