// Licence: MIT, see LICENSE.
// What a run loop contains.
#include "platform/corefoundation/RunLoop.h"

#include <algorithm>

namespace platform::corefoundation {

namespace {

bool isCommon(CFStringRef mode) { return CFEqual(mode, kCFRunLoopCommonModes); }

}  // namespace

CFTypeID RunLoop::type() {
  static const CFTypeID id = registerType("CFRunLoop");
  return id;
}

RunLoop* RunLoop::make() {
  RunLoop* loop = create<RunLoop>(kCFAllocatorSystemDefault);
  if (loop == nullptr) return nullptr;
  try {
    loop->addCommonMode(kCFRunLoopDefaultMode);
    return loop;
  } catch (const std::bad_alloc&) {
    loop->release();
    return nullptr;
  }
}

void RunLoop::end() {
  {
    const Lock held(lock);
    ended = true;
  }
  const auto anyItem = [this] {
    const Lock held(lock);
    RunLoopItem* item = commonItems.empty() ? nullptr : commonItems.back().get();
    for (auto mode = modes.begin(); item == nullptr && mode != modes.end(); ++mode) {
      item = (*mode)->anyItem();
    }
    return Held<RunLoopItem*>::retaining(item);
  };
  while (const Held<RunLoopItem*> item = anyItem()) removeEverywhere(*item.get());
}

// Modes.

RunLoopMode* RunLoop::findMode(CFStringRef name) const {
  const auto found = std::find_if(modes.begin(), modes.end(),
                                  [&](const auto& mode) { return CFEqual(mode->name(), name); });
  return found != modes.end() ? found->get() : nullptr;
}

RunLoopMode& RunLoop::modeNamed(CFStringRef name) {
  Held<CFStringRef> copy(CFStringCreateCopy(kCFAllocatorSystemDefault, name));
  if (!copy) throw std::bad_alloc();
  const Lock held(lock);
  if (RunLoopMode* mode = findMode(name)) return *mode;
  modes.push_back(std::make_unique<RunLoopMode>(std::move(copy)));
  return *modes.back();
}

RunLoopMode* RunLoop::commonMode(std::size_t index) const {
  const Lock held(lock);
  return index < commonModes.size() ? commonModes[index] : nullptr;
}

void RunLoop::addCommonMode(CFStringRef name) {
  if (isCommon(name)) return;
  RunLoopMode& mode = modeNamed(name);
  std::vector<Held<RunLoopItem*>> items;
  {
    const Lock held(lock);
    if (std::find(commonModes.begin(), commonModes.end(), &mode) != commonModes.end()) return;
    items = commonItems;
    commonModes.push_back(&mode);
  }
  for (const auto& item : items) enter(*item.get(), mode);
}

std::vector<Held<CFStringRef>> RunLoop::modeNames() const {
  std::vector<Held<CFStringRef>> names;
  const Lock held(lock);
  for (const auto& mode : modes) names.push_back(Held<CFStringRef>::retaining(mode->name()));
  return names;
}

CFAbsoluteTime RunLoop::nextTimerDate(CFStringRef name) const {
  const Lock held(lock);
  const RunLoopMode* mode = findMode(name);
  return mode != nullptr ? mode->nextTimerDate() : 0;
}

// Items.

void RunLoop::add(RunLoopItem& item, CFStringRef name) {
  if (!isCommon(name)) return enter(item, modeNamed(name));
  if (!addToCommonItems(item)) return;
  std::size_t index = 0;
  while (RunLoopMode* mode = commonMode(index++)) enter(item, *mode);
}

void RunLoop::enter(RunLoopItem& item, RunLoopMode& mode) {
  const mach_port_name_t port = item.port();
  {
    const Lock held(lock);
    if (ended || mode.contains(item) || !item.join(*this)) return;
    mode.insert(item, port);
    if (item.kind() == RunLoopItem::Kind::kTimer && sleepingOn == &mode.ports()) wakeHolding(held);
  }
  item.joinedMode(*this, mode.name());
}

bool RunLoop::addToCommonItems(RunLoopItem& item) {
  const Lock held(lock);
  const auto isItem = [&](const Held<RunLoopItem*>& common) { return common.get() == &item; };
  if (std::any_of(commonItems.begin(), commonItems.end(), isItem)) return false;
  if (ended || !item.join(*this)) return false;
  commonItems.push_back(Held<RunLoopItem*>::retaining(&item));
  return true;
}

void RunLoop::remove(RunLoopItem& item, CFStringRef name) {
  if (isCommon(name)) {
    const Held<RunLoopItem*> reference = removeFromCommonItems(item);
    std::size_t index = 0;
    while (RunLoopMode* mode = commonMode(index++)) takeOut(item, *mode);
  } else {
    Lock held(lock);
    RunLoopMode* mode = findMode(name);
    held.unlock();
    if (mode != nullptr) takeOut(item, *mode);
  }
  leaveIfGone(item);
}

void RunLoop::removeEverywhere(RunLoopItem& item) {
  const Held<RunLoopItem*> reference = removeFromCommonItems(item);
  const auto modeAt = [this](std::size_t index) {
    const Lock held(lock);
    return index < modes.size() ? modes[index].get() : nullptr;
  };
  std::size_t index = 0;
  while (RunLoopMode* mode = modeAt(index++)) takeOut(item, *mode);
  leaveIfGone(item);
}

Held<RunLoopItem*> RunLoop::removeFromCommonItems(const RunLoopItem& item) {
  const Lock held(lock);
  const auto found = std::find_if(commonItems.begin(), commonItems.end(),
                                  [&](const auto& common) { return common.get() == &item; });
  if (found == commonItems.end()) return {};
  Held<RunLoopItem*> reference = std::move(*found);
  commonItems.erase(found);
  return reference;
}

void RunLoop::takeOut(RunLoopItem& item, RunLoopMode& mode) {
  Held<RunLoopItem*> reference;
  {
    const Lock held(lock);
    reference = mode.remove(item);
    if (mode.isEmpty() && sleepingOn == &mode.ports()) wakeHolding(held);
  }
  if (reference) item.leftMode(*this, mode.name());
}

bool RunLoop::isInAnyMode(const RunLoopItem& item) const {
  const auto isItem = [&](const Held<RunLoopItem*>& common) { return common.get() == &item; };
  return std::any_of(commonItems.begin(), commonItems.end(), isItem) ||
         std::any_of(modes.begin(), modes.end(),
                     [&](const auto& mode) { return mode->contains(item); });
}

void RunLoop::leaveIfGone(RunLoopItem& item) {
  const Lock held(lock);
  if (!isInAnyMode(item)) item.leave(*this);
}

bool RunLoop::contains(const RunLoopItem& item, CFStringRef name) const {
  const Lock held(lock);
  if (isCommon(name)) {
    return std::any_of(commonItems.begin(), commonItems.end(),
                       [&](const auto& common) { return common.get() == &item; });
  }
  const RunLoopMode* mode = findMode(name);
  return mode != nullptr && mode->contains(item);
}

}  // namespace platform::corefoundation
