// Licence: MIT, see LICENSE.
#include "platform/corefoundation/RunLoopItem.h"

#include <CoreFoundation/CFString.h>

#include <algorithm>

#include "platform/corefoundation/RunLoop.h"

namespace platform::corefoundation {

ContextInfo::~ContextInfo() {
  if (release != nullptr) release(info);
}

CFStringRef ContextInfo::copyDescription() const {
  return describe != nullptr ? describe(info) : nullptr;
}

InfoReference makeContextInfo() noexcept {
  try {
    return std::make_shared<ContextInfo>();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

CFStringRef copyDescriptionWith(const Object* object, const ContextInfo* info) {
  const Held<CFStringRef> text(info != nullptr ? info->copyDescription() : nullptr);
  const CFStringRef shown = text ? text.get() : CFSTR("");
  return CFStringCreateWithFormat(nullptr, nullptr, CFSTR("<%s %p {%@}>"),
                                  typeName(object->typeID()), object, shown);
}

RunLoopItem::RunLoopItem(Kind kind, CFIndex order, InfoReference info)
    : itemKind(kind), itemOrder(order), sharedInfo(std::move(info)) {}

CFStringRef RunLoopItem::copyDescription() const {
  return copyDescriptionWith(this, context().get());
}

InfoReference RunLoopItem::context() const {
  const std::lock_guard guard(lock);
  return sharedInfo;
}

bool RunLoopItem::join(RunLoop& loop) {
  const std::lock_guard guard(lock);
  if (!valid) return false;
  if (std::find(loops.begin(), loops.end(), &loop) != loops.end()) return true;
  if (itemKind != Kind::kSource && !loops.empty()) return false;
  loops.push_back(&loop);
  return true;
}

void RunLoopItem::leave(RunLoop& loop) {
  const std::lock_guard guard(lock);
  std::erase(loops, &loop);
}

RunLoop* RunLoopItem::retainLoop() const {
  const std::lock_guard guard(lock);
  if (loops.empty()) return nullptr;
  loops.back()->retain();
  return loops.back();
}

void RunLoopItem::invalidate() {
  const Held<RunLoopItem*> keptAlive = Held<RunLoopItem*>::retaining(this);
  {
    const std::lock_guard guard(lock);
    if (!valid) return;
    valid = false;
  }
  while (const Held<RunLoop*> loop{retainLoop()}) loop.get()->removeEverywhere(*this);

  // A source is compared, hashed and described by its info as long as it exists.
  InfoReference givenUp;
  const std::lock_guard guard(lock);
  if (itemKind != Kind::kSource && sharedInfo->isReleased()) givenUp.swap(sharedInfo);
}

}  // namespace platform::corefoundation
