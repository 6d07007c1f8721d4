// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFRunLoop.h>

#include "platform/corefoundation/RunLoopObserver.h"

namespace platform::corefoundation {

RunLoopObserver::RunLoopObserver(CFOptionFlags activities, Calls howOften, CFIndex order,
                                 CFRunLoopObserverCallBack function, InfoReference info)
    : RunLoopItem(Kind::kObserver, order, std::move(info)),
      wanted(activities),
      calls(howOften),
      callBack(function) {}

CFTypeID RunLoopObserver::type() {
  static const CFTypeID id = registerType("CFRunLoopObserver");
  return id;
}

bool RunLoopObserver::beginCall(CFRunLoopActivity activity) {
  const bool isWanted = (wanted & static_cast<CFOptionFlags>(activity)) != 0;
  return isWanted && isValid() && !calling.exchange(true);
}

void RunLoopObserver::call(CFRunLoopActivity activity) {
  if (const InfoReference info = context(); info != nullptr && isValid()) {
    callBack(referenceTo<CFRunLoopObserverRef>(this), activity, info->value());
  }
  if (!repeats()) invalidate();
  calling = false;
}

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFTypeID CFRunLoopObserverGetTypeID() { return RunLoopObserver::type(); }

CFRunLoopObserverRef CFRunLoopObserverCreate(CFAllocatorRef allocator, CFOptionFlags activities,
                                             Boolean repeats, CFIndex order,
                                             CFRunLoopObserverCallBack callBack,
                                             CFRunLoopObserverContext* context) {
  InfoReference info = makeContextInfo();
  if (callBack == nullptr || info == nullptr) return nullptr;
  using Calls = RunLoopObserver::Calls;
  auto* observer = create<RunLoopObserver>(
      allocator, activities, repeats ? Calls::kEveryTime : Calls::kOnce, order, callBack, info);
  if (observer != nullptr) info->adopt(context);
  return referenceTo<CFRunLoopObserverRef>(observer);
}

CFOptionFlags CFRunLoopObserverGetActivities(CFRunLoopObserverRef reference) {
  const auto* observer = checkedObject<RunLoopObserver>(reference);
  return observer != nullptr ? observer->activities() : 0;
}

Boolean CFRunLoopObserverDoesRepeat(CFRunLoopObserverRef reference) {
  const auto* observer = checkedObject<RunLoopObserver>(reference);
  return observer != nullptr && observer->repeats();
}

CFIndex CFRunLoopObserverGetOrder(CFRunLoopObserverRef reference) {
  const auto* observer = checkedObject<RunLoopObserver>(reference);
  return observer != nullptr ? observer->order() : 0;
}

void CFRunLoopObserverInvalidate(CFRunLoopObserverRef reference) {
  if (auto* observer = checkedObject<RunLoopObserver>(reference)) observer->invalidate();
}

Boolean CFRunLoopObserverIsValid(CFRunLoopObserverRef reference) {
  const auto* observer = checkedObject<RunLoopObserver>(reference);
  return observer != nullptr && observer->isValid();
}

void CFRunLoopObserverGetContext(CFRunLoopObserverRef reference,
                                 CFRunLoopObserverContext* context) {
  const auto* observer = checkedObject<RunLoopObserver>(reference);
  if (observer != nullptr) ContextInfo::copyTo(context, observer->context().get());
}
